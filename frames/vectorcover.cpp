#include "frames/coverkernel.h"

#include <algorithm>
#include <array>
#include <cstring>

// Highway includes this file once for each kind of processor, with a namespace and a vector size of its own.
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

template <bool IsWhole>
HWY_INLINE void WeighPixels(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, int opacity,
                            int quarters, std::uint16_t *textWeights, std::uint16_t *outlineWeights)
{
    const WeightTag tag;
    const ByteTag bytes;
    const auto part = hn::Set(tag, static_cast<std::uint16_t>(opacity * 257));
    const auto factor = hn::Set(tag, static_cast<std::uint16_t>(quarters));
    const auto add = [&](Weights weight, std::uint16_t *to) HWY_ATTR {
        weight = hn::MulHigh(weight, part);
        if constexpr (!IsWhole)
            weight = hn::Mul(hn::ShiftRight<2>(weight), factor);
        hn::StoreU(hn::Add(hn::LoadU(tag, to), weight), tag, to);
    };
    const std::size_t lanes = hn::Lanes(tag);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto covered = hn::PromoteTo(tag, hn::LoadU(bytes, text + i));
        const auto around = hn::PromoteTo(tag, hn::LoadU(bytes, outline + i));
        const auto product = hn::Mul(hn::Sub(hn::Set(tag, 255), covered), around);
        add(hn::Or(hn::ShiftLeft<8>(covered), covered), textWeights + i);
        add(hn::Add(product, hn::ShiftRight<7>(product)), outlineWeights + i);
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

/** Blends a block of samples, of which each has Step bytes. */
template <int Step>
HWY_INLINE void BlendBlock(std::uint8_t *bytes, const CoverBlock &block, const CoverCodes &codes)
{
    const WeightTag tag;
    const hn::RebindToSigned<WeightTag> signedTag;
    const ByteTag narrow;
    using Bytes = hn::Vec<ByteTag>;
    for (std::size_t i = 0; i < CoverSamples; i += hn::Lanes(tag)) {
        const auto text = hn::LoadU(tag, block[0].data() + i);
        const auto outline = hn::LoadU(tag, block[1].data() + i);
        const auto rest = hn::Sub(hn::Sub(hn::Set(tag, WholeWeight), text), outline);
        const auto blend = [&](Bytes old, int byte) HWY_ATTR {
            const auto below = hn::ShiftLeft<8>(hn::PromoteTo(tag, old));
            const auto colors = hn::Add(hn::MulHigh(text, hn::Set(tag, codes.text[byte])),
                                        hn::MulHigh(outline, hn::Set(tag, codes.outline[byte])));
            const auto sum = hn::Add(hn::Add(colors, hn::Set(tag, 128)), hn::MulHigh(rest, below));
            return hn::DemoteTo(narrow, hn::BitCast(signedTag, hn::ShiftRight<8>(sum)));
        };
        std::uint8_t *at = bytes + i * Step;
        Bytes first;
        Bytes second;
        Bytes third;
        Bytes fourth;
        const auto blendUsed = [&](Bytes &old, int byte) HWY_ATTR {
            if (codes.bUsed[byte])
                old = blend(old, byte);
        };
        if constexpr (Step == 1) {
            hn::StoreU(blend(hn::LoadU(narrow, at), 0), narrow, at);
        } else if constexpr (Step == 2) {
            hn::LoadInterleaved2(narrow, at, first, second);
            blendUsed(first, 0);
            blendUsed(second, 1);
            hn::StoreInterleaved2(first, second, narrow, at);
        } else if constexpr (Step == 3) {
            hn::LoadInterleaved3(narrow, at, first, second, third);
            hn::StoreInterleaved3(blend(first, 0), blend(second, 1), blend(third, 2), narrow, at);
        } else {
            hn::LoadInterleaved4(narrow, at, first, second, third, fourth);
            blendUsed(first, 0);
            blendUsed(second, 1);
            blendUsed(third, 2);
            blendUsed(fourth, 3);
            hn::StoreInterleaved4(first, second, third, fourth, narrow, at);
        }
    }
}

template <int Step>
HWY_INLINE void BlendSpans(const PlaneTarget &plane, const CoverList &list, const CoverCodes &codes)
{
    constexpr std::ptrdiff_t BlockBytes = Step * CoverSamples;
    // A decoder's frames have left the caches, and rows are too far apart for the processor's own prefetching.
    constexpr std::size_t Ahead = 12;
    constexpr int CacheLine = 64;
    const std::vector<Span> &spans = list.Spans();
    for (std::size_t n = 0; n < spans.size(); ++n) {
        if (n + Ahead < spans.size()) {
            const Span &next = spans[n + Ahead];
            for (int i = 0; i < next.nCount * Step + CacheLine; i += CacheLine)
                __builtin_prefetch(plane.Row(next.nRow) + static_cast<std::ptrdiff_t>(next.nFirst) * Step + i, 1);
        }
        const Span &span = spans[n];
        std::uint8_t *bytes = plane.Row(span.nRow) + static_cast<std::ptrdiff_t>(span.nFirst) * Step;
        std::ptrdiff_t inRow = plane.nRowBytes - static_cast<std::ptrdiff_t>(span.nFirst) * Step;
        const CoverBlock *block = list.Blocks(span);
        for (int done = 0; done < span.nCount; done += CoverSamples) {
            if (inRow >= BlockBytes) {
                BlendBlock<Step>(bytes, *block, codes);
            } else if (inRow > 0) {
                std::array<std::uint8_t, BlockBytes> copy = {};
                std::memcpy(copy.data(), bytes, inRow);
                BlendBlock<Step>(copy.data(), *block, codes);
                std::memcpy(bytes, copy.data(), inRow);
            }
            bytes += BlockBytes;
            inRow -= BlockBytes;
            ++block;
        }
    }
}

void Blend(const PlaneTarget &plane, const CoverList &list, const CoverCodes &codes)
{
    if (codes.nStep == 1)
        BlendSpans<1>(plane, list, codes);
    else if (codes.nStep == 2)
        BlendSpans<2>(plane, list, codes);
    else if (codes.nStep == 3)
        BlendSpans<3>(plane, list, codes);
    else
        BlendSpans<4>(plane, list, codes);
}

constexpr CoverKernel Vectors = {Weigh, Halve, Blend};

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
