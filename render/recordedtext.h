#pragma once

#include "render/bytemask.h"
#include "render/textink.h"

#include <QByteArray>
#include <QPainterPath>
#include <QPoint>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class QFont;
class QPainter;
class QTextItem;

/** Resolution of every text image, so that a point size gives the same pixels in every host. */
constexpr int DotsPerInch = 96;

/** What QPainter draws a font's glyphs from. */
enum class GlyphSource {
    Image,
    Path,
    Unknown, ///< colour images, enormous paths, or anything else that is not reproduced here
};

/** Identifies a font by its glyphs: equal whichever thread Qt loaded the font on. */
struct FontKey {
    QByteArray fileName;
    QByteArray uuid;
    int nIndex;
    int nEncoding;
    int nSynthesized;
    int nWeight;
    int nStyle;
    int nStretch;
    double pixelSize;

    bool operator==(const FontKey &other) const;
};

/** The points that QPainter makes of a cubic curve, without its start. */
QPolygonF CurvePoints(QPointF start, QPointF first, QPointF second, QPointF end);

/** A run of glyphs of one font, with their positions in a laid out text. */
class GlyphRun
{
public:
    /** @param position, item  as passed to QPaintEngine::drawTextItem(). */
    GlyphRun(const QPointF &position, const QTextItem &item);
    ~GlyphRun();
    GlyphRun(GlyphRun &&) noexcept;
    GlyphRun &operator=(GlyphRun &&) noexcept;

    const QPointF &Position() const { return m_position; }
    const std::vector<std::uint32_t> &Glyphs() const { return m_listGlyphs; }
    /** The position of each glyph's origin. */
    const std::vector<FixedPoint> &Places() const { return m_listPlaces; }

    FontKey Key() const;
    GlyphSource Source() const;

    bool IsRightToLeft() const;

    /** Whether the font has colour glyphs. */
    bool IsColored() const;

    /** The right edge of the glyphs' bounding boxes, in pixels. */
    double RightEdge() const;

    /** Distance from its origin that no glyph of the font exceeds, in pixels. */
    int Reach() const;

    /** Subpixel position in x at which QPainter draws the image of a glyph at a place: 0 to 64, in 64ths of a pixel. */
    int SubPixelOf(FixedPoint place) const;

    /**
     * The pixels of a glyph image, relative to the pixel that holds its origin; nullopt if they have more than two
     * shades.
     * @param part  as SubPixelOf() returns it.
     */
    std::optional<BitMask> Image(std::uint32_t glyph, int part) const;

    /**
     * How much of each pixel a glyph covers, relative to the pixel that holds its origin; 0 or 255 for a font that is
     * painted without antialiasing.
     * @param fraction     subpixel position in x, in 64ths.
     * @param pixelAspect  pixel width divided by pixel height; the glyph is made narrower by it.
     */
    ByteMask Coverage(std::uint32_t glyph, int fraction, double pixelAspect) const;

    /** A glyph's outline with its origin at (0, 0). */
    QPainterPath Path(std::uint32_t glyph) const;

    /** Draws the run moved by @p offset, unless it is then too far above or below the canvas to be visible. */
    void Draw(QPainter &painter, const QPoint &offset) const;

private:
    struct Item;

    QPointF m_position;
    std::unique_ptr<Item> m_pItem;
    std::vector<std::uint32_t> m_listGlyphs;
    std::vector<FixedPoint> m_listPlaces;
    int m_nHighest = 0; ///< row of the highest origin, in pixels
    int m_nLowest = 0;
};

/**
 * Text laid out once, as QPainter::drawText() does on a canvas of DotsPerInch, and drawn as often as needed: the layout
 * costs far more than the drawing.
 */
class RecordedText
{
public:
    /** @param box, flags  as for QPainter::drawText(). */
    RecordedText(const QFont &font, const QRectF &box, int flags, const QString &text);

    /** The bounding rectangle that QPainter::drawText() returns. */
    const QRectF &Bounds() const { return m_rcBounds; }

    const std::vector<GlyphRun> &Runs() const { return m_listRuns; }
    /** Length of the text in UTF-16 units. */
    int Size() const { return m_nSize; }

    /**
     * Whether a box of @p width, narrower than this text's, would break it into the same lines. Only in a line that
     * nearly fills its box does Qt count what the last glyph has right of its advance, and may then move a word to the
     * next line.
     */
    bool HasLinesOfBox(int width) const;

    /** Whether the text does not fit its box and is clipped to it. */
    bool IsClipped() const { return m_bClipped; }

    /**
     * Whether drawText() with the box moved sideways, by @p distance pixels at most, gives the same layout, moved.
     * False if a line starts within @p distance of column 0: Qt truncates line starts toward zero.
     */
    bool IsMovable(int distance) const;

    /**
     * Whether all coordinates of drawText() stay at 0 or above when it is moved by @p distance pixels in any direction.
     */
    bool IsPositive(int distance) const;

    /** Draws the text as drawText() does with the box moved by @p offset. */
    void Draw(QPainter &painter, const QPoint &offset) const;

private:
    QRectF m_rcBox;
    QRectF m_rcBounds;
    int m_nSize;
    std::vector<GlyphRun> m_listRuns;
    bool m_bClipped = false;
    bool m_bHasTabsOrObjects; ///< characters that shift a line's start without producing a glyph
    bool m_bHasSoftHyphens;
};
