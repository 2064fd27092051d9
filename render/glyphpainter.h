#pragma once

#include "render/glyphshape.h"
#include "render/recordedtext.h"
#include "render/textink.h"

#include <QSize>

#include <cstdint>
#include <list>
#include <optional>
#include <unordered_map>
#include <vector>

/**
 * Composes text from cached bit masks of its glyphs, one for each font, glyph and subpixel position. The pixels are
 * those of the reference path: 20 draws by QPainter for the outline and one for the text.
 */
class GlyphPainter
{
public:
    /** @return nullopt if this text needs the reference path: colour glyphs, clipped text, negative coordinates. */
    std::optional<TextInk> Paint(const RecordedText &text, const QSize &frame);

private:
    struct Font {
        FontKey key;
        GlyphSource source;
        std::unordered_map<std::uint32_t, GlyphOutline> mapOutlines;
        std::unordered_map<std::uint64_t, std::optional<GlyphShape>> mapShapes; ///< by glyph and fraction of a pixel
    };

    struct PlacedGlyph {
        const GlyphShape *pShape;
        int nX; ///< position in whole pixels of the frame
        int nY;
    };

    Font &FindFont(const GlyphRun &run);
    /** Appends a run's glyphs; false if the text needs the reference path. */
    bool PlaceRun(const GlyphRun &run, const QSize &frame, std::vector<PlacedGlyph> &glyphs);
    /** Null if the glyph's image cannot be converted to a bit mask. */
    const GlyphShape *Shape(const GlyphRun &run, Font &font, std::uint32_t glyph, FixedPoint part);
    GlyphShape FillShape(const GlyphRun &run, Font &font, std::uint32_t glyph, FixedPoint part);
    TextInk Compose(const std::vector<PlacedGlyph> &glyphs, const QSize &frame);
    /** Adds a glyph whose outline cannot be made by moving its pixels. */
    void AddUncacheableGlyph(TextInk &ink, const PlacedGlyph &glyph, const GlyphFit &fit, int frameHeight);

    std::list<Font> m_listFonts;
    std::size_t m_nKilobytes = 0; ///< of all shapes, estimated
    PolygonFiller m_filler;
};
