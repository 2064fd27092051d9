#pragma once

#include "frames/libsubtitleframe.h"

#include <utility>

/** How the picture is stored in the frame: SUBTITLE_ORIENTATION_ flags. */
class Orientation
{
public:
    /** @param bits  0 to 7 @param width, height  of the picture as it is shown */
    Orientation(int bits, int width, int height) : m_nBits(bits), m_nWidth(width), m_nHeight(height) {}

    bool IsUpright() const { return m_nBits == SUBTITLE_ORIENTATION_UPRIGHT; }

    /** Converts a position in the picture as shown to one in the frame as stored. */
    void ToFrame(int &row, int &column) const
    {
        if (m_nBits & SUBTITLE_ORIENTATION_MIRRORED)
            column = m_nWidth - 1 - column;
        if (m_nBits & SUBTITLE_ORIENTATION_UPSIDE_DOWN)
            row = m_nHeight - 1 - row;
        if (m_nBits & SUBTITLE_ORIENTATION_TRANSPOSED)
            std::swap(row, column);
    }

private:
    int m_nBits, m_nWidth, m_nHeight;
};
