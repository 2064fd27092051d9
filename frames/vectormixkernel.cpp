#include "frames/mixkernel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

// Highway includes this file once for each instruction set, with another namespace and vector size each time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frames/vectormixkernel.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace
{
namespace HWY_NAMESPACE
{

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const MixKernel &Kernel()
{
    return PortableMixKernel();
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<std::uint16_t, MixStep>;
using NumberTag = hn::RebindToSigned<Tag>;
using Vector = hn::Vec<Tag>;
using Numbers = hn::Vec<NumberTag>;

/** As many elements of 1 or 2 bytes as a vector of 16-bit samples has. */
template <typename Element>
using ElementTag = hn::Rebind<Element, Tag>;

template <typename Element>
HWY_INLINE void PutChannel(MixSamples &channel, std::size_t i, hn::Vec<ElementTag<Element>> elements)
{
    if constexpr (sizeof(Element) == 1)
        hn::StoreU(hn::PromoteTo(Tag(), elements), Tag(), &channel[i]);
    else
        hn::StoreU(elements, Tag(), &channel[i]);
}

template <typename Element>
HWY_INLINE hn::Vec<ElementTag<Element>> ChannelAt(const MixSamples &channel, std::size_t i)
{
    const auto elements = hn::LoadU(Tag(), &channel[i]);
    if constexpr (sizeof(Element) == 1)
        return hn::DemoteTo(ElementTag<Element>(), hn::BitCast(NumberTag(), elements));
    else
        return elements;
}

template <typename Element, int Step>
HWY_INLINE void SplitSteps(const std::uint8_t *row, std::size_t count, Channels &channels)
{
    const ElementTag<Element> tag;
    for (std::size_t i = 0; i < count; i += hn::Lanes(tag)) {
        const auto *from = reinterpret_cast<const Element *>(row + i * Step * sizeof(Element));
        if constexpr (Step == 1) {
            PutChannel<Element>(channels[0], i, hn::LoadU(tag, from));
        } else {
            auto first = hn::Zero(tag);
            auto second = first;
            auto third = first;
            auto fourth = first;
            if constexpr (Step == 2)
                hn::LoadInterleaved2(tag, from, first, second);
            else if constexpr (Step == 3)
                hn::LoadInterleaved3(tag, from, first, second, third);
            else
                hn::LoadInterleaved4(tag, from, first, second, third, fourth);
            PutChannel<Element>(channels[0], i, first);
            PutChannel<Element>(channels[1], i, second);
            if constexpr (Step >= 3)
                PutChannel<Element>(channels[2], i, third);
            if constexpr (Step >= 4)
                PutChannel<Element>(channels[3], i, fourth);
        }
    }
}

template <typename Element, int Step>
HWY_INLINE void JoinSteps(const Channels &channels, std::size_t count, std::uint8_t *row)
{
    const ElementTag<Element> tag;
    for (std::size_t i = 0; i < count; i += hn::Lanes(tag)) {
        auto *to = reinterpret_cast<Element *>(row + i * Step * sizeof(Element));
        const auto at = [&](std::size_t channel) HWY_ATTR { return ChannelAt<Element>(channels[channel], i); };
        if constexpr (Step == 1)
            hn::StoreU(at(0), tag, to);
        else if constexpr (Step == 2)
            hn::StoreInterleaved2(at(0), at(1), tag, to);
        else if constexpr (Step == 3)
            hn::StoreInterleaved3(at(0), at(1), at(2), tag, to);
        else
            hn::StoreInterleaved4(at(0), at(1), at(2), at(3), tag, to);
    }
}

/** Elements of 4 bytes: a vector has half as many. */
using PackedTag = hn::Repartition<std::uint32_t, Tag>;
using HalfTag = hn::Rebind<std::uint16_t, PackedTag>;

void SplitPacked(const std::uint8_t *row, std::size_t count, const RowForm &form, Channels &channels)
{
    const PackedTag tag;
    const hn::RebindToSigned<PackedTag> number;
    for (std::size_t i = 0; i < count; i += hn::Lanes(tag)) {
        const auto elements = hn::LoadU(tag, reinterpret_cast<const std::uint32_t *>(row) + i);
        for (std::size_t channel = 0; channel < form.shifts.size(); ++channel) {
            const auto samples = hn::And(hn::ShiftRightSame(elements, form.shifts[channel]), hn::Set(tag, PackedMask));
            hn::StoreU(hn::DemoteTo(HalfTag(), hn::BitCast(number, samples)), HalfTag(), &channels[channel][i]);
        }
    }
}

void JoinPacked(const Channels &channels, std::size_t count, const RowForm &form, std::uint8_t *row)
{
    const PackedTag tag;
    for (std::size_t i = 0; i < count; i += hn::Lanes(tag)) {
        auto *at = reinterpret_cast<std::uint32_t *>(row) + i;
        auto elements = hn::LoadU(tag, at);
        for (std::size_t channel = 0; channel < form.shifts.size(); ++channel) {
            const int shift = form.shifts[channel];
            const auto samples = hn::PromoteTo(tag, hn::LoadU(HalfTag(), &channels[channel][i]));
            const auto others = hn::AndNot(hn::Set(tag, PackedMask << shift), elements);
            elements = hn::Or(others, hn::ShiftLeftSame(samples, shift));
        }
        hn::StoreU(elements, tag, at);
    }
}

/**
 * Calls @p call(element, step): a value of the element's type (1 or 2 bytes), and the step as a compile-time constant.
 */
template <typename Call>
HWY_INLINE void WithForm(const RowForm &form, Call call)
{
    const auto withStep = [&](auto element) HWY_ATTR {
        if (form.nStep == 1)
            call(element, std::integral_constant<int, 1>());
        else if (form.nStep == 2)
            call(element, std::integral_constant<int, 2>());
        else if (form.nStep == 3)
            call(element, std::integral_constant<int, 3>());
        else
            call(element, std::integral_constant<int, 4>());
    };
    if (form.nElementBytes == 1)
        withStep(std::uint8_t{});
    else
        withStep(std::uint16_t{});
}

void Split(const std::uint8_t *row, std::size_t count, const RowForm &form, Channels &channels)
{
    if (form.IsPacked())
        return SplitPacked(row, count, form, channels);
    WithForm(form, [&](auto element, auto step)
                       HWY_ATTR { SplitSteps<decltype(element), decltype(step)::value>(row, count, channels); });
}

void Join(const Channels &channels, std::size_t count, const RowForm &form, std::uint8_t *row)
{
    if (form.IsPacked())
        return JoinPacked(channels, count, form, row);
    WithForm(form, [&](auto element, auto step)
                       HWY_ATTR { JoinSteps<decltype(element), decltype(step)::value>(channels, count, row); });
}

template <int Components>
HWY_INLINE void SpreadComponents(const InkSamples *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists)
{
    const Tag tag;
    const NumberTag number;
    const InkMix colors = mix;
    for (std::size_t n = 0; n < count; ++n) {
        std::array<std::uint8_t, sizeof(std::uint64_t)> shown;
        std::array<std::uint8_t, sizeof(std::uint64_t)> text;
        std::memcpy(shown.data(), &blocks[n].nShown, shown.size());
        std::memcpy(text.data(), &blocks[n].nText, text.size());
        for (std::size_t i = 0; i < MixBlock; i += hn::Lanes(tag)) {
            const std::size_t at = n * MixBlock + i;
            const auto isShown = hn::LoadMaskBits(number, &shown[i / 8]);
            const auto isText = hn::LoadMaskBits(tag, &text[i / 8]);
            const auto rest = hn::IfThenElse(isShown, hn::Set(number, colors.nRest), hn::Set(number, Untouched));
            hn::StoreU(rest, number, &lists.listRest[at]);
            for (int component = 0; component < Components; ++component) {
                const auto ofText = hn::Set(tag, colors.text[component]);
                const auto ofOutline = hn::Set(tag, colors.outline[component]);
                hn::StoreU(hn::IfThenElse(isText, ofText, ofOutline), tag, &lists.listBases[component][at]);
            }
        }
    }
}

void SpreadSamples(const InkSamples *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists)
{
    if (mix.nComponents == 1)
        SpreadComponents<1>(blocks, count, mix, lists);
    else if (mix.nComponents == 2)
        SpreadComponents<2>(blocks, count, mix, lists);
    else if (mix.nComponents == 3)
        SpreadComponents<3>(blocks, count, mix, lists);
    else
        SpreadComponents<4>(blocks, count, mix, lists);
}

/** number * share, rounded to nearest. They must not both be -32,768. */
template <typename V>
HWY_INLINE V Product(V number, V share)
{
    return hn::MulFixedPoint15(number, share);
}

void SpreadMeans(const InkMeans *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists)
{
    constexpr int ShareBits = 15 - MeanShift;
    const hn::CappedTag<std::int16_t, MeanSamples> number;
    const hn::RebindToUnsigned<decltype(number)> tag;
    const hn::Rebind<std::uint8_t, decltype(number)> bytes;
    const auto zero = hn::Zero(number);
    // Shares are negated, since a whole (32,768) fits into 16 bits only as -32,768.
    const auto shareOf = [&](const std::uint8_t *parts) HWY_ATTR {
        return hn::Sub(zero, hn::ShiftLeft<ShareBits>(hn::PromoteTo(number, hn::LoadU(bytes, parts))));
    };
    for (std::size_t n = 0; n < count; ++n) {
        for (std::size_t i = 0; i < MeanSamples; i += hn::Lanes(number)) {
            const std::size_t at = n * MeanSamples + i;
            const auto text = shareOf(&blocks[n].text[i]);
            const auto outline = shareOf(&blocks[n].outline[i]);
            const auto both = hn::Add(text, outline);
            for (int component = 0; component < mix.nComponents; ++component) {
                const auto ofText = hn::BitCast(number, hn::Set(tag, mix.text[component]));
                const auto ofOutline = hn::BitCast(number, hn::Set(tag, mix.outline[component]));
                const auto base = hn::Add(Product(ofText, text), Product(ofOutline, outline));
                hn::StoreU(hn::BitCast(tag, hn::Sub(zero, base)), tag, &lists.listBases[component][at]);
            }
            const auto rest = hn::Sub(zero, Product(hn::Set(number, mix.nRest), both));
            const auto isUntouched = hn::Eq(both, zero);
            hn::StoreU(hn::IfThenElse(isUntouched, hn::Set(number, Untouched), rest), number, &lists.listRest[at]);
            hn::StoreU(hn::Add(hn::Set(number, -32768), both), number, &lists.listKeep[at]);
        }
    }
}

/** Converts elements to numbers and back, see MixSettings. */
class Scale
{
public:
    explicit HWY_INLINE Scale(const MixSettings &settings) :
        m_nUp(settings.nUp), m_nMask(settings.nMask), m_nHalf(static_cast<std::uint16_t>(settings.Half()))
    {
    }

    HWY_INLINE Numbers NumberOf(Vector element) const
    {
        return hn::BitCast(NumberTag(), hn::Xor(hn::And(hn::ShiftLeftSame(element, m_nUp), Mask()), Top()));
    }
    HWY_INLINE Vector ElementOf(Numbers number) const
    {
        const auto rounded = hn::SaturatedAdd(hn::Xor(hn::BitCast(Tag(), number), Top()), hn::Set(Tag(), m_nHalf));
        return hn::ShiftRightSame(hn::And(rounded, Mask()), m_nUp);
    }

private:
    HWY_INLINE Vector Mask() const { return hn::Set(Tag(), m_nMask); }
    HWY_INLINE Vector Top() const { return hn::Set(Tag(), 0x8000); }

    // Numbers, since SVE's vectors cannot be members.
    int m_nUp;
    std::uint16_t m_nMask, m_nHalf;
};

HWY_INLINE Numbers NumbersAt(const std::uint16_t *list, std::size_t i)
{
    return hn::BitCast(NumberTag(), hn::LoadU(Tag(), list + i));
}

/** @p drawn, or @p old for untouched samples. */
HWY_INLINE Vector WhereDrawn(Numbers rest, Vector drawn, Vector old)
{
    const auto isUntouched = hn::Eq(hn::BitCast(Tag(), rest), hn::Set(Tag(), static_cast<std::uint16_t>(Untouched)));
    return hn::IfThenElse(isUntouched, old, drawn);
}

void Tint(const MixSamples &first, const MixSamples &second, std::size_t count, bool twice, const MixSettings &settings,
          MixSamples &tints)
{
    const Tag tag;
    const NumberTag number;
    const Scale scale(settings);
    const auto ofFirst = hn::Set(number, settings.single[0]);
    const auto ofSecond = hn::Set(number, settings.single[1]);
    for (std::size_t i = 0; i < count; i += hn::Lanes(tag)) {
        const auto p = Product(scale.NumberOf(hn::LoadU(tag, &first[i])), ofFirst);
        const auto q = Product(scale.NumberOf(hn::LoadU(tag, &second[i])), ofSecond);
        const auto tint = hn::BitCast(tag, hn::SaturatedAdd(p, q));
        if (twice)
            hn::StoreInterleaved2(tint, tint, tag, &tints[2 * i]);
        else
            hn::StoreU(tint, tag, &tints[i]);
    }
}

/** (base + rest * old) / 255, truncated as in RGB24. */
HWY_INLINE Vector Quotient(const std::uint16_t *base, Numbers rest, Vector old)
{
    const Tag tag;
    // Division by 255, exact for all sums below 65,535. For untouched samples the sum wraps around and is not used.
    const auto sum = hn::Add(hn::LoadU(tag, base), hn::Mul(hn::BitCast(tag, rest), old));
    return hn::MulHigh(hn::Add(sum, hn::Set(tag, 1)), hn::Set(tag, 257));
}

void MixSingle(MixSamples &samples, const MixSamples *tints, std::size_t count, const std::uint16_t *bases,
               const std::int16_t *rests, const MixSettings &settings)
{
    const Tag tag;
    const Scale scale(settings);
    const bool isAsRgb24 = settings.bAsRgb24;
    for (std::size_t i = 0; i < count; i += hn::Lanes(tag)) {
        const auto old = hn::LoadU(tag, &samples[i]);
        const auto rest = hn::LoadU(NumberTag(), rests + i);
        if (isAsRgb24) {
            hn::StoreU(WhereDrawn(rest, Quotient(bases + i, rest, old), old), tag, &samples[i]);
            continue;
        }
        auto sum = hn::SaturatedAdd(NumbersAt(bases, i), Product(scale.NumberOf(old), rest));
        if (tints)
            sum = hn::SaturatedAdd(sum, Product(NumbersAt(tints->data(), i), rest));
        hn::StoreU(WhereDrawn(rest, scale.ElementOf(sum), old), tag, &samples[i]);
    }
}

void MixPair(MixSamples &first, MixSamples &second, std::size_t count, const MixLists &lists, std::size_t base,
             const MixSettings &settings)
{
    const Tag tag;
    const NumberTag number;
    const Scale scale(settings);
    const bool isAsRgb24 = settings.bAsRgb24;
    const auto pair = settings.pair;
    const std::array<const std::uint16_t *, 2> bases = {lists.bases[base], lists.bases[base + 1]};
    for (std::size_t i = 0; i < count; i += hn::Lanes(tag)) {
        const auto oldFirst = hn::LoadU(tag, &first[i]);
        const auto oldSecond = hn::LoadU(tag, &second[i]);
        const auto rest = hn::LoadU(number, lists.pRest + i);
        if (isAsRgb24) {
            hn::StoreU(WhereDrawn(rest, Quotient(bases[0] + i, rest, oldSecond), oldFirst), tag, &first[i]);
            hn::StoreU(WhereDrawn(rest, Quotient(bases[1] + i, rest, oldFirst), oldSecond), tag, &second[i]);
            continue;
        }
        const auto p = scale.NumberOf(oldFirst);
        const auto q = scale.NumberOf(oldSecond);
        const auto keep = lists.pKeep ? hn::LoadU(number, lists.pKeep + i) : hn::Zero(number);
        const auto mix = [&](int component, Numbers old, Numbers other) HWY_ATTR {
            const auto &weights = pair[component];
            const auto kept = hn::SaturatedAdd(NumbersAt(bases[component], i), Product(old, keep));
            const auto tint =
                hn::SaturatedAdd(Product(p, hn::Set(number, weights[0])), Product(q, hn::Set(number, weights[1])));
            const auto sum = hn::SaturatedAdd(kept, Product(other, rest));
            return scale.ElementOf(hn::SaturatedAdd(sum, Product(tint, rest)));
        };
        hn::StoreU(WhereDrawn(rest, mix(0, p, q), oldFirst), tag, &first[i]);
        hn::StoreU(WhereDrawn(rest, mix(1, q, p), oldSecond), tag, &second[i]);
    }
}

constexpr MixKernel Vectors = {Split, Join, SpreadSamples, SpreadMeans, Tint, MixSingle, MixPair};

const MixKernel &Kernel()
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

const MixKernel &BestMixKernel()
{
    return HWY_DYNAMIC_DISPATCH(Kernel)();
}

#endif
