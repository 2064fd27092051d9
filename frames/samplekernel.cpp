#include "frames/samplekernel.h"

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

constexpr SampleKernel Portable = {Fill, Weigh, Mean<std::uint8_t>, Mean<std::uint16_t>};

} // namespace

const SampleKernel &PortableSampleKernel()
{
    return Portable;
}
