#include "frames/samplekernel.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

void Fill(const PlaneTarget &plane, const InkSamples *blocks, std::size_t count, const InkPattern &pattern)
{
    const int unit = pattern.nPixelBytes;
    for (const InkSamples *block = blocks; block < blocks + count; ++block) {
        std::uint8_t *bytes = plane.Row(block->nRow) + static_cast<std::ptrdiff_t>(block->nColumn) * unit;
        for (std::uint64_t rest = block->nShown; rest; rest &= rest - 1) {
            const int pixel = __builtin_ctzll(rest);
            const auto &colors = block->nText >> pixel & 1 ? pattern.text : pattern.outline;
            for (int i = pixel * unit; i < (pixel + 1) * unit; ++i) {
                std::uint8_t &byte = bytes[i];
                byte = static_cast<std::uint8_t>((byte & ~pattern.bits[i]) | colors[i]);
            }
        }
    }
}

void Weigh(const MeanBits &bits, InkMeans &block)
{
    for (unsigned i = 0; i < MeanSamples; ++i) {
        unsigned text = 0;
        unsigned shown = 0;
        for (int row = 0; row < bits.nRows; ++row) {
            for (unsigned tap = 0; tap < bits.weights[row].size(); ++tap) {
                text += (bits.text[row] >> (2 * i + tap) & 1) * bits.weights[row][tap];
                shown += (bits.shown[row] >> (2 * i + tap) & 1) * bits.weights[row][tap];
            }
        }
        block.text[i] = static_cast<std::uint8_t>(text);
        block.outline[i] = static_cast<std::uint8_t>(shown - text);
    }
}

template <typename Element>
void MeanInPlane(const PlaneTarget &plane, const InkMeans &block, const MeanPattern &pattern, int firstComponent)
{
    constexpr std::ptrdiff_t Bytes = sizeof(Element);
    const int components = 2 / pattern.nPlanes;
    std::uint8_t *row = plane.Row(block.nRow);
    std::uint8_t *to = row + block.nFirst * (components * Bytes);
    for (std::size_t i = 0; i < MeanSamples && to < row + plane.nRowBytes; ++i) {
        const int keep = MeanWhole - block.text[i] - block.outline[i];
        for (int component = firstComponent; component < firstComponent + components; ++component, to += Bytes) {
            if (keep == MeanWhole)
                continue;
            const auto element = Read<Element>(to);
            const int sum = block.text[i] * pattern.text[component] + block.outline[i] * pattern.outline[component] +
                            keep * (element >> pattern.nShift & pattern.nMax);
            const int mean = (sum + MeanWhole / 2) >> MeanShift;
            const auto result = static_cast<Element>((element & pattern.nOthers) | mean << pattern.nShift);
            std::memcpy(to, &result, sizeof result);
        }
    }
}

template <typename Element>
void Mean(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern)
{
    for (const InkMeans *block = blocks; block < blocks + count; ++block) {
        for (int plane = 0; plane < pattern.nPlanes; ++plane)
            MeanInPlane<Element>(planes[plane], *block, pattern, plane);
    }
}

inline std::int32_t Exchanged(const std::int32_t *weights, std::int32_t first, std::int32_t second)
{
    return (weights[0] * first + weights[1] * second) >> (ExchangeBits - FineBits);
}

inline std::int32_t Quotient(std::int32_t sum, const MixSettings &settings)
{
    return std::min((std::max(0, sum + settings.nBias) >> settings.nShift) / Opaque, settings.nMax);
}

void MixSingle(std::int32_t *samples, const std::int32_t *first, const std::int32_t *second, std::size_t count,
               const MixLists &lists, const MixSettings &settings)
{
    constexpr std::int32_t Fine = 1 << FineBits;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t old = samples[i] * Fine;
        const std::int32_t exchanged =
            old + Exchanged(settings.single, first[i] - settings.nMiddle, second[i] - settings.nMiddle);
        samples[i] = Quotient(lists.pBase[i] + lists.pRest[i] * exchanged + lists.pKeep[i] * old, settings);
    }
}

void MixPair(std::int32_t *first, std::int32_t *second, std::size_t count, const MixLists &lists,
             const std::int32_t *secondBase, const MixSettings &settings)
{
    constexpr std::int32_t Fine = 1 << FineBits;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t p = first[i] - settings.nMiddle;
        const std::int32_t q = second[i] - settings.nMiddle;
        const std::int32_t exchangedFirst = settings.nMiddle * Fine + Exchanged(settings.pair[0], p, q);
        const std::int32_t exchangedSecond = settings.nMiddle * Fine + Exchanged(settings.pair[1], p, q);
        const std::int32_t keep = lists.pKeep[i] * Fine;
        first[i] = Quotient(lists.pBase[i] + lists.pRest[i] * exchangedFirst + keep * first[i], settings);
        second[i] = Quotient(secondBase[i] + lists.pRest[i] * exchangedSecond + keep * second[i], settings);
    }
}

void SpreadSamples(const InkSamples &block, const InkMix &mix, InkMixLists &lists)
{
    for (std::size_t i = 0; i < MixSamples; ++i) {
        const bool isShown = block.nShown >> i & 1;
        const auto &colors = block.nText >> i & 1 ? mix.text : mix.outline;
        for (std::size_t base = 0; base < 2; ++base)
            lists.listBases[base][i] = isShown ? colors[base] : 0;
        lists.listRest[i] = isShown ? mix.nRest : 0;
        lists.listKeep[i] = isShown ? 0 : Opaque;
    }
}

void SpreadMeans(const InkMeans &block, const InkMix &mix, InkMixLists &lists)
{
    for (std::size_t i = 0; i < MeanSamples; ++i) {
        const std::int32_t text = block.text[i];
        const std::int32_t outline = block.outline[i];
        for (std::size_t base = 0; base < 2; ++base)
            lists.listBases[base][i] = text * mix.text[base] + outline * mix.outline[base];
        lists.listRest[i] = (text + outline) * mix.nRest;
        lists.listKeep[i] = (MeanWhole - text - outline) * Opaque;
    }
}

constexpr SampleKernel Portable = {Fill,          Weigh,       Mean<std::uint8_t>, Mean<std::uint16_t>,
                                   SpreadSamples, SpreadMeans, MixSingle,          MixPair};

} // namespace

const SampleKernel &PortableSampleKernel()
{
    return Portable;
}
