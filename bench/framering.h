#pragma once

#include <cstddef>
#include <cstdint>

/**
 * Frames of one size, packed RGB, used in turn. There are enough of them that the part with subtitles has left the
 * caches when a frame is used again. Only that part, a band low in the frame, has memory allocated from the start.
 */
class FrameRing
{
public:
    /** The ring for frames of that size, which all callers share. It is never destroyed. */
    static FrameRing &Of(int width, int height);

    std::uint8_t *Next()
    {
        m_nNext = m_nNext + 1 < m_nFrames ? m_nNext + 1 : 0;
        return m_pFrames + m_nNext * m_nFrameBytes;
    }

    std::size_t Frames() const { return m_nFrames; }
    std::size_t FrameBytes() const { return m_nFrameBytes; }
    /** Value of all bytes in the band at first. */
    static constexpr std::uint8_t Background = 90;

private:
    FrameRing(int width, int height);

    std::size_t m_nFrameBytes;
    std::size_t m_nFrames;
    std::size_t m_nNext = 0;
    std::uint8_t *m_pFrames;
};
