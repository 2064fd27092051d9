#pragma once

#include <cstddef>
#include <cstdint>

/** The arithmetic of blending, for one row of neighbouring pixels. All give the same bytes. */
struct BlendKernel {
    /**
     * Mixes a colour into each pixel: new = (weight * colour + (255 - weight) * old) / 255, where an outer byte's old
     * value is that of the pixel's other end.
     *
     * @param pixels   3 bytes a pixel; nothing else is read or written.
     * @param colors   3 bytes a pixel.
     * @param weights  3 bytes a pixel, 0 to 255.
     */
    void (*Blend)(std::uint8_t *pixels, const std::uint8_t *colors, const std::uint8_t *weights, std::size_t count);

    /** The same with one weight for all. */
    void (*BlendEvenly)(std::uint8_t *pixels, const std::uint8_t *colors, int weight, std::size_t count);
};

/** For any processor. */
const BlendKernel &PortableKernel();

/** For this processor, the fastest that it can run. */
const BlendKernel &BestKernel();
