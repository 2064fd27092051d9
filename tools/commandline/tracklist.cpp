#include "commandline/tracklist.h"

#include "commandline/printable.h"
#include "commandline/values.h"
#include "subtitles/subtitlerenderer.h"
#include "subtitles/subtitletext.h"
#include "subtitles/subtitletracks.h"
#include "subtitles/vobsubindex.h"

#include <strings.h>

#include <algorithm>
#include <map>

namespace
{

struct Column {
    const char *pHeading;
    bool bRight;
};

const std::array<Column, 7> Columns = {{{"track", true},
                                        {"codec", false},
                                        {"language", false},
                                        {"title", false},
                                        {"cues", true},
                                        {"first", true},
                                        {"last", true}}};
// Any size will do: whether a cue shows does not depend on it.
const int AnySide = 64;
const char *const Gap = "  ";
const char *const Nothing = "-";

using Row = std::array<std::string, Columns.size()>;

std::string CellText(const std::string &strText)
{
    const std::string strPrintable = Printable(strText);
    return strPrintable.empty() ? Nothing : strPrintable;
}

std::string CellTime(int64_t nMilliseconds)
{
    return TimeText(av_rescale_q(nMilliseconds, Milliseconds, Microseconds));
}

Row Headings()
{
    Row row;
    for (size_t n = 0; n < row.size(); ++n)
        row[n] = Columns[n].pHeading;
    return row;
}

Row RowOf(size_t nTrack, const std::string &strCodec, const std::string &strLanguage, const std::string &strTitle,
          const std::vector<Cue> &listCues)
{
    int64_t nFirst = INT64_MAX;
    int64_t nLast = 0;
    for (const Cue &cue : listCues) {
        nFirst = std::min(nFirst, cue.nStart);
        nLast = std::max(nLast, cue.nEnd);
    }
    return {std::to_string(nTrack), strCodec,
            // "und" is the language code for undetermined.
            strLanguage == "und" ? Nothing : CellText(strLanguage), CellText(strTitle), std::to_string(listCues.size()),
            listCues.empty() ? Nothing : CellTime(nFirst), listCues.empty() ? Nothing : CellTime(nLast)};
}

std::vector<Row> RowsOf(const std::string &strFile)
{
    SubtitleTracks tracks(strFile);
    tracks.Read();
    std::vector<Row> listRows = {Headings()};
    for (const SubtitleTrack &track : tracks.List())
        listRows.push_back(
            RowOf(listRows.size() - 1, track.CodecName(), track.Tag("language"), track.Tag("title"), track.Cues()));
    return listRows;
}

/** Not through FFmpeg: the library numbers the tracks differently and shows the pictures at other times. */
std::vector<Row> RowsOfIndex(const std::string &strFile)
{
    const VobSubIndex index(strFile);
    std::vector<Row> listRows = {Headings()};
    for (const VobSubIndex::Language &language : index.Languages())
        listRows.push_back(RowOf(language.nTrack, avcodec_get_name(AV_CODEC_ID_DVD_SUBTITLE), language.strLanguage,
                                 language.strTitle, language.listCues));
    return listRows;
}

/** Asks the library about each cue, since it silently skips those that it cannot read. */
std::vector<Row> RowsOfText(const Options &options, Console &console)
{
    const std::string &strFile = options.listSubtitles.front().source.strFile;
    const SubtitleLibrary library;
    const SubtitleRenderer renderer(library, AnySide, AnySide, options.listSubtitles.front(), console);
    const std::vector<SubtitleText::TextCue> listAll = SubtitleText(options.listSubtitles.front().source).Cues();
    std::map<std::string, int> mapTroubles;
    std::vector<Cue> listShown;
    for (const SubtitleText::TextCue &text : listAll) {
        Cue cue;
        cue.nStart = std::max<int64_t>(text.nStart, 0);
        cue.nEnd = text.nEnd;
        if (cue.nStart <= cue.nEnd && renderer.Seek((cue.nStart + cue.nEnd + 1) / 2) == Due::Shown)
            listShown.push_back(cue);
        else
            ++mapTroubles[text.pTrouble ? text.pTrouble : "the library reads other times, or no text"];
    }
    for (const auto &[strTrouble, nCues] : mapTroubles)
        console.Warn(strFile, std::to_string(nCues) + " of " + std::to_string(listAll.size()) +
                                  (listAll.size() == 1 ? " cue does not show: " : " cues do not show: ") + strTrouble);
    const bool bSubRip = strcasecmp(strFile.c_str() + strFile.rfind('.'), ".srt") == 0;
    if (listAll.empty())
        return {};
    return {Headings(), RowOf(0, avcodec_get_name(bSubRip ? AV_CODEC_ID_SUBRIP : AV_CODEC_ID_ASS), "", "", listShown)};
}

std::string TableText(const std::vector<Row> &listRows)
{
    std::array<int, Columns.size()> listWidths{};
    for (const Row &row : listRows) {
        for (size_t n = 0; n < row.size(); ++n)
            listWidths[n] = std::max(listWidths[n], WidthOf(row[n]));
    }
    std::string strText;
    for (const Row &row : listRows) {
        for (size_t n = 0; n < row.size(); ++n) {
            const std::string strSpaces(listWidths[n] - WidthOf(row[n]), ' ');
            strText += n > 0 ? Gap : "";
            strText += Columns[n].bRight ? strSpaces + row[n] : row[n] + strSpaces;
        }
        strText += '\n';
    }
    return strText;
}

} // namespace

std::string TrackListText(const Options &options, Console &console)
{
    const std::string &strFile = options.listSubtitles.front().source.strFile;
    const std::vector<Row> listRows = VobSubIndex::IsIndex(strFile)   ? RowsOfIndex(strFile)
                                      : SubtitleFile::IsText(strFile) ? RowsOfText(options, console)
                                                                      : RowsOf(strFile);
    return listRows.size() > 1 ? TableText(listRows) : Escaped(strFile) + ": there are no subtitles in it\n";
}
