#pragma once

#include "media/ffmpegptr.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/** How the shown picture differs from the stored one: rotated by multiples of 90 degrees, mirrored, or both. */
class Orientation
{
public:
    /** Where the stored pixels are in the shown picture: offsets, in bytes, of (0, 0) and of a step in x and in y. */
    struct Walk {
        ptrdiff_t nOrigin;
        ptrdiff_t nStepX;
        ptrdiff_t nStepY;
    };

    /** @param pMatrix  the nine numbers of a display matrix; null and other angles count as not turned. */
    explicit Orientation(const int32_t *pMatrix);

    /** The orientation of a stream, or of its first frame if the stream has no display matrix. */
    static Orientation Of(const AVStream &stream, const AVFrame &first);

    /** Whether stored and shown picture are the same. */
    bool Alike() const { return !m_bTranspose && !m_bFlipX && !m_bFlipY; }

    /** Whether the matrix is other than a quarter turn or mirror, so that frames cannot be turned by it. */
    bool IsOther() const { return m_bOther; }

    /** The angle of such a matrix in words; empty if it has none. */
    std::string OtherAngle() const;

    /** The pixel aspect of the shown picture; 0 or an unknown one stays as it is. */
    AVRational ShownAspect(AVRational storedAspect) const
    {
        return m_bTranspose && storedAspect.num > 0 ? av_inv_q(storedAspect) : storedAspect;
    }

    /** Whether the rows of the stored picture are columns of the shown one. */
    bool IsTransposed() const { return m_bTranspose; }

    int ShownWidth(int nStoredWidth, int nStoredHeight) const { return m_bTranspose ? nStoredHeight : nStoredWidth; }
    int ShownHeight(int nStoredWidth, int nStoredHeight) const { return m_bTranspose ? nStoredWidth : nStoredHeight; }

    /** Replaces a frame's own display matrix by this one. */
    void SetOn(AVFrame &frame) const;

    Walk WalkShown(int nStoredWidth, int nStoredHeight, ptrdiff_t nStride, ptrdiff_t nPixel) const;

private:
    std::array<int32_t, 9> m_listMatrix{};
    bool m_bOther = false;
    bool m_bTranspose = false;
    // Along the axes of the shown picture.
    bool m_bFlipX = false;
    bool m_bFlipY = false;
};
