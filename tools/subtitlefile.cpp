#include "subtitlefile.h"

#include "failure.h"
#include "processlocale.h"
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
// The library takes larger files for ones without subtitles.
const std::uintmax_t MaxFileBytes = std::uintmax_t(128) * 1024 * 1024;

/** The extension in small letters when the library has a reader of its own for such files, else null. */
const char *DirectExtension(const std::string &strFile)
{
    const std::string strExtension = std::filesystem::path(strFile).extension().string();
    static const std::array<const char *, 4> Extensions = {".srt", ".ass", ".ssa", ".idx"};
    const auto *const pFound = std::find_if(Extensions.begin(), Extensions.end(), [&](const char *pExtension) {
        return strcasecmp(strExtension.c_str(), pExtension) == 0;
    });
    return pFound == Extensions.end() ? nullptr : *pFound;
}

void CheckSize(const std::string &strFile, const std::string &strGiven)
{
    std::error_code error;
    if (std::filesystem::file_size(strFile, error) > MaxFileBytes && !error)
        throw Failure(ExitCode::Input, strGiven, "has more than 128 MiB of subtitles, which the library does not read");
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
    const char *const pExtension = DirectExtension(source.strFile);
    if (!pExtension) {
        Extract(source);
    } else {
        // The library takes a file that it cannot open for one without subtitles.
        CheckReadable(source.strFile);
        if (HasPictures())
            CheckPicturesReadable(source.strFile);
        if (!SurvivesLocale(source.strFile))
            Link(source.strFile, pExtension);
    }
    CheckSize(m_strPath, source.strFile);
    // Qt takes names that begin with a colon for resources of the program, and drops a byte-order mark.
    if (std::filesystem::path(m_strPath).is_relative())
        m_strPath.insert(0, "./");
}

bool SubtitleFile::HasPictures() const
{
    return VobSubIndex::IsIndex(m_strPath);
}

/** Gives a file a name in ASCII, and the pictures of an index the one that the library makes of it. */
void SubtitleFile::Link(const std::string &strFile, const std::string &strExtension)
{
    m_strPath = (std::filesystem::path(m_folder.emplace().Path()) / ("subtitles" + strExtension)).string();
    const auto LinkTo = [](const std::string &strTarget, const std::string &strLink) {
        std::error_code error;
        const std::filesystem::path target = std::filesystem::absolute(strTarget, error);
        if (!error)
            std::filesystem::create_symlink(target, strLink, error);
        if (error)
            throw Failure(ExitCode::Output, strLink, error.message());
    };
    LinkTo(strFile, m_strPath);
    if (HasPictures())
        LinkTo(VobSubIndex::PicturesOf(strFile), VobSubIndex::PicturesOf(m_strPath));
}

std::string SubtitleFile::ReasonAgainst(int nTrack) const
{
    return HasPictures() ? VobSubIndex(m_strPath).ReasonAgainst(nTrack)
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
