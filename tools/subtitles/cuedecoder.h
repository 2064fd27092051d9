#pragma once

#include "media/ffmpegptr.h"

/** Decodes the packets of the rarer text codecs with FFmpeg, whose decoders understand their markup. */
class CueDecoder
{
public:
    /** Whether a codec is a text codec that FFmpeg decodes, with whole cues in its packets. */
    static bool Knows(AVCodecID id);

    explicit CueDecoder(const AVStream &stream);

    /** The text of a packet, in the form of CueText(); empty if it cannot be decoded. */
    std::string Text(const AVPacket &packet);

private:
    CodecPtr m_pContext;
};
