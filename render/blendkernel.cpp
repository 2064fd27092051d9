#include "render/blendkernel.h"

#include <algorithm>
#include <cstring>

namespace
{

/** x / 255, truncated, for 0 <= x < 65,535. */
inline int DivideBy255(int x)
{
    return (x + 1 + (x >> 8)) >> 8;
}

/**
 * Mixes a colour in. Intentional: the first and the last byte are each mixed with the old value of the other one, so
 * the old bytes change places under the subtitle; see BlendKernel.
 */
inline void BlendPixel(std::uint8_t *pixel, const std::uint8_t *color, int weight)
{
    const int rest = 255 - weight;
    const int first = weight * color[0] + rest * pixel[2];
    const int middle = weight * color[1] + rest * pixel[1];
    const int last = weight * color[2] + rest * pixel[0];
    pixel[0] = static_cast<std::uint8_t>(DivideBy255(first));
    pixel[1] = static_cast<std::uint8_t>(DivideBy255(middle));
    pixel[2] = static_cast<std::uint8_t>(DivideBy255(last));
}

/** Number of a block's pixels that lie in the frame. */
inline int PixelsInFrame(const BlendTarget &target, int column)
{
    return std::min(BlockPixels, target.nWidth - column);
}

/** Calls @p draw(pixel, colour) for each pixel that is drawn. */
template <typename Draw>
inline void ForInk(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors,
                   Draw draw)
{
    for (const InkBlock *block = blocks; block < blocks + count; ++block) {
        std::uint8_t *pixels = target.At(block->nRow, block->nColumn);
        const unsigned inFrame = (1U << PixelsInFrame(target, block->nColumn)) - 1;
        for (unsigned bits = block->nShown & inFrame; bits; bits &= bits - 1) {
            const int i = __builtin_ctz(bits);
            draw(pixels + std::ptrdiff_t{3} * i, (block->nText >> i & 1 ? colors.text : colors.outline).data());
        }
    }
}

void Write(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors)
{
    ForInk(target, blocks, count, colors,
           [](std::uint8_t *pixel, const std::uint8_t *color) { std::memcpy(pixel, color, 3); });
}

void Mix(const BlendTarget &target, const InkBlock *blocks, std::size_t count, const InkColors &colors, int weight)
{
    ForInk(target, blocks, count, colors,
           [weight](std::uint8_t *pixel, const std::uint8_t *color) { BlendPixel(pixel, color, weight); });
}

void MixPicture(const BlendTarget &target, const PictureBlock *blocks, std::size_t count, int untouched)
{
    for (const PictureBlock *block = blocks; block < blocks + count; ++block) {
        std::uint8_t *pixel = target.At(block->nRow, block->nColumn);
        const std::uint8_t *color = block->colors.data();
        for (int i = 0; i < PixelsInFrame(target, block->nColumn); ++i, pixel += 3, color += 3) {
            if (block->weights[i] != untouched)
                BlendPixel(pixel, color, block->weights[i]);
        }
    }
}

constexpr BlendKernel Portable = {Write, Mix, MixPicture};

} // namespace

const BlendKernel &PortableKernel()
{
    return Portable;
}
