// The arithmetic of burning into samples, for every kernel that this processor can run.
#include "frames/samplekernel.h"

#include "support/vectortargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <random>
#include <vector>

namespace
{

constexpr int Rows = 3;

/** Two planes of random bytes at any alignment, whose rows may end within a block. */
class SampleKernelTest : public testing::TestWithParam<NamedKernel<SampleKernel>>
{
protected:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    std::uint64_t RandomBits() { return std::uint64_t{m_random()} << 32 | m_random(); }

    void MakePlanes(int rowBytes)
    {
        m_nStart = Below(33);
        m_nRowBytes = rowBytes;
        m_nLinesize = rowBytes + Below(20);
        m_listBytes.resize(m_nStart + static_cast<std::size_t>(m_nLinesize) * 2 * Rows);
        for (std::uint8_t &byte : m_listBytes)
            byte = static_cast<std::uint8_t>(m_random());
        m_listExpected = m_listBytes;
    }

    /** The second plane lies bottom up after the first. */
    std::array<PlaneTarget, 2> Targets(std::vector<std::uint8_t> &bytes) const
    {
        std::uint8_t *first = bytes.data() + m_nStart;
        return {{{first, m_nLinesize, m_nRowBytes}, {first + (2 * Rows - 1) * m_nLinesize, -m_nLinesize, m_nRowBytes}}};
    }

    /** Random means in 16ths; some samples have no text, no outline or neither. */
    InkMeans RandomMeans(int row, int first)
    {
        InkMeans block = {row, first, {}, {}};
        for (std::size_t i = 0; i < MeanSamples; ++i) {
            block.text[i] = static_cast<std::uint8_t>(Below(2) * Below(MeanWhole + 1));
            block.outline[i] = static_cast<std::uint8_t>(Below(2) * Below(MeanWhole + 1 - block.text[i]));
        }
        return block;
    }

    template <typename Element>
    void ExpectMeans(const MeanPattern &pattern, int samples, const std::vector<InkMeans> &blocks)
    {
        const int inRow = pattern.nPlanes == 1 ? 2 : 1;
        for (const InkMeans &block : blocks) {
            const int count = std::min(static_cast<int>(MeanSamples), samples - block.nFirst);
            for (int i = 0; i < 2 * count; ++i) {
                const int component = i % 2;
                const int text = block.text[i / 2];
                const int outline = block.outline[i / 2];
                std::uint8_t *row = Targets(m_listExpected)[inRow == 2 ? 0 : component].Row(block.nRow);
                const int place = (block.nFirst + i / 2) * inRow + (inRow == 2 ? component : 0);
                std::uint8_t *at = row + static_cast<std::size_t>(place) * sizeof(Element);
                const auto element = Read<Element>(at);
                const int old = element >> pattern.nShift & pattern.nMax;
                const int sum =
                    text * pattern.text[component] + outline * pattern.outline[component] + (16 - text - outline) * old;
                const auto mean = static_cast<Element>((element & pattern.nOthers) | (sum + 8) / 16 << pattern.nShift);
                if (text + outline > 0)
                    std::memcpy(at, &mean, sizeof mean);
            }
        }
    }

    template <typename Element>
    void TestMeans(MeanPattern pattern, int n)
    {
        const int samples = 1 + n % 70;
        pattern.nPlanes = 1 + n % 2;
        MakePlanes(samples * (2 / pattern.nPlanes) * static_cast<int>(sizeof(Element)));
        std::vector<InkMeans> blocks;
        for (int row = 0; row < Rows; ++row) {
            for (int first = Below(20); first < samples; first += MeanSamples + Below(20))
                blocks.push_back(RandomMeans(row, first));
        }
        for (int component = 0; component < 2; ++component) {
            pattern.text[component] = static_cast<std::uint16_t>(Below(3) == 0 ? pattern.nMax : Below(pattern.nMax));
            pattern.outline[component] = static_cast<std::uint16_t>(Below(pattern.nMax + 1));
        }
        ExpectMeans<Element>(pattern, samples, blocks);
        const SampleKernel &kernel = *GetParam().pKernel;
        const auto draw = sizeof(Element) == 1 ? kernel.Mean8 : kernel.Mean16;
        draw(Targets(m_listBytes).data(), blocks.data(), blocks.size(), pattern);
        ASSERT_EQ(m_listBytes, m_listExpected);
    }

