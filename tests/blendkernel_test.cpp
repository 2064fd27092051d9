#include "render/blendkernel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace
{

constexpr std::size_t Guard = 64;

void BlendPixelPlainly(std::uint8_t *pixel, const std::uint8_t *color, int weight)
{
    const int rest = 255 - weight;
    const int old[3] = {pixel[0], pixel[1], pixel[2]};
    for (int i = 0; i < 3; ++i)
        pixel[i] = static_cast<std::uint8_t>((weight * color[i] + rest * old[2 - i]) / 255);
}

class BlendKernelTest : public testing::TestWithParam<const BlendKernel *>
{
protected:
    std::vector<std::uint8_t> RandomBytes(std::size_t count)
    {
        std::vector<std::uint8_t> bytes(count);
        for (std::uint8_t &byte : bytes)
            byte = static_cast<std::uint8_t>(m_random());
        return bytes;
    }

    std::mt19937 m_random{7};
};

} // namespace

TEST_P(BlendKernelTest, EveryCountAndAlignment)
{
    for (std::size_t count = 0; count <= 200; ++count) {
        for (std::size_t alignment = 0; alignment < 33; ++alignment) {
            const std::vector<std::uint8_t> colors = RandomBytes(3 * count);
            std::vector<std::uint8_t> weights(3 * count);
            std::vector<std::uint8_t> pixels = RandomBytes(alignment + 3 * count + Guard);
            std::vector<std::uint8_t> expected = pixels;
            for (std::size_t i = 0; i < count; ++i) {
                const int weight = static_cast<int>(m_random() % 256);
                std::fill_n(weights.begin() + static_cast<std::ptrdiff_t>(3 * i), 3, static_cast<std::uint8_t>(weight));
                BlendPixelPlainly(expected.data() + alignment + 3 * i, colors.data() + 3 * i, weight);
            }
            GetParam()->Blend(pixels.data() + alignment, colors.data(), weights.data(), count);
            ASSERT_EQ(pixels, expected) << count << " pixels, alignment " << alignment;
        }
    }
}

TEST_P(BlendKernelTest, EvenlyEveryCountAndWeight)
{
    for (std::size_t count = 0; count <= 40; ++count) {
        for (int weight = 0; weight <= 255; ++weight) {
            const std::vector<std::uint8_t> colors = RandomBytes(3 * count);
            std::vector<std::uint8_t> pixels = RandomBytes(3 * count + Guard);
            std::vector<std::uint8_t> expected = pixels;
            for (std::size_t i = 0; i < count; ++i)
                BlendPixelPlainly(expected.data() + 3 * i, colors.data() + 3 * i, weight);
            GetParam()->BlendEvenly(pixels.data(), colors.data(), weight, count);
            ASSERT_EQ(pixels, expected) << count << " pixels, weight " << weight;
        }
    }
}

TEST_P(BlendKernelTest, EveryWeightColourAndOldByte)
{
    std::vector<std::uint8_t> colors(3 * 256);
    for (int weight = 0; weight <= 255; ++weight) {
        for (int old = 0; old <= 255; ++old) {
            std::vector<std::uint8_t> pixels(3 * 256, static_cast<std::uint8_t>(old));
            std::vector<std::uint8_t> expected = pixels;
            for (int i = 0; i < 3 * 256; ++i)
                colors[i] = static_cast<std::uint8_t>(i / 3);
            for (std::size_t i = 0; i < 256; ++i)
                BlendPixelPlainly(expected.data() + 3 * i, colors.data() + 3 * i, weight);
            GetParam()->BlendEvenly(pixels.data(), colors.data(), weight, 256);
            ASSERT_EQ(pixels, expected) << weight << " " << old;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, BlendKernelTest, testing::Values(&PortableKernel(), &BestKernel()),
                         [](const auto &info) { return info.index == 0 ? "Portable" : "Best"; });
