// The arithmetic of mixing into samples, for every kernel that this processor can run.
#include "frames/mixkernel.h"

#include "support/vectortargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

namespace
{

/** Multiples of MixStep, some of which leave a rest after a kernel's longer steps. */
constexpr std::size_t Counts[] = {32, 64, 480, 512};

class MixKernelTest : public testing::TestWithParam<NamedKernel<MixKernel>>
{
protected:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    std::uint64_t RandomBits() { return std::uint64_t{m_random()} << 32 | m_random(); }
    const MixKernel &Kernel() const { return *GetParam().pKernel; }

    template <typename List>
    void Fill(List &list)
    {
        for (auto &number : list)
            number = static_cast<typename List::value_type>(m_random());
    }

    /** Random samples of the settings' format; half of them are the least or the largest. */
    void FillSamples(MixSamples &samples, const MixSettings &settings)
    {
        const int mask = settings.nMask >> settings.nUp;
        for (std::uint16_t &sample : samples) {
            const int kind = Below(4);
            sample = static_cast<std::uint16_t>(kind == 0 ? 0 : kind == 1 ? mask : m_random() & mask);
        }
    }

    /** Random shares below @p whole, or Untouched. */
    void FillShares(std::array<std::int16_t, MixChunk> &shares, int whole)
    {
        for (std::int16_t &share : shares)
            share = static_cast<std::int16_t>(Below(4) == 0 ? -1 : Below(whole));
    }

    /** 8, 10 and 12 bits, p010, and 16 bits, with weights like those of colour matrices. */
    std::vector<MixSettings> AllSettings()
    {
        std::vector<MixSettings> list;
        for (const auto &[up, mask] : {std::pair{8, 0xFF00}, {6, 0xFFC0}, {4, 0xFFF0}, {0, 0xFFC0}, {0, 0xFFFF}}) {
            const auto weight = [this] { return static_cast<std::int16_t>(Below(16000) - 8000); };
            list.push_back({false,
                            up,
                            static_cast<std::uint16_t>(mask),
                            {weight(), weight()},
                            {{{weight(), weight()}, {weight(), weight()}}}});
        }
        return list;
    }

    static int Number(std::uint16_t sample, const MixSettings &settings)
    {
        return (sample << settings.nUp & settings.nMask) - 32768;
    }
    static int Product(double number, double share)
    {
        return static_cast<int>(std::floor(number * share / 32768 + 0.5));
    }
    static int Sum(int first, int second) { return std::min(std::max(first + second, -32768), 32767); }
    static int Signed(std::uint16_t number) { return number < 32768 ? number : number - 65536; }
    /** The nearest code value, clamped to the largest. */
    static std::uint16_t Sample(int number, const MixSettings &settings)
    {
        const int step = 65536 - settings.nMask;
        const int code = std::min((number + 32768 + step / 2) / step, 65536 / step - 1);
        return static_cast<std::uint16_t>(code * step >> settings.nUp);
    }

    std::mt19937 m_random{1};
};

TEST_P(MixKernelTest, SplitsAndJoinsRows)
{
    std::vector<RowForm> forms = {{4, 1, {20, 10, 0}}};
    for (int step = 1; step <= 4; ++step) {
        forms.push_back({1, step, {}});
        forms.push_back({2, step, {}});
    }
    for (const RowForm &form : forms) {
        for (const std::size_t count : Counts) {
            const int start = Below(17);
            std::vector<std::uint8_t> bytes(start + count * form.Bytes() + 64);
            Fill(bytes);
            const std::vector<std::uint8_t> before = bytes;
            // Elements are in the machine's byte order.
            const auto elementAt = [&](const std::vector<std::uint8_t> &list, std::size_t element) {
                std::uint32_t value = 0;
                std::memcpy(&value, &list[start + element * form.nElementBytes], form.nElementBytes);
                return value;
            };
            const int channels = form.IsPacked() ? 3 : form.nStep;
            const auto sampleAt = [&](const std::vector<std::uint8_t> &list, std::size_t i, int channel) {
                return form.IsPacked() ? elementAt(list, i) >> form.shifts[channel] & 0x3FF
                                       : elementAt(list, i * form.nStep + channel);
            };
            Channels samples;
            Kernel().Split(bytes.data() + start, count, form, samples);
            for (int channel = 0; channel < channels; ++channel) {
                for (std::size_t i = 0; i < count; ++i) {
                    ASSERT_EQ(samples[channel][i], sampleAt(before, i, channel));
                    samples[channel][i] ^= 0x55;
                }
            }
            Kernel().Join(samples, count, form, bytes.data() + start);
            for (int channel = 0; channel < channels; ++channel) {
                for (std::size_t i = 0; i < count; ++i)
                    ASSERT_EQ(sampleAt(bytes, i, channel), sampleAt(before, i, channel) ^ 0x55);
            }
            for (std::size_t i = 0; form.IsPacked() && i < count; ++i)
                ASSERT_EQ(elementAt(bytes, i) >> 30, elementAt(before, i) >> 30);
            const std::size_t end = start + count * form.Bytes();
            ASSERT_TRUE(std::equal(bytes.begin(), bytes.begin() + start, before.begin()));
            ASSERT_TRUE(std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(end), bytes.end(),
                                   before.begin() + static_cast<std::ptrdiff_t>(end)));
        }
    }
}

