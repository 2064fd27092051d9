#pragma once

#include <array>
#include <cstddef>

/** Where the samples of a colour or of the alpha are. A plane's rows are made of elements of 1, 2 or 4 bytes. */
struct Component {
    int nPlane;
    int nOffset;                 ///< elements from the row's start to the first sample
    int nStep;                   ///< elements from a sample to the next
    int nShift;                  ///< bits of the element below the sample's
    int nDepth;                  ///< bits of the sample
    int nColumnsLog2, nRowsLog2; ///< 1 where a sample belongs to two columns, or rows

    int Max() const { return (1 << nDepth) - 1; }
};

enum class ColorModel { Rgb, Yuv, Grey };

/** A pixel format as FFmpeg describes it. */
struct PixelFormat {
    ColorModel model;
    bool bJpeg; ///< full range and centred chroma go without saying
    int nElementBytes;
    int nPlanes;
    int nColors; ///< 1 or 3
    bool bAlpha;
    std::array<Component, 4> components; ///< red, green, blue or Y, Cb, Cr; then alpha

    /** Bytes of a plane's row without padding. */
    std::ptrdiff_t RowBytes(int plane, int width) const;
    /** Calls @p call(number, component) for those of a plane. */
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

/** False for a format that is not known. @param number  AVPixelFormat */
bool FindPixelFormat(int number, PixelFormat &format);
