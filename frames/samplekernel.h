#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"

#include <cstddef>
#include <cstdint>

/** Of means, 16ths; see SampleKernel::Mean8. */
constexpr int MeanShift = 4;
constexpr int MeanWhole = 1 << MeanShift;

/** What mixed samples are divided by: those of one pixel, and means. */
constexpr std::int32_t PixelDivisor = 255 << FineBits;
constexpr std::int32_t MeanDivisor = PixelDivisor << MeanShift;

/** Numbers that a red and blue exchange brings into a mix, with ExchangeBits fractional bits. */
constexpr int ExchangeBits = 14;
struct MixSettings {
    std::int32_t single[2];  ///< weights of the pair in the single component
    std::int32_t pair[2][2]; ///< weights of the pair in itself
    std::int32_t nMiddle;    ///< of the pair
    std::int32_t nDivisor;   ///< one of the two above
    std::int32_t nBias;      ///< added before the division
    std::int32_t nMax;       ///< largest code value
};

/** What is mixed into samples, of each one: new = (base + rest * exchanged + keep * old + bias) / divisor. */
struct MixLists {
    const std::int32_t *pBase;
    const std::int32_t *pRest;
    const std::int32_t *pKeep;
};

/**
 * The arithmetic of burning, on flat lists. All kernels give the same bytes. Nothing in a row beside the spans is read
 * or written.
 */
struct SampleKernel {
    /** Bytes become (old & keep) | value; the spans count bytes. */
    void (*Fill)(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint8_t *values,
                 const std::uint8_t *keep);

    /** Samples of a byte become (add + keep * old) / 16, truncated; the spans count samples. */
    void (*Mean8)(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint16_t *add,
                  const std::uint8_t *keep);
    /** The same for samples of 16 bits whose value is in the bits from @p shift on. */
    void (*Mean16)(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint16_t *add,
                   const std::uint8_t *keep, int shift);

    /** Mixes into single components; @p first and @p second are the pairs of the same pixels. */
    void (*MixSingle)(std::int32_t *samples, const std::int32_t *first, const std::int32_t *second, std::size_t count,
                      const MixLists &lists, const MixSettings &settings);
    /** Mixes into pairs, which have the same lists except for what is the base of each. */
    void (*MixPair)(std::int32_t *first, std::int32_t *second, std::size_t count, const MixLists &lists,
                    const std::int32_t *secondBase, const MixSettings &settings);
};

/** For any processor. */
const SampleKernel &PortableSampleKernel();

/** For this processor: the one of its best instruction set, or the portable one where there are no vectors. */
const SampleKernel &BestSampleKernel();

/** Calls @p draw(span) for each, with memory asked ahead for later ones: a decoder's frames have left the caches. */
template <typename Draw>
inline void ForSpans(const PlaneTarget &plane, const Span *spans, std::size_t count, std::size_t sampleBytes, Draw draw)
{
    constexpr std::size_t Ahead = 8;
    constexpr std::size_t CacheLine = 64;
    for (std::size_t n = 0; n < count; ++n) {
        if (n + Ahead < count) {
            const Span &later = spans[n + Ahead];
            const std::uint8_t *bytes = plane.Row(later.nRow) + later.nFirst * sampleBytes;
            for (std::size_t at = 0; at < later.nCount * sampleBytes; at += CacheLine)
                __builtin_prefetch(bytes + at, 1);
        }
        draw(spans[n]);
    }
}
