#pragma once

#include "options.h"
#include "privatefolder.h"
#include "subtitletrack.h"

#include <optional>

/**
 * A subtitle file that the library shows as a user expects: subtitle files as they are, through a temporary link where
 * the library could not open them by their name, and for a track of a container a temporary file with the plain text of
 * its cues.
 */
class SubtitleFile
{
public:
    /** Throws a Failure when there are no subtitles to be had from the source. */
    explicit SubtitleFile(const SubtitleSource &source);

    const std::string &Path() const { return m_strPath; }

    /** Whether the library opens a part of it again for every subtitle, rather than reads it once. */
    bool HasPictures() const;

    /** Why the library refuses the file. */
    std::string ReasonAgainst(int nTrack) const;

private:
    void Extract(const SubtitleSource &source);
    void Link(const std::string &strFile, const std::string &strExtension);

    std::optional<PrivateFolder> m_folder;
    std::string m_strPath;
};
