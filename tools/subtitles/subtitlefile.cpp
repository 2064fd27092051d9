#include "subtitles/subtitlefile.h"

#include "commandline/failure.h"
#include "commandline/processlocale.h"
#include "commandline/readable.h"
#include "media/demuxer.h"
#include "subtitles/srtwriter.h"
#include "subtitles/subtitletext.h"
#include "subtitles/subtitletracks.h"
#include "subtitles/textencoding.h"
#include "subtitles/vobsubindex.h"
#include "subtitles/vobsubtrack.h"

#include <strings.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace
{

// The library treats larger files as having no subtitles.
const std::uintmax_t MaxFileBytes = std::uintmax_t(128) * 1024 * 1024;

/** The extension in lower case if the library reads such files itself, else null. */
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

/** Checked here since the library accepts an index without its .sub file and shows nothing. */
void CheckPicturesReadable(const std::string &strIndex)
{
    try {
        CheckReadable(VobSubIndex::PicturesOf(strIndex));
    } catch (const Failure &failure) {
        throw Failure(failure.Code(), std::string(failure.what()) + " (it holds the pictures of " + strIndex + ")");
    }
}

/** Whether a file is text, not a container: it is marked as UTF-16 or has no NUL byte. */
bool IsWrittenText(const std::string &strFile)
{
    std::error_code error;
    if (std::filesystem::file_size(strFile, error) > MaxFileBytes || error)
        return false;
    std::ifstream stream(strFile, std::ios::binary);
    std::string strPart(4096, '\0');
    stream.read(strPart.data(), static_cast<std::streamsize>(strPart.size()));
    strPart.resize(stream.gcount());
    if (strPart.rfind("\xff\xfe", 0) == 0 || strPart.rfind("\xfe\xff", 0) == 0)
        return true;
    while (stream && strPart.find('\0') == std::string::npos)
        stream.read(strPart.data(), static_cast<std::streamsize>(strPart.size()));
    return strPart.find('\0') == std::string::npos;
}

/** Converts all texts at once, since single ones are too short for guessing the encoding. */
void ConvertEach(std::vector<Cue> &listCues, TextEncoding &encoding, const std::string &strFile)
{
    const char cBetween = '\f';
    std::string strAll;
    for (const Cue &cue : listCues)
        strAll += cue.strText + cBetween;
    std::istringstream texts(encoding.ToUtf8(strAll, strFile));
    for (Cue &cue : listCues)
        std::getline(texts, cue.strText, cBetween);
}

} // namespace

SubtitleFile::SubtitleFile(const Subtitle &subtitle, Console &console) : m_strPath(subtitle.source.strFile)
{
    const SubtitleSource &source = subtitle.source;
    const char *const pExtension = DirectExtension(source.strFile);
    if (!pExtension) {
        Extract(subtitle, console);
    } else {
        // The library treats a file that it cannot open as having no subtitles.
        CheckReadable(source.strFile);
        CheckSize(source.strFile, source.strFile);
        if (VobSubIndex::IsIndex(source.strFile))
            PreparePictures(source, console);
        else
            Prepare(source, console);
    }
    const std::string strTarget = m_strPath;
    if (!m_folder && !SurvivesLocale(strTarget))
        Link(strTarget, pExtension ? pExtension : ".media");
    if (!m_bTrackOfPictures)
        CheckSize(m_strPath, source.strFile);
    // Qt takes a name that begins with a colon for a resource of the program, and drops a leading byte-order mark.
    if (std::filesystem::path(m_strPath).is_relative())
        m_strPath.insert(0, "./");
}

bool SubtitleFile::IsText(const std::string &strFile)
{
    return DirectExtension(strFile) && !VobSubIndex::IsIndex(strFile);
}

