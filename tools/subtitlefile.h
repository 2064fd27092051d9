#pragma once

#include "options.h"
#include "privatefolder.h"
#include "subtitletrack.h"

#include <optional>

/**
 * A subtitle file that the library shows as a user expects: subtitle files as they are, and for a track of a container
 * a temporary file with the plain text of its cues.
 */
class SubtitleFile
{
public:
    /** Throws a Failure when there are no subtitles to be had from the source. */
    explicit SubtitleFile(const SubtitleSource &source);

    const std::string &Path() const { return m_strPath; }

    /** Why the library refuses the file. */
    std::string ReasonAgainst(int nTrack) const;

private:
    void Extract(const SubtitleSource &source);

    std::optional<PrivateFolder> m_folder;
    std::string m_strPath;
};
