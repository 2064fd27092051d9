#include "support/frameoracle.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace
{

/** The weights of the pixels along one axis in a chroma sample, by pixel position; they add up to 1. */
using Weights = std::map<int, double>;

/** @param position  of the sample, in pixels @param pixels  their number along the axis */
Weights WeightsAt(double position, int pixels)
{
    const auto inside = [pixels](double pixel) { return std::min(std::max(static_cast<int>(pixel), 0), pixels - 1); };
    Weights weights;
    const double before = std::floor(position);
    const double part = position - before;
    if (part == 0) {
        weights[inside(before - 1)] += 0.25;
        weights[inside(before)] += 0.5;
        weights[inside(before + 1)] += 0.25;
    } else {
        weights[inside(before)] += 1 - part;
        weights[inside(before + 1)] += part;
    }
    return weights;
}

Weights OfColumns(int location, int sample, int pixels, int log2)
{
    if (log2 == 0)
        return {{sample, 1.0}};
    const bool isOnFirst =
        location == AVCHROMA_LOC_LEFT || location == AVCHROMA_LOC_TOPLEFT || location == AVCHROMA_LOC_BOTTOMLEFT;
    return WeightsAt(2 * sample + (isOnFirst ? 0 : 0.5), pixels);
}

Weights OfRows(int location, int sample, int pixels, int log2, bool isInterlaced)
{
    if (log2 == 0)
        return {{sample, 1.0}};
    const bool isOnFirst = location == AVCHROMA_LOC_TOPLEFT || location == AVCHROMA_LOC_TOP;
    const bool isOnSecond = location == AVCHROMA_LOC_BOTTOMLEFT || location == AVCHROMA_LOC_BOTTOM;
    if (!isInterlaced)
        return WeightsAt(2 * sample + (isOnFirst ? 0 : isOnSecond ? 1 : 0.5), pixels);
    const int field = sample % 2;
    const double between = field == 0 ? 0.25 : 0.75;
    const int line = sample / 2 * 2;
    const double position = line + (isOnFirst ? 0 : isOnSecond ? 1 : between);
    Weights weights;
    for (const auto &[ofField, weight] : WeightsAt(position, (pixels + 1 - field) / 2))
        weights[2 * ofField + field] += weight;
    return weights;
}

} // namespace

PlainSubtitle::PlainSubtitle(const BlendInput &in) :
    m_nWidth(in.W), m_nHeight(in.H), m_listPixels(static_cast<std::size_t>(in.W) * in.H)
{
    ForPlainPixels(in, [this](int row, int column, const std::uint8_t *source, int k) {
        m_listPixels[static_cast<std::size_t>(row) * m_nWidth + column] = {true, source[2], source[1], source[0], k};
        m_bShows = true;
        m_bOpaque = m_bOpaque && k == 255;
    });
}

std::pair<int, int> FrameOracle::Place(int x, int y) const
{
    switch (m_description.orientation) {
    case SUBTITLE_ORIENTATION_UPRIGHT:
        return {x, y};
    case SUBTITLE_ORIENTATION_MIRRORED:
        return {m_nWidth - 1 - x, y};
    case SUBTITLE_ORIENTATION_UPSIDE_DOWN:
        return {x, m_nHeight - 1 - y};
    case SUBTITLE_ORIENTATION_MIRRORED | SUBTITLE_ORIENTATION_UPSIDE_DOWN:
        return {m_nWidth - 1 - x, m_nHeight - 1 - y};
    case SUBTITLE_ORIENTATION_TRANSPOSED:
        return {y, x};
    case SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED:
        return {m_nWidth - 1 - y, x};
    case SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_UPSIDE_DOWN:
        return {y, m_nHeight - 1 - x};
    default:
        return {m_nWidth - 1 - y, m_nHeight - 1 - x};
    }
}

namespace
{

/** Shares of red and blue in luma. */
struct Shares {
    double red, blue;
};

Shares SharesOf(int matrix)
{
    switch (matrix) {
    case AVCOL_SPC_BT709:
        return {0.2126, 0.0722};
    case AVCOL_SPC_BT2020_NCL:
        return {0.2627, 0.0593};
    case AVCOL_SPC_FCC:
        return {0.30, 0.11};
    case AVCOL_SPC_SMPTE240M:
        return {0.212, 0.087};
    default:
        return {0.299, 0.114};
    }
}

} // namespace

FrameOracle::Yuv FrameOracle::ToYuv(const Rgb &rgb) const
{
    const Shares share = SharesOf(m_description.colorspace);
    const double y = share.red * rgb.red + (1 - share.red - share.blue) * rgb.green + share.blue * rgb.blue;
    return {y, (rgb.blue - y) / (2 - 2 * share.blue), (rgb.red - y) / (2 - 2 * share.red)};
}

