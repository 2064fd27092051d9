#pragma once

#include "cuedecoder.h"

#include <memory>
#include <vector>

/** When something shows, in milliseconds of the file's own time, and what it says where that is text. */
struct Cue {
    int64_t nStart = 0;
    int64_t nEnd = 0;
    // Else the next cue, or nothing, tells where this one ends.
    bool bEndKnown = false;
    // Place in the script that the cue comes from.
    int64_t nOrder = 0;
    std::string strText;
};

/** One subtitle stream of a file, and its cues as they are read. */
class SubtitleTrack
{
public:
    /** @param nOrigin  where the file's time begins, in microseconds. */
    SubtitleTrack(const AVStream &stream, int64_t nOrigin);

    void Add(const AVPacket &packet);

    int Stream() const { return m_pStream->index; }
    AVCodecID Codec() const { return m_pStream->codecpar->codec_id; }
    std::string CodecName() const { return avcodec_get_name(Codec()); }

    /** A tag's value as the file has it, empty without the tag. */
    std::string Tag(const char *pKey) const;

    /** Whether the cues have texts. */
    bool HasText() const;

    const std::vector<Cue> &Cues() const { return m_listCues; }

private:
    std::string TextOf(const AVPacket &packet);

    const AVStream *m_pStream;
    int64_t m_nOrigin;
    std::vector<Cue> m_listCues;
    std::unique_ptr<CueDecoder> m_pDecoder;
    bool m_bOpen = false;
};
