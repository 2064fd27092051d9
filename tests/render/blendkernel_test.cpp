#include "render/blendkernel.h"

#include "support/vectortargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{

constexpr int Rows = 3;
constexpr int MostPadding = 33;
constexpr InkColors Colors = {{10, 130, 250}, {201, 7, 77}};

void BlendPixelPlainly(std::uint8_t *pixel, const std::uint8_t *color, int weight)
{
    const int rest = 255 - weight;
    const int old[3] = {pixel[0], pixel[1], pixel[2]};
    for (int i = 0; i < 3; ++i)
        pixel[i] = static_cast<std::uint8_t>((weight * color[i] + rest * old[2 - i]) / 255);
}

/** Rows of random bytes with padding before each, so that the last row ends at the end of the buffer. */
struct Frame {
    int nWidth;
    int nPadding;
    std::vector<std::uint8_t> listBytes;

    BlendTarget Target(int offset = 0) { return {listBytes.data() + nPadding, nWidth * 3 + nPadding, nWidth, offset}; }
};

class BlendKernelTest : public testing::TestWithParam<NamedKernel<BlendKernel>>
{
protected:
    std::vector<std::uint8_t> RandomBytes(std::size_t count)
    {
        std::vector<std::uint8_t> bytes(count);
        for (std::uint8_t &byte : bytes)
            byte = static_cast<std::uint8_t>(m_random());
        return bytes;
    }

    Frame RandomFrame(int width, int padding)
    {
        return {width, padding, RandomBytes(static_cast<std::size_t>(width * 3 + padding) * Rows)};
    }

    /** Blocks that adjoin each other, leave gaps, or extend past the end of a row. */
    template <typename Block>
    std::vector<Block> RandomBlocks(int width)
    {
        std::vector<Block> blocks;
        for (int row = 0; row < Rows; ++row) {
            int column = static_cast<int>(m_random() % 3);
            while (column < width) {
                Block block = {};
                block.nRow = row;
                block.nColumn = column;
                blocks.push_back(block);
                column += BlockPixels + (m_random() % 2 ? 0 : static_cast<int>(m_random() % 7));
            }
        }
        return blocks;
    }

    std::vector<InkBlock> RandomInk(int width)
    {
        std::vector<InkBlock> blocks = RandomBlocks<InkBlock>(width);
        for (InkBlock &block : blocks) {
            block.nText = static_cast<std::uint16_t>(m_random() % (1 << BlockPixels));
            block.nShown = static_cast<std::uint16_t>(m_random() % (1 << BlockPixels));
        }
        return blocks;
    }

    std::vector<PictureBlock> RandomPicture(int width, int untouched)
    {
        std::vector<PictureBlock> blocks = RandomBlocks<PictureBlock>(width);
        for (PictureBlock &block : blocks) {
            block.weights.fill(static_cast<std::uint8_t>(untouched));
            for (std::uint8_t &byte : block.colors)
                byte = static_cast<std::uint8_t>(m_random());
            for (int i = 0; i < BlockPixels; ++i)
                block.weights[i] = static_cast<std::uint8_t>(m_random() % 4 ? m_random() : untouched);
        }
        return blocks;
    }

    std::mt19937 m_random{7};
};

void DrawPlainly(const BlendTarget &target, const std::vector<InkBlock> &blocks, int weight)
{
    for (const InkBlock &block : blocks)
        for (int i = 0; i < BlockPixels && block.nColumn + i < target.nWidth; ++i)
            if (block.nShown >> i & 1)
                BlendPixelPlainly(target.At(block.nRow, block.nColumn + i),
                                  block.nText >> i & 1 ? Colors.text.data() : Colors.outline.data(), weight);
}

void DrawPlainly(const BlendTarget &target, const std::vector<PictureBlock> &blocks, int untouched)
{
    for (const PictureBlock &block : blocks)
        for (int i = 0; i < BlockPixels && block.nColumn + i < target.nWidth; ++i)
            if (block.weights[i] != untouched)
                BlendPixelPlainly(target.At(block.nRow, block.nColumn + i), block.colors.data() + std::ptrdiff_t{3} * i,
                                  block.weights[i]);
}

} // namespace

TEST_P(BlendKernelTest, InkAtEveryWidthAndAlignment)
{
    for (int width = 1; width <= 200; ++width) {
        for (int padding = 0; padding < MostPadding; ++padding) {
            Frame frame = RandomFrame(width, padding);
            Frame expected = frame;
            const std::vector<InkBlock> blocks = RandomInk(width);
            DrawPlainly(expected.Target(), blocks, 255);
            GetParam().pKernel->Write(frame.Target(), blocks.data(), blocks.size(), Colors);
            ASSERT_EQ(frame.listBytes, expected.listBytes) << "written, width " << width << ", padding " << padding;

            const int weight = static_cast<int>(m_random() % 256);
            DrawPlainly(expected.Target(), blocks, weight);
            GetParam().pKernel->Mix(frame.Target(), blocks.data(), blocks.size(), Colors, weight);
            ASSERT_EQ(frame.listBytes, expected.listBytes)
                << "mixed, width " << width << ", padding " << padding << ", weight " << weight;
        }
    }
}

