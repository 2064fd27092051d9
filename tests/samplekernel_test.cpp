// The arithmetic of burning into samples, by all kernels that this processor can run.
#include "frames/samplekernel.h"

#include "support/vectortargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr int Rows = 3;
constexpr int RowSamples = 150;

/** A plane of random bytes that begins at any byte, spans in it, and what belongs to their samples. */
class SampleKernelTest : public testing::TestWithParam<NamedKernel<SampleKernel>>
{
protected:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }

    void MakePlane(int sampleBytes)
    {
        m_nStart = Below(33);
        m_nLinesize = RowSamples * sampleBytes + Below(20);
        m_listBytes.resize(m_nStart + static_cast<std::size_t>(m_nLinesize) * Rows);
        for (std::uint8_t &byte : m_listBytes)
            byte = static_cast<std::uint8_t>(m_random());
        m_listSpans.clear();
        std::size_t at = Below(3);
        for (int row = 0; row < Rows; ++row) {
            for (int first = Below(20); first < RowSamples; first += 1 + Below(20)) {
                const int count = 1 + Below(Below(3) == 0 ? RowSamples - first : std::min(40, RowSamples - first));
                m_listSpans.push_back({row, first, count, at});
                first += count;
                at += count;
            }
        }
        m_listKeep.resize(at);
        m_listValues.resize(at);
        m_listAdd.resize(at);
    }

    PlaneTarget Target(std::vector<std::uint8_t> &bytes) const { return {bytes.data() + m_nStart, m_nLinesize}; }

    /** Means with every part of the old sample, and sums that fit for the largest one. */
    void MakeMeans(int max)
    {
        for (std::size_t i = 0; i < m_listKeep.size(); ++i) {
            const int keep = Below(MeanWhole + 1);
            m_listKeep[i] = static_cast<std::uint8_t>(keep);
            m_listAdd[i] = static_cast<std::uint16_t>(Below((MeanWhole - keep) * max + 1) + MeanWhole / 2);
        }
    }

    std::vector<std::uint8_t> m_listBytes;
    int m_nStart = 0;
    std::ptrdiff_t m_nLinesize = 0;
    std::vector<Span> m_listSpans;
    std::vector<std::uint8_t> m_listKeep;
    std::vector<std::uint8_t> m_listValues;
    std::vector<std::uint16_t> m_listAdd;
    std::mt19937 m_random{1};
};

TEST_P(SampleKernelTest, Fills)
{
    for (int n = 0; n < 300; ++n) {
        MakePlane(1);
        for (std::uint8_t &value : m_listValues)
            value = static_cast<std::uint8_t>(m_random());
        for (std::uint8_t &keep : m_listKeep)
            keep = static_cast<std::uint8_t>(Below(3) == 0 ? m_random() : Below(2) * 255);
        std::vector<std::uint8_t> expected = m_listBytes;
        for (const Span &span : m_listSpans) {
            for (int i = 0; i < span.nCount; ++i) {
                std::uint8_t &byte = Target(expected).Row(span.nRow)[span.nFirst + i];
                byte = static_cast<std::uint8_t>((byte & m_listKeep[span.nAt + i]) | m_listValues[span.nAt + i]);
            }
        }
        GetParam().pKernel->Fill(Target(m_listBytes), m_listSpans.data(), m_listSpans.size(), m_listValues.data(),
                                 m_listKeep.data());
        ASSERT_EQ(m_listBytes, expected);
    }
}

TEST_P(SampleKernelTest, MeansOfBytes)
{
    for (int n = 0; n < 300; ++n) {
        MakePlane(1);
        MakeMeans(255);
        std::vector<std::uint8_t> expected = m_listBytes;
        for (const Span &span : m_listSpans) {
            for (int i = 0; i < span.nCount; ++i) {
                std::uint8_t &byte = Target(expected).Row(span.nRow)[span.nFirst + i];
                byte = static_cast<std::uint8_t>((m_listAdd[span.nAt + i] + m_listKeep[span.nAt + i] * byte) / 16);
            }
        }
        GetParam().pKernel->Mean8(Target(m_listBytes), m_listSpans.data(), m_listSpans.size(), m_listAdd.data(),
                                  m_listKeep.data());
        ASSERT_EQ(m_listBytes, expected);
    }
}

TEST_P(SampleKernelTest, MeansOfWords)
{
    for (int n = 0; n < 600; ++n) {
        const int shift = n % 2 == 0 ? 0 : 6; // as p010
        const int bits = n % 4 == 0 ? 12 : 10;
        MakePlane(2);
        for (std::size_t i = m_nStart; i + 1 < m_listBytes.size(); i += 2) {
            const auto word = static_cast<std::uint16_t>(Below(1 << bits) << shift);
            std::memcpy(&m_listBytes[i], &word, 2);
        }
        m_nLinesize &= ~std::ptrdiff_t{1};
        MakeMeans((1 << bits) - 1);
        std::vector<std::uint8_t> expected = m_listBytes;
        for (const Span &span : m_listSpans) {
            for (int i = 0; i < span.nCount; ++i) {
                std::uint8_t *at = Target(expected).Row(span.nRow) + std::ptrdiff_t{2} * (span.nFirst + i);
                std::uint16_t word = 0;
                std::memcpy(&word, at, 2);
                const int mean = (m_listAdd[span.nAt + i] + m_listKeep[span.nAt + i] * (word >> shift)) / 16;
                word = static_cast<std::uint16_t>(mean << shift);
                std::memcpy(at, &word, 2);
            }
        }
        GetParam().pKernel->Mean16(Target(m_listBytes), m_listSpans.data(), m_listSpans.size(), m_listAdd.data(),
                                   m_listKeep.data(), shift);
        ASSERT_EQ(m_listBytes, expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, SampleKernelTest,
                         testing::ValuesIn(AllKernels(PortableSampleKernel(), BestSampleKernel)));

} // namespace
