#pragma once

#include "render/bytemask.h"
#include "render/coveragedisc.h"
#include "render/recordedtext.h"

#include <cstdint>
#include <list>
#include <unordered_map>

/** How much of each pixel a glyph covers, and its outline, relative to the pixel that the glyph's origin lies in. */
struct CoveredGlyph {
    ByteMask text, outline;
};

/** Keeps the coverage of glyphs, one for each font, glyph and quarter of a pixel, with outlines and pixels of one shape. */
class CoverageGlyphs
{
public:
    /**
     * What was kept with others is dropped.
     * @param outline      width of outlines, in heights of a pixel.
     * @param pixelAspect  width of a pixel by its height.
     */
    void SetShape(double outline, double pixelAspect);

    /** Drops everything once it is too much. Glyphs found before are not valid any more. */
    void Limit();

    /** Valid until SetShape() or Limit(). @param place  of the origin, in 64ths of the frame's pixels. */
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
    std::size_t m_nBytes = 0; ///< of all glyphs, about
};
