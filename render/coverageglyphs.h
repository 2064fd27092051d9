#pragma once

#include "render/bytemask.h"
#include "render/coveragedisc.h"
#include "render/recordedtext.h"

#include <cstdint>
#include <list>
#include <unordered_map>

/** Coverage of a glyph and of its outline, relative to the pixel that holds the glyph's origin. */
struct CoveredGlyph {
    ByteMask text, outline;
};

/** Caches the coverage of glyphs by font, glyph and quarter of a pixel, for one outline width and one pixel shape. */
class CoverageGlyphs
{
public:
    /**
     * Drops all glyphs if the outline width or the pixel shape changes.
     * @param outline      width of outlines, in pixel heights.
     * @param pixelAspect  pixel width divided by pixel height.
     */
    void SetShape(double outline, double pixelAspect);

    /** Drops all glyphs once they take too much memory. Those found before are then no longer valid. */
    void Limit();

    /** The glyph is valid until SetShape() or Limit(). @param place  of its origin, in 64ths of the frame's pixels. */
    const CoveredGlyph &Find(const GlyphRun &run, std::uint32_t glyph, FixedPoint place);

private:
    struct Font {
        FontKey key;
        std::unordered_map<std::uint64_t, CoveredGlyph> mapGlyphs; ///< by glyph and fraction of a pixel
    };
    Font &FindFont(const GlyphRun &run);

    double m_dOutline = 0;
    double m_dPixelAspect = 1;
    CoverageDisc m_disc{0};
    std::list<Font> m_listFonts;
    std::size_t m_nBytes = 0; ///< of all glyphs, estimated
};
