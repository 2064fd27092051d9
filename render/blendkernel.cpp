#include "render/blendkernel.h"

#include <algorithm>
#include <cstring>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace
{

/** x / 255, truncated, for 0 <= x < 65,535. */
inline int DivideBy255(int x)
{
    return (x + 1 + (x >> 8)) >> 8;
}

/** Each outer byte is mixed with the old one of the other end, so they change places under the subtitle: this is meant. */
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

/** How many of a block's pixels lie in the frame. */
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

#ifdef __x86_64__

#define SUBTITLE_AVX2 __attribute__((target("avx2")))

// Five pixels lie in each half of a vector; the last byte of a half is the first of the pixel behind them.
constexpr std::size_t HalfBytes = BlockBytes / 2;

SUBTITLE_AVX2 inline __m256i LoadHalves(const std::uint8_t *from)
{
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + HalfBytes));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

SUBTITLE_AVX2 inline void StoreHalves(std::uint8_t *to, __m256i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm256_castsi256_si128(bytes));
    // What follows is left alone: a store that overlaps what is read next holds that up.
    const __m128i high = _mm256_extracti128_si256(bytes, 1);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to + HalfBytes), high);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to + BlockBytes - 8), _mm_srli_si128(high, HalfBytes - 8));
}

/** The same bytes in both halves. */
SUBTITLE_AVX2 inline __m256i InBothHalves(const std::uint8_t *bytes)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes)));
}

SUBTITLE_AVX2 inline __m256i FiveTimes(const std::array<std::uint8_t, 3> &color)
{
    std::array<std::uint8_t, 16> bytes = {};
    for (std::size_t i = 0; i < HalfBytes; ++i)
        bytes[i] = color[i % 3];
    return InBothHalves(bytes.data());
}

/** All bits of a pixel's bytes where its bit is set, of a word in each four bytes: the one at @p at. */
SUBTITLE_AVX2 inline __m256i SpreadBits(__m256i words, int at)
{
    // The last byte of a half looks at a bit that is never set.
    const __m256i bytes = _mm256_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, //
                                           0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1);
    const __m256i bits = _mm256_setr_epi8(1, 1, 1, 2, 2, 2, 4, 4, 4, 8, 8, 8, 16, 16, 16, -128, //
                                          32, 32, 32, 64, 64, 64, -128, -128, -128, 1, 1, 1, 2, 2, 2, -128);
    const __m256i places = _mm256_add_epi8(bytes, _mm256_set1_epi8(static_cast<char>(at)));
    return _mm256_cmpeq_epi8(_mm256_and_si256(_mm256_shuffle_epi8(words, places), bits), bits);
}

struct InkVectors {
    __m256i text;
    __m256i outline;

    SUBTITLE_AVX2 explicit InkVectors(const InkColors &colors) :
        text(FiveTimes(colors.text)), outline(FiveTimes(colors.outline))
    {
    }

    /** @param shown  receives which bytes are drawn. */
    SUBTITLE_AVX2 __m256i Colors(const InkBlock &block, __m256i &shown) const
    {
        static_assert(offsetof(InkBlock, nShown) == offsetof(InkBlock, nText) + 2);
        int words = 0;
        std::memcpy(&words, &block.nText, sizeof words);
        const __m256i bits = _mm256_set1_epi32(words);
        shown = SpreadBits(bits, 2);
        return _mm256_blendv_epi8(outline, text, SpreadBits(bits, 0));
    }
};

/** For each byte of a half's low or high words: (weight * colour + (255 - weight) * old) / 255, truncated. */
SUBTITLE_AVX2 inline __m256i MixPairs(__m256i pairs, __m256i weights)
{
    // The pairs are signed, 128 too low, and the weights of each pair's two add up to 255. A product with 0x8081, shifted
    // by 23, is the quotient by 255 for all 16-bit numbers: Granlund and Montgomery, "Division by Invariant Integers
    // using Multiplication", 1994.
    const __m256i sum = _mm256_add_epi16(_mm256_maddubs_epi16(weights, pairs), _mm256_set1_epi16(128 * 255));
    return _mm256_srli_epi16(_mm256_mulhi_epu16(sum, _mm256_set1_epi16(static_cast<short>(0x8081))), 7);
}

