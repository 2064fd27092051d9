#include "render/compositor.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

/** Marks an alpha that leaves the frame's pixel alone. A weight of 0 does not: it still makes the bytes change places.
 */
constexpr int NoWeight = -1;

/** x / 255, truncated, for 0 <= x < 65,535. */
inline int DivideBy255(int x)
{
    return (x + 1 + (x >> 8)) >> 8;
}

/** The weight of a pixel of alpha @p pixelAlpha. The opacity counts twice, with a truncation each: this is meant. */
inline int Weight(int pixelAlpha, int opacity)
{
    const int a = pixelAlpha * opacity / 255;
    return a == 0 ? NoWeight : opacity * a / 255;
}

/** Each outer byte is mixed with the old one of the other end, so they change places under the subtitle: this is meant.
 */
inline void BlendPixel(std::uint8_t *pixel, const std::uint8_t *color, int weight)
{
    const int rest = 255 - weight;
    const int first = weight * color[0] + rest * pixel[2];
    const int middle = weight * color[1] + rest * pixel[1];
    const int last = weight * color[2] + rest * pixel[0];
    pixel[0] = static_cast<std::uint8_t>(DivideBy255(first));
    pixel[1] = static_cast<std::uint8_t>(DivideBy255(middle));
    pixel[2] = static_cast<std::uint8_t>(DivideBy255(last));
}

} // namespace

void Compositor::SetImage(const QImage &image, const QRect &rect, int frameWidth, int frameHeight)
{
    if (image.cacheKey() == m_nImageKey && rect == m_rect && frameWidth == m_nFrameWidth &&
        frameHeight == m_nFrameHeight)
        return;
    m_nImageKey = image.cacheKey();
    m_rect = rect;
    m_nFrameWidth = frameWidth;
    m_nFrameHeight = frameHeight;
    FindRuns(image);
}

void Compositor::FindRuns(const QImage &image)
{
    m_listRuns.clear();
    m_listColor.clear();
    m_listAlpha.clear();

    if (m_rect.isEmpty())
        return;
    const QRect visible = m_rect & QRect(0, 0, m_nFrameWidth, m_nFrameHeight);
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(m_nFrameWidth) * 4;
    if (visible.isEmpty() || image.depth() != 32 || image.sizeInBytes() < (visible.bottom() + 1) * stride)
        return;
    const std::uint8_t *key = image.constBits();
    for (int row = visible.top(); row <= visible.bottom(); ++row) {
        const std::uint8_t *pixel = image.constBits() + row * stride + static_cast<std::ptrdiff_t>(visible.left()) * 4;
        for (int column = visible.left(); column <= visible.right(); ++column, pixel += 4) {
            // The key's own alpha is not compared.
            if (pixel[3] != 0 && std::memcmp(pixel, key, 3) != 0)
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
        m_listRuns.push_back({row, column, 1, opaque, m_listAlpha.size()});
    m_listColor.insert(m_listColor.end(), {pixel[2], pixel[1], pixel[0]});
    m_listAlpha.push_back(pixel[3]);
}

void Compositor::Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement) const
{
    std::array<int, 256> weights;
    for (int alpha = 0; alpha < 256; ++alpha)
        weights[alpha] = Weight(alpha, placement.nAlpha);

    for (const Run &run : m_listRuns) {
        const int frameRow = run.nRow + placement.nOffset;
        if (frameRow < 0 || frameRow >= m_nFrameHeight)
            continue;
        std::uint8_t *pixel = frame + frameRow * linesize + static_cast<std::ptrdiff_t>(run.nColumn) * 3;
        const std::uint8_t *color = m_listColor.data() + run.nFirst * 3;
        const std::uint8_t *alpha = m_listAlpha.data() + run.nFirst;
        if (run.bOpaque && weights[255] == 255) {
            std::memcpy(pixel, color, static_cast<std::size_t>(run.nLength) * 3);
            continue;
        }
        for (int i = 0; i < run.nLength; ++i) {
            if (weights[alpha[i]] != NoWeight)
                BlendPixel(pixel + 3 * static_cast<std::ptrdiff_t>(i), color + 3 * static_cast<std::ptrdiff_t>(i),
                           weights[alpha[i]]);
        }
    }
}
