#include "frames/coverkernel.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

// Highway includes this file once for each instruction set, with another namespace and vector size each time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frames/vectorcover.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace
{
namespace HWY_NAMESPACE
{

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const CoverKernel &Kernel()
{
    return PortableCoverKernel();
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using WeightTag = hn::CappedTag<std::uint16_t, CoverSamples>;
using ByteTag = hn::Rebind<std::uint8_t, WeightTag>;
using Weights = hn::Vec<WeightTag>;

/** The opacity as a factor for MulHigh(): a fraction of 65,536. */
std::uint16_t PartOf(int opacity)
{
    return static_cast<std::uint16_t>(opacity * 257);
}

/** Two results by reference, since SVE's vectors cannot be members of a struct. */
HWY_INLINE void WeighVectors(hn::Vec<ByteTag> text, hn::Vec<ByteTag> outline, Weights part, Weights &textWeights,
                             Weights &outlineWeights)
{
    const WeightTag tag;
    const auto covered = hn::PromoteTo(tag, text);
    const auto product = hn::Mul(hn::Sub(hn::Set(tag, 255), covered), hn::PromoteTo(tag, outline));
    textWeights = hn::MulHigh(hn::Or(hn::ShiftLeft<8>(covered), covered), part);
    outlineWeights = hn::MulHigh(hn::Add(product, hn::ShiftRight<7>(product)), part);
}

template <bool IsWhole>
HWY_INLINE void WeighPixels(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, int opacity,
                            int quarters, std::uint16_t *textWeights, std::uint16_t *outlineWeights)
{
    const WeightTag tag;
    const ByteTag bytes;
    const auto part = hn::Set(tag, PartOf(opacity));
    const auto factor = hn::Set(tag, static_cast<std::uint16_t>(quarters));
    const auto add = [&](Weights weight, std::uint16_t *to) HWY_ATTR {
        if constexpr (!IsWhole)
            weight = hn::Mul(hn::ShiftRight<2>(weight), factor);
        hn::StoreU(hn::Add(hn::LoadU(tag, to), weight), tag, to);
    };
    const std::size_t lanes = hn::Lanes(tag);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        Weights ofText = hn::Zero(tag);
        Weights ofOutline = ofText;
        WeighVectors(hn::LoadU(bytes, text + i), hn::LoadU(bytes, outline + i), part, ofText, ofOutline);
        add(ofText, textWeights + i);
        add(ofOutline, outlineWeights + i);
    }
    PortableCoverKernel().Weigh(text + i, outline + i, count - i, opacity, quarters, textWeights + i,
                                outlineWeights + i);
}

void Weigh(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, int opacity, int quarters,
           std::uint16_t *textWeights, std::uint16_t *outlineWeights)
{
    if (quarters == 4)
        WeighPixels<true>(text, outline, count, opacity, quarters, textWeights, outlineWeights);
    else
        WeighPixels<false>(text, outline, count, opacity, quarters, textWeights, outlineWeights);
}

void Halve(const std::uint16_t *from, std::size_t count, const std::array<int, 4> &weights, std::uint16_t *to)
{
    const WeightTag tag;
    const std::size_t lanes = hn::Lanes(tag);
    std::size_t i = 0;
    const auto part = [&](Weights weight, int n) HWY_ATTR {
        return hn::Mul(hn::ShiftRight<2>(weight), hn::Set(tag, static_cast<std::uint16_t>(weights[n])));
    };
    for (; i + lanes <= count; i += lanes) {
        Weights first;
        Weights second;
        Weights third;
        Weights fourth;
        hn::LoadInterleaved2(tag, from + 2 * i, first, second);
        hn::LoadInterleaved2(tag, from + 2 * i + 2, third, fourth);
        hn::StoreU(hn::Add(hn::Add(part(first, 0), part(second, 1)), hn::Add(part(third, 2), part(fourth, 3))), tag,
                   to + i);
    }
    PortableCoverKernel().Halve(from + 2 * i, count - i, weights, to + i);
}

/**
 * Blends a block of samples of Step bytes each.
 * @param getWeights  called with the number of a sample; sets the vectors of the weights from there on
 */
template <int Step, typename GetWeights>
HWY_INLINE void BlendBlock(std::uint8_t *bytes, const CoverCodes &codes, GetWeights getWeights)
{
    const WeightTag tag;
    const hn::RebindToSigned<WeightTag> signedTag;
    const ByteTag narrow;
    using Bytes = hn::Vec<ByteTag>;
    for (std::size_t i = 0; i < CoverSamples; i += hn::Lanes(tag)) {
        Weights text = hn::Zero(tag);
        Weights outline = text;
        getWeights(i, text, outline);
        const auto rest = hn::Sub(hn::Sub(hn::Set(tag, WholeWeight), text), outline);
        const auto blend = [&](Bytes &old, int byte) HWY_ATTR {
            if (!codes.bUsed[byte])
                return;
            const auto below = hn::ShiftLeft<8>(hn::PromoteTo(tag, old));
            const auto colors = hn::Add(hn::MulHigh(text, hn::Set(tag, codes.text[byte])),
                                        hn::MulHigh(outline, hn::Set(tag, codes.outline[byte])));
            const auto sum = hn::Add(hn::Add(colors, hn::Set(tag, 128)), hn::MulHigh(rest, below));
            old = hn::DemoteTo(narrow, hn::BitCast(signedTag, hn::ShiftRight<8>(sum)));
        };
        std::uint8_t *at = bytes + i * Step;
        Bytes first = hn::Zero(narrow);
        Bytes second = first;
        Bytes third = first;
        Bytes fourth = first;
        if constexpr (Step == 1)
            first = hn::LoadU(narrow, at);
        else if constexpr (Step == 2)
            hn::LoadInterleaved2(narrow, at, first, second);
        else if constexpr (Step == 3)
            hn::LoadInterleaved3(narrow, at, first, second, third);
        else
            hn::LoadInterleaved4(narrow, at, first, second, third, fourth);
        blend(first, 0);
        if constexpr (Step > 1)
            blend(second, 1);
        if constexpr (Step > 2)
            blend(third, 2);
        if constexpr (Step > 3)
            blend(fourth, 3);
        if constexpr (Step == 1)
            hn::StoreU(first, narrow, at);
        else if constexpr (Step == 2)
            hn::StoreInterleaved2(first, second, narrow, at);
        else if constexpr (Step == 3)
            hn::StoreInterleaved3(first, second, third, narrow, at);
        else
            hn::StoreInterleaved4(first, second, third, fourth, narrow, at);
    }
}

template <int Step>
HWY_INLINE void Prefetch(const PlaneTarget &plane, const std::vector<Span> &spans, std::size_t n)
{
    // Decoded frames are no longer in the caches, and rows are too far apart for the hardware prefetcher. Into the second
    // cache, as the first has only a few lines under way at a time: on an AMD EPYC, that takes a quarter of the time off.
    constexpr std::size_t Ahead = 12;
    constexpr int CacheLine = 64;
    if (n + Ahead >= spans.size())
        return;
    const Span &next = spans[n + Ahead];
    for (int i = 0; i < next.nCount * Step + CacheLine; i += CacheLine)
        __builtin_prefetch(plane.Row(next.nRow) + static_cast<std::ptrdiff_t>(next.nFirst) * Step + i, 1, 2);
}

/**
 * Blends a block, or the part of it that is in the row.
 * @param inRow  bytes from the block's first to the end of the row
 */
template <int Step, typename GetWeights>
HWY_INLINE void BlendInRow(std::uint8_t *bytes, std::ptrdiff_t inRow, const CoverCodes &codes, GetWeights getWeights)
{
    constexpr std::ptrdiff_t BlockBytes = Step * CoverSamples;
    if (inRow >= BlockBytes) {
        BlendBlock<Step>(bytes, codes, getWeights);
    } else if (inRow > 0) {
        std::array<std::uint8_t, BlockBytes> copy = {};
        std::memcpy(copy.data(), bytes, inRow);
        BlendBlock<Step>(copy.data(), codes, getWeights);
        std::memcpy(bytes, copy.data(), inRow);
    }
}

/** Calls @p blendAt(bytes, inRow, span, done) for the blocks of all spans, after @c done samples of the span. */
template <int Step, typename BlendAt>
HWY_INLINE void ForBlocks(const PlaneTarget &plane, const std::vector<Span> &spans, BlendAt blendAt)
{
    for (std::size_t n = 0; n < spans.size(); ++n) {
        Prefetch<Step>(plane, spans, n);
        const Span &span = spans[n];
        std::ptrdiff_t at = static_cast<std::ptrdiff_t>(span.nFirst) * Step;
        std::uint8_t *row = plane.Row(span.nRow);
        for (int done = 0; done < span.nCount; done += CoverSamples) {
            blendAt(row + at, plane.nRowBytes - at, span, done);
            at += Step * CoverSamples;
        }
    }
}

template <int Step>
HWY_INLINE void BlendSpans(const PlaneTarget &plane, const CoverList &list, const CoverCodes &codes)
{
    const WeightTag tag;
    ForBlocks<Step>(
        plane, list.Spans(), [&](std::uint8_t *bytes, std::ptrdiff_t inRow, const Span &span, int done) HWY_ATTR {
            const CoverBlock &block = list.Blocks(span)[done / CoverSamples];
            BlendInRow<Step>(bytes, inRow, codes, [&](std::size_t i, Weights &text, Weights &outline) HWY_ATTR {
                text = hn::LoadU(tag, block[0].data() + i);
                outline = hn::LoadU(tag, block[1].data() + i);
            });
        });
}

template <int Step>
HWY_INLINE void BlendPixelSpans(const PlaneTarget &plane, const CoveredPixels &pixels, const CoverCodes &codes)
{
    const ByteTag bytesTag;
    const auto part = hn::Set(WeightTag(), PartOf(pixels.nOpacity));
    ForBlocks<Step>(
        plane, pixels.listSpans, [&](std::uint8_t *bytes, std::ptrdiff_t inRow, const Span &span, int done) HWY_ATTR {
            const std::uint8_t *text = pixels.pText + span.nAt + done;
            const std::uint8_t *outline = pixels.pOutline + span.nAt + done;
            std::array<std::array<std::uint8_t, CoverSamples>, 2> copies;
            const int count = span.nCount - done;
            if (count < static_cast<int>(CoverSamples)) {
                copies = {};
                text = std::copy_n(text, count, copies[0].begin()) - count;
                outline = std::copy_n(outline, count, copies[1].begin()) - count;
            }
            const auto getWeights = [&](std::size_t i, Weights &ofText, Weights &ofOutline) HWY_ATTR {
                WeighVectors(hn::LoadU(bytesTag, text + i), hn::LoadU(bytesTag, outline + i), part, ofText, ofOutline);
            };
            BlendInRow<Step>(bytes, inRow, codes, getWeights);
        });
}

/** Calls @p call with the step as a compile-time constant. */
template <typename Call>
HWY_INLINE void WithStep(int step, Call call)
{
    if (step == 1)
        call(std::integral_constant<int, 1>());
    else if (step == 2)
        call(std::integral_constant<int, 2>());
    else if (step == 3)
        call(std::integral_constant<int, 3>());
    else
        call(std::integral_constant<int, 4>());
}

// The codes are copied: stores into the frame cannot change a copy, so that the compiler keeps it in registers.
void Blend(const PlaneTarget &plane, const CoverList &list, const CoverCodes &codes)
{
    WithStep(codes.nStep,
             [&, kept = codes](auto step) HWY_ATTR { BlendSpans<decltype(step)::value>(plane, list, kept); });
}

void BlendPixels(const PlaneTarget &plane, const CoveredPixels &pixels, const CoverCodes &codes)
{
    WithStep(codes.nStep,
             [&, kept = codes](auto step) HWY_ATTR { BlendPixelSpans<decltype(step)::value>(plane, pixels, kept); });
}

constexpr CoverKernel Vectors = {Weigh, Halve, Blend, BlendPixels};

const CoverKernel &Kernel()
{
    return Vectors;
}

#endif

} // namespace HWY_NAMESPACE
} // namespace
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace
{
HWY_EXPORT(Kernel);
}

const CoverKernel &BestCoverKernel()
{
    return HWY_DYNAMIC_DISPATCH(Kernel)();
}

#endif