/** Writes a converted copy of a text file that the library would show in another way than the user expects. */
void SubtitleFile::Prepare(const SubtitleSource &source, Console &console)
{
    if (source.bRaw && source.strEncoding.empty())
        return;
    const SubtitleText text(source);
    if (!text.Guess().empty())
        console.Note(source.strFile + ": the encoding is taken for " + text.Guess());
    if (text.IsCleaned())
        console.Note(source.strFile + ": tags and drawings are left out, --raw keeps them");
    if (text.IsCleaned() || text.IsConverted())
        WritePrivate(std::string("text") + DirectExtension(source.strFile), text.Text());
}

void SubtitleFile::PreparePictures(const SubtitleSource &source, Console &console)
{
    CheckPicturesReadable(source.strFile);
    const PrivateFolder &folder = m_folder.emplace();
    const std::string strOwn = (std::filesystem::path(folder.Path()) / "track.idx").string();
    if (!source.bRaw && SeparateVobSubTrack(source.strFile, source.nTrack, strOwn)) {
        m_strPath = strOwn;
        console.Note(source.strFile + ": pictures of other tracks between those of track " +
                     std::to_string(source.nTrack) + " are left out");
    } else {
        m_folder.reset();
    }
}

void SubtitleFile::WritePrivate(const std::string &strName, const std::string &strContent)
{
    m_strPath = (std::filesystem::path(m_folder.emplace().Path()) / strName).string();
    std::ofstream stream(m_strPath, std::ios::binary);
    stream << strContent;
    stream.close();
    if (!stream)
        throw Failure(ExitCode::Output, m_strPath, std::generic_category().message(errno));
}

bool SubtitleFile::HasPictures() const
{
    return m_bTrackOfPictures || VobSubIndex::IsIndex(m_strPath);
}

/** Links to a file under an ASCII name, and to an index's .sub file under the name that the library derives from it. */
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
    if (VobSubIndex::IsIndex(m_strPath))
        LinkTo(VobSubIndex::PicturesOf(strFile), VobSubIndex::PicturesOf(m_strPath));
}

std::string SubtitleFile::ReasonAgainst(int nTrack) const
{
    return VobSubIndex::IsIndex(m_strPath) ? VobSubIndex(m_strPath).ReasonAgainst(nTrack)
                                           : "not a kind of subtitle file the library reads";
}

void SubtitleFile::Extract(const Subtitle &subtitle, Console &console)
{
    const SubtitleSource &source = subtitle.source;
    SubtitleTracks tracks(source.strFile);
    m_bTrackOfPictures = !subtitle.style.bExact && tracks.HasPictures(source.nTrack);
    if (m_bTrackOfPictures) {
        m_nOrigin = tracks.Origin();
        m_strPath = PathOf(source.strFile);
        return;
    }
    std::vector<Cue> listCues = tracks.ReadOnly(source.nTrack).Cues();
    if (!source.bRaw || !source.strEncoding.empty())
        Convert(listCues, source, console);
    WritePrivate("track.srt", SrtOf(std::move(listCues)));
}

/** Converts the texts of cues to UTF-8, which also is what they are in without --encoding, whatever the locale. */
void SubtitleFile::Convert(std::vector<Cue> &listCues, const SubtitleSource &source, Console &console)
{
    TextEncoding encoding(source.strEncoding.empty() ? "UTF-8" : source.strEncoding);
    if (IsWrittenText(source.strFile)) {
        // Before FFmpeg reads it: a byte of a character may equal one with a meaning in the format, such as '|'.
        const std::string strBytes = ContentOf(source.strFile);
        const std::string strText = encoding.ToUtf8(strBytes, source.strFile);
        if (strText != strBytes) {
            WritePrivate("text" + std::filesystem::path(source.strFile).extension().string(), strText);
            listCues = SubtitleTracks(m_strPath).ReadOnly(source.nTrack).Cues();
        }
    } else {
        ConvertEach(listCues, encoding, source.strFile);
    }
    if (!encoding.Guess().empty())
        console.Note(source.strFile + ": the encoding is taken for " + encoding.Guess());
}