    std::vector<std::uint8_t> m_listBytes, m_listExpected;
    int m_nStart = 0;
    std::ptrdiff_t m_nRowBytes = 0;
    std::ptrdiff_t m_nLinesize = 0;
    std::mt19937 m_random{1};
};

TEST_P(SampleKernelTest, Fills)
{
    for (int n = 0; n < 600; ++n) {
        const int unit = 1 + n % 6;
        const int pixels = static_cast<int>(InkBytes) / unit;
        const int columns = 1 + Below(200);
        MakePlanes(columns * unit);
        InkPattern pattern = {unit, {}, {}, {}};
        std::vector<std::uint8_t> colors(std::size_t{3} * unit);
        for (std::uint8_t &byte : colors)
            byte = static_cast<std::uint8_t>(Below(3) == 0 ? 255 : m_random());
        for (int i = 0; i < pixels * unit; ++i) {
            pattern.bits[i] = colors[i % unit];
            pattern.text[i] = colors[unit + i % unit] & pattern.bits[i];
            pattern.outline[i] = colors[2 * unit + i % unit] & pattern.bits[i];
        }
        std::vector<InkSamples> blocks;
        for (int row = 0; row < Rows; ++row) {
            for (int column = Below(20); column < columns; column += pixels + Below(20)) {
                const int inFrame = std::min(pixels, columns - column);
                blocks.push_back({row, column, RandomBits(), RandomBits() & ~std::uint64_t{0} >> (64 - inFrame)});
            }
        }
        for (const InkSamples &block : blocks) {
            for (int i = 0; i < pixels * unit; ++i) {
                if (!(block.nShown >> (i / unit) & 1))
                    continue;
                std::uint8_t &byte = Targets(m_listExpected)[0].Row(block.nRow)[block.nColumn * unit + i];
                const bool isText = block.nText >> (i / unit) & 1;
                const std::uint8_t color = isText ? pattern.text[i] : pattern.outline[i];
                byte = static_cast<std::uint8_t>((byte & ~pattern.bits[i]) | color);
            }
        }
        GetParam().pKernel->Fill(Targets(m_listBytes)[0], blocks.data(), blocks.size(), pattern);
        ASSERT_EQ(m_listBytes, m_listExpected);
    }
}

TEST_P(SampleKernelTest, Weighs)
{
    for (int n = 0; n < 2000; ++n) {
        MeanBits bits = {1 + Below(3), {}, {}, {}};
        // The rows after nRows are random, too: they must not count.
        for (std::size_t row = 0; row < MeanRows; ++row) {
            bits.shown[row] = RandomBits();
            bits.text[row] = bits.shown[row] & RandomBits();
        }
        for (int rest = MeanWhole; rest > 0;) {
            const int weight = 1 + Below(rest);
            bits.weights[Below(bits.nRows)][Below(4)] += static_cast<std::uint8_t>(weight);
            rest -= weight;
        }
        InkMeans expected = {5, 6, {}, {}};
        for (int i = 0; i < static_cast<int>(MeanSamples); ++i) {
            for (int row = 0; row < bits.nRows; ++row) {
                for (int tap = 0; tap < 4; ++tap) {
                    const int bit = 2 * i + tap;
                    const bool isText = bits.text[row] >> bit & 1;
                    const bool isShown = bits.shown[row] >> bit & 1;
                    expected.text[i] += isText ? bits.weights[row][tap] : 0;
                    expected.outline[i] += isShown && !isText ? bits.weights[row][tap] : 0;
                }
            }
        }
        InkMeans block = {5, 6, {}, {}};
        GetParam().pKernel->Weigh(bits, block);
        ASSERT_EQ(block.text, expected.text);
        ASSERT_EQ(block.outline, expected.outline);
        ASSERT_EQ(block.nRow, 5);
        ASSERT_EQ(block.nFirst, 6);
    }
}

TEST_P(SampleKernelTest, MeansOfBytes)
{
    for (int n = 0; n < 600; ++n)
        TestMeans<std::uint8_t>({1, {}, {}, 0, 255, 0}, n);
}

TEST_P(SampleKernelTest, MeansOfWords)
{
    // 12 bits, p010, and either half of packed luma and chroma.
    const MeanPattern patterns[] = {
        {1, {}, {}, 0, 4095, 0}, {1, {}, {}, 6, 1023, 0}, {1, {}, {}, 8, 255, 0x00FF}, {1, {}, {}, 0, 255, 0xFF00}};
    for (const MeanPattern &pattern : patterns) {
        for (int n = 0; n < 300; ++n)
            TestMeans<std::uint16_t>(pattern, n);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, SampleKernelTest,
                         testing::ValuesIn(AllKernels(PortableSampleKernel(), BestSampleKernel)));

} // namespace
