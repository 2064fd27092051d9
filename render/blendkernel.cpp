#include "render/blendkernel.h"

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

void Blend(std::uint8_t *pixels, const std::uint8_t *colors, const std::uint8_t *weights, std::size_t count)
{
    for (std::size_t at = 0; at < 3 * count; at += 3)
        BlendPixel(pixels + at, colors + at, weights[at]);
}

void BlendEvenly(std::uint8_t *pixels, const std::uint8_t *colors, int weight, std::size_t count)
{
    for (std::size_t at = 0; at < 3 * count; at += 3)
        BlendPixel(pixels + at, colors + at, weight);
}

constexpr BlendKernel Portable = {Blend, BlendEvenly};

#ifdef __x86_64__

#define SUBTITLE_AVX2 __attribute__((target("avx2")))

// Five pixels in each half of a vector; its last byte is the first of the pixel behind them.
constexpr std::size_t HalfPixels = 5;
constexpr std::size_t HalfBytes = 3 * HalfPixels;

SUBTITLE_AVX2 inline __m256i LoadHalves(const std::uint8_t *from)
{
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + HalfBytes));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

/** Five pixels, and nothing behind them. */
SUBTITLE_AVX2 inline __m256i LoadHalf(const std::uint8_t *from)
{
    const __m128i begin = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(from));
    const __m128i end = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(from + HalfBytes - 8));
    return _mm256_castsi128_si256(_mm_unpacklo_epi64(begin, _mm_srli_epi64(end, 8)));
}

SUBTITLE_AVX2 inline void StoreHalves(std::uint8_t *to, __m256i bytes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm256_castsi256_si128(bytes));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to + HalfBytes), _mm256_extracti128_si256(bytes, 1));
}

SUBTITLE_AVX2 inline void StoreHalf(std::uint8_t *to, __m256i bytes)
{
    const __m128i half = _mm256_castsi256_si128(bytes);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), half);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to + HalfBytes - 8), _mm_srli_si128(half, HalfBytes - 8));
}

/** All in words: (weight * color + (255 - weight) * old) / 255, truncated. */
SUBTITLE_AVX2 inline __m256i MixWords(__m256i old, __m256i color, __m256i weight)
{
    const __m256i rest = _mm256_sub_epi16(_mm256_set1_epi16(255), weight);
    const __m256i sum = _mm256_add_epi16(_mm256_mullo_epi16(weight, color), _mm256_mullo_epi16(rest, old));
    const __m256i next = _mm256_add_epi16(sum, _mm256_set1_epi16(1));
    return _mm256_srli_epi16(_mm256_add_epi16(next, _mm256_srli_epi16(next, 8)), 8);
}

/** Leaves the last byte of each half alone. */
SUBTITLE_AVX2 inline __m256i Mix(__m256i pixels, __m256i colors, __m256i weights)
{
    const __m256i otherEnds =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15));
    const __m256i lastBytes =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i old = _mm256_shuffle_epi8(pixels, otherEnds);
    const __m256i low = MixWords(_mm256_unpacklo_epi8(old, zero), _mm256_unpacklo_epi8(colors, zero),
                                 _mm256_unpacklo_epi8(weights, zero));
    const __m256i high = MixWords(_mm256_unpackhi_epi8(old, zero), _mm256_unpackhi_epi8(colors, zero),
                                  _mm256_unpackhi_epi8(weights, zero));
    return _mm256_blendv_epi8(_mm256_packus_epi16(low, high), pixels, lastBytes);
}

/** @param count  HalfPixels or more. */
template <typename Weights>
SUBTITLE_AVX2 inline void BlendHalves(std::uint8_t *pixels, const std::uint8_t *colors, const Weights &weights,
                                      std::size_t count)
{
    // What is stored overlaps what is read next, so it is read before.
    const std::size_t last = 3 * count - HalfBytes;
    const __m256i lastPixels = Mix(LoadHalf(pixels + last), LoadHalf(colors + last), weights.Half(last));
    std::size_t at = 0;
    if (HalfBytes < last) {
        __m256i next = LoadHalves(pixels);
        do {
            const __m256i mixed = Mix(next, LoadHalves(colors + at), weights.Halves(at));
            const std::size_t behind = at + 2 * HalfBytes;
            if (behind + HalfBytes < last)
                next = LoadHalves(pixels + behind);
            else if (behind < last)
                next = LoadHalf(pixels + behind);
            StoreHalves(pixels + at, mixed);
            at = behind;
        } while (at + HalfBytes < last);
        if (at < last)
            StoreHalf(pixels + at, Mix(next, LoadHalf(colors + at), weights.Half(at)));
    } else if (at < last) {
        StoreHalf(pixels, Mix(LoadHalf(pixels), LoadHalf(colors), weights.Half(0)));
    }
    StoreHalf(pixels + last, lastPixels);
}

struct ManyWeights {
    const std::uint8_t *pWeights;

    SUBTITLE_AVX2 __m256i Half(std::size_t at) const { return LoadHalf(pWeights + at); }
    SUBTITLE_AVX2 __m256i Halves(std::size_t at) const { return LoadHalves(pWeights + at); }
};

struct OneWeight {
    int nWeight;

    SUBTITLE_AVX2 __m256i Half(std::size_t /*at*/) const { return _mm256_set1_epi8(static_cast<char>(nWeight)); }
    SUBTITLE_AVX2 __m256i Halves(std::size_t at) const { return Half(at); }
};

SUBTITLE_AVX2 void BlendAvx2(std::uint8_t *pixels, const std::uint8_t *colors, const std::uint8_t *weights,
                             std::size_t count)
{
    if (count < HalfPixels)
        Blend(pixels, colors, weights, count);
    else
        BlendHalves(pixels, colors, ManyWeights{weights}, count);
}

SUBTITLE_AVX2 void BlendEvenlyAvx2(std::uint8_t *pixels, const std::uint8_t *colors, int weight, std::size_t count)
{
    if (count < HalfPixels)
        BlendEvenly(pixels, colors, weight, count);
    else
        BlendHalves(pixels, colors, OneWeight{weight}, count);
}

constexpr BlendKernel Avx2 = {BlendAvx2, BlendEvenlyAvx2};
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
