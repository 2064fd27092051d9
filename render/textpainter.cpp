#include "render/textpainter.h"

#include "render/messagesilencer.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace
{

/** The disc of radius 2 without its centre, as offsets of the text. */
struct Offset {
    signed char nX;
    signed char nY;
};
constexpr std::array<Offset, 20> OutlineOffsets = {{
    {-1, -2}, {0, -2}, {1, -2}, {-2, -1}, {-1, -1}, {0, -1}, {1, -1}, {2, -1}, {-2, 0}, {-1, 0},
    {1, 0},   {2, 0},  {-2, 1}, {-1, 1},  {0, 1},   {1, 1},  {2, 1},  {-1, 2}, {0, 2},  {1, 2},
}};
constexpr int OutlineRadius = 2;

constexpr int MeasureFlags = Qt::TextWordWrap;
constexpr int DrawFlags = Qt::AlignHCenter | Qt::TextWordWrap;

/** A transparent image at 96 dpi, so that a point size gives the same pixels in every host. */
QImage CreateCanvas(int width, int height)
{
    QImage canvas(width, height, QImage::Format_ARGB32);
    canvas.fill(0);
    constexpr int DotsPerMeter = 3780;
    canvas.setDotsPerMeterX(DotsPerMeter);
    canvas.setDotsPerMeterY(DotsPerMeter);
    return canvas;
}

void PreparePainter(QPainter &painter, const QFont &font)
{
    painter.setRenderHint(QPainter::TextAntialiasing, false);
    // The hint alone leaves small glyphs antialiased; the outline and the palette need pixels of the pen colour only.
    QFont aliased = font;
    aliased.setStyleStrategy(QFont::NoAntialias);
    painter.setFont(aliased);
}

/** In pixels of a canvas. */
double PixelSize(const QFont &font)
{
    return font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * 96 / 72;
}

QRect MeasureText(const QFont &font, int width, int height, const QString &text)
{
    QImage canvas = CreateCanvas(1, 1);
    QPainter painter(&canvas);
    PreparePainter(painter, font);
    return painter.boundingRect(QRect(0, 0, width, height), MeasureFlags, text);
}

void PaintBySingleDraws(QImage &canvas, const TextStyle &style, const QRect &box, const QString &text)
{
    QPainter painter(&canvas);
    PreparePainter(painter, style.font);
    if (style.bOutline) {
        painter.setPen(QColor(style.nOutlineColor));
        for (const Offset &offset : OutlineOffsets)
            painter.drawText(box.translated(offset.nX, offset.nY), DrawFlags, text);
    }
    painter.setPen(QColor(style.nFontColor));
    painter.drawText(box, DrawFlags, text);
}

/**
 * Where text has ink: a byte a pixel, 1 or 0, with a margin of OutlineRadius round the rows and columns asked for.
 */
struct InkMask {
    int nStride;
    int nRows;
    std::vector<std::uint8_t> listInk;
    std::vector<bool> listRowHasInk;

    const std::uint8_t *Row(int row) const { return listInk.data() + static_cast<std::size_t>(row) * nStride; }
};

QImage DrawOnce(const TextStyle &style, const QSize &size, const QRect &box, const QString &text)
{
    QImage canvas = CreateCanvas(size.width(), size.height());
    QPainter painter(&canvas);
    PreparePainter(painter, style.font);
    painter.setPen(QColor(style.nOutlineColor));
    painter.drawText(box, DrawFlags, text);
    return canvas;
}

/** Whether two canvases hold the same ink, the second being drawn that much further up and to the left. */
bool IsSameInk(const QImage &canvas, const QImage &moved, int distance)
{
    for (int y = 0; y < moved.height(); ++y) {
        const auto *pixels = reinterpret_cast<const QRgb *>(canvas.constScanLine(y + distance)) + distance;
        const auto *movedPixels = reinterpret_cast<const QRgb *>(moved.constScanLine(y));
        if (!std::equal(movedPixels, movedPixels + moved.width(), pixels))
            return false;
    }
    return true;
}

/** Reads a canvas with a margin; no result where it holds other colours than the pen's, as glyphs may bring along. */
std::optional<InkMask> ReadInk(const QImage &canvas, QRgb pen)
{
    InkMask mask = {canvas.width(), canvas.height(), {}, std::vector<bool>(canvas.height())};
    mask.listInk.resize(static_cast<std::size_t>(mask.nStride) * mask.nRows);
    for (int y = 0; y < mask.nRows; ++y) {
        const auto *pixels = reinterpret_cast<const QRgb *>(canvas.constScanLine(y));
        std::uint8_t *ink = mask.listInk.data() + static_cast<std::size_t>(y) * mask.nStride;
        unsigned anyInk = 0;
        unsigned anyOther = 0;
        for (int x = 0; x < mask.nStride; ++x) {
            ink[x] = pixels[x] == pen;
            anyInk |= ink[x];
            anyOther |= static_cast<unsigned>(pixels[x] != 0) ^ ink[x];
        }
        if (anyOther)
            return std::nullopt;
        mask.listRowHasInk[y] = anyInk != 0;
    }
    return mask;
}

/**
 * Draws text so that it need not be drawn once for each place of the outline. No result where that is not enough to
 * know what the single draws give, pixel for pixel:
 *  - glyphs of that size are drawn as paths, whose points are rounded differently from place to place;
 *  - glyphs bring colours of their own;
 *  - lines begin so far left that the single draws place them at negative coordinates, which Qt rounds differently;
 *  - ink reaches so far below the text that some may lie even further below;
 *  - there is no memory for it.
 */
std::optional<InkMask> DrawInk(const TextStyle &style, const QSize &frame, const QRect &box, const QString &text)
{
    constexpr int PathSize = 64; // from this pixel size on
    const QFontMetrics metrics(style.font);
    if (PixelSize(style.font) >= PathSize)
        return std::nullopt;

    const int room = 2 * metrics.height();
    const int rows = std::min(frame.height(), box.height() + room);
    const QSize withMargin(frame.width() + 2 * OutlineRadius, rows + 2 * OutlineRadius);
    const QImage canvas = DrawOnce(style, withMargin, box.translated(OutlineRadius, OutlineRadius), text);
    const QImage moved = DrawOnce(style, {frame.width(), rows}, box.translated(-OutlineRadius, -OutlineRadius), text);
    if (canvas.isNull() || moved.isNull() || !IsSameInk(canvas, moved, 2 * OutlineRadius))
        return std::nullopt;

    std::optional<InkMask> mask = ReadInk(canvas, style.nOutlineColor);
    if (!mask)
        return std::nullopt;
    for (int y = 0; y < mask->nRows; ++y) {
        const bool tooLow = rows < frame.height() && y >= box.height() + room / 2;
        const bool tooFarLeft =
            std::any_of(mask->Row(y), mask->Row(y) + 2 * OutlineRadius, [](auto ink) { return ink; });
        if (mask->listRowHasInk[y] && (tooLow || tooFarLeft))
            return std::nullopt;
    }
    return mask;
}

/** ORs the inks of 2 * Reach + 1 neighbours in a row; @p ink points at the first of the centre pixel's neighbours. */
template <int Reach>
void AddNeighbours(std::uint8_t *spread, const std::uint8_t *ink, int width)
{
    for (int x = 0; x < width; ++x) {
        for (int i = 0; i <= 2 * Reach; ++i)
            spread[x] |= ink[x + i];
    }
}

/** Paints what the single draws give: text colour where there is ink, outline colour within reach of it. */
void PaintFromInk(QImage &canvas, const TextStyle &style, const InkMask &mask)
{
    const int width = canvas.width();
    const int rows = mask.nRows - 2 * OutlineRadius;
    std::vector<std::uint8_t> spread(width);
    for (int y = 0; y < rows; ++y) {
        // Row y of the frame is row y + OutlineRadius of the mask.
        bool near = false;
        std::fill(spread.begin(), spread.end(), 0);
        for (int dy = 0; dy <= 2 * OutlineRadius; ++dy) {
            if (!mask.listRowHasInk[y + dy])
                continue;
            near = true;
            // The disc is 3 pixels wide in its first and last row and 5 between.
            if (dy == 0 || dy == 2 * OutlineRadius)
                AddNeighbours<1>(spread.data(), mask.Row(y + dy) + 1, width);
            else
                AddNeighbours<2>(spread.data(), mask.Row(y + dy), width);
        }
        if (!near)
            continue;
        auto *pixels = reinterpret_cast<QRgb *>(canvas.scanLine(y));
        const std::uint8_t *ink = mask.Row(y + OutlineRadius) + OutlineRadius;
        for (int x = 0; x < width; ++x) {
            const QRgb outline = spread[x] ? style.nOutlineColor : 0;
            pixels[x] = ink[x] ? style.nFontColor : outline;
        }
    }
}

} // namespace

TextImage PaintText(const TextStyle &style, int width, int height, const QString &text)
{
    const MessageSilencer silencer;
    const QRect bounds = MeasureText(style.font, width, height, text);
    const int halfWidth = bounds.width() / 2;
    TextImage result;
    result.nTextHeight = bounds.height();
    const QRect box(QPoint(width / 2 - halfWidth, 0), QPoint(width / 2 + halfWidth + 1, bounds.height()));
    result.rcText = box;
    result.image = CreateCanvas(width, height);
    if (result.image.isNull())
        return result;

    const std::optional<InkMask> ink =
        style.bOutline ? DrawInk(style, {width, height}, box, text) : std::optional<InkMask>();
    if (ink)
        PaintFromInk(result.image, style, *ink);
    else
        PaintBySingleDraws(result.image, style, box, text);
    return result;
}
