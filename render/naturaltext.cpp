#include "render/naturaltext.h"

#include "parsers/framelimit.h"
#include "render/messagesilencer.h"
#include "render/textfitter.h"

#include <QPainter>

#include <algorithm>
#include <climits>
#include <cmath>
#include <set>

namespace
{

/** The font with antialiasing, whatever the system's settings are. */
QFont SmoothFont(const QFont &font)
{
    QFont smooth = font;
    smooth.setStyleStrategy(QFont::PreferAntialias);
    return smooth;
}

int CountLines(const QString &text, const TextLayout &layout)
{
    std::set<int> lines;
    for (const GlyphRun &run : layout.text.Runs())
        lines.insert(static_cast<int>(run.Position().y()));
    // Empty lines have no glyphs: count them in the text.
    const QStringList parts = text.split(QLatin1Char('\n'));
    return static_cast<int>(lines.size()) +
           static_cast<int>(
               std::count_if(parts.begin(), parts.end(), [](const QString &part) { return part.isEmpty(); }));
}

/** The frame row of the lower edge of a text of @p lines lines. */
int LowerEdge(const TextLayout &layout, int lines, const QSize &frame, int position)
{
    const auto middle = static_cast<int>(std::int64_t{frame.height()} * position / 100);
    const int height = layout.rcBox.height() - 1;
    // Three or more lines reach as far below the middle as two do: by the height of one line.
    return middle + (lines <= 2 ? height - height / 2 : height / lines);
}

/** The texts that are painted: no more UTF-16 units in all than of a single text. */
QStringList PaintedParts(const QStringList &texts)
{
    QStringList parts;
    int rest = TextPainter::MaxTextSize;
    for (const QString &text : texts) {
        if (text.size() > rest && !parts.isEmpty())
            break;
        parts.append(PaintedPart(text));
        rest -= parts.last().size();
    }
    return parts;
}

void AddSaturated(std::uint8_t *to, const std::uint8_t *from, int count)
{
    for (int i = 0; i < count; ++i) {
        const auto room = static_cast<std::uint8_t>(255 - to[i]); // a byte, so that vectors hold more pixels
        to[i] = static_cast<std::uint8_t>(to[i] + std::min(room, from[i]));
    }
}

/** Moves a mask and calls @p add(to, from, count) for each of its rows that lie in @p to, clipped to its columns. */
template <typename Add>
void AddTo(ByteMask &to, const ByteMask &mask, int dx, int dy, Add add)
{
    const int left = mask.nLeft + dx - to.nLeft;
    const int top = mask.nTop + dy - to.nTop;
    const int first = std::max(0, -left);
    const int end = std::min(mask.nColumns, to.nColumns - left);
    if (first >= end)
        return;
    for (int row = std::max(0, -top); row < mask.nRows && top + row < to.nRows; ++row)
        add(to.Row(top + row) + left + first, mask.Row(row) + first, end - first);
}

} // namespace

void NaturalText::Paint(const TextStyle &style, const QSize &frame, const QStringList &texts, int position,
                        const NaturalSettings &settings, TextCoverage &ink)
{
    ink.Clear();
    if (!IsPossibleFrame(frame.width(), frame.height()) || texts.isEmpty())
        return;
    const MessageSilencer silencer;
    double pixelAspect = settings.dPixelAspect;
    QSize shown(static_cast<int>(std::lround(frame.width() * pixelAspect)), frame.height());
    if (!IsPossibleFrame(shown.width(), shown.height())) {
        pixelAspect = 1;
        shown = frame;
    }
    const SafeArea area(shown, settings);
    m_glyphs.SetShape(area.dOutline, pixelAspect);
    m_glyphs.Limit();
    const QStringList parts = PaintedParts(texts);
    std::vector<TextLayout> layouts = FitTexts(SmoothFont(style.font), shown, area.Beside(settings.taken), parts);
    int rows = 0;
    for (const TextLayout &layout : layouts)
        rows += layout.rcBox.height() - 1;
    const int lines = CountLines(parts.front(), layouts.front());
    int bottom = std::max(LowerEdge(layouts.front(), lines, frame, position), area.nTop + rows);
    bottom = std::min(bottom, area.nBottom);
    ink.lines = {bottom - rows, bottom};
    std::vector<Block> blocks;
    blocks.reserve(layouts.size());
    for (TextLayout &layout : layouts) {
        bottom -= layout.rcBox.height() - 1;
        blocks.push_back({std::move(layout), bottom});
    }
    Compose(blocks, frame, pixelAspect, ink);
}

