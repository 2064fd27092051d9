#pragma once

#include "ffmpegptr.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** How the stored picture lies against the shown one: turned by quarters, mirrored, or both. */
class Orientation
{
public:
    /** Where the pixels of the stored picture are in memory that holds the shown one. */
    struct Walk {
        ptrdiff_t nOrigin;
        ptrdiff_t nStepX;
        ptrdiff_t nStepY;
    };

    /** @param pMatrix  the nine numbers of a display matrix; null, and angles other than quarters, count as none. */
    explicit Orientation(const int32_t *pMatrix);

    /** Of a stream; of its first frame where the stream does not say. */
    static Orientation Of(const AVStream &stream, const AVFrame &first);

    bool Alike() const { return !m_bTranspose && !m_bFlipX && !m_bFlipY; }
    int ShownWidth(int nStoredWidth, int nStoredHeight) const { return m_bTranspose ? nStoredHeight : nStoredWidth; }
    int ShownHeight(int nStoredWidth, int nStoredHeight) const { return m_bTranspose ? nStoredWidth : nStoredHeight; }

    /** Replaces what a frame says about it by itself. */
    void SetOn(AVFrame &frame) const;

    Walk WalkShown(int nStoredWidth, int nStoredHeight, ptrdiff_t nStride, ptrdiff_t nPixel) const;

private:
    std::array<int32_t, 9> m_listMatrix{};
    bool m_bTranspose = false;
    // Both as the viewer sees the axes.
    bool m_bFlipX = false;
    bool m_bFlipY = false;
};
