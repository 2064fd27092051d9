// Compares MergedYuv, which the benchmarks of libass use, with the same blending computed in doubles, image by image.
#include "listblender.h"
#include "mergedyuv.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace
{

constexpr int Width = 192;
constexpr int Height = 40;

/** Masks with runs of 0, of 255 and of values between, at random positions, odd ones included. */
class ImageList
{
public:
    explicit ImageList(unsigned seed)
    {
        std::mt19937 random(seed);
        m_listMasks.resize(4);
        m_listImages.resize(m_listMasks.size());
        for (std::size_t i = 0; i < m_listImages.size(); ++i) {
            ASS_Image &image = m_listImages[i];
            image = {};
            image.w = 1 + static_cast<int>(random() % 120);
            image.h = 1 + static_cast<int>(random() % 30);
            image.stride = image.w + static_cast<int>(random() % 9);
            image.dst_x = static_cast<int>(random() % (Width - image.w));
            image.dst_y = static_cast<int>(random() % (Height - image.h));
            image.color = random() << 8 | (i % 2 == 0 ? 0 : random() % 256);
            while (m_listMasks[i].size() < static_cast<std::size_t>(image.stride) * image.h) {
                const int kind = static_cast<int>(random() % 3);
                const std::uint8_t value = kind == 0 ? 0 : kind == 1 ? 255 : random() % 256;
                m_listMasks[i].insert(m_listMasks[i].end(), kind == 2 ? 3 : 1 + random() % 90, value);
            }
            image.bitmap = m_listMasks[i].data();
            image.next = i + 1 < m_listImages.size() ? &m_listImages[i + 1] : nullptr;
        }
    }

    const ASS_Image *First() const { return m_listImages.data(); }

    /** How much of a pixel an image covers, 0 to 1. */
    static double Weight(const ASS_Image &image, int x, int y)
    {
        const int column = x - image.dst_x;
        const int row = y - image.dst_y;
        if (column < 0 || row < 0 || column >= image.w || row >= image.h)
            return 0;
        const int mask = image.bitmap[row * image.stride + column];
        return mask / 255.0 * (255 - static_cast<int>(image.color & 255)) / 255;
    }

private:
    std::vector<ASS_Image> m_listImages;
    std::vector<std::vector<std::uint8_t>> m_listMasks;
};

/** A frame of random samples. */
class Frame
{
public:
    Frame(YuvFormat format, unsigned seed) : m_format(format), m_bytes(std::size_t{3} * Width * Height)
    {
        std::mt19937 random(seed);
        for (std::size_t n = 0; n < m_bytes.size(); n += 2) {
            m_bytes[n] = static_cast<std::uint8_t>(format == YuvFormat::P010 ? random() & 0xC0 : random());
            m_bytes[n + 1] = static_cast<std::uint8_t>(random());
        }
    }

    YuvPlanes Planes()
    {
        std::uint8_t *data = m_bytes.data();
        const std::ptrdiff_t luma = std::ptrdiff_t{Width} * (m_format == YuvFormat::P010 ? 2 : 1);
        if (m_format == YuvFormat::Yuv420p)
            return {{data, data + luma * Height, data + luma * Height * 5 / 4}, {luma, luma / 2, luma / 2}};
        return {{data, data + luma * Height, nullptr}, {luma, luma, 0}};
    }

    /** A sample of component 0, 1 or 2, in units of 8-bit codes. */
    double Sample(int component, int x, int y)
    {
        const YuvPlanes planes = Planes();
        const bool isPair = m_format != YuvFormat::Yuv420p && component > 0;
        const int plane = isPair ? 1 : component;
        const std::ptrdiff_t place = isPair ? 2 * x + component - 1 : x;
        const std::uint8_t *row = planes.data[plane] + y * planes.linesize[plane];
        if (m_format != YuvFormat::P010)
            return row[place];
        EXPECT_EQ(row[2 * place] & 0x3F, 0);
        return (row[2 * place] | row[2 * place + 1] << 8) / 256.0;
    }

private:
    YuvFormat m_format;
    std::vector<std::uint8_t> m_bytes;
};

double CodeOf(std::uint32_t color, int component)
{
    const double red = (color >> 24) / 255.0;
    const double green = (color >> 16 & 255) / 255.0;
    const double blue = (color >> 8 & 255) / 255.0;
    const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    return component == 0   ? 16 + 219 * luma
           : component == 1 ? 128 + 224 * (blue - luma) / 1.8556
                            : 128 + 224 * (red - luma) / 1.5748;
}

/** In units of 8-bit codes. Colour and sum are rounded; with 8 bits, the kept colours and weights as well. */
double Tolerance(YuvFormat format)
{
    return format == YuvFormat::P010 ? 1.4 / 4 : 4 * 0.5;
}

class MergedYuvTest : public testing::TestWithParam<YuvFormat>
{
};

} // namespace

TEST_P(MergedYuvTest, DrawsTheList)
{
    if (!CanBlend())
        GTEST_SKIP() << "the processor has no AVX2";
    MergedYuv merged(GetParam(), Width, Height);
    for (unsigned seed = 1; seed <= 60; ++seed) {
        const ImageList list(seed);
        Frame before(GetParam(), seed);
        Frame frame(GetParam(), seed);
        merged.Merge(list.First());
        merged.Blend(frame.Planes());
        for (int component = 0; component < 3; ++component) {
            const int size = component == 0 ? 1 : 2;
            for (int y = 0; y < Height / size; ++y) {
                for (int x = 0; x < Width / size; ++x) {
                    double expected = before.Sample(component, x, y);
                    bool isCovered = false;
                    for (const ASS_Image *image = list.First(); image; image = image->next) {
                        double weight = 0;
                        for (int i = 0; i < size * size; ++i)
                            weight += ImageList::Weight(*image, x * size + i % size, y * size + i / size);
                        weight /= size * size;
                        isCovered = isCovered || weight > 0;
                        expected += weight * (CodeOf(image->color, component) - expected);
                    }
                    ASSERT_NEAR(frame.Sample(component, x, y), expected, isCovered ? Tolerance(GetParam()) : 0)
                        << "list " << seed << ", component " << component << " at " << x << ", " << y;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, MergedYuvTest, testing::Values(YuvFormat::Yuv420p, YuvFormat::Nv12, YuvFormat::P010));