TEST_P(MixKernelTest, SpreadsText)
{
    for (int n = 0; n < 200; ++n) {
        const std::size_t count = 1 + Below(8);
        std::vector<InkSamples> blocks;
        for (std::size_t i = 0; i < count; ++i)
            blocks.push_back({0, 0, RandomBits(), RandomBits()});
        InkMix mix = {1 + n % 4, {}, {}, static_cast<std::int16_t>(Below(32768))};
        Fill(mix.text);
        Fill(mix.outline);
        InkMixLists lists;
        Kernel().SpreadSamples(blocks.data(), count, mix, lists);
        for (std::size_t i = 0; i < 32 * count; ++i) {
            const bool isText = blocks[i / 32].nText >> i % 32 & 1;
            const bool isShown = blocks[i / 32].nShown >> i % 32 & 1;
            ASSERT_EQ(lists.listRest[i], isShown ? mix.nRest : -1);
            for (int component = 0; isShown && component < mix.nComponents; ++component)
                ASSERT_EQ(lists.listBases[component][i], (isText ? mix.text : mix.outline)[component]);
        }
    }
}

TEST_P(MixKernelTest, SpreadsMeans)
{
    for (int n = 0; n < 200; ++n) {
        const std::size_t count = 1 + Below(16);
        std::vector<InkMeans> blocks(count);
        for (InkMeans &block : blocks) {
            for (std::size_t i = 0; i < MeanSamples; ++i) {
                block.text[i] = static_cast<std::uint8_t>(Below(2) * Below(17));
                block.outline[i] = static_cast<std::uint8_t>(Below(2) * Below(17 - block.text[i]));
            }
        }
        InkMix mix = {2, {}, {}, static_cast<std::int16_t>(Below(32768))};
        for (auto *list : {&mix.text, &mix.outline}) {
            for (std::uint16_t &base : *list)
                base = static_cast<std::uint16_t>(Below(65000) - 32500);
        }
        InkMixLists lists;
        Kernel().SpreadMeans(blocks.data(), count, mix, lists);
        for (std::size_t i = 0; i < 16 * count; ++i) {
            const int text = blocks[i / 16].text[i % 16];
            const int outline = blocks[i / 16].outline[i % 16];
            if (text + outline == 0) {
                ASSERT_EQ(lists.listRest[i], -1);
                continue;
            }
            // Halves are rounded down: the kernel multiplies by negative shares, rounds halves up, and negates.
            ASSERT_EQ(lists.listRest[i], static_cast<int>(std::ceil(mix.nRest * (text + outline) / 16.0 - 0.5)));
            ASSERT_EQ(lists.listKeep[i], (16 - text - outline) * 2048);
            for (int component = 0; component < 2; ++component) {
                const double ofText = std::ceil(Signed(mix.text[component]) * text / 16.0 - 0.5);
                const double ofOutline = std::ceil(Signed(mix.outline[component]) * outline / 16.0 - 0.5);
                ASSERT_EQ(Signed(lists.listBases[component][i]), ofText + ofOutline);
            }
        }
    }
}

TEST_P(MixKernelTest, TintsByThePair)
{
    for (int n = 0; n < 50; ++n) {
        for (const MixSettings &settings : AllSettings()) {
            const bool isTwice = n % 2 == 1;
            const std::size_t count = isTwice ? 256 : Counts[n % 4];
            MixSamples first;
            MixSamples second;
            MixSamples tints;
            FillSamples(first, settings);
            FillSamples(second, settings);
            Kernel().Tint(first, second, count, isTwice, settings, tints);
            for (std::size_t i = 0; i < count * (isTwice ? 2 : 1); ++i) {
                const std::size_t pair = isTwice ? i / 2 : i;
                const int tint = Product(Number(first[pair], settings), settings.single[0]) +
                                 Product(Number(second[pair], settings), settings.single[1]);
                ASSERT_EQ(Signed(tints[i]), tint);
            }
        }
    }
}

