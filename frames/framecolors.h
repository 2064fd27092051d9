#pragma once

#include "frames/hdrcolor.h"
#include "frames/pixelformat.h"

#include <array>
#include <cstdint>

/** Fractional bits of the code values that are mixed. */
constexpr int FineBits = 6;

/** A colour in a frame's code values, in the order of the format's components; the fourth is opaque alpha. */
struct FrameColor {
    std::array<std::int32_t, 4> codes; ///< rounded to nearest
    std::array<std::int32_t, 4> fine;  ///< with FineBits fractional bits; rounds to the code

    void Round()
    {
        for (std::size_t i = 0; i < codes.size(); ++i)
            fine[i] = codes[i] * (1 << FineBits);
    }
};

/** The colours of text. */
struct InkFrameColors {
    FrameColor text, outline;
};

/**
 * Swapping red and blue of a pixel, in terms of the frame's components: a single one (Y or green) and a pair (Cb and
 * Cr, or red and blue). With (p, q) the pair minus its middle, `single` . (p, q) is added to the single component, and
 * the pair becomes `matrix` times (p, q); it does not depend on the single component.
 */
struct RedBlueExchange {
    int nSingle;                  ///< number of the single component
    std::array<int, 2> pair;      ///< numbers of the pair's components
    int nMiddle;                  ///< code value of the pair that means no colour; 0 in RGB
    std::array<double, 2> single; ///< 0 if the single component does not change
    std::array<std::array<double, 2>, 2> matrix;
};

/** The members of SubtitleFrame that colours depend on, in FFmpeg's numbers. */
struct ColorTags {
    int nMatrix, nRange, nPrimaries, nTransfer;
};

/** Converts colours to code values of frames with one description. */
class FrameColors
{
public:
    /**
     * Returns false for unknown tags.
     * @param width, height  of the frame; the matrix is guessed from these if the tags leave it open
     * @param white  level of white on PQ and HLG frames, in cd/m2
     */
    bool Set(const PixelFormat &format, const ColorTags &tags, int width, int height, double white);

    FrameColor Convert(const std::array<std::uint8_t, 3> &rgb) const;
    const RedBlueExchange &Exchange() const { return m_exchange; }
    /** True if code values, and the results of mixing them, are those of RGB24. */
    bool IsAsRgb24() const
    {
        return m_format.model == ColorModel::Rgb && m_format.components[0].nDepth == 8 && !m_bHdr;
    }

private:
    bool SetMatrix(int matrix, int width, int height);
    void SetExchange();

    PixelFormat m_format = {};
    double m_dRed = 0;  ///< share of red in luma
    double m_dBlue = 0; ///< share of blue in luma
    bool m_bFull = false;
    bool m_bHdr = false;
    HdrColor m_hdr;
    RedBlueExchange m_exchange = {};
};
