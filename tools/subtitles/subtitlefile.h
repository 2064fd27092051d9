#pragma once

#include "commandline/console.h"
#include "commandline/options.h"
#include "commandline/privatefolder.h"
#include "subtitles/subtitletrack.h"

#include <optional>

/**
 * A file that the library shows as a user expects. That is one of:
 *  - the subtitle file itself, or a temporary link to it if the library could not open it by its name;
 *  - a temporary copy, for text in another encoding or with markup, and for a VobSub track mixed with others;
 *  - for a text track of a container, a temporary SubRip file with the plain text of its cues;
 *  - for a picture track of a container, the container itself.
 * Conversions are noted on the console. Temporary files live as long as the object.
 */
class SubtitleFile
{
public:
    /** Throws a Failure if the source cannot be read, or has no such subtitles that show in the style's look. */
    SubtitleFile(const Subtitle &subtitle, Console &console);

    /** Whether a file is, by its extension, a text format that the library reads itself. */
    static bool IsText(const std::string &strFile);

    const std::string &Path() const { return m_strPath; }

    /** Whether the subtitles are not text. Of a VobSub pair, the library opens the .sub file for every one of them. */
    bool HasPictures() const;

    /** The time of the file, in milliseconds, that counts as time 0. */
    int64_t Origin() const { return m_nOrigin; }

    /** Why the library refuses the file. */
    std::string ReasonAgainst(int nTrack) const;

private:
    void Extract(const Subtitle &subtitle, Console &console);
    void Convert(std::vector<Cue> &listCues, const SubtitleSource &source, Console &console);
    void PreparePictures(const SubtitleSource &source, Console &console);
    void Prepare(const SubtitleSource &source, Console &console);
    void WritePrivate(const std::string &strName, const std::string &strContent);
    void Link(const std::string &strFile, const std::string &strExtension);

    std::optional<PrivateFolder> m_folder;
    std::string m_strPath;
    bool m_bTrackOfPictures = false; ///< of a container
    int64_t m_nOrigin = 0;
};
