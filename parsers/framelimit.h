#pragma once

#include <cstdint>

/** The largest frames for which text and pictures are made, far above any video. */
constexpr int MaxFrameSide = 65536;
constexpr std::int64_t MaxFramePixels = std::int64_t{1} << 28;

inline bool IsPossibleFrame(int width, int height)
{
    return width >= 1 && height >= 1 && width <= MaxFrameSide && height <= MaxFrameSide &&
           std::int64_t{width} * height <= MaxFramePixels;
}