TEST_P(MixKernelTest, MixesSingleSamples)
{
    for (int n = 0; n < 200; ++n) {
        for (const MixSettings &settings : AllSettings()) {
            const std::size_t count = Counts[n % 4];
            MixSamples samples;
            MixSamples tints;
            MixSamples bases;
            std::array<std::int16_t, MixChunk> rests;
            FillSamples(samples, settings);
            Fill(tints);
            Fill(bases);
            FillShares(rests, 32768);
            const MixSamples before = samples;
            const bool isTinted = n % 3 > 0;
            Kernel().MixSingle(samples, isTinted ? &tints : nullptr, count, bases.data(), rests.data(), settings);
            for (std::size_t i = 0; i < samples.size(); ++i) {
                const int mixed = Sum(Signed(bases[i]), Product(Number(before[i], settings), rests[i]));
                const int tint = isTinted ? Product(Signed(tints[i]), rests[i]) : 0;
                const bool isMixed = i < count && rests[i] >= 0;
                ASSERT_EQ(samples[i], isMixed ? Sample(Sum(mixed, tint), settings) : before[i]);
            }
        }
    }
}

TEST_P(MixKernelTest, MixesPairs)
{
    for (int n = 0; n < 200; ++n) {
        for (const MixSettings &settings : AllSettings()) {
            const std::size_t count = Counts[n % 4];
            const std::size_t base = n % 3;
            const bool isMean = n % 2 == 1;
            std::array<MixSamples, 2> samples;
            InkMixLists lists;
            for (MixSamples &list : samples)
                FillSamples(list, settings);
            for (MixSamples &list : lists.listBases)
                Fill(list);
            FillShares(lists.listRest, 32768);
            for (std::int16_t &keep : lists.listKeep)
                keep = static_cast<std::int16_t>(Below(16) * 2048);
            const std::array<MixSamples, 2> before = samples;
            Kernel().MixPair(samples[0], samples[1], count, lists.Of(isMean), base, settings);
            for (std::size_t i = 0; i < MixChunk; ++i) {
                const int rest = lists.listRest[i];
                for (std::size_t of = 0; of < 2; ++of) {
                    const std::array<int, 2> old = {Number(before[0][i], settings), Number(before[1][i], settings)};
                    const int kept = isMean ? Product(old[of], lists.listKeep[i]) : 0;
                    const int sum = Sum(Sum(Signed(lists.listBases[base + of][i]), kept), Product(old[1 - of], rest));
                    const int tint = Product(old[0], settings.pair[of][0]) + Product(old[1], settings.pair[of][1]);
                    const std::uint16_t mixed = Sample(Sum(sum, Product(tint, rest)), settings);
                    ASSERT_EQ(samples[of][i], i < count && rest >= 0 ? mixed : before[of][i]);
                }
            }
        }
    }
}

TEST_P(MixKernelTest, MixesBytesAsInRgb24)
{
    const MixSettings settings = {true, 8, 0xFF00, {}, {}};
    for (int n = 0; n < 1000; ++n) {
        std::array<MixSamples, 3> samples;
        InkMixLists lists;
        for (MixSamples &list : samples)
            FillSamples(list, settings);
        FillShares(lists.listRest, 256);
        for (MixSamples &list : lists.listBases) {
            for (std::size_t i = 0; i < MixChunk; ++i)
                list[i] = static_cast<std::uint16_t>((255 - std::max<int>(lists.listRest[i], 0)) * Below(256));
        }
        const std::array<MixSamples, 3> before = samples;
        Kernel().MixSingle(samples[2], nullptr, MixChunk, lists.listBases[2].data(), lists.listRest.data(), settings);
        Kernel().MixPair(samples[0], samples[1], MixChunk, lists.Of(false), 0, settings);
        for (std::size_t i = 0; i < MixChunk; ++i) {
            const int rest = lists.listRest[i];
            for (std::size_t of = 0; of < 3; ++of) {
                const std::uint16_t other = before[of == 2 ? 2 : 1 - of][i];
                ASSERT_EQ(samples[of][i], rest < 0 ? before[of][i] : (lists.listBases[of][i] + rest * other) / 255);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, MixKernelTest, testing::ValuesIn(AllKernels(PortableMixKernel(), BestMixKernel)));

} // namespace
