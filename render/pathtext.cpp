#include "render/pathtext.h"

#include "render/recordedtext.h"

#include <algorithm>

namespace
{

constexpr double CachedSize = 64;    // Qt draws glyphs up to this pixel size from images, not as paths
constexpr double GreatestSize = 512; // beyond, sides may be longer than Qt's 16 bits can tell
constexpr std::size_t MaxShapes = 4096;

std::string FontKey(const QFontEngine &engine)
{
    const QFontEngine::FaceId face = engine.faceId();
    const QFontDef &def = engine.fontDef;
    std::string key = (face.filename + '\n' + face.uuid).toStdString();
    for (const double number : {static_cast<double>(face.index), static_cast<double>(face.encoding), def.pixelSize,
                                static_cast<double>(engine.synthesized()), static_cast<double>(def.weight),
                                static_cast<double>(def.style), static_cast<double>(def.stretch)})
        key += ' ' + std::to_string(number);
    return key;
}

bool IsDrawnAsPath(const QFontEngine &engine)
{
    return engine.type() == QFontEngine::Freetype && engine.glyphFormat != QFontEngine::Format_ARGB &&
           engine.fontDef.pixelSize > CachedSize && engine.fontDef.pixelSize <= GreatestSize;
}

bool IsInFrame(const BitMask &mask, int x, int width)
{
    return x + mask.nLeft - OutlineRadius >= 0 && x + mask.nLeft + mask.nColumns + OutlineRadius <= width;
}

} // namespace

std::optional<TextInk> PathText::Paint(const RecordedText &text, const QSize &frame)
{
    if (m_nShapes > MaxShapes) {
        m_mapFonts.clear();
        m_nShapes = 0;
    }
    if (text.IsClipped())
        return std::nullopt;
    std::vector<PlacedGlyph> glyphs;
    for (const GlyphRun &run : text.Runs()) {
        if (!PlaceRun(run, frame, glyphs))
            return std::nullopt;
    }
    return Compose(glyphs, frame);
}

bool PathText::PlaceRun(const GlyphRun &run, const QSize &frame, std::vector<PlacedGlyph> &glyphs)
{
    QFontEngine &engine = run.Font();
    // Negative positions are rounded the other way.
    if (!IsDrawnAsPath(engine) || run.Position().x() < OutlineRadius || run.Position().y() < OutlineRadius)
        return false;
    Font &glyphsOfFont = m_mapFonts[FontKey(engine)];
    int direction = 0;
    for (std::size_t i = 0; i < run.Glyphs().size(); ++i) {
        const FixedPoint place = {run.Places()[i].x.value(), run.Places()[i].y.value()};
        // So far below the frame that no glyph reaches up into it.
        if ((place.nY >> 6) > frame.height() + 4 * engine.fontDef.pixelSize)
            continue;
        if (place.nX < 0 || (place.nX >> 6) > frame.width())
            return false;
        const GlyphShape &shape = Shape(engine, glyphsOfFont, run.Glyphs()[i], place);
        if (shape.Mask().nRows == 0)
            continue;
        if (direction == 0)
            direction = shape.Direction();
        const PlacedGlyph glyph = {&shape, place.nX >> 6, place.nY >> 6};
        if (direction == 0 || shape.Direction() != direction || !IsInFrame(shape.Mask(), glyph.nX, frame.width()))
            return false;
        glyphs.push_back(glyph);
    }
    return true;
}

const GlyphShape &PathText::Shape(QFontEngine &engine, Font &font, std::uint32_t number, FixedPoint place)
{
    auto glyph = font.find(number);
    if (glyph == font.end()) {
        QPainterPath path;
        QFixedPoint origin;
        engine.addGlyphsToPath(&number, &origin, 1, &path, {});
        glyph = font.emplace(number, Glyph{GlyphOutline(path), {}}).first;
    }
    const int fraction = (place.nX & 63) << 6 | (place.nY & 63);
    const auto shape = glyph->second.mapShapes.find(fraction);
    if (shape != glyph->second.mapShapes.end())
        return shape->second;
    ++m_nShapes;
    return glyph->second.mapShapes.emplace(fraction, GlyphShape(glyph->second.outline, place, m_filler)).first->second;
}

TextInk PathText::Compose(const std::vector<PlacedGlyph> &glyphs, const QSize &frame)
{
    constexpr int Margin = OutlineRadius + 1; // a corner that is rounded up may reach a column further
    int left = frame.width();
    int right = 0;
    int top = frame.height();
    int bottom = 0; // behind the last
    for (const PlacedGlyph &glyph : glyphs) {
        const BitMask &mask = glyph.pShape->Mask();
        left = std::min(left, glyph.nX + mask.nLeft - Margin);
        right = std::max(right, glyph.nX + mask.nLeft + mask.nColumns + Margin);
        top = std::min(top, glyph.nY + mask.nTop - OutlineRadius);
        bottom = std::max(bottom, glyph.nY + mask.nTop + mask.nRows + OutlineRadius);
    }
    top = std::max(top, 0);
    bottom = std::min(bottom, frame.height());
    TextInk ink;
    if (left >= right || top >= bottom)
        return ink;
    ink.text = ink.outline = MakeMask(left, top, right - left, bottom - top);

    std::vector<PlacedGlyph> odd;
    for (const PlacedGlyph &glyph : glyphs) {
        const BitMask &mask = glyph.pShape->Mask();
        const int first = glyph.nY + mask.nTop;
        if (first - OutlineRadius >= frame.height() || first + mask.nRows + OutlineRadius <= 0)
            continue;
        // Qt cuts the sides at the frame's first and last row before it rounds.
        const bool isCut = first < OutlineRadius || first + mask.nRows + OutlineRadius > frame.height();
        if (isCut || !glyph.pShape->IsSameAround(glyph.nX, glyph.nY))
            odd.push_back(glyph);
        else
            AddMask(ink.text, mask, glyph.nX, glyph.nY);
    }
    AddDisc(ink.outline, ink.text);
    for (const PlacedGlyph &glyph : odd)
        AddOddGlyph(ink, glyph, frame.height() - 1);
    return ink;
}

void PathText::AddOddGlyph(TextInk &ink, const PlacedGlyph &glyph, int lastRow)
{
    for (const Offset &offset : OutlineOffsets)
        AddMask(ink.outline, glyph.pShape->FillAt(glyph.nX + offset.nX, glyph.nY + offset.nY, lastRow, m_filler), 0, 0);
    AddMask(ink.text, glyph.pShape->FillAt(glyph.nX, glyph.nY, lastRow, m_filler), 0, 0);
}
