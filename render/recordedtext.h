#pragma once

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QString>

#include <memory>
#include <private/qfontengine_p.h>
#include <private/qtextengine_p.h>
#include <vector>

class QPainter;

/** Glyphs of one font in a row, as they would be drawn. */
class GlyphRun
{
public:
    GlyphRun(const QPointF &position, const QTextItemInt &item);

    QFontEngine &Font() const { return *m_pFont; }
    const QPointF &Position() const { return m_position; }
    const std::vector<glyph_t> &Glyphs() const { return m_listGlyphs; }
    /** Of each glyph's origin. */
    const std::vector<QFixedPoint> &Places() const { return m_listPlaces; }

    /** Whether the glyphs bring colours of their own. */
    bool HasColours() const { return m_pFont->glyphFormat == QFontEngine::Format_ARGB; }

    /** Draws the run moved, unless that is too far above or below the canvas to be seen. */
    void Draw(QPainter &painter, const QPoint &offset) const;

private:
    struct ReleaseFont {
        void operator()(QFontEngine *font) const;
    };

    QPointF m_position;
    std::unique_ptr<QFontEngine, ReleaseFont> m_pFont;
    QTextItem::RenderFlags m_flags;
    std::vector<char> m_listMemory; ///< of m_layout
    QGlyphLayout m_layout;
    std::vector<glyph_t> m_listGlyphs;
    std::vector<QFixedPoint> m_listPlaces;
    int m_nHighest = 0; ///< of all places, in pixels
    int m_nLowest = 0;
};

/**
 * Text laid out as QPainter::drawText() does on a canvas of 96 dpi, to be drawn there as often as need be: the layout
 * costs far more than the drawing, above all with glyphs that are images.
 */
class RecordedText
{
public:
    /** @param box, flags  as for QPainter::drawText(). */
    RecordedText(const QFont &font, const QRect &box, int flags, const QString &text);

    const std::vector<GlyphRun> &Runs() const { return m_listRuns; }
    /** Of the text, in UTF-16 units. */
    int Size() const { return m_nSize; }

    /** Whether the text does not fit its box and is clipped to that. */
    bool IsClipped() const { return m_bClipped; }

    /**
     * Whether drawText() with the box moved sideways, by that many pixels at most, places all glyphs the same, but moved.
     * Where a line begins about column 0 it does not: beginnings are truncated towards there.
     */
    bool IsMovable(int distance) const;

    /** Draws the text as drawText() does with the box moved. */
    void Draw(QPainter &painter, const QPoint &offset) const;

private:
    QRect m_rcBox;
    int m_nSize;
    std::vector<GlyphRun> m_listRuns;
    bool m_bClipped = false;
    bool m_bHasGaps; ///< what is no glyph and may stand at the beginning of a line
};
