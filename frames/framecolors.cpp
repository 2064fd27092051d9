#include "frames/framecolors.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <algorithm>
#include <cmath>

namespace
{

bool IsRangeKnown(int range)
{
    return range == AVCOL_RANGE_MPEG || range == AVCOL_RANGE_JPEG;
}

} // namespace

bool FrameColors::Set(const PixelFormat &format, const ColorTags &tags, int width, int height, double white)
{
    m_format = format;
    if (tags.nRange != AVCOL_RANGE_UNSPECIFIED && !IsRangeKnown(tags.nRange))
        return false;
    m_bFull = tags.nRange == AVCOL_RANGE_JPEG || format.bJpeg || format.model == ColorModel::Rgb ||
              (format.model == ColorModel::Grey && !IsRangeKnown(tags.nRange));
    m_bHdr = tags.nTransfer == AVCOL_TRC_SMPTE2084 || tags.nTransfer == AVCOL_TRC_ARIB_STD_B67;
    if (m_bHdr && !m_hdr.Set(tags.nTransfer, tags.nPrimaries, white))
        return false;
    if (format.model != ColorModel::Rgb && !SetMatrix(tags.nMatrix, width, height))
        return false;
    SetExchange();
    return true;
}

bool FrameColors::SetMatrix(int matrix, int width, int height)
{
    switch (matrix) {
    case AVCOL_SPC_RGB: // 0: hosts that do not know the matrix leave it so
    case AVCOL_SPC_UNSPECIFIED:
        return SetMatrix(width >= 1280 || height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M, width, height);
    case AVCOL_SPC_BT709:
        m_dRed = 0.2126;
        m_dBlue = 0.0722;
        return true;
    case AVCOL_SPC_FCC:
        m_dRed = 0.30;
        m_dBlue = 0.11;
        return true;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        m_dRed = 0.299;
        m_dBlue = 0.114;
        return true;
    case AVCOL_SPC_SMPTE240M:
        m_dRed = 0.212;
        m_dBlue = 0.087;
        return true;
    case AVCOL_SPC_BT2020_NCL:
        m_dRed = 0.2627;
        m_dBlue = 0.0593;
        return true;
    default:
        return false;
    }
}

void FrameColors::SetExchange()
{
    m_exchange = {};
    if (m_format.model == ColorModel::Rgb) {
        m_exchange.nSingle = 1;
        m_exchange.pair = {0, 2};
        m_exchange.matrix = {{{0, 1}, {1, 0}}};
        return;
    }
    m_exchange.pair = {1, 2};
    if (m_format.model == ColorModel::Grey)
        return;
    m_exchange.nMiddle = 1 << (m_format.components[1].nDepth - 1);
    // R = Y + toRed V and B = Y + toBlue U. Swapping R and B adds (Kr - Kb)(B - R) to Y.
    const double toRed = 2 * (1 - m_dRed);
    const double toBlue = 2 * (1 - m_dBlue);
    const double lumaU = (m_dRed - m_dBlue) * toBlue;
    const double lumaV = -(m_dRed - m_dBlue) * toRed;
    // U = (B - Y) / toBlue and V = (R - Y) / toRed, with R and B swapped and the new Y.
    m_exchange.matrix = {{{-lumaU / toBlue, (toRed - lumaV) / toBlue}, {(toBlue - lumaU) / toRed, -lumaV / toRed}}};
    // In limited range, chroma has 224 steps where luma has 219.
    const double scale = m_bFull ? 1 : 219.0 / 224;
    m_exchange.single = {lumaU * scale, lumaV * scale};
}

FrameColor FrameColors::Convert(const std::array<std::uint8_t, 3> &rgb) const
{
    Rgb color = {rgb[0] / 255.0, rgb[1] / 255.0, rgb[2] / 255.0};
    if (m_bHdr)
        color = m_hdr.Code(color);
    std::array<double, 4> values = {color[0], color[1], color[2], 1};
    if (m_format.model != ColorModel::Rgb) {
        const double luma = m_dRed * color[0] + (1 - m_dRed - m_dBlue) * color[1] + m_dBlue * color[2];
        values = {luma, (color[2] - luma) / (2 * (1 - m_dBlue)), (color[0] - luma) / (2 * (1 - m_dRed)), 1};
    }
    FrameColor result = {};
    for (std::size_t i = 0; i < 4; ++i) {
        if (i < 3 ? static_cast<int>(i) >= m_format.nColors : !m_format.bAlpha)
            continue;
        const int depth = m_format.components[i].nDepth;
        const int max = m_format.components[i].Max();
        const bool isChroma = m_format.model == ColorModel::Yuv && (i == 1 || i == 2);
        double code = max * values[i] + (isChroma ? 1 << (depth - 1) : 0);
        if (!m_bFull && i < 3)
            code = std::ldexp(isChroma ? 128 + 224 * values[i] : 16 + 219 * values[i], depth - 8);
        code = std::clamp(code, 0.0, static_cast<double>(max));
        result.codes[i] = static_cast<std::int32_t>(std::floor(code + 0.5));
        // Kept within half a step of the code, so that it rounds to the code.
        constexpr int Half = 1 << (FineBits - 1);
        const int fraction = static_cast<int>(std::lround((code - result.codes[i]) * (1 << FineBits)));
        result.fine[i] = result.codes[i] * (1 << FineBits) + std::clamp(fraction, -Half, Half - 1);
    }
    return result;
}
