#include "frames/samplekernel.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

void Fill(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint8_t *values,
          const std::uint8_t *keep)
{
    ForSpans(plane, spans, count, 1, [&](const Span &span) {
        std::uint8_t *to = plane.Row(span.nRow) + span.nFirst;
        std::size_t at = span.nAt;
        const std::size_t end = at + span.nCount;
        using Word = std::uint64_t;
        for (; at + sizeof(Word) <= end; at += sizeof(Word), to += sizeof(Word)) {
            const Word word = (Read<Word>(to) & Read<Word>(keep + at)) | Read<Word>(values + at);
            std::memcpy(to, &word, sizeof word);
        }
        for (; at < end; ++at, ++to)
            *to = static_cast<std::uint8_t>((*to & keep[at]) | values[at]);
    });
}

template <typename Sample>
inline Sample MeanOf(Sample old, std::uint16_t add, std::uint8_t keep, int shift)
{
    const auto sum = static_cast<std::uint16_t>(add + keep * (old >> shift));
    return static_cast<Sample>(sum >> MeanShift << shift);
}

template <typename Sample>
void Mean(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint16_t *add,
          const std::uint8_t *keep, int shift)
{
    // Of a fixed size, for which compilers make vectors.
    constexpr std::size_t Block = 8;
    ForSpans(plane, spans, count, sizeof(Sample), [&](const Span &span) {
        std::uint8_t *to = plane.Row(span.nRow) + span.nFirst * sizeof(Sample);
        std::size_t at = span.nAt;
        const std::size_t end = at + span.nCount;
        for (; at + Block <= end; at += Block, to += Block * sizeof(Sample)) {
            auto block = Read<std::array<Sample, Block>>(to);
            for (std::size_t i = 0; i < Block; ++i)
                block[i] = MeanOf(block[i], add[at + i], keep[at + i], shift);
            std::memcpy(to, block.data(), sizeof block);
        }
        for (; at < end; ++at, to += sizeof(Sample)) {
            const Sample sample = MeanOf(Read<Sample>(to), add[at], keep[at], shift);
            std::memcpy(to, &sample, sizeof sample);
        }
    });
}

void Mean8(const PlaneTarget &plane, const Span *spans, std::size_t count, const std::uint16_t *add,
           const std::uint8_t *keep)
{
    Mean<std::uint8_t>(plane, spans, count, add, keep, 0);
}

inline std::int32_t Exchanged(const std::int32_t *weights, std::int32_t first, std::int32_t second)
{
    return (weights[0] * first + weights[1] * second) >> (ExchangeBits - FineBits);
}

template <std::int32_t Divisor>
inline std::int32_t Quotient(std::int32_t sum, const MixSettings &settings)
{
    return std::clamp((sum + settings.nBias) / Divisor, 0, settings.nMax);
}

void MixSingle(std::int32_t *samples, const std::int32_t *first, const std::int32_t *second, std::size_t count,
               const MixLists &lists, const MixSettings &settings)
{
    constexpr std::int32_t Fine = 1 << FineBits;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t old = samples[i] * Fine;
        const std::int32_t exchanged =
            old + Exchanged(settings.single, first[i] - settings.nMiddle, second[i] - settings.nMiddle);
        const std::int32_t sum = lists.pBase[i] + lists.pRest[i] * exchanged + lists.pKeep[i] * old;
        samples[i] = Quotient<PixelDivisor>(sum, settings);
    }
}

template <std::int32_t Divisor>
void MixPairBy(std::int32_t *first, std::int32_t *second, std::size_t count, const MixLists &lists,
               const std::int32_t *secondBase, const MixSettings &settings)
{
    constexpr std::int32_t Fine = 1 << FineBits;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t p = first[i] - settings.nMiddle;
        const std::int32_t q = second[i] - settings.nMiddle;
        const std::int32_t exchangedFirst = settings.nMiddle * Fine + Exchanged(settings.pair[0], p, q);
        const std::int32_t exchangedSecond = settings.nMiddle * Fine + Exchanged(settings.pair[1], p, q);
        const std::int32_t keep = lists.pKeep[i] * Fine;
        const std::int32_t sumFirst = lists.pBase[i] + lists.pRest[i] * exchangedFirst + keep * first[i];
        const std::int32_t sumSecond = secondBase[i] + lists.pRest[i] * exchangedSecond + keep * second[i];
        first[i] = Quotient<Divisor>(sumFirst, settings);
        second[i] = Quotient<Divisor>(sumSecond, settings);
    }
}

void MixPair(std::int32_t *first, std::int32_t *second, std::size_t count, const MixLists &lists,
             const std::int32_t *secondBase, const MixSettings &settings)
{
    const auto mix = settings.nDivisor == PixelDivisor ? MixPairBy<PixelDivisor> : MixPairBy<MeanDivisor>;
    mix(first, second, count, lists, secondBase, settings);
}

constexpr SampleKernel Portable = {Fill, Mean8, Mean<std::uint16_t>, MixSingle, MixPair};

} // namespace

const SampleKernel &PortableSampleKernel()
{
    return Portable;
}
