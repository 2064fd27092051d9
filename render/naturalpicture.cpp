#include "render/naturalpicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace
{

/** Catmull-Rom kernel, which leaves a picture that is not scaled as it is. */
double Cubic(double x)
{
    x = std::abs(x);
    if (x < 1)
        return (3 * x * x * x - 5 * x * x + 2) / 2;
    if (x < 2)
        return (-x * x * x + 5 * x * x - 8 * x + 4) / 2;
    return 0;
}

/**
 * Filter of one frame pixel along one axis: the first pixel of the picture that it reads, and the weights from there
 * on.
 */
struct Taps {
    int nFirst;
    std::vector<float> listWeights;
};

/** The frame pixels along one axis that show a part of the picture. */
struct Axis {
    int nFirst = 0; ///< in the frame
    std::vector<Taps> listTaps;
};

/**
 * @param from, count    pixels of the picture on its canvas.
 * @param canvas, frame  sizes.
 * @param offset         frame pixels that the picture is moved by.
 */
Axis MakeAxis(int from, int count, int canvas, int frame, int offset)
{
    const double scale = static_cast<double>(canvas) / frame; // canvas pixels per frame pixel
    const double stretch = std::max(1.0, scale);              // widens the filter where the picture is scaled down
    const auto reached = [&](double at) { return static_cast<int>(std::floor(at / scale)); };
    Axis axis;
    const int first = std::max(reached(from - 2 * stretch) - 1, -offset);
    const int end = std::min(reached(from + count + 2 * stretch) + 2, frame - offset);
    axis.nFirst = first + offset;
    for (int pixel = first; pixel < end; ++pixel) {
        const double centre = (pixel + 0.5) * scale - 0.5;
        const int low = static_cast<int>(std::floor(centre - 2 * stretch)) + 1;
        const int high = static_cast<int>(std::ceil(centre + 2 * stretch)) - 1;
        double sum = 0;
        for (int i = low; i <= high; ++i)
            sum += Cubic((i - centre) / stretch);
        Taps taps = {std::clamp(low, from, from + count - 1) - from, {}};
        for (int i = std::max(low, from); i <= std::min(high, from + count - 1); ++i)
            taps.listWeights.push_back(static_cast<float>(Cubic((i - centre) / stretch) / sum));
        axis.listTaps.push_back(std::move(taps));
    }
    return axis;
}

using Premultiplied = std::array<float, 4>; // alpha, red, green, blue; 0 to 255

Premultiplied Weighted(const Premultiplied *pixels, std::ptrdiff_t step, const std::vector<float> &weights)
{
    Premultiplied sum = {0, 0, 0, 0};
    for (const float weight : weights) {
        for (std::size_t i = 0; i < 4; ++i)
            sum[i] += weight * (*pixels)[i];
        pixels += step;
    }
    return sum;
}

std::uint32_t Straight(const Premultiplied &pixel)
{
    constexpr float Half = 0.5F; // added before truncating; the numbers are not negative
    const float alpha = std::clamp(pixel[0], 0.0F, 255.0F);
    const auto whole = static_cast<std::uint32_t>(alpha + Half);
    if (whole == 0)
        return 0;
    std::uint32_t result = whole;
    for (std::size_t i = 1; i < 4; ++i)
        result = result << 8 | static_cast<std::uint32_t>(std::clamp(255 * pixel[i] / alpha, 0.0F, 255.0F) + Half);
    return result;
}

} // namespace

ScaledPicture ScalePicture(const ColorPicture &picture, int frameWidth, int frameHeight, int offset)
{
    if (picture.nColumns <= 0 || picture.nRows <= 0)
        return {};
    const Axis columns = MakeAxis(picture.nLeft, picture.nColumns, picture.nCanvasWidth, frameWidth, 0);
    const Axis rows = MakeAxis(picture.nTop, picture.nRows, picture.nCanvasHeight, frameHeight, offset);
    ScaledPicture scaled;
    scaled.area = {columns.nFirst, rows.nFirst, static_cast<int>(columns.listTaps.size()),
                   static_cast<int>(rows.listTaps.size())};
    if (scaled.area.IsEmpty())
        return {};
    const std::size_t width = scaled.area.nColumns;
    std::vector<Premultiplied> line(picture.nColumns);
    std::vector<Premultiplied> wide(width * picture.nRows);
    for (int row = 0; row < picture.nRows; ++row) {
        const std::uint32_t *pixels = picture.listPixels.data() + static_cast<std::size_t>(row) * picture.nColumns;
        for (int column = 0; column < picture.nColumns; ++column) {
            const auto alpha = static_cast<float>(pixels[column] >> 24);
            const auto premultiplied = [&](int shift) {
                return static_cast<float>(pixels[column] >> shift & 255) * alpha / 255;
            };
            line[column] = {alpha, premultiplied(16), premultiplied(8), premultiplied(0)};
        }
        for (std::size_t column = 0; column < width; ++column) {
            const Taps &taps = columns.listTaps[column];
            wide[row * width + column] = Weighted(line.data() + taps.nFirst, 1, taps.listWeights);
        }
    }
    scaled.listPixels.reserve(width * scaled.area.nRows);
    for (const Taps &taps : rows.listTaps) {
        for (std::size_t column = 0; column < width; ++column)
            scaled.listPixels.push_back(Straight(Weighted(wide.data() + taps.nFirst * width + column,
                                                          static_cast<std::ptrdiff_t>(width), taps.listWeights)));
    }
    return scaled;
}
