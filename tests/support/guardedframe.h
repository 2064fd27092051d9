#pragma once

#include "api/libsubtitle.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

/**
 * A packed RGB frame of random pixels with guard bytes before it, after it and between its rows.
 */
class GuardedFrame
{
public:
    GuardedFrame(int width, int height, int padding = 0, unsigned seed = 1) :
        m_nWidth(width), m_nHeight(height), m_nStride(width * 3 + padding)
    {
        std::mt19937 random(seed);
        m_bytes.resize(2 * GuardSize + static_cast<std::size_t>(m_nStride) * height);
        for (auto &byte : m_bytes)
            byte = static_cast<std::uint8_t>(random());
    }

    /** The frame as a host passes it. */
    AVPicture Picture()
    {
        AVPicture picture = {};
        picture.data[0] = m_bytes.data() + GuardSize;
        picture.linesize[0] = m_nStride;
        return picture;
    }

    std::uint8_t *Pixel(int x, int y)
    {
        return m_bytes.data() + GuardSize + static_cast<std::ptrdiff_t>(y) * m_nStride + x * 3;
    }
    /** Reverses the order of the rows. */
    void TurnOver()
    {
        for (int top = 0, bottom = m_nHeight - 1; top < bottom; ++top, --bottom)
            std::swap_ranges(Pixel(0, top), Pixel(0, top) + m_nStride, Pixel(0, bottom));
    }
    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }

    /** All bytes, guards included, to compare frames. */
    const std::vector<std::uint8_t> &Bytes() const { return m_bytes; }

private:
    static constexpr std::size_t GuardSize = 4096;
    int m_nWidth;
    int m_nHeight;
    int m_nStride;
    std::vector<std::uint8_t> m_bytes;
};
