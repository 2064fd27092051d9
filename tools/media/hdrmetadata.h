#pragma once

#include "media/ffmpegptr.h"

extern "C" {
#include <libavutil/mastering_display_metadata.h>
}

#include <optional>

// Units of SEI messages: coordinates in 1/50000, luminance in 1/10000 cd/m2.
constexpr int CoordinateUnits = 50000;
constexpr int LuminanceUnits = 10000;

/** The static metadata of a high dynamic range: the display that a film was mastered on, and its light levels. */
class HdrMetadata
{
public:
    HdrMetadata() = default;

    /** The metadata of a stream, or of its first frame if the stream has none. */
    static HdrMetadata Of(const AVStream &stream, const AVFrame &first);

    bool HasDisplay() const { return m_display.has_value(); }
    bool HasLight() const { return m_light.has_value(); }

    /**
     * Makes an encoder write it into the bit stream. Parameters of the user for the encoder's library take precedence.
     * @param context    of an encoder that is not open yet.
     * @param ppOptions  the options that it is opened with.
     * @return false if the encoder cannot.
     */
    bool AddTo(const AVCodecContext &context, AVDictionary **ppOptions) const;

private:
    std::optional<AVMasteringDisplayMetadata> m_display;
    std::optional<AVContentLightMetadata> m_light;
};
