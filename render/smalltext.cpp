#include "render/smalltext.h"

#include "render/recordedtext.h"
#include "render/textcanvas.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace
{

constexpr QRgb Pen = 0xFFFFFFFF;

QImage DrawOnce(const RecordedText &text, const QSize &size, const QPoint &offset)
{
    QImage canvas = CreateCanvas(size.width(), size.height());
    QPainter painter(&canvas);
    PreparePainter(painter);
    painter.setPen(QColor(Pen));
    text.Draw(painter, offset);
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

/** Reads a row of a canvas; false where it holds other colours than the pen's, as glyphs may bring along. */
bool ReadRow(std::uint64_t *row, const QRgb *pixels, int width, QRgb pen)
{
    bool anyOther = false;
    for (int x = 0; x < width; ++x) {
        const bool isInk = pixels[x] == pen;
        anyOther |= isInk != (pixels[x] != 0);
        row[x / 64] |= static_cast<std::uint64_t>(isInk) << (x % 64);
    }
    return !anyOther;
}

/** A piece of the frame, whole rows of it or not, with a margin of OutlineRadius round it. */
struct Piece {
    QRect rect;
    bool bCutsRows; ///< the frame goes on at its left or right
};

/** What lies within half a line's reach of the text's box, if that is enough to tell that nothing lies outside. */
Piece PieceRound(const QRect &box, const QSize &frame, int lineHeight)
{
    const int rows = std::min(frame.height(), box.height() + 2 * lineHeight);
    const int left = std::max(0, box.left() - lineHeight);
    const int right = std::min(frame.width(), box.right() + 1 + lineHeight);
    return {QRect(left, 0, right - left, rows), left > 0 || right < frame.width()};
}

/** Whether all single draws place every glyph at positive coordinates, and the middle one about within the columns. */
bool IsPlacedInside(const RecordedText &text, const QRect &columns)
{
    constexpr int Reach = OutlineRadius << 6;
    for (const GlyphRun &run : text.Runs()) {
        for (std::size_t i = 0; i < run.Glyphs().size(); ++i) {
            const QFixedPoint place = run.Places()[i];
            const glyph_metrics_t metrics = run.Font().boundingBox(run.Glyphs()[i]);
            const QFixed left = place.x + metrics.x;
            if (place.x.value() < Reach || place.y.value() < Reach || left.toInt() < columns.left() + OutlineRadius ||
                (left + metrics.width).toInt() > columns.right() + OutlineRadius)
                return false;
        }
    }
    return true;
}

/** The ink of one draw, with the piece's margin; nothing where some may lie outside or be drawn otherwise elsewhere. */
std::optional<BitMask> ReadInk(const QImage &canvas, const Piece &piece, const QSize &frame, int lowest)
{
    BitMask ink = MakeMask(piece.rect.left() - OutlineRadius, -OutlineRadius, canvas.width(), canvas.height());
    constexpr std::uint64_t Edge = (1U << 2 * OutlineRadius) - 1;
    const int lastColumn = canvas.width() - 1;
    for (int y = 0; y < canvas.height(); ++y) {
        std::uint64_t *row = ink.Row(y);
        if (!ReadRow(row, reinterpret_cast<const QRgb *>(canvas.constScanLine(y)), canvas.width(), Pen))
            return std::nullopt;
        const bool touchesRight = piece.bCutsRows && (row[lastColumn / 64] >> (lastColumn % 64) & 1);
        const bool isTooLow = piece.rect.height() < frame.height() && y >= lowest &&
                              std::any_of(row, row + ink.nWords, [](auto word) { return word != 0; });
        if ((row[0] & Edge) || touchesRight || isTooLow)
            return std::nullopt;
    }
    return ink;
}

std::optional<BitMask> DrawInk(const RecordedText &text, const QFont &font, const QSize &frame, const QRect &box)
{
    const int lineHeight = QFontMetrics(font).height();
    const int lowest = box.height() + lineHeight;
    Piece piece = PieceRound(box, frame, lineHeight);
    const bool isInside = IsPlacedInside(text, piece.rect);
    if (!isInside)
        piece = {QRect(0, 0, frame.width(), piece.rect.height()), false};
    const QSize withMargin = piece.rect.size() + QSize(2 * OutlineRadius, 2 * OutlineRadius);
    const QImage canvas = DrawOnce(text, withMargin, {OutlineRadius - piece.rect.left(), OutlineRadius});
    if (canvas.isNull())
        return std::nullopt;
    if (!isInside) {
        const QImage moved = DrawOnce(text, piece.rect.size(), {-OutlineRadius, -OutlineRadius});
        if (moved.isNull() || !IsSameInk(canvas, moved, 2 * OutlineRadius))
            return std::nullopt;
    }
    return ReadInk(canvas, piece, frame, lowest);
}

} // namespace

std::optional<TextInk> PaintSmallText(const RecordedText &text, const QFont &font, const QSize &frame, const QRect &box)
{
    constexpr int CachedSize = 64; // beyond this pixel size glyphs are paths
    const auto hasColours = [](const GlyphRun &run) { return run.HasColours(); };
    if (PixelSize(font) > CachedSize || !text.IsMovable(OutlineRadius) ||
        std::any_of(text.Runs().begin(), text.Runs().end(), hasColours))
        return std::nullopt;
    std::optional<BitMask> drawn = DrawInk(text, font, frame, box);
    if (!drawn)
        return std::nullopt;
    TextInk ink;
    ink.outline = MakeMask(drawn->nLeft, drawn->nTop, drawn->nColumns, drawn->nRows);
    ink.text = std::move(*drawn);
    AddDisc(ink.outline, ink.text);
    return ink;
}