void NaturalText::Compose(const std::vector<Block> &blocks, const QSize &frame, double pixelAspect, TextCoverage &ink)
{
    struct Placed {
        const CoveredGlyph *pGlyph;
        int nX, nY;
    };
    std::vector<Placed> glyphs;
    int left = frame.width();
    int right = 0;
    int top = frame.height();
    int bottom = 0; // row after the last
    bool isColored = false;
    for (const Block &block : blocks) {
        for (const GlyphRun &run : block.layout.text.Runs()) {
            isColored |= run.IsColored();
            for (std::size_t i = 0; i < run.Glyphs().size() && !run.IsColored(); ++i) {
                FixedPoint place = run.Places()[i];
                if (pixelAspect != 1)
                    place.nX = static_cast<int>(std::lround(place.nX / pixelAspect));
                const int y = RoundToPixel(place.nY) + block.nOffset;
                if (y < -run.Reach() || y > frame.height() + run.Reach())
                    continue;
                const CoveredGlyph &glyph = m_glyphs.Find(run, run.Glyphs()[i], place);
                const Placed placed = {&glyph, place.nX >> 6, y};
                for (const ByteMask *mask : {&glyph.text, &glyph.outline}) {
                    if (mask->nRows == 0 || mask->nColumns == 0)
                        continue;
                    left = std::min(left, placed.nX + mask->nLeft);
                    right = std::max(right, placed.nX + mask->nLeft + mask->nColumns);
                    top = std::min(top, placed.nY + mask->nTop);
                    bottom = std::max(bottom, placed.nY + mask->nTop + mask->nRows);
                }
                glyphs.push_back(placed);
            }
        }
    }
    left = std::max(left, 0);
    top = std::max(top, 0);
    right = std::min(right, frame.width());
    bottom = std::min(bottom, frame.height());
    if (left < right && top < bottom) {
        for (ByteMask *mask : {&ink.text, &ink.outline})
            mask->Reset(left, top, right - left, bottom - top);
        for (const Placed &placed : glyphs) {
            AddTo(ink.text, placed.pGlyph->text, placed.nX, placed.nY, AddSaturated);
            AddTo(ink.outline, placed.pGlyph->outline, placed.nX, placed.nY, RaiseTo);
        }
    }
    if (isColored)
        PaintColored(blocks, frame, pixelAspect, ink);
}

void NaturalText::PaintColored(const std::vector<Block> &blocks, const QSize &frame, double pixelAspect,
                               TextCoverage &ink)
{
    int top = INT_MAX;
    int bottom = INT_MIN;
    const auto forRuns = [&](auto call) {
        for (const Block &block : blocks) {
            for (const GlyphRun &run : block.layout.text.Runs()) {
                if (run.IsColored())
                    call(run, block.nOffset);
            }
        }
    };
    forRuns([&](const GlyphRun &run, int offset) {
        const int row = static_cast<int>(run.Position().y()) + offset;
        top = std::min(top, row - run.Reach());
        bottom = std::max(bottom, row + run.Reach());
    });
    top = std::max(top, 0);
    bottom = std::min(bottom, frame.height());
    if (top >= bottom)
        return;
    QImage image = CreateTextCanvas(frame.width(), bottom - top);
    if (image.isNull())
        return;
    QPainter painter(&image);
    if (pixelAspect != 1)
        painter.scale(1 / pixelAspect, 1);
    forRuns([&](const GlyphRun &run, int offset) { run.Draw(painter, {0, offset - top}); });
    painter.end();
    ink.colored = image;
    ink.ptColored = {0, top};
}
