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

/** Equal for fonts with the same glyphs, in whichever thread Qt loaded them. */
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

/** The points, all but the first, that QPainter makes of a cubic curve. */
QPolygonF CurvePoints(QPointF start, QPointF first, QPointF second, QPointF end);

/** Glyphs of one font in a row, at their places in a laid out text. */
class GlyphRun
{
public:
    /** @param item  as a paint engine gets it. */
    GlyphRun(const QPointF &position, const QTextItem &item);
    ~GlyphRun();
    GlyphRun(GlyphRun &&) noexcept;
    GlyphRun &operator=(GlyphRun &&) noexcept;

    const QPointF &Position() const { return m_position; }
    const std::vector<std::uint32_t> &Glyphs() const { return m_listGlyphs; }
    /** Of each glyph's origin. */
    const std::vector<FixedPoint> &Places() const { return m_listPlaces; }

    FontKey Key() const;
    GlyphSource Source() const;

    bool IsRightToLeft() const;

    /** Whether glyphs bring colours of their own. */
    bool IsColored() const;

    /** In pixels, of the glyphs' bounding boxes. */
    double RightEdge() const;

    /** Pixels that no glyph of the font exceeds, measured from its origin. */
    int Reach() const;

    /** The part of a pixel, 0 to 64 64ths, that QPainter moves a glyph's image to the right by at a place. */
    int SubPixelOf(FixedPoint place) const;

    /**
     * Pixels of a glyph image, relative to the pixel that its origin lies in. None if they have more than two shades.
     * @param part  as SubPixelOf() gives it.
     */
    std::optional<BitMask> Image(std::uint32_t glyph, int part) const;

    /**
     * How much of each pixel a glyph covers, relative to the pixel that its origin lies in. Of a font that is painted
     * without antialiasing these are 0 and 255.
     * @param fraction     the part of a pixel, in 64ths, that the glyph is moved to the right by.
     * @param pixelAspect  width of a pixel by its height; where it is another than 1 the glyph is made as much narrower.
     */
    ByteMask Coverage(std::uint32_t glyph, int fraction, double pixelAspect) const;

    /** A glyph's outline with its origin at (0, 0). */
    QPainterPath Path(std::uint32_t glyph) const;

    /** Draws the run moved, unless that is too far above or below the canvas to be seen. */
    void Draw(QPainter &painter, const QPoint &offset) const;

private:
    struct Item;

    QPointF m_position;
    std::unique_ptr<Item> m_pItem;
    std::vector<std::uint32_t> m_listGlyphs;
    std::vector<FixedPoint> m_listPlaces;
    int m_nHighest = 0; ///< of all places, in pixels
    int m_nLowest = 0;
};

/**
 * Text laid out as QPainter::drawText() does on a canvas of DotsPerInch, to be drawn there as often as need be: the
 * layout costs far more than the drawing.
 */
class RecordedText
{
public:
    /** @param box, flags  as for QPainter::drawText(). */
    RecordedText(const QFont &font, const QRectF &box, int flags, const QString &text);

    /** As QPainter::drawText() gives them. */
    const QRectF &Bounds() const { return m_rcBounds; }

    const std::vector<GlyphRun> &Runs() const { return m_listRuns; }
    /** Of the text, in UTF-16 units. */
    int Size() const { return m_nSize; }

    /**
     * Whether a narrower box would break the text into the same lines. Qt counts what a line's last glyph has right of
     * its advance only where a line nearly fills the box, and may move a word to the next line for that.
     */
    bool HasLinesOfBox(int width) const;

    /** Whether the text does not fit its box and is clipped to that. */
    bool IsClipped() const { return m_bClipped; }

    /**
     * Whether drawText() with the box moved sideways, by that many pixels at most, gives the same layout, moved. False if
     * a line starts within @p distance of column 0: Qt truncates line starts toward zero.
     */
    bool IsMovable(int distance) const;

    /** Whether all of drawText() moved by that many pixels at most, in any direction, lies at coordinates from 0 on. */
    bool IsPositive(int distance) const;

    /** Draws the text as drawText() does with the box moved. */
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
