#pragma once

#include "subtitles/cuedecoder.h"

#include <memory>
#include <vector>

/** A cue: its times in milliseconds of the file's own time, and its text if it has one. */
struct Cue {
    int64_t nStart = 0;
    int64_t nEnd = 0;
    // False: the cue ends at the next packet of its track, if there is one.
    bool bEndKnown = false;
    // Position in the original file: ReadOrder for ASS, else the number of cues before.
    int64_t nOrder = 0;
    std::string strText;
};

/** One subtitle stream of a file, and the cues of the packets added. The stream must outlive it. */
class SubtitleTrack
{
public:
    /** @param nOrigin  the time stamp that counts as time 0, in microseconds. */
    SubtitleTrack(const AVStream &stream, int64_t nOrigin);

    void Add(const AVPacket &packet);

    int Stream() const { return m_pStream->index; }
    AVCodecID Codec() const { return m_pStream->codecpar->codec_id; }
    std::string CodecName() const { return avcodec_get_name(Codec()); }

    /** A tag's value as stored in the file, empty without the tag. */
    std::string Tag(const char *pKey) const;

    /** Whether the cues have texts. */
    bool HasText() const;

    /** Whether it has pictures that the library's natural look shows. */
    bool HasPictures() const;

    const std::vector<Cue> &Cues() const { return m_listCues; }

private:
    std::string TextOf(const AVPacket &packet);

    const AVStream *m_pStream;
    int64_t m_nOrigin;
    std::vector<Cue> m_listCues;
    std::unique_ptr<CueDecoder> m_pDecoder;
    bool m_bOpen = false;
};
