#include "frames/samplekernel.h"

#include <cstddef>
#include <cstdint>

// Highway includes this file once for each kind of processor, with a namespace and a vector size of its own.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frames/vectorsamplekernel.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace
{
namespace HWY_NAMESPACE
{

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const SampleKernel &Kernel()
{
    return PortableSampleKernel();
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// Spans are a few dozen samples long, so that longer vectors would leave more of them to the loop for the rest.
using WideTag = hn::CappedTag<std::uint16_t, 16>;
using ByteTag = hn::Rebind<std::uint8_t, WideTag>;

/** The samples of a span that fill no vector. */
template <typename Draw>
inline void DrawRest(const PlaneTarget &plane, const Span &span, std::size_t done, Draw draw)
{
    const Span rest = {span.nRow, span.nFirst + static_cast<int>(done), span.nCount - static_cast<int>(done),
                       span.nAt + done};
    if (rest.nCount > 0)
        draw(plane, &rest, 1);
}

void Fill(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint8_t *values,
          const std::uint8_t *keep)
{
    const hn::CappedTag<std::uint8_t, 32> tag;
    const std::size_t lanes = hn::Lanes(tag);
    ForSpans(plane, spans, count, 1, [&](const Span &span) HWY_ATTR {
        std::uint8_t *to = plane.Row(span.nRow) + span.nFirst;
        std::size_t i = 0;
        for (; i + lanes <= static_cast<std::size_t>(span.nCount); i += lanes) {
            const auto kept = hn::And(hn::LoadU(tag, to + i), hn::LoadU(tag, keep + span.nAt + i));
            hn::StoreU(hn::Or(kept, hn::LoadU(tag, values + span.nAt + i)), tag, to + i);
        }
        DrawRest(plane, span, i, [=](const PlaneTarget &target, const Span *rest, std::size_t one) {
            PortableSampleKernel().Fill(target, rest, one, values, keep);
        });
    });
}

void Mean8(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint16_t *add,
           const std::uint8_t *keep)
{
    const WideTag wide;
    const ByteTag bytes;
    const hn::RebindToSigned<WideTag> from;
    const std::size_t lanes = hn::Lanes(wide);
    ForSpans(plane, spans, count, 1, [&](const Span &span) HWY_ATTR {
        std::uint8_t *to = plane.Row(span.nRow) + span.nFirst;
        std::size_t i = 0;
        for (; i + lanes <= static_cast<std::size_t>(span.nCount); i += lanes) {
            const auto old = hn::PromoteTo(wide, hn::LoadU(bytes, to + i));
            const auto weight = hn::PromoteTo(wide, hn::LoadU(bytes, keep + span.nAt + i));
            const auto sum = hn::Add(hn::LoadU(wide, add + span.nAt + i), hn::Mul(weight, old));
            const auto mean = hn::BitCast(from, hn::ShiftRight<MeanShift>(sum));
            hn::StoreU(hn::DemoteTo(bytes, mean), bytes, to + i);
        }
        DrawRest(plane, span, i, [=](const PlaneTarget &target, const Span *rest, std::size_t one) {
            PortableSampleKernel().Mean8(target, rest, one, add, keep);
        });
    });
}

void Mean16(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint16_t *add,
            const std::uint8_t *keep, int shift)
{
    const WideTag wide;
    const ByteTag bytes;
    const hn::Repartition<std::uint8_t, WideTag> row;
    const std::size_t lanes = hn::Lanes(wide);
    ForSpans(plane, spans, count, 2, [&](const Span &span) HWY_ATTR {
        std::uint8_t *to = plane.Row(span.nRow) + std::ptrdiff_t{2} * span.nFirst;
        std::size_t i = 0;
        for (; i + lanes <= static_cast<std::size_t>(span.nCount); i += lanes) {
            // As bytes, since the rows of a host need not be aligned.
            const auto old = hn::BitCast(wide, hn::LoadU(row, to + 2 * i));
            const auto weight = hn::PromoteTo(wide, hn::LoadU(bytes, keep + span.nAt + i));
            const auto sum =
                hn::Add(hn::LoadU(wide, add + span.nAt + i), hn::Mul(weight, hn::ShiftRightSame(old, shift)));
            const auto mean = hn::ShiftLeftSame(hn::ShiftRight<MeanShift>(sum), shift);
            hn::StoreU(hn::BitCast(row, mean), row, to + 2 * i);
        }
        DrawRest(plane, span, i, [=](const PlaneTarget &target, const Span *rest, std::size_t one) {
            PortableSampleKernel().Mean16(target, rest, one, add, keep, shift);
        });
    });
}

const SampleKernel &Kernel()
{
    static const SampleKernel kernel = {Fill, Mean8, Mean16, PortableSampleKernel().MixSingle,
                                        PortableSampleKernel().MixPair};
    return kernel;
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

const SampleKernel &BestSampleKernel()
{
    return HWY_DYNAMIC_DISPATCH(Kernel)();
}

#endif
