#include "render/glyphpainter.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::size_t MaxKilobytes = 8192;

/**
 * Whether the pixels that Qt fills at this position can be reproduced. Qt changes edges beyond the frame's left and
 * right side, and drops single pixels of paths whose first row is close to the frame's last row.
 */
bool IsReproducible(const BitMask &mask, int x, int y, const QSize &frame)
{
    const int left = x + mask.nLeft;
    const int belowBottom = y + mask.nTop - frame.height();
    return left >= OutlineRadius && left + mask.nColumns + OutlineRadius <= frame.width() &&
           (belowBottom < -2 * OutlineRadius || belowBottom > OutlineRadius);
}

/** Whether a glyph that reaches at most @p reach pixels from its origin may be visible in a frame. */
bool IsNear(FixedPoint place, int reach, const QSize &frame)
{
    const int x = place.nX >> 6;
    const int y = place.nY >> 6;
    return x >= -reach && x <= frame.width() + reach && y >= -reach && y <= frame.height() + reach;
}

} // namespace

std::optional<TextInk> GlyphPainter::Paint(const RecordedText &text, const QSize &frame)
{
    if (m_nKilobytes > MaxKilobytes) {
        m_listFonts.clear();
        m_nKilobytes = 0;
    }
    if (text.IsClipped() || !text.IsPositive(OutlineRadius))
        return std::nullopt;
    std::vector<PlacedGlyph> glyphs;
    for (const GlyphRun &run : text.Runs()) {
        if (!PlaceRun(run, frame, glyphs))
            return std::nullopt;
    }
    return Compose(glyphs, frame);
}

GlyphPainter::Font &GlyphPainter::FindFont(const GlyphRun &run)
{
    const FontKey key = run.Key();
    const auto font =
        std::find_if(m_listFonts.begin(), m_listFonts.end(), [&](const Font &known) { return known.key == key; });
    if (font != m_listFonts.end())
        return *font;
    ++m_nKilobytes;
    return m_listFonts.emplace_back(Font{key, run.Source(), {}, {}});
}

bool GlyphPainter::PlaceRun(const GlyphRun &run, const QSize &frame, std::vector<PlacedGlyph> &glyphs)
{
    if (run.Source() == GlyphSource::Unknown)
        return false;
    Font &font = FindFont(run);
    const bool isPath = font.source == GlyphSource::Path;
    const int reach = run.Reach() + OutlineRadius;
    int direction = 0;
    for (std::size_t i = 0; i < run.Glyphs().size(); ++i) {
        const FixedPoint place = run.Places()[i];
        if (!IsNear(place, reach, frame))
            continue;
        const FixedPoint part =
            isPath ? FixedPoint{place.nX & 63, place.nY & 63} : FixedPoint{run.SubPixelOf(place), 0};
        const GlyphShape *shape = Shape(run, font, run.Glyphs()[i], part);
        if (!shape)
            return false;
        if (shape->Mask().nRows == 0)
            continue;
        const PlacedGlyph glyph = {shape, place.nX >> 6, isPath ? place.nY >> 6 : RoundToPixel(place.nY)};
        if (isPath) {
            if (direction == 0)
                direction = shape->Direction();
            if (direction == 0 || shape->Direction() != direction ||
                !IsReproducible(shape->Mask(), glyph.nX, glyph.nY, frame))
                return false;
        }
        glyphs.push_back(glyph);
    }
    return true;
}

const GlyphShape *GlyphPainter::Shape(const GlyphRun &run, Font &font, std::uint32_t glyph, FixedPoint part)
{
    const std::uint64_t key = std::uint64_t{glyph} << 13 | static_cast<unsigned>(part.nX << 6 | part.nY);
    const auto known = font.mapShapes.find(key);
    if (known != font.mapShapes.end())
        return known->second ? &*known->second : nullptr;
    std::optional<GlyphShape> &shape = font.mapShapes[key];
    if (font.source == GlyphSource::Path)
        shape.emplace(FillShape(run, font, glyph, part));
    else if (std::optional<BitMask> mask = run.Image(glyph, part.nX))
        shape.emplace(std::move(*mask));
    m_nKilobytes += 1 + (shape ? shape->Mask().listWords.size() / 128 : 0);
    return shape ? &*shape : nullptr;
}

GlyphShape GlyphPainter::FillShape(const GlyphRun &run, Font &font, std::uint32_t glyph, FixedPoint part)
{
    auto outline = font.mapOutlines.find(glyph);
    if (outline == font.mapOutlines.end())
        outline = font.mapOutlines.emplace(glyph, GlyphOutline(run.Path(glyph))).first;
    return GlyphShape(outline->second, part, m_filler);
}

TextInk GlyphPainter::Compose(const std::vector<PlacedGlyph> &glyphs, const QSize &frame)
{
    int left = frame.width();
    int right = 0;
    int top = frame.height();
    int bottom = 0; // row after the last
    for (const PlacedGlyph &glyph : glyphs) {
        const BitMask &mask = glyph.pShape->Mask();
        left = std::min(left, glyph.nX + mask.nLeft - OutlineReach);
        right = std::max(right, glyph.nX + mask.nLeft + mask.nColumns + OutlineReach);
        top = std::min(top, glyph.nY + mask.nTop - OutlineReach);
        bottom = std::max(bottom, glyph.nY + mask.nTop + mask.nRows + OutlineReach);
    }
    // Text just above or below the frame may have outline inside it.
    top = std::max(top, -OutlineRadius);
    bottom = std::min(bottom, frame.height() + OutlineRadius);
    TextInk ink;
    if (left >= right || top >= bottom)
        return ink;
    left &= ~63; // begin at a word of the frame's rows
    ink.text = ink.outline = MakeMask(left, top, right - left, bottom - top);

    std::vector<std::pair<PlacedGlyph, GlyphFit>> listUncacheable;
    for (const PlacedGlyph &glyph : glyphs) {
        const BitMask &mask = glyph.pShape->Mask();
        const int first = glyph.nY + mask.nTop;
        if (first - OutlineReach >= frame.height() || first + mask.nRows + OutlineReach <= 0)
            continue;
        const GlyphFit fit = glyph.pShape->FindFit(glyph.nX, glyph.nY, frame.height());
        if (fit.uncacheable.any())
            listUncacheable.emplace_back(glyph, fit);
        else if (fit.bMaskFits)
            AddMask(ink.text, mask, glyph.nX, glyph.nY);
        else
            AddMask(ink.text, glyph.pShape->FillAt(glyph.nX, glyph.nY, m_filler), 0, 0);
    }
    AddDisc(ink.outline, ink.text);
    for (const auto &[glyph, fit] : listUncacheable)
        AddUncacheableGlyph(ink, glyph, fit, frame.height());
    return ink;
}

void GlyphPainter::AddUncacheableGlyph(TextInk &ink, const PlacedGlyph &glyph, const GlyphFit &fit, int frameHeight)
{
    const GlyphShape &shape = *glyph.pShape;
    const BitMask usual = shape.FillAt(glyph.nX, glyph.nY, m_filler);
    const auto add = [&](BitMask &to, Offset offset, bool isUncacheable) {
        if (isUncacheable)
            AddMask(to, shape.FillAt(glyph.nX + offset.nX, glyph.nY + offset.nY, frameHeight, m_filler), 0, 0);
        else
            AddMask(to, usual, offset.nX, offset.nY);
    };
    for (std::size_t i = 0; i < OutlineOffsets.size(); ++i)
        add(ink.outline, OutlineOffsets[i], fit.uncacheable[i]);
    add(ink.text, {0, 0}, fit.uncacheable[OutlineOffsets.size()]);
}