FrameOracle::Rgb FrameOracle::ToRgb(const Yuv &yuv) const
{
    const Shares share = SharesOf(m_description.colorspace);
    const double red = yuv.y + (2 - 2 * share.red) * yuv.v;
    const double blue = yuv.y + (2 - 2 * share.blue) * yuv.u;
    return {red, (yuv.y - share.red * red - share.blue * blue) / (1 - share.red - share.blue), blue};
}

double FrameOracle::ToCode(double value, int component) const
{
    const int depth = m_frame.Description().comp[component].depth;
    const bool isChroma = m_frame.IsChroma(component);
    if (IsRgb() || m_description.color_range == AVCOL_RANGE_JPEG)
        return value * ((1 << depth) - 1) + (isChroma ? 1 << (depth - 1) : 0);
    return (isChroma ? 128 + 224 * value : 16 + 219 * value) * (1 << (depth - 8));
}

double FrameOracle::FromCode(double code, int component) const
{
    const double zero = ToCode(0, component);
    return (code - zero) / (ToCode(1, component) - zero);
}

int FrameOracle::ChromaRowOf(int y) const
{
    if (m_frame.Description().log2_chroma_h == 0)
        return y;
    if (!m_description.interlaced)
        return y / 2;
    int row = y / 4 * 2 + y % 2;
    while (row >= m_frame.Height(1))
        row -= 2;
    return std::max(row, 0);
}

double FrameOracle::CodeOf(const Rgb &rgb, int component) const
{
    const Yuv yuv = ToYuv(rgb);
    const double values[2][3] = {{yuv.y, yuv.u, yuv.v}, {rgb.red, rgb.green, rgb.blue}};
    return ToCode(values[IsRgb()][component], component);
}

double FrameOracle::Drawn(int component, int x, int y, int chromaX, int chromaY) const
{
    const PlainSubtitle::Pixel pixel = Covering(x, y);
    Rgb rgb = {};
    if (IsRgb()) {
        rgb = {FromCode(m_frame.Get(0, x, y), 0), FromCode(m_frame.Get(1, x, y), 1), FromCode(m_frame.Get(2, x, y), 2)};
    } else {
        const double luma = FromCode(m_frame.Get(0, x, y), 0);
        rgb = IsGrey() ? Rgb{luma, luma, luma}
                       : ToRgb({luma, FromCode(m_frame.Get(1, chromaX, chromaY), 1),
                                FromCode(m_frame.Get(2, chromaX, chromaY), 2)});
    }
    // As in RGB24 frames, the text's red is mixed with the frame's blue, and its blue with the frame's red.
    const double rest = 255 - pixel.k;
    const Rgb mixed = {(pixel.k * (pixel.red / 255.0) + rest * rgb.blue) / 255,
                       (pixel.k * (pixel.green / 255.0) + rest * rgb.green) / 255,
                       (pixel.k * (pixel.blue / 255.0) + rest * rgb.red) / 255};
    const double code = CodeOf(mixed, component);
    // Opaque text is drawn in its colours rounded to code values.
    return m_pSubtitle->IsOpaque() ? std::min<double>(std::floor(code + 0.5), m_frame.Max(component)) : code;
}

double FrameOracle::DrawnAlpha(int component, int x, int y) const
{
    const double k = Covering(x, y).k;
    return (k * m_frame.Max(component) + (255 - k) * m_frame.Get(component, x, y)) / 255;
}

PlainSample FrameOracle::Chroma(int component, int x, int y) const
{
    const AVPixFmtDescriptor &format = m_frame.Description();
    const int location = m_description.chroma_location;
    PlainSample sample = {false, 0};
    for (const auto &[row, rowWeight] :
         OfRows(location, y, m_description.height, format.log2_chroma_h, m_description.interlaced != 0)) {
        for (const auto &[column, columnWeight] : OfColumns(location, x, m_description.width, format.log2_chroma_w)) {
            const bool isTouched = Touches(column, row);
            sample.bTouched |= isTouched;
            sample.value += rowWeight * columnWeight *
                            (isTouched ? Drawn(component, column, row, x, y) : m_frame.Get(component, x, y));
        }
    }
    return sample;
}

PlainSample FrameOracle::Sample(int component, int x, int y) const
{
    PlainSample sample = {};
    if (m_frame.IsChroma(component)) {
        sample = Chroma(component, x, y);
    } else {
        sample.bTouched = Touches(x, y);
        if (sample.bTouched && m_frame.IsAlpha(component))
            sample.value = DrawnAlpha(component, x, y);
        else if (sample.bTouched)
            sample.value = Drawn(component, x, y, x >> m_frame.Description().log2_chroma_w, ChromaRowOf(y));
    }
    sample.value = std::min<double>(std::max(sample.value, 0.0), m_frame.Max(component));
    return sample;
}
