// The arithmetic of coverage, for every kernel that this processor can run.
#include "frames/coverkernel.h"

#include "support/vectortargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace
{

class CoverKernelTest : public testing::TestWithParam<NamedKernel<CoverKernel>>
{
protected:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    /** One third each: 0, 255, and a value between. */
    std::uint8_t RandomCoverage() { return static_cast<std::uint8_t>(std::clamp(Below(765) - 255, 0, 255)); }
    std::vector<std::uint8_t> RandomCoverage(std::size_t count)
    {
        std::vector<std::uint8_t> list(count);
        for (std::uint8_t &byte : list)
            byte = RandomCoverage();
        return list;
    }
    CoverCodes RandomCodes()
    {
        CoverCodes codes = {1 + Below(4), {}, {}, {}};
        for (int i = 0; i < codes.nStep; ++i) {
            codes.bUsed[i] = Below(4) > 0 || codes.nStep == 1 || codes.nStep == 3;
            codes.text[i] = static_cast<std::uint16_t>(Below(255 * 256 + 1));
            codes.outline[i] = static_cast<std::uint16_t>(Below(255 * 256 + 1));
        }
        return codes;
    }
    /** A plane of random bytes, whose rows may end within a block. */
    void MakePlane(int rowBytes)
    {
        m_nRowBytes = rowBytes;
        m_nLinesize = rowBytes + Below(20);
        m_listBytes.resize(static_cast<std::size_t>(m_nLinesize) * Rows);
        for (std::uint8_t &byte : m_listBytes)
            byte = static_cast<std::uint8_t>(m_random());
        m_listExpected = m_listBytes;
    }
    PlaneTarget Target(std::vector<std::uint8_t> &bytes) const { return {bytes.data(), m_nLinesize, m_nRowBytes}; }
    const CoverKernel &Kernel() const { return *GetParam().pKernel; }

    static constexpr int Rows = 4;
    std::mt19937 m_random{5};
    int m_nRowBytes = 0;
    int m_nLinesize = 0;
    std::vector<std::uint8_t> m_listBytes, m_listExpected;
};

TEST_P(CoverKernelTest, WeighsAsInDoubles)
{
    for (int n = 0; n < 500; ++n) {
        const std::size_t count = 1 + Below(70);
        const std::vector<std::uint8_t> text = RandomCoverage(count);
        const std::vector<std::uint8_t> outline = RandomCoverage(count);
        const int opacity = Below(2) ? 255 : Below(256);
        const int quarters = 1 + Below(4);
        const int before = (4 - quarters) * 10000;
        CoverRow row;
        row.Reset(count);
        std::fill(row.text.begin(), row.text.end(), static_cast<std::uint16_t>(before));
        std::fill(row.outline.begin(), row.outline.end(), static_cast<std::uint16_t>(before));
        CoverRow portable = row;
        Kernel().Weigh(text.data(), outline.data(), count, opacity, quarters, row.text.data(), row.outline.data());
        PortableCoverKernel().Weigh(text.data(), outline.data(), count, opacity, quarters, portable.text.data(),
                                    portable.outline.data());
        ASSERT_EQ(row.text, portable.text);
        ASSERT_EQ(row.outline, portable.outline);
        for (std::size_t i = 0; i < count; ++i) {
            const double part = 65535 * opacity / 255.0 * quarters / 4;
            ASSERT_NEAR(row.text[i] - before, part * text[i] / 255, 5);
            ASSERT_NEAR(row.outline[i] - before, part * (255 - text[i]) * outline[i] / 65025, 6);
        }
    }
}

TEST_P(CoverKernelTest, HalvesAsInDoubles)
{
    for (int n = 0; n < 500; ++n) {
        const std::size_t count = 1 + Below(70);
        std::vector<std::uint16_t> from(2 * count + 2);
        for (std::uint16_t &weight : from)
            weight = static_cast<std::uint16_t>(m_random());
        for (const std::array<int, 4> &weights : {std::array{1, 2, 1, 0}, {0, 2, 2, 0}, {0, 1, 2, 1}}) {
            std::vector<std::uint16_t> to(count);
            std::vector<std::uint16_t> portable(count);
            Kernel().Halve(from.data(), count, weights, to.data());
            PortableCoverKernel().Halve(from.data(), count, weights, portable.data());
            ASSERT_EQ(to, portable);
            for (std::size_t i = 0; i < count; ++i) {
                double sum = 0;
                for (std::size_t k = 0; k < 4; ++k)
                    sum += weights[k] * from[2 * i + k];
                ASSERT_NEAR(to[i], sum / 4, 4);
            }
        }
    }
}

TEST_P(CoverKernelTest, BlendsPixelsAsInDoubles)
{
    for (int n = 0; n < 400; ++n) {
        const CoverCodes codes = RandomCodes();
        const int width = 1 + Below(90);
        MakePlane(width * codes.nStep);
        const std::vector<std::uint8_t> text = RandomCoverage(static_cast<std::size_t>(width) * Rows);
        const std::vector<std::uint8_t> outline = RandomCoverage(text.size());
        const int opacity = Below(2) ? 255 : Below(256);
        std::vector<Span> spans;
        for (int row = 0; row < Rows; ++row) {
            const int first = Below(width);
            const std::size_t at = static_cast<std::size_t>(row) * width + first;
            spans.push_back({row, first, 1 + Below(width - first), at});
        }
        const std::vector<std::uint8_t> before = m_listBytes;
        const CoveredPixels pixels = {spans, text.data(), outline.data(), opacity};
        Kernel().BlendPixels(Target(m_listBytes), pixels, codes);
        PortableCoverKernel().BlendPixels(Target(m_listExpected), pixels, codes);
        ASSERT_EQ(m_listBytes, m_listExpected);
        for (const Span &span : spans) {
            for (int i = 0; i < span.nCount * codes.nStep; ++i) {
                const std::size_t pixel = span.nAt + i / codes.nStep;
                const std::size_t byte =
                    static_cast<std::size_t>(span.nRow) * m_nLinesize + span.nFirst * codes.nStep + i;
                const double ofText = text[pixel] / 255.0 * opacity / 255;
                const double ofOutline = (255 - text[pixel]) * outline[pixel] / 65025.0 * opacity / 255;
                const int part = i % codes.nStep;
                const double expected = ofText * codes.text[part] / 256 + ofOutline * codes.outline[part] / 256 +
                                        (1 - ofText - ofOutline) * before[byte];
                ASSERT_NEAR(m_listBytes[byte], codes.bUsed[part] ? expected : before[byte], 0.55);
            }
        }
    }
}

TEST_P(CoverKernelTest, BlendsWeightsAsInDoubles)
{
    for (int n = 0; n < 400; ++n) {
        const CoverCodes codes = RandomCodes();
        const int width = 1 + Below(90);
        MakePlane(width * codes.nStep);
        CoverList list;
        std::array<CoverRow, Rows> rows;
        const int first = Below(width);
        for (int row = 0; row < Rows; ++row) {
            rows[row].Reset(width - first);
            for (int i = 0; i < width - first; ++i) {
                const int sum = Below(2) ? Below(65536) : 0;
                rows[row].text[i] = static_cast<std::uint16_t>(Below(sum + 1));
                rows[row].outline[i] = static_cast<std::uint16_t>(sum - rows[row].text[i]);
            }
            list.Add(row, first, rows[row]);
        }
        const std::vector<std::uint8_t> before = m_listBytes;
        Kernel().Blend(Target(m_listBytes), list, codes);
        PortableCoverKernel().Blend(Target(m_listExpected), list, codes);
        ASSERT_EQ(m_listBytes, m_listExpected);
        for (std::size_t byte = 0; byte < before.size(); ++byte) {
            const int row = static_cast<int>(byte / m_nLinesize);
            const int inRow = static_cast<int>(byte % m_nLinesize);
            const int part = inRow % codes.nStep;
            double expected = before[byte];
            if (inRow < m_nRowBytes && inRow / codes.nStep >= first && codes.bUsed[part]) {
                const double ofText = rows[row].text[inRow / codes.nStep - first] / 65535.0;
                const double ofOutline = rows[row].outline[inRow / codes.nStep - first] / 65535.0;
                expected = ofText * codes.text[part] / 256 + ofOutline * codes.outline[part] / 256 +
                           (1 - ofText - ofOutline) * before[byte];
            }
            ASSERT_NEAR(m_listBytes[byte], expected, 0.55);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, CoverKernelTest,
                         testing::ValuesIn(AllKernels(PortableCoverKernel(), BestCoverKernel)));

} // namespace