/** Mixes all but the last byte of each half. */
SUBTITLE_AVX2 inline __m256i MixBytes(__m256i pixels, __m256i colors, __m256i weights)
{
    const __m256i otherEnds =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15));
    const __m256i middle = _mm256_set1_epi8(-128);
    const __m256i old = _mm256_xor_si256(_mm256_shuffle_epi8(pixels, otherEnds), middle);
    const __m256i color = _mm256_xor_si256(colors, middle);
    const __m256i rest = _mm256_xor_si256(weights, _mm256_set1_epi8(-1));
    return _mm256_packus_epi16(MixPairs(_mm256_unpacklo_epi8(old, color), _mm256_unpacklo_epi8(rest, weights)),
                               MixPairs(_mm256_unpackhi_epi8(old, color), _mm256_unpackhi_epi8(rest, weights)));
}

struct WriteInk {
    InkVectors vectors;

    SUBTITLE_AVX2 __m256i Draw(__m256i pixels, const InkBlock &block) const
    {
        __m256i shown;
        const __m256i colors = vectors.Colors(block, shown);
        return _mm256_blendv_epi8(pixels, colors, shown);
    }
};

struct MixInk {
    InkVectors vectors;
    __m256i weights;

    SUBTITLE_AVX2 __m256i Draw(__m256i pixels, const InkBlock &block) const
    {
        __m256i shown;
        const __m256i colors = vectors.Colors(block, shown);
        return _mm256_blendv_epi8(pixels, MixBytes(pixels, colors, weights), shown);
    }
};

struct MixColors {
    __m256i untouched;

    SUBTITLE_AVX2 __m256i Draw(__m256i pixels, const PictureBlock &block) const
    {
        const __m256i bytes = _mm256_setr_epi8(0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 15, //
                                               5, 5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 15);
        const __m256i weights = _mm256_shuffle_epi8(InBothHalves(block.weights.data()), bytes);
        return _mm256_blendv_epi8(MixBytes(pixels, LoadHalves(block.colors.data()), weights), pixels,
                                  _mm256_cmpeq_epi8(weights, untouched));
    }
};

template <typename Block, typename Drawing>
SUBTITLE_AVX2 inline void DrawBlocks(BlendTarget target, const Block *blocks, std::size_t count, Drawing drawing)
{
    // A decoder's frames have left the caches, and rows are too far apart for the processor to see where this goes.
    constexpr std::size_t Ahead = 64;
    for (std::size_t n = 0; n < count; ++n) {
        if (n + Ahead < count)
            __builtin_prefetch(target.At(blocks[n + Ahead].nRow, blocks[n + Ahead].nColumn), 1);
        std::uint8_t *pixels = target.At(blocks[n].nRow, blocks[n].nColumn);
        if (target.nWidth - blocks[n].nColumn > BlockPixels) {
            StoreHalves(pixels, drawing.Draw(LoadHalves(pixels), blocks[n]));
        } else {
            std::array<std::uint8_t, BlockBytes + 1> copy = {};
            const std::size_t bytes = 3 * static_cast<std::size_t>(target.nWidth - blocks[n].nColumn);
            std::memcpy(copy.data(), pixels, bytes);
            StoreHalves(copy.data(), drawing.Draw(LoadHalves(copy.data()), blocks[n]));
            std::memcpy(pixels, copy.data(), bytes);
        }
    }
}

SUBTITLE_AVX2 void WriteAvx2(const BlendTarget &target, const InkBlock *blocks, std::size_t count,
                             const InkColors &colors)
{
    DrawBlocks(target, blocks, count, WriteInk{InkVectors(colors)});
}

SUBTITLE_AVX2 void MixAvx2(const BlendTarget &target, const InkBlock *blocks, std::size_t count,
                           const InkColors &colors, int weight)
{
    DrawBlocks(target, blocks, count, MixInk{InkVectors(colors), _mm256_set1_epi8(static_cast<char>(weight))});
}

SUBTITLE_AVX2 void MixPictureAvx2(const BlendTarget &target, const PictureBlock *blocks, std::size_t count,
                                  int untouched)
{
    DrawBlocks(target, blocks, count, MixColors{_mm256_set1_epi8(static_cast<char>(untouched))});
}

constexpr BlendKernel Avx2 = {WriteAvx2, MixAvx2, MixPictureAvx2};
#endif

} // namespace

const BlendKernel &PortableKernel()
{
    return Portable;
}

const BlendKernel &BestKernel()
{
#ifdef __x86_64__
    static const bool hasAvx2 = __builtin_cpu_supports("avx2");
    if (hasAvx2)
        return Avx2;
#endif
    return Portable;
}
