#pragma once

#include <array>
#include <cstddef>

/** Where the samples of a colour or of alpha are stored. Rows of a plane consist of elements of 1, 2 or 4 bytes. */
struct Component {
    int nPlane;
    int nOffset;                 ///< elements from the row's start to the first sample
    int nStep;                   ///< elements from a sample to the next
    int nShift;                  ///< bits of the element below the sample
    int nDepth;                  ///< bits of the sample
    int nColumnsLog2, nRowsLog2; ///< 1 if two columns, or rows, share a sample

    int Max() const { return (1 << nDepth) - 1; }
};

enum class ColorModel { Rgb, Yuv, Grey };

/** A pixel format as FFmpeg describes it. */
struct PixelFormat {
    ColorModel model;
    bool bJpeg; ///< a YUVJ format, which implies full range and centred chroma
    int nElementBytes;
    int nPlanes;
    int nColors; ///< 1 or 3
    bool bAlpha;
    std::array<Component, 4> components; ///< red, green, blue or Y, Cb, Cr; then alpha

    /** Bytes of a plane's row without padding. */
    std::ptrdiff_t RowBytes(int plane, int width) const;
    /** Calls @p call(number, component) for each component in a plane. */
    template <typename Call>
    void ForComponents(int plane, Call call) const
    {
        for (int i = 0; i < 4; ++i) {
            if ((i < 3 ? i < nColors : bAlpha) && components[i].nPlane == plane)
                call(i, components[i]);
        }
    }
    bool IsSubsampled() const { return nColors == 3 && components[1].nColumnsLog2 > 0; }
};

/** Returns false for a format that is not supported. @param number  AVPixelFormat */
[[nodiscard]] bool FindPixelFormat(int number, PixelFormat &format);
