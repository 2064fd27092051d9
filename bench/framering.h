#pragma once

#include <cstddef>
#include <cstdint>

/**
 * Frames of one size, packed RGB, handed out in turn: when one comes round again, the part of it that carries subtitles
 * has left the caches. Only that part, a band low in the frame, is backed by memory before it is asked for.
 */
class FrameRing
{
public:
    /** The one ring for frames of that size; it lives as long as the process. */
    static FrameRing &Of(int width, int height);

    std::uint8_t *Next()
    {
        m_nNext = m_nNext + 1 < m_nFrames ? m_nNext + 1 : 0;
        return m_pFrames + m_nNext * m_nFrameBytes;
    }

    std::size_t Frames() const { return m_nFrames; }
    std::size_t FrameBytes() const { return m_nFrameBytes; }
    /** What the ring's memory is filled with. */
    static constexpr std::uint8_t Background = 90;

private:
    FrameRing(int width, int height);

    std::size_t m_nFrameBytes;
    std::size_t m_nFrames;
    std::size_t m_nNext = 0;
    std::uint8_t *m_pFrames;
};
