#include "render/coverageglyphs.h"

#include <algorithm>

namespace
{

constexpr std::size_t MaxBytes = std::size_t{24} * 1024 * 1024;

/** The mask with empty columns added at its right; see PaddedColumns(). */
ByteMask Padded(const ByteMask &mask)
{
    ByteMask padded = MakeByteMask(mask.nLeft, mask.nTop, PaddedColumns(mask.nColumns), mask.nRows);
    for (int row = 0; row < mask.nRows; ++row)
        std::copy_n(mask.Row(row), mask.nColumns, padded.Row(row));
    return padded;
}

} // namespace

void CoverageGlyphs::SetShape(double outline, double pixelAspect)
{
    if (outline == m_dOutline && pixelAspect == m_dPixelAspect)
        return;
    m_listFonts.clear();
    m_nBytes = 0;
    m_disc = CoverageDisc(outline, pixelAspect);
    m_dOutline = outline;
    m_dPixelAspect = pixelAspect;
}

void CoverageGlyphs::Limit()
{
    if (m_nBytes <= MaxBytes)
        return;
    m_listFonts.clear();
    m_nBytes = 0;
}

CoverageGlyphs::Font &CoverageGlyphs::FindFont(const GlyphRun &run)
{
    const FontKey key = run.Key();
    const auto font =
        std::find_if(m_listFonts.begin(), m_listFonts.end(), [&](const Font &known) { return known.key == key; });
    return font != m_listFonts.end() ? *font : m_listFonts.emplace_back(Font{key, {}});
}

const CoveredGlyph &CoverageGlyphs::Find(const GlyphRun &run, std::uint32_t glyph, FixedPoint place)
{
    Font &font = FindFont(run);
    // Qt has four subpixel positions for glyph images; more would not be visible in larger glyphs either.
    const bool isImage = run.Source() == GlyphSource::Image && m_dPixelAspect == 1;
    const int fraction = isImage ? run.SubPixelOf(place) : place.nX & 0x30;
    const std::uint64_t key = std::uint64_t{glyph} << 8 | static_cast<unsigned>(fraction);
    const auto known = font.mapGlyphs.find(key);
    if (known != font.mapGlyphs.end())
        return known->second;
    const ByteMask text = run.Coverage(glyph, fraction, m_dPixelAspect);
    CoveredGlyph covered = {Padded(text), m_disc.Spread(text)};
    m_nBytes += 256 + covered.text.listBytes.size() + covered.outline.listBytes.size();
    return font.mapGlyphs.emplace(key, std::move(covered)).first->second;
}
