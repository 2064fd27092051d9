#include "frames/blendlists.h"

#include <algorithm>
#include <array>
#include <cstring>

// Highway includes this file once for each instruction set, with another namespace and vector size each time.
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
        // Division by 255, exact for all sums below 65,535.
        const auto quotient = hn::ShiftRight<8>(hn::Add(hn::Add(sum, one), hn::ShiftRight<8>(sum)));
        hn::StoreU(hn::DemoteTo(narrow, hn::BitCast(signedWide, quotient)), narrow, bytes + i);
    }
}

void Blend(const PlaneTarget &plane, const ByteBlend &blend)
{
    // Decoded frames are no longer in the caches, and rows are too far apart for the hardware prefetcher.
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

constexpr BlendBytesKernel Vectors = {Blend};

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
