#pragma once

#include <cstdint>

/** The largest frame for which text and pictures are drawn, in pixels: far larger than any video. */
constexpr int MaxFrameSide = 65536;
constexpr std::int64_t MaxFramePixels = std::int64_t{1} << 28;

inline bool IsPossibleFrame(int width, int height)
{
    return width >= 1 && height >= 1 && width <= MaxFrameSide && height <= MaxFrameSide &&
           std::int64_t{width} * height <= MaxFramePixels;
}
