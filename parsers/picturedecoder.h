#pragma once

#include "parsers/colorpicture.h"
#include "parsers/packetpointer.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
}

/** Limit of the sides of the canvas on which pictures of a container are placed. */
constexpr int MaxCanvasSide = 4096;

/** The picture of a packet. Times are in milliseconds from the packet's time. */
struct DecodedPicture {
    static constexpr std::int64_t NoEnd = std::numeric_limits<std::int64_t>::max();

    ColorPicture picture;      ///< without pixels if there is none
    std::int64_t nStart = 0;   ///< start of the display
    std::int64_t nEnd = NoEnd; ///< end of the display
    std::int64_t nCost = 0;    ///< pixels that were decoded; those of the canvas for a picture with an error
};

/**
 * Decodes the packets of a picture track with FFmpeg's decoder. Packets with errors give pictures without pixels, and
 * no messages in FFmpeg's log.
 */
class PictureDecoder
{
public:
    /** Whether this FFmpeg can decode the pictures of a codec. */
    static bool Knows(AVCodecID codec);

    /**
     * @param track   parameters of a known codec; copied.
     * @param width, height  of the canvas if the track has none; 0 if unknown.
     */
    PictureDecoder(const AVCodecParameters &track, int width, int height);

    /** Whether a packet can be decoded without earlier ones. */
    bool IsStart(const std::uint8_t *packet, std::size_t size) const;

    /** Resets the decoder. */
    void Restart();

    /** @param time  of the packet, in milliseconds. */
    DecodedPicture Decode(const std::uint8_t *packet, std::size_t size, std::int64_t time);

private:
    struct FreeParameters {
        void operator()(AVCodecParameters *parameters) const { avcodec_parameters_free(&parameters); }
    };
    struct FreeContext {
        void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    };
    DecodedPicture Take(const AVSubtitle &subtitle) const;

    std::unique_ptr<AVCodecParameters, FreeParameters> m_pTrack;
    std::unique_ptr<AVCodecContext, FreeContext> m_pContext; ///< null until a packet is decoded
    PacketPointer m_pPacket;
    int m_nWidth;
    int m_nHeight;
};
