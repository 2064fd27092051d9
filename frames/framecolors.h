#pragma once

#include "frames/hdrcolor.h"
#include "frames/pixelformat.h"

#include <array>
#include <cstdint>

/** Bits below a code value in what is mixed. */
constexpr int FineBits = 6;

/** A colour in a frame's code values, in the order of the format's components; the fourth is opaque alpha. */
struct FrameColor {
    std::array<std::int32_t, 4> codes; ///< rounded to nearest
    std::array<std::int32_t, 4> fine;  ///< with FineBits more; rounded, it gives the code

    void Round()
    {
        for (std::size_t i = 0; i < codes.size(); ++i)
            fine[i] = codes[i] * (1 << FineBits);
    }
};

/** Those of text. */
struct InkFrameColors {
    FrameColor text, outline;
};

/**
 * What becomes of a pixel whose red and blue change places, in the frame's components. One of these is single (Y or
 * green) and two are a pair (Cb and Cr, or red and blue); the pair does not depend on the single one. With p and q the
 * pair less its middle, single += dSingle . (p, q) and the pair becomes dPair times (p, q).
 */
struct RedBlueExchange {
    int nSingle;                  ///< component
    std::array<int, 2> pair;      ///< components
    int nMiddle;                  ///< code value of no colour in the pair
    std::array<double, 2> single; ///< 0 where the single component stays
    std::array<std::array<double, 2>, 2> matrix;
};

/** Members of a description that colours depend on, as FFmpeg numbers them. */
struct ColorTags {
    int nMatrix, nRange, nPrimaries, nTransfer;
};

/** The code values of colours in frames of one description. */
class FrameColors
{
public:
    /**
     * False for tags that are not known.
     * @param width, height  of the frame, from which an unknown matrix is guessed.
     * @param white  level of white on PQ and HLG frames, in cd/m2.
     */
    bool Set(const PixelFormat &format, const ColorTags &tags, int width, int height, double white);

    FrameColor Convert(const std::array<std::uint8_t, 3> &rgb) const;
    const RedBlueExchange &Exchange() const { return m_exchange; }
    /** The code values are those of RGB24, and so is what comes of mixing them. */
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
