#pragma once

#include "media/ffmpegptr.h"

extern "C" {
#include <libavutil/mastering_display_metadata.h>
}

#include <cstddef>
#include <cstdint>
#include <optional>

/**
 * Reads the HDR metadata in the SEI messages of H.264 (ITU-T H.264, annex D: mastering display colour volume and content
 * light level information), which the decoder of FFmpeg 5.1 does not export.
 */
class SeiReader
{
public:
    /** @param stream  of any codec; nothing is read if it is another one than H.264. */
    explicit SeiReader(const AVCodecParameters &stream);

    /** Reads the messages before the picture in a packet. Malformed ones are ignored. */
    void Read(const uint8_t *pPacket, size_t nSize);

    /** Adds what was read last to a frame, unless it has such metadata. */
    void AddTo(AVFrame &frame) const;

private:
    void ReadMessages(const uint8_t *pUnit, size_t nSize);
    void ReadMessage(size_t nType, const uint8_t *pPayload, size_t nSize);

    bool m_bH264;
    size_t m_nLengthBytes = 0; ///< of the length before each unit; 0 if units begin with start codes
    std::optional<AVMasteringDisplayMetadata> m_display;
    std::optional<AVContentLightMetadata> m_light;
};
