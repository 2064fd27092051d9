#pragma once

#include "subtitles/subtitletrack.h"

/** The subtitle streams of a file. */
class SubtitleTracks
{
public:
    /** Throws a Failure when the file cannot be read. */
    explicit SubtitleTracks(const std::string &strFile);

    /** In the order counted by --track. */
    const std::vector<SubtitleTrack> &List() const { return m_listTracks; }

    /** Whether there is such a track, with pictures that the library's natural look shows. */
    bool HasPictures(int nTrack) const;

    /** The time stamp, in milliseconds, that counts as time 0 of the file. */
    int64_t Origin() const;

    /** Reads the cues of all tracks in one pass. */
    void Read();

    /** Reads the cues of one track alone; throws a Failure if there is no such track or it has no text. */
    const SubtitleTrack &ReadOnly(int nTrack);

private:
    void AddNewStreams();
    std::string RemedyFor(const SubtitleTrack &track) const;

    std::string m_strFile;
    DemuxerPtr m_pFormat;
    unsigned m_nKnownStreams = 0;
    std::vector<SubtitleTrack> m_listTracks;
};
