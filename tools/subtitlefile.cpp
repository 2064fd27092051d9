#include "subtitlefile.h"

#include "failure.h"
#include "readable.h"
#include "subtitletracks.h"
#include "vobsubindex.h"

#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace
{

const char *const ByteOrderMark = "\xef\xbb\xbf";
// Shows nothing, and keeps a line of text from being taken for a number or a time.
const char *const ZeroWidthSpace = "\xe2\x80\x8b";
constexpr std::string_view Arrow = "-->";
const int64_t UsualMilliseconds = 5000;

/** The library has readers of its own for these. */
bool IsReadDirectly(const std::string &strFile)
{
    const std::string strExtension = std::filesystem::path(strFile).extension().string();
    static const std::array<const char *, 4> Extensions = {".srt", ".ass", ".ssa", ".idx"};
    return std::any_of(Extensions.begin(), Extensions.end(),
                       [&](const char *pExtension) { return strcasecmp(strExtension.c_str(), pExtension) == 0; });
}

/** The library takes an index without its pictures, and shows nothing. */
void CheckPicturesReadable(const std::string &strIndex)
{
    try {
        CheckReadable(VobSubIndex::PicturesOf(strIndex));
    } catch (const Failure &failure) {
        throw Failure(failure.Code(), std::string(failure.what()) + " (it holds the pictures of " + strIndex + ")");
    }
}

/** The library cuts the product of the seconds off; half a thousandth more makes each time come out as it is. */
std::string SrtTime(int64_t nMilliseconds)
{
    std::array<char, 48> listText{};
    (void)std::snprintf(listText.data(), listText.size(), "%02lld:%02d:%02d,%03d5",
                        static_cast<long long>(nMilliseconds / 3600000), static_cast<int>(nMilliseconds / 60000 % 60),
                        static_cast<int>(nMilliseconds / 1000 % 60), static_cast<int>(nMilliseconds % 1000));
    return listText.data();
}

bool LooksLikeANumber(const std::string &strLine)
{
    const auto IsAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    return std::any_of(strLine.begin(), strLine.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
           std::all_of(strLine.begin(), strLine.end(), [&](char c) {
               return !IsAscii(c) || std::string("0123456789+- \t\v\f").find(c) != std::string::npos;
           });
}

/** A line as the library's reader of SubRip files takes it for text, looking the same. */
std::string SrtLine(std::string strLine)
{
    // An empty line would end the cue.
    if (strLine.empty())
        return " ";
    for (size_t n = strLine.find(Arrow); n != std::string::npos; n = strLine.find(Arrow, n))
        strLine.insert(n + Arrow.size() - 1, ZeroWidthSpace);
    return LooksLikeANumber(strLine) ? strLine + ZeroWidthSpace : strLine;
}

std::string SrtText(const std::string &strText)
{
    std::string strLines;
    for (size_t nBegin = 0; nBegin <= strText.size();) {
        const size_t nEnd = std::min(strText.find('\n', nBegin), strText.size());
        strLines += SrtLine(strText.substr(nBegin, nEnd - nBegin)) + "\n";
        nBegin = nEnd + 1;
    }
    return strLines;
}

int64_t EndOf(const Cue &cue)
{
    if (cue.bEndKnown)
        return cue.nEnd;
    const int64_t nUsual = cue.nStart + UsualMilliseconds;
    return cue.nEnd > cue.nStart ? std::min(cue.nEnd, nUsual) : nUsual;
}

/** Where cues overlap the library shows the first, so the order of the script counts. */
std::string SrtOf(std::vector<Cue> listCues)
{
    std::stable_sort(listCues.begin(), listCues.end(), [](const Cue &a, const Cue &b) { return a.nOrder < b.nOrder; });
    std::string strSrt = ByteOrderMark;
    int nNumber = 0;
    for (const Cue &cue : listCues) {
        if (!cue.strText.empty())
            strSrt += std::to_string(++nNumber) + "\n" + SrtTime(cue.nStart) + " " + std::string(Arrow) + " " +
                      SrtTime(EndOf(cue)) + "\n" + SrtText(cue.strText) + "\n";
    }
    return strSrt;
}

} // namespace

SubtitleFile::SubtitleFile(const SubtitleSource &source) : m_strPath(source.strFile)
{
    if (!IsReadDirectly(source.strFile)) {
        Extract(source);
        return;
    }
    // The library takes a missing file for one without subtitles.
    CheckReadable(source.strFile);
    if (VobSubIndex::IsIndex(source.strFile))
        CheckPicturesReadable(source.strFile);
}

std::string SubtitleFile::ReasonAgainst(int nTrack) const
{
    return VobSubIndex::IsIndex(m_strPath) ? VobSubIndex(m_strPath).ReasonAgainst(nTrack)
                                           : "not a kind of subtitle file the library reads";
}

void SubtitleFile::Extract(const SubtitleSource &source)
{
    SubtitleTracks tracks(source.strFile);
    const std::string strSrt = SrtOf(tracks.ReadOnly(source.nTrack).Cues());
    m_strPath = (std::filesystem::path(m_folder.emplace().Path()) / "track.srt").string();
    std::ofstream stream(m_strPath, std::ios::binary);
    stream << strSrt;
    stream.close();
    if (!stream)
        throw Failure(ExitCode::Output, m_strPath, std::generic_category().message(errno));
}
