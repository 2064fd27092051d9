#pragma once

#include "console.h"
#include "options.h"
#include "privatefolder.h"
#include "subtitletrack.h"

#include <optional>

/**
 * A subtitle file that the library shows as a user expects: subtitle files as they are, through a temporary link where
 * the library could not open them by their name; a temporary file where text has another encoding or markup; and for a
 * track of a container a temporary file with the plain text of its cues. What is done is said on the console.
 */
class SubtitleFile
{
public:
    /** Throws a Failure when there are no subtitles to be had from the source. */
    SubtitleFile(const SubtitleSource &source, Console &console);

    /** Whether a file is one of text that the library reads by itself. */
    static bool IsText(const std::string &strFile);

    const std::string &Path() const { return m_strPath; }

    /** Whether the library opens a part of it again for every subtitle, rather than reads it once. */
    bool HasPictures() const;

    /** Why the library refuses the file. */
    std::string ReasonAgainst(int nTrack) const;

private:
    void Extract(const SubtitleSource &source, Console &console);
    static void Convert(std::vector<Cue> &listCues, const SubtitleSource &source, Console &console);
    void PreparePictures(const SubtitleSource &source, Console &console);
    void Prepare(const SubtitleSource &source, Console &console);
    void WritePrivate(const std::string &strName, const std::string &strContent);
    void Link(const std::string &strFile, const std::string &strExtension);

    std::optional<PrivateFolder> m_folder;
    std::string m_strPath;
};
