#include "frames/mixkernel.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr int Least = -32768;
constexpr int Most = 32767;
constexpr std::uint16_t Top = 0x8000;

template <typename Element>
void SplitElements(const std::uint8_t *row, std::size_t count, int step, Channels &channels)
{
    for (std::size_t i = 0; i < count; ++i) {
        for (int channel = 0; channel < step; ++channel, row += sizeof(Element))
            channels[channel][i] = Read<Element>(row);
    }
}

void Split(const std::uint8_t *row, std::size_t count, const RowForm &form, Channels &channels)
{
    if (form.nElementBytes == 1)
        return SplitElements<std::uint8_t>(row, count, form.nStep, channels);
    if (form.nElementBytes == 2)
        return SplitElements<std::uint16_t>(row, count, form.nStep, channels);
    for (std::size_t i = 0; i < count; ++i) {
        const auto element = Read<std::uint32_t>(row + i * sizeof(std::uint32_t));
        for (std::size_t channel = 0; channel < form.shifts.size(); ++channel)
            channels[channel][i] = static_cast<std::uint16_t>(element >> form.shifts[channel] & PackedMask);
    }
}

template <typename Element>
void JoinElements(const Channels &channels, std::size_t count, int step, std::uint8_t *row)
{
    for (std::size_t i = 0; i < count; ++i) {
        for (int channel = 0; channel < step; ++channel, row += sizeof(Element)) {
            const auto element = static_cast<Element>(channels[channel][i]);
            std::memcpy(row, &element, sizeof element);
        }
    }
}

void Join(const Channels &channels, std::size_t count, const RowForm &form, std::uint8_t *row)
{
    if (form.nElementBytes == 1)
        return JoinElements<std::uint8_t>(channels, count, form.nStep, row);
    if (form.nElementBytes == 2)
        return JoinElements<std::uint16_t>(channels, count, form.nStep, row);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t *at = row + i * sizeof(std::uint32_t);
        auto element = Read<std::uint32_t>(at);
        for (std::size_t channel = 0; channel < form.shifts.size(); ++channel) {
            element &= ~(PackedMask << form.shifts[channel]);
            element |= static_cast<std::uint32_t>(channels[channel][i]) << form.shifts[channel];
        }
        std::memcpy(at, &element, sizeof element);
    }
}

int Product(int number, int share)
{
    return (number * share + (1 << 14)) >> 15;
}

int Sum(int first, int second)
{
    return std::clamp(first + second, Least, Most);
}

int Signed(std::uint16_t number)
{
    return static_cast<std::int16_t>(number);
}

int NumberOf(std::uint16_t element, const MixSettings &settings)
{
    return Signed(static_cast<std::uint16_t>((element << settings.nUp & settings.nMask) ^ Top));
}

std::uint16_t ElementOf(int number, const MixSettings &settings)
{
    const int rounded = std::min(number - Least + settings.Half(), 65535);
    return static_cast<std::uint16_t>((rounded & settings.nMask) >> settings.nUp);
}

void SpreadSamples(const InkSamples *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists)
{
    for (std::size_t i = 0; i < count * MixBlock; ++i) {
        const InkSamples &block = blocks[i / MixBlock];
        const auto &colors = block.nText >> i % MixBlock & 1 ? mix.text : mix.outline;
        for (int component = 0; component < mix.nComponents; ++component)
            lists.listBases[component][i] = colors[component];
        lists.listRest[i] = block.nShown >> i % MixBlock & 1 ? mix.nRest : Untouched;
    }
}

void SpreadMeans(const InkMeans *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists)
{
    constexpr int Share = 32768 / MeanWhole;
    for (std::size_t i = 0; i < count * MeanSamples; ++i) {
        const int text = -Share * blocks[i / MeanSamples].text[i % MeanSamples];
        const int outline = -Share * blocks[i / MeanSamples].outline[i % MeanSamples];
        for (int component = 0; component < mix.nComponents; ++component) {
            const int base =
                Product(Signed(mix.text[component]), text) + Product(Signed(mix.outline[component]), outline);
            lists.listBases[component][i] = static_cast<std::uint16_t>(-base);
        }
        const int both = text + outline;
        lists.listRest[i] = both == 0 ? Untouched : static_cast<std::int16_t>(-Product(mix.nRest, both));
        // Overflows to -32,768 if nothing is drawn, but is not used then.
        lists.listKeep[i] = static_cast<std::int16_t>(both - Least);
    }
}

void Tint(const MixSamples &first, const MixSamples &second, std::size_t count, bool twice, const MixSettings &settings,
          MixSamples &tints)
{
    for (std::size_t i = 0; i < count; ++i) {
        const int sum = Sum(Product(NumberOf(first[i], settings), settings.single[0]),
                            Product(NumberOf(second[i], settings), settings.single[1]));
        const auto tint = static_cast<std::uint16_t>(sum);
        if (twice)
            tints[2 * i] = tints[2 * i + 1] = tint;
        else
            tints[i] = tint;
    }
}

std::uint16_t Quotient(std::uint16_t base, int rest, int old)
{
    return static_cast<std::uint16_t>((base + rest * old) / Opaque);
}

void MixSingle(MixSamples &samples, const MixSamples *tints, std::size_t count, const std::uint16_t *bases,
               const std::int16_t *rests, const MixSettings &settings)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (rests[i] == Untouched)
            continue;
        if (settings.bAsRgb24) {
            samples[i] = Quotient(bases[i], rests[i], samples[i]);
            continue;
        }
        int sum = Sum(Signed(bases[i]), Product(NumberOf(samples[i], settings), rests[i]));
        if (tints)
            sum = Sum(sum, Product(Signed((*tints)[i]), rests[i]));
        samples[i] = ElementOf(sum, settings);
    }
}

void MixPair(MixSamples &first, MixSamples &second, std::size_t count, const MixLists &lists, std::size_t base,
             const MixSettings &settings)
{
    for (std::size_t i = 0; i < count; ++i) {
        const int rest = lists.pRest[i];
        if (rest == Untouched)
            continue;
        if (settings.bAsRgb24) {
            const std::uint16_t old = first[i];
            first[i] = Quotient(lists.bases[base][i], rest, second[i]);
            second[i] = Quotient(lists.bases[base + 1][i], rest, old);
            continue;
        }
        const int p = NumberOf(first[i], settings);
        const int q = NumberOf(second[i], settings);
        const auto mix = [&](int component, int old, int other) {
            const auto &weights = settings.pair[component];
            int sum = Signed(lists.bases[base + component][i]);
            if (lists.pKeep)
                sum = Sum(sum, Product(old, lists.pKeep[i]));
            sum = Sum(sum, Product(other, rest));
            return ElementOf(Sum(sum, Product(Sum(Product(p, weights[0]), Product(q, weights[1])), rest)), settings);
        };
        first[i] = mix(0, p, q);
        second[i] = mix(1, q, p);
    }
}

constexpr MixKernel Portable = {Split, Join, SpreadSamples, SpreadMeans, Tint, MixSingle, MixPair};

} // namespace

const MixKernel &PortableMixKernel()
{
    return Portable;
}
