#pragma once

#include "frames/libsubtitleframe.h"

extern "C" {
#include <libavutil/common.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <vector>

/** Layout of a plane of a frame; each plane has its own memory. */
struct PlaneMemory {
    bool bBottomUp = false;
    int nBefore = 512; ///< guard bytes
    int nPadding = 5;  ///< bytes after each row except the last, so that rows are not aligned
    int nAfter = 517;  ///< guard bytes
};

/**
 * A frame of any format with random samples, and random guard bytes before, between and after the rows of each plane.
 * Single samples are read and written by FFmpeg's description of the format.
 */
class PlaneFrame
{
public:
    PlaneFrame(AVPixelFormat format, int width, int height, bool isBottomUp = false) :
        PlaneFrame(format, width, height, PlaneMemory{isBottomUp}, 1)
    {
    }
    PlaneFrame(AVPixelFormat format, int width, int height, const PlaneMemory &memory, unsigned seed) :
        m_pDescription(av_pix_fmt_desc_get(format)), m_nWidth(width), m_nHeight(height)
    {
        std::mt19937 random(seed);
        m_frame.width = width;
        m_frame.height = height;
        m_frame.format = format;
        for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
            const int stride = RowBytes(plane) + memory.nPadding;
            const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(stride) * (Rows(plane) - 1);
            m_bytes[plane].resize(memory.nBefore + last + RowBytes(plane) + memory.nAfter);
            for (auto &byte : m_bytes[plane])
                byte = static_cast<std::uint8_t>(random());
            m_starts[plane] = memory.nBefore + (memory.bBottomUp ? last : 0);
            m_frame.linesize[plane] = memory.bBottomUp ? -stride : stride;
        }
        for (int i = 0; i < m_pDescription->nb_components; ++i) {
            for (int y = 0; y < Height(i); ++y) {
                for (int x = 0; x < Width(i); ++x) {
                    if (m_pDescription->comp[i].depth > 8 && !IsPacked32())
                        Put16(m_bytes[m_pDescription->comp[i].plane].data() + Place(i, x, y), 0);
                    Set(i, x, y, static_cast<int>(random() & Max(i)));
                }
            }
        }
    }

    /** The frame as a host passes it. Sets only size, format and planes; all else is zero. */
    SubtitleFrame Frame()
    {
        SubtitleFrame frame = m_frame;
        for (std::size_t i = 0; i < 4; ++i)
            frame.data[i] = m_bytes[i].empty() ? nullptr : m_bytes[i].data() + m_starts[i];
        return frame;
    }

    const AVPixFmtDescriptor &Description() const { return *m_pDescription; }
    bool IsChroma(int i) const { return !(m_pDescription->flags & AV_PIX_FMT_FLAG_RGB) && (i == 1 || i == 2); }
    bool IsAlpha(int i) const
    {
        return (m_pDescription->flags & AV_PIX_FMT_FLAG_ALPHA) && i == m_pDescription->nb_components - 1;
    }
    int Width(int i) const { return IsChroma(i) ? AV_CEIL_RSHIFT(m_nWidth, m_pDescription->log2_chroma_w) : m_nWidth; }
    int Height(int i) const
    {
        return IsChroma(i) ? AV_CEIL_RSHIFT(m_nHeight, m_pDescription->log2_chroma_h) : m_nHeight;
    }
    int Max(int i) const { return (1 << m_pDescription->comp[i].depth) - 1; }

    int Get(int i, int x, int y) const
    {
        const AVComponentDescriptor &component = m_pDescription->comp[i];
        const std::uint8_t *at = m_bytes[component.plane].data() + Place(i, x, y);
        return (Is8Bit(component) ? *at : Get16(at)) >> component.shift & Max(i);
    }
    void Set(int i, int x, int y, int value)
    {
        const AVComponentDescriptor &component = m_pDescription->comp[i];
        std::uint8_t *at = m_bytes[component.plane].data() + Place(i, x, y);
        const int mask = Max(i) << component.shift;
        if (Is8Bit(component))
            *at = static_cast<std::uint8_t>((*at & ~mask) | value << component.shift);
        else
            Put16(at, (Get16(at) & ~mask) | value << component.shift);
    }

    /** Bytes of a row without the padding. */
    int RowBytes(int plane) const
    {
        int bytes = 0;
        for (int i = 0; i < m_pDescription->nb_components; ++i) {
            if (m_pDescription->comp[i].plane == plane)
                bytes = std::max(bytes, Width(i) * m_pDescription->comp[i].step);
        }
        return bytes;
    }

    /** All bytes, guards included. */
    const std::array<std::vector<std::uint8_t>, 4> &Bytes() const { return m_bytes; }

private:
    static bool Is8Bit(const AVComponentDescriptor &component) { return component.depth + component.shift <= 8; }
    bool IsPacked32() const { return m_pDescription->comp[0].step == 4 && m_pDescription->comp[0].depth == 10; }
    static int Get16(const std::uint8_t *at) { return at[0] | at[1] << 8; }
    static void Put16(std::uint8_t *at, int value)
    {
        at[0] = static_cast<std::uint8_t>(value);
        at[1] = static_cast<std::uint8_t>(value >> 8);
    }
    int Rows(int plane) const
    {
        int rows = 0;
        for (int i = 0; i < m_pDescription->nb_components; ++i) {
            if (m_pDescription->comp[i].plane == plane)
                rows = std::max(rows, Height(i));
        }
        return rows;
    }
    std::ptrdiff_t Place(int i, int x, int y) const
    {
        const AVComponentDescriptor &component = m_pDescription->comp[i];
        return m_starts[component.plane] + static_cast<std::ptrdiff_t>(y) * m_frame.linesize[component.plane] +
               static_cast<std::ptrdiff_t>(x) * component.step + component.offset;
    }

    const AVPixFmtDescriptor *m_pDescription;
    int m_nWidth;
    int m_nHeight;
    SubtitleFrame m_frame = {};
    std::array<std::vector<std::uint8_t>, 4> m_bytes;
    std::array<std::ptrdiff_t, 4> m_starts = {};
};
