#include "render/compositor.h"

#include "render/bitrow.h"
#include "render/blendkernel.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

/** Marks an alpha that leaves the frame's pixel alone. A weight of 0 does not: it still makes the bytes change places.
 */
constexpr int NoWeight = -1;

/** The weight of a pixel of alpha @p pixelAlpha. The opacity counts twice, with a truncation each: this is meant. */
inline int Weight(int pixelAlpha, int opacity)
{
    const int a = pixelAlpha * opacity / 255;
    return a == 0 ? NoWeight : opacity * a / 255;
}

std::array<int, 256> Weights(int opacity)
{
    std::array<int, 256> weights;
    for (int alpha = 0; alpha < 256; ++alpha)
        weights[alpha] = Weight(alpha, opacity);
    return weights;
}

/** Where a row of a mask's pixels shows: columns @p from to @p to of the frame, without the last. */
void KeepColumns(std::vector<std::uint64_t> &row, int left, int from, int to)
{
    for (int word = 0; word < static_cast<int>(row.size()); ++word) {
        const int column = left + 64 * word;
        if (column < from)
            row[word] &= from - column < 64 ? ~std::uint64_t{0} << (from - column) : 0;
        if (column + 64 > to)
            row[word] &= to > column ? ~std::uint64_t{0} >> (64 - (to - column)) : 0;
    }
}

/** The first column from @p column on whose pixel is not transparent; @p end when there is none. */
int SkipTransparent(const std::uint8_t *pixels, int column, int end)
{
    // A bitmap is as large as the frame, and nearly all of it is transparent.
    constexpr int Block = 8;
    while (column + Block <= end) {
        std::uint8_t alpha = 0;
        for (int i = 0; i < Block; ++i)
            alpha |= pixels[4 * (column + i) + 3];
        if (alpha)
            break;
        column += Block;
    }
    while (column < end && pixels[4 * static_cast<std::ptrdiff_t>(column) + 3] == 0)
        ++column;
    return column;
}

/** A colour as three bytes in the frame's order and one that does not matter. */
std::uint32_t Bytes(QRgb color)
{
    const std::array<std::uint8_t, 4> bytes = {static_cast<std::uint8_t>(qRed(color)),
                                               static_cast<std::uint8_t>(qGreen(color)),
                                               static_cast<std::uint8_t>(qBlue(color)), 0};
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data(), sizeof word);
    return word;
}

bool IsSet(const BitMask &mask, int row, int column)
{
    const int bit = column - mask.nLeft;
    return row >= mask.nTop && row < mask.nTop + mask.nRows && bit >= 0 && bit < 64 * mask.nWords &&
           (mask.Row(row - mask.nTop)[bit / 64] >> (bit % 64) & 1);
}

} // namespace

void Compositor::SetImage(const QImage &image, const QRect &rect, int frameWidth, int frameHeight)
{
    if (image.cacheKey() == m_nImageKey && rect == m_rect && frameWidth == m_nFrameWidth &&
        frameHeight == m_nFrameHeight)
        return;
    Clear(frameWidth, frameHeight);
    m_rect = rect;
    FindRuns(image);
    m_nImageKey = image.cacheKey();
}

void Compositor::Clear(int frameWidth, int frameHeight)
{
    m_nFrameWidth = frameWidth;
    m_nFrameHeight = frameHeight;
    m_nImageKey = -1;
    m_listRuns.clear();
    m_listColors.clear();
    m_listAlphas.clear();
    m_nPreparedOpacity = -1;
}

void Compositor::FindRuns(const QImage &image)
{
    if (m_rect.isEmpty())
        return;
    const QRect visible = m_rect & QRect(0, 0, m_nFrameWidth, m_nFrameHeight);
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(m_nFrameWidth) * 4;
    if (visible.isEmpty() || image.depth() != 32 || image.sizeInBytes() < (visible.bottom() + 1) * stride)
        return;
    const std::uint8_t *key = image.constBits();
    for (int row = visible.top(); row <= visible.bottom(); ++row) {
        const std::uint8_t *pixels = image.constBits() + row * stride;
        const int end = visible.right() + 1;
        for (int column = visible.left(); column < end; ++column) {
            column = SkipTransparent(pixels, column, end);
            const std::uint8_t *pixel = pixels + static_cast<std::ptrdiff_t>(column) * 4;
            // The key's own alpha is not compared.
            if (column < end && std::memcmp(pixel, key, 3) != 0)
                AppendPixel(row, column, pixel);
        }
    }
}

void Compositor::AppendPixel(int row, int column, const std::uint8_t *pixel)
{
    const bool opaque = pixel[3] == 255;
    const bool continues = !m_listRuns.empty() && m_listRuns.back().nRow == row &&
                           m_listRuns.back().nColumn + m_listRuns.back().nLength == column &&
                           m_listRuns.back().bOpaque == opaque;
    if (continues)
        ++m_listRuns.back().nLength;
    else
        m_listRuns.push_back({row, column, 1, opaque, m_listColors.size(), m_listAlphas.size()});
    m_listColors.insert(m_listColors.end(), {pixel[2], pixel[1], pixel[0]});
    if (!opaque)
        m_listAlphas.push_back(pixel[3]);
}