TEST_P(BlendKernelTest, PicturesAtEveryWidthAndAlignment)
{
    for (int width = 1; width <= 200; ++width) {
        for (int padding = 0; padding < MostPadding; ++padding) {
            const int untouched = padding % 2 ? 0 : 255;
            Frame frame = RandomFrame(width, padding);
            Frame expected = frame;
            const std::vector<PictureBlock> blocks = RandomPicture(width, untouched);
            DrawPlainly(expected.Target(), blocks, untouched);
            GetParam().pKernel->MixPicture(frame.Target(), blocks.data(), blocks.size(), untouched);
            ASSERT_EQ(frame.listBytes, expected.listBytes) << "width " << width << ", padding " << padding;
        }
    }
}

TEST_P(BlendKernelTest, NoBlocks)
{
    Frame frame = RandomFrame(20, 0);
    const Frame before = frame;
    GetParam().pKernel->Write(frame.Target(), nullptr, 0, Colors);
    GetParam().pKernel->Mix(frame.Target(), nullptr, 0, Colors, 128);
    GetParam().pKernel->MixPicture(frame.Target(), nullptr, 0, 255);
    EXPECT_EQ(frame.listBytes, before.listBytes);
}

TEST_P(BlendKernelTest, RowsAreCountedFromTheOffset)
{
    Frame frame = RandomFrame(20, 0);
    Frame expected = frame;
    const std::vector<InkBlock> blocks = {{-40, 3, 5, 7}, {-39, 4, 5, 7}};
    DrawPlainly(expected.Target(41), blocks, 255);
    GetParam().pKernel->Write(frame.Target(41), blocks.data(), blocks.size(), Colors);
    EXPECT_EQ(frame.listBytes, expected.listBytes);
}

TEST_P(BlendKernelTest, EveryWeightColourAndOldByte)
{
    constexpr int Width = 256;
    std::vector<PictureBlock> blocks((Width - 1) / BlockPixels + 1);
    for (int color = 0; color < Width; ++color) {
        const int place = color % BlockPixels;
        PictureBlock &block = blocks[color / BlockPixels];
        block.nColumn = color - place;
        std::fill_n(block.colors.begin() + std::ptrdiff_t{3} * place, 3, static_cast<std::uint8_t>(color));
    }
    for (int weight = 0; weight <= 255; ++weight) {
        const int untouched = weight == 0 ? 255 : 0;
        for (PictureBlock &block : blocks)
            block.weights.fill(static_cast<std::uint8_t>(weight));
        for (int old = 0; old <= 255; ++old) {
            Frame frame = {Width, 0, std::vector<std::uint8_t>(3 * Width, static_cast<std::uint8_t>(old))};
            Frame expected = frame;
            DrawPlainly(expected.Target(), blocks, untouched);
            GetParam().pKernel->MixPicture(frame.Target(), blocks.data(), blocks.size(), untouched);
            ASSERT_EQ(frame.listBytes, expected.listBytes) << weight << " " << old;
        }
    }
}

TEST_P(BlendKernelTest, EveryWeightOfInkAndOldByte)
{
    constexpr int Width = 256;
    std::vector<InkBlock> blocks;
    for (int column = 0; column < Width; column += BlockPixels)
        blocks.push_back({0, column, 0x155, 0x3FF});
    for (int weight = 0; weight <= 255; ++weight) {
        Frame frame = {Width, 0, std::vector<std::uint8_t>(3 * Width)};
        for (int i = 0; i < 3 * Width; ++i)
            frame.listBytes[i] = static_cast<std::uint8_t>(i % 3 == 0 ? i / 3 : 255 - i / 3);
        Frame expected = frame;
        DrawPlainly(expected.Target(), blocks, weight);
        GetParam().pKernel->Mix(frame.Target(), blocks.data(), blocks.size(), Colors, weight);
        ASSERT_EQ(frame.listBytes, expected.listBytes) << weight;
    }
}

TEST(BlendKernelChoice, EachInstructionSetHasItsOwnKernelAndTheBestIsTaken)
{
    const std::vector<NamedKernel<BlendKernel>> all = AllKernels(PortableKernel(), BestKernel);
    std::set<const BlendKernel *> distinct;
    for (const auto &kernel : all)
        distinct.insert(kernel.pKernel);
    EXPECT_EQ(distinct.size(), all.size());
    EXPECT_EQ(&BestKernel(), all[all.size() > 1 ? 1 : 0].pKernel);
}

INSTANTIATE_TEST_SUITE_P(Kernels, BlendKernelTest, testing::ValuesIn(AllKernels(PortableKernel(), BestKernel)),
                         [](const auto &info) { return info.param.strName; });
