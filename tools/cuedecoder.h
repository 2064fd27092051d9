#pragma once

#include "ffmpegptr.h"

/** Makes text of the packets of the rarer text codecs, whose markup FFmpeg's decoders know. */
class CueDecoder
{
public:
    static bool Knows(AVCodecID id);

    explicit CueDecoder(const AVStream &stream);

    /** What a packet shows, as CueText() gives it; empty where it does not decode. */
    std::string Text(const AVPacket &packet);

private:
    CodecPtr m_pContext;
};
