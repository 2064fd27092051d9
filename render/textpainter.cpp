#include "render/textpainter.h"

#include <QFontMetrics>
#include <QPainter>
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

/**
 * Draws text once. No result where that is not enough to know what the single draws give: glyphs with colours of their
 * own, ink below the rows asked for, and ink so close to the left or upper edge that the outline's draws would place it
 * at negative coordinates, where Qt rounds differently.
 */
std::optional<InkMask> DrawInkMask(const TextStyle &style, int width, int rows, int checkedRows, const QRect &box,
                                   const QString &text)
{
    const QImage canvas = [&] {
        QImage image = CreateCanvas(width + 2 * OutlineRadius, rows + 2 * OutlineRadius);
        QPainter painter(&image);
        PreparePainter(painter, style.font);
        painter.setPen(QColor(style.nOutlineColor));
        painter.drawText(box.translated(OutlineRadius, OutlineRadius), DrawFlags, text);
        return image;
    }();
    constexpr int EdgeDistance = 2 * OutlineRadius + 1;

    InkMask mask = {canvas.width(), canvas.height(), {}, std::vector<bool>(canvas.height())};
    mask.listInk.resize(static_cast<std::size_t>(mask.nStride) * mask.nRows);
    const QRgb pen = style.nOutlineColor;
    for (int y = 0; y < mask.nRows; ++y) {
        const auto *pixels = reinterpret_cast<const QRgb *>(canvas.constScanLine(y));
        std::uint8_t *ink = mask.listInk.data() + static_cast<std::size_t>(y) * mask.nStride;
        unsigned anyInk = 0;
        unsigned anyOther = 0;
        unsigned anyAtEdge = 0;
        for (int x = 0; x < mask.nStride; ++x) {
            ink[x] = pixels[x] == pen;
            anyInk |= ink[x];
            anyOther |= static_cast<unsigned>(pixels[x] != 0) ^ ink[x];
        }
        for (int x = 0; x < EdgeDistance && x < mask.nStride; ++x)
            anyAtEdge |= ink[x];
        if (anyInk && (y < EdgeDistance || y >= checkedRows))
            anyAtEdge = 1;
        if (anyOther || anyAtEdge)
            return std::nullopt;
        mask.listRowHasInk[y] = anyInk != 0;
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
void PaintFromMask(QImage &canvas, const TextStyle &style, const InkMask &mask)
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
    const QRect bounds = MeasureText(style.font, width, height, text);
    const int halfWidth = bounds.width() / 2;
    TextImage result;
    result.nTextHeight = bounds.height();
    const QRect box(QPoint(width / 2 - halfWidth, 0), QPoint(width / 2 + halfWidth + 1, bounds.height()));
    result.rcText = box;
    result.image = CreateCanvas(width, height);
    if (result.image.isNull())
        return result;

    std::optional<InkMask> mask;
    if (style.bOutline) {
        // Glyphs may reach below their line, if rarely; where they reach past half the room left for that, who knows.
        const int room = 2 * QFontMetrics(style.font).height();
        const int rows = std::min(height, bounds.height() + room);
        const int checkedRows = rows < height ? bounds.height() + room / 2 : rows + 2 * OutlineRadius;
        mask = DrawInkMask(style, width, rows, checkedRows, box, text);
    }
    if (mask)
        PaintFromMask(result.image, style, *mask);
    else
        PaintBySingleDraws(result.image, style, box, text);
    return result;
}
