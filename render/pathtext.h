#pragma once

#include "render/glyphshape.h"
#include "render/textink.h"

#include <QSize>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class GlyphRun;
class QFontEngine;
class RecordedText;

/**
 * Paints big text, whose glyphs Qt draws as paths. Gives the pixels that the single draws of text and outline give, but
 * fills each glyph once, and keeps it for later texts.
 */
class PathText
{
public:
    /** @return nothing where only the single draws tell: sizes that Qt draws otherwise, text that leaves its frame. */
    std::optional<TextInk> Paint(const RecordedText &text, const QSize &frame);

private:
    /** A glyph as loaded from its font, and its shapes by the fraction of a pixel that they are placed at. */
    struct Glyph {
        GlyphOutline outline;
        std::unordered_map<int, GlyphShape> mapShapes;
    };
    using Font = std::unordered_map<std::uint32_t, Glyph>;

    struct PlacedGlyph {
        const GlyphShape *pShape;
        int nX; ///< whole pixel of the frame
        int nY;
    };

    /** Adds a run's glyphs; false where only the single draws tell. */
    bool PlaceRun(const GlyphRun &run, const QSize &frame, std::vector<PlacedGlyph> &glyphs);
    const GlyphShape &Shape(QFontEngine &engine, Font &font, std::uint32_t number, FixedPoint place);
    TextInk Compose(const std::vector<PlacedGlyph> &glyphs, const QSize &frame);
    void AddOddGlyph(TextInk &ink, const PlacedGlyph &glyph, int lastRow);

    std::map<std::string, Font> m_mapFonts;
    std::size_t m_nShapes = 0;
    PolygonFiller m_filler;
};
