#include "frames/blendlists.h"

#include <algorithm>
#include <array>
#include <cstring>

// Highway includes this file once for each kind of processor, with a namespace and a vector size of its own.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frames/vectorblend.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace
{
namespace HWY_NAMESPACE
{

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const BlendBytesKernel &Kernel()
{
    return PortableBlendBytes();
}

#else

namespace hn = hwy::HWY_NAMESPACE;

/** Blends BlendBytes bytes. */
HWY_INLINE void BlendBlock(std::uint8_t *bytes, const std::uint16_t *bases, const std::uint8_t *rests)
{
    const hn::CappedTag<std::uint16_t, BlendBytes> wide;
    const hn::RebindToSigned<decltype(wide)> signedWide;
    const hn::Rebind<std::uint8_t, decltype(wide)> narrow;
    const auto one = hn::Set(wide, 1);
    for (std::size_t i = 0; i < BlendBytes; i += hn::Lanes(wide)) {
        const auto old = hn::PromoteTo(wide, hn::LoadU(narrow, bytes + i));
        const auto rest = hn::PromoteTo(wide, hn::LoadU(narrow, rests + i));
        const auto sum = hn::Add(hn::LoadU(wide, bases + i), hn::Mul(rest, old));
        // Divided by 255; exact for all sums below 65,535.
        const auto quotient = hn::ShiftRight<8>(hn::Add(hn::Add(sum, one), hn::ShiftRight<8>(sum)));
        hn::StoreU(hn::DemoteTo(narrow, hn::BitCast(signedWide, quotient)), narrow, bytes + i);
    }
}

void Blend(const PlaneTarget &plane, const ByteBlend &blend)
{
    // A decoder's frames have left the caches, and rows are too far apart for the processor's own prefetching.
    constexpr std::size_t Ahead = 12;
    constexpr int CacheLine = 64;
    const std::size_t count = blend.listSpans.size();
    for (std::size_t n = 0; n < count; ++n) {
        if (n + Ahead < count) {
            const Span &next = blend.listSpans[n + Ahead];
            for (int i = 0; i < next.nCount + CacheLine; i += CacheLine)
                __builtin_prefetch(plane.Row(next.nRow) + next.nFirst + i, 1);
        }
        const Span &span = blend.listSpans[n];
        std::uint8_t *bytes = plane.Row(span.nRow) + span.nFirst;
        std::ptrdiff_t inRow = plane.nRowBytes - span.nFirst;
        const std::uint16_t *bases = blend.listBases.data() + span.nAt;
        const std::uint8_t *rests = blend.listRests.data() + span.nAt;
        for (int done = 0; done < span.nCount; done += BlendBytes) {
            if (inRow >= static_cast<std::ptrdiff_t>(BlendBytes)) {
                BlendBlock(bytes, bases, rests);
            } else {
                std::array<std::uint8_t, BlendBytes> copy = {};
                std::memcpy(copy.data(), bytes, inRow);
                BlendBlock(copy.data(), bases, rests);
                std::memcpy(bytes, copy.data(), inRow);
            }
            bytes += BlendBytes;
            bases += BlendBytes;
            rests += BlendBytes;
            inRow -= BlendBytes;
        }
    }
}

// As many as NaturalMap::GroupPixels, so that runs end with a vector.
using FloatTag = hn::CappedTag<float, 8>;
using BaseTag = hn::Rebind<std::uint16_t, FloatTag>;
using RestTag = hn::Rebind<std::uint8_t, FloatTag>;

template <int Step>
HWY_INLINE void PutVector(const float *text, const float *outline, const ByteCodes &codes, std::uint16_t *bases,
                          std::uint8_t *rests)
{
    const FloatTag tag;
    const hn::RebindToSigned<FloatTag> whole32;
    const hn::RebindToSigned<BaseTag> whole16;
    const BaseTag baseTag;
    const RestTag restTag;
    const auto ofText = hn::LoadU(tag, text);
    const auto ofOutline = hn::LoadU(tag, outline);
    const auto whole = hn::Mul(hn::Set(tag, 255.0F), hn::Sub(hn::Sub(hn::Set(tag, 1.0F), ofText), ofOutline));
    const auto rounded = hn::ConvertTo(whole32, hn::Add(whole, hn::Set(tag, 0.5F)));
    const auto middle = hn::Set(tag, 127.5F);
    const auto correction = hn::Add(hn::Mul(hn::Sub(whole, hn::ConvertTo(tag, rounded)), middle), middle);
    const auto rest = hn::DemoteTo(restTag, hn::DemoteTo(whole16, rounded));
    const auto baseOf = [&](int byte) HWY_ATTR {
        const auto code = hn::Add(hn::Mul(ofText, hn::Set(tag, codes.text[byte])),
                                  hn::Mul(ofOutline, hn::Set(tag, codes.outline[byte])));
        const auto base = hn::Add(hn::Mul(hn::Set(tag, 255.0F), code), correction);
        return codes.bUsed[byte] ? hn::DemoteTo(baseTag, hn::ConvertTo(whole32, base)) : hn::Set(baseTag, 127);
    };
    const auto restOf = [&](int byte) HWY_ATTR { return codes.bUsed[byte] ? rest : hn::Set(restTag, 255); };
    if constexpr (Step == 1) {
        hn::StoreU(baseOf(0), baseTag, bases);
        hn::StoreU(rest, restTag, rests);
    } else if constexpr (Step == 2) {
        hn::StoreInterleaved2(baseOf(0), baseOf(1), baseTag, bases);
        hn::StoreInterleaved2(restOf(0), restOf(1), restTag, rests);
    } else if constexpr (Step == 3) {
        hn::StoreInterleaved3(baseOf(0), baseOf(1), baseOf(2), baseTag, bases);
        hn::StoreInterleaved3(restOf(0), restOf(1), restOf(2), restTag, rests);
    } else {
        hn::StoreInterleaved4(baseOf(0), baseOf(1), baseOf(2), baseOf(3), baseTag, bases);
        hn::StoreInterleaved4(restOf(0), restOf(1), restOf(2), restOf(3), restTag, rests);
    }
}

template <int Step>
HWY_INLINE void PutPixels(const float *text, const float *outline, std::size_t count, const ByteCodes &codes,
                          std::uint16_t *bases, std::uint8_t *rests)
{
    const std::size_t lanes = hn::Lanes(FloatTag());
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        PutVector<Step>(text + i, outline + i, codes, bases + i * Step, rests + i * Step);
    PortableBlendBytes().Put(text + i, outline + i, count - i, codes, bases + i * Step, rests + i * Step);
}

void Put(const float *text, const float *outline, std::size_t count, const ByteCodes &codes, std::uint16_t *bases,
         std::uint8_t *rests)
{
    if (codes.nStep == 1)
        PutPixels<1>(text, outline, count, codes, bases, rests);
    else if (codes.nStep == 2)
        PutPixels<2>(text, outline, count, codes, bases, rests);
    else if (codes.nStep == 3)
        PutPixels<3>(text, outline, count, codes, bases, rests);
    else
        PutPixels<4>(text, outline, count, codes, bases, rests);
}

template <bool IsAdded>
void Share(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, float weight, float *textShares,
           float *outlineShares)
{
    const FloatTag tag;
    const hn::RebindToSigned<FloatTag> whole;
    const RestTag byteTag;
    const auto ofText = hn::Set(tag, weight / 255);
    const auto ofOutline = hn::Set(tag, weight / (255 * 255));
    const auto all = hn::Set(tag, 255.0F);
    const auto load = [&](const std::uint8_t *bytes)
                          HWY_ATTR { return hn::ConvertTo(tag, hn::PromoteTo(whole, hn::LoadU(byteTag, bytes))); };
    std::size_t i = 0;
    for (; i + hn::Lanes(tag) <= count; i += hn::Lanes(tag)) {
        const auto covered = load(text + i);
        auto shareOfText = hn::Mul(covered, ofText);
        auto shareOfOutline = hn::Mul(hn::Mul(hn::Sub(all, covered), load(outline + i)), ofOutline);
        if constexpr (IsAdded) {
            shareOfText = hn::Add(shareOfText, hn::LoadU(tag, textShares + i));
            shareOfOutline = hn::Add(shareOfOutline, hn::LoadU(tag, outlineShares + i));
        }
        hn::StoreU(shareOfText, tag, textShares + i);
        hn::StoreU(shareOfOutline, tag, outlineShares + i);
    }
    const BlendBytesKernel &portable = PortableBlendBytes();
    (IsAdded ? portable.AddShare : portable.Share)(text + i, outline + i, count - i, weight, textShares + i,
                                                   outlineShares + i);
}

void Halve(const float *from, std::size_t count, const std::array<float, 4> &weights, float *to)
{
    const FloatTag tag;
    std::size_t i = 0;
    for (; i + hn::Lanes(tag) <= count; i += hn::Lanes(tag)) {
        hn::Vec<FloatTag> first;
        hn::Vec<FloatTag> second;
        hn::Vec<FloatTag> third;
        hn::Vec<FloatTag> fourth;
        hn::LoadInterleaved2(tag, from + 2 * i, first, second);
        hn::LoadInterleaved2(tag, from + 2 * i + 2, third, fourth);
        const auto left = hn::Add(hn::Mul(first, hn::Set(tag, weights[0])), hn::Mul(second, hn::Set(tag, weights[1])));
        const auto right = hn::Add(hn::Mul(third, hn::Set(tag, weights[2])), hn::Mul(fourth, hn::Set(tag, weights[3])));
        hn::StoreU(hn::Add(left, right), tag, to + i);
    }
    PortableBlendBytes().Halve(from + 2 * i, count - i, weights, to + i);
}

constexpr BlendBytesKernel Vectors = {Blend, Put, Share<false>, Share<true>, Halve};

const BlendBytesKernel &Kernel()
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

const BlendBytesKernel &BestBlendBytes()
{
    return HWY_DYNAMIC_DISPATCH(Kernel)();
}

#endif