void Compositor::SetText(const TextInk &ink, QRgb textColor, QRgb outlineColor, const QRect &rect, int frameWidth,
                         int frameHeight)
{
    Clear(frameWidth, frameHeight);
    const QRect visible = rect & QRect(0, 0, frameWidth, frameHeight);
    if (rect.isEmpty() || visible.isEmpty())
        return;
    const QRgb corner = IsSet(ink.text, 0, 0) ? textColor : IsSet(ink.outline, 0, 0) ? outlineColor : 0;
    const bool showsText = (textColor ^ corner) & 0xFFFFFF;
    const bool showsOutline = (outlineColor ^ corner) & 0xFFFFFF;

    std::vector<std::uint64_t> shown(ink.text.nWords);
    for (int row = std::max(0, visible.top() - ink.text.nTop); row < ink.text.nRows; ++row) {
        if (ink.text.nTop + row > visible.bottom())
            break;
        const std::uint64_t *text = ink.text.Row(row);
        const std::uint64_t *outline = ink.outline.Row(row);
        for (int word = 0; word < ink.text.nWords; ++word)
            shown[word] = (showsText ? text[word] : 0) | (showsOutline ? outline[word] & ~text[word] : 0);
        KeepColumns(shown, ink.text.nLeft, visible.left(), visible.right() + 1);
        AppendTextRow(row, ink.text, shown, {Bytes(outlineColor), Bytes(textColor)});
    }
}

void Compositor::AppendTextRow(int row, const BitMask &text, const std::vector<std::uint64_t> &shown,
                               const std::array<std::uint32_t, 2> &colors)
{
    const int words = text.nWords;
    const std::uint64_t *isText = text.Row(row);
    int from = FindBit(shown.data(), words, 0, true);
    while (from < 64 * words) {
        const int to = FindBit(shown.data(), words, from, false);
        const std::size_t place = m_listColors.size();
        m_listRuns.push_back({text.nTop + row, text.nLeft + from, to - from, true, place, m_listAlphas.size()});
        // Each pixel is written with a byte too many, which the next one covers.
        m_listColors.resize(place + 3 * static_cast<std::size_t>(to - from) + 1);
        std::uint8_t *pixel = m_listColors.data() + place;
        for (int column = from; column < to; ++column, pixel += 3)
            std::memcpy(pixel, &colors[isText[column / 64] >> (column % 64) & 1], 4);
        m_listColors.pop_back();
        from = FindBit(shown.data(), words, to, true);
    }
}

void Compositor::PrepareMixedRuns(int opacity)
{
    if (opacity == m_nPreparedOpacity)
        return;
    m_nPreparedOpacity = -1;
    m_listMixedRuns.clear();
    m_listWeights.clear();
    if (!m_listAlphas.empty()) {
        const std::array<int, 256> weights = Weights(opacity);
        for (const Run &run : m_listRuns)
            if (!run.bOpaque)
                AppendMixedRuns(run, weights);
    }
    m_nPreparedOpacity = opacity;
}

void Compositor::AppendMixedRuns(const Run &run, const std::array<int, 256> &weights)
{
    bool continues = false;
    for (int i = 0; i < run.nLength; ++i) {
        const int weight = weights[m_listAlphas[run.nFirstAlpha + i]];
        if (weight == NoWeight) {
            continues = false;
            continue;
        }
        if (!continues)
            m_listMixedRuns.push_back({run.nRow, run.nColumn + i, 0, run.nFirstColor + 3 * static_cast<std::size_t>(i),
                                       m_listWeights.size()});
        continues = true;
        ++m_listMixedRuns.back().nLength;
        m_listWeights.insert(m_listWeights.end(), 3, static_cast<std::uint8_t>(weight));
    }
}

void Compositor::Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement)
{
    PrepareMixedRuns(placement.nAlpha);
    const BlendKernel &kernel = BestKernel();
    const auto pixelAt = [&](int row, int column) -> std::uint8_t * {
        const int frameRow = row + placement.nOffset;
        if (frameRow < 0 || frameRow >= m_nFrameHeight)
            return nullptr;
        return frame + frameRow * linesize + static_cast<std::ptrdiff_t>(column) * 3;
    };
    const int weight = Weight(255, placement.nAlpha);
    for (const Run &run : m_listRuns) {
        std::uint8_t *pixel = pixelAt(run.nRow, run.nColumn);
        if (!pixel || !run.bOpaque || weight == NoWeight)
            continue;
        const std::uint8_t *colors = m_listColors.data() + run.nFirstColor;
        if (weight == 255)
            std::memcpy(pixel, colors, static_cast<std::size_t>(run.nLength) * 3);
        else
            kernel.BlendEvenly(pixel, colors, weight, run.nLength);
    }
    for (const MixedRun &run : m_listMixedRuns) {
        std::uint8_t *pixel = pixelAt(run.nRow, run.nColumn);
        if (pixel)
            kernel.Blend(pixel, m_listColors.data() + run.nFirstColor, m_listWeights.data() + run.nFirstWeight,
                         run.nLength);
    }
}
