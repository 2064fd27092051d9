#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/** Pixels that a block holds, neighbours in one row. */
constexpr int BlockPixels = 10;
constexpr std::size_t BlockBytes = std::size_t{3} * BlockPixels;

/** Some of a row's pixels in two colours, opaque. The first one lies in the frame. */
struct InkBlock {
    int nRow;
    int nColumn;          ///< of the first pixel
    std::uint16_t nText;  ///< bit i: pixel i has the text's colour, else the outline's
    std::uint16_t nShown; ///< bit i: pixel i is drawn
};

/** Bytes in the frame's order. */
struct InkColors {
    std::array<std::uint8_t, 3> text;
    std::array<std::uint8_t, 3> outline;
};

/** Some of a row's pixels, each in a colour of its own. The first one lies in the frame. */
struct PictureBlock {
    int nRow;
    int nColumn;                                 ///< of the first pixel
    std::array<std::uint8_t, BlockBytes> colors; ///< 3 bytes a pixel, in the frame's order
    std::array<std::uint8_t, 16> weights;        ///< of the pixels; the rest marks what is not drawn
};

/**
 * A frame, 3 bytes a pixel. Nothing behind a row's end is read or written; pixels of a block that are not drawn may be
 * written with what they hold.
 */
struct BlendTarget {
    std::uint8_t *pFrame;     ///< its top row
    std::ptrdiff_t nLinesize; ///< bytes from one row to the next
    int nWidth;
    int nOffset; ///< added to a block's row to get the frame's, which must be in the frame

    std::uint8_t *At(int row, int column) const
    {
        return pFrame + (row + nOffset) * nLinesize + static_cast<std::ptrdiff_t>(column) * 3;
    }
};

/**
 * The arithmetic of blending, for blocks from the top to the bottom of a frame. A colour is mixed into a pixel as
 * new = (weight * colour + (255 - weight) * old) / 255, truncated, where an outer byte's old value is that of the
 * pixel's other end. All kernels give the same bytes.
 */
struct BlendKernel {
    /** Puts the colours in the place of what was there. */
    void (*Write)(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors);

    /** Mixes the colours in. @param weight  0 to 255 */
    void (*Mix)(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors,
                int weight);

    /** Mixes pictures in. @param untouched  the weight that marks what is not drawn */
    void (*MixPicture)(const BlendTarget &target, const PictureBlock *blocks, std::size_t count, int untouched);
};

/** For any processor. */
const BlendKernel &PortableKernel();

/** For this processor: the one of its best instruction set, or the portable one where there are no vectors. */
const BlendKernel &BestKernel();
