#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/** Pixels of a block: neighbours in one row. */
constexpr int BlockPixels = 10;
constexpr std::size_t BlockBytes = std::size_t{3} * BlockPixels;

/**
 * Neighbouring pixels of a row, each in one of two opaque colours. The first one lies in the frame; the others may lie
 * beyond its right side.
 */
struct InkBlock {
    int nRow;
    int nColumn;          ///< of the first pixel
    std::uint16_t nText;  ///< bit i: pixel i has the text's colour, else the outline's
    std::uint16_t nShown; ///< bit i: pixel i is drawn
};

/** The bytes of a pixel in the frame's order. */
struct InkColors {
    std::array<std::uint8_t, 3> text;
    std::array<std::uint8_t, 3> outline;

    /** @param text, outline  0xAARRGGBB; the result has red first */
    static InkColors Of(std::uint32_t text, std::uint32_t outline)
    {
        const auto bytes = [](std::uint32_t color) {
            return std::array{static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
                              static_cast<std::uint8_t>(color)};
        };
        return {bytes(text), bytes(outline)};
    }
};

/** Neighbouring pixels of a row, each in a colour of its own. The first one lies in the frame, as for InkBlock. */
struct PictureBlock {
    int nRow;
    int nColumn;                                 ///< of the first pixel
    std::array<std::uint8_t, BlockBytes> colors; ///< 3 bytes a pixel, in the frame's order
    std::array<std::uint8_t, 16> weights;        ///< one a pixel; those after BlockPixels mean "not drawn"
};

/**
 * A frame, 3 bytes a pixel. Kernels neither read nor write past the end of a row. They may write the old bytes back to
 * pixels that a block does not draw.
 */
struct BlendTarget {
    std::uint8_t *pFrame;     ///< its top row
    std::ptrdiff_t nLinesize; ///< bytes from one row to the next
    int nWidth;
    int nOffset; ///< added to a block's row to get the frame row, which must lie in the frame

    std::uint8_t *At(int row, int column) const
    {
        return pFrame + (row + nOffset) * nLinesize + static_cast<std::ptrdiff_t>(column) * 3;
    }
};

/**
 * Functions that blend blocks into a frame. A colour is mixed into a pixel as
 * new = (weight * colour + (255 - weight) * old) / 255, truncated; for the first and the last byte, old is the pixel's
 * byte at the other end. All kernels give the same bytes.
 */
struct BlendKernel {
    /** Overwrites the pixels with the colours. */
    void (*Write)(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors);

    /** Mixes the colours in. @param weight  0 to 255 */
    void (*Mix)(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors,
                int weight);

    /** Mixes pictures in. @param untouched  weight that means "not drawn" */
    void (*MixPicture)(const BlendTarget &target, const PictureBlock *blocks, std::size_t count, int untouched);
};

/** The kernel for any processor. */
const BlendKernel &PortableKernel();

/** The kernel for this processor's best instruction set; PortableKernel() if it has no vector instructions. */
const BlendKernel &BestKernel();
