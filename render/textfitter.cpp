#include "render/textfitter.h"

#include <algorithm>
#include <cmath>

namespace
{

std::vector<TextLayout> LayOut(const QFont &font, const QSize &frame, int width, const QStringList &texts)
{
    std::vector<TextLayout> layouts;
    layouts.reserve(texts.size());
    for (const QString &text : texts)
        layouts.push_back(LayOutText(font, frame, width, text));
    return layouts;
}

bool Fits(const std::vector<TextLayout> &layouts, const SafeArea &area)
{
    int rows = 0;
    for (const TextLayout &layout : layouts) {
        if (layout.text.Bounds().width() > area.nColumns)
            return false;
        rows += layout.rcBox.height() - 1;
    }
    return rows <= area.nBottom - area.nTop;
}

/** A font's size in pixels, at the resolution of text images. */
int PixelSize(const QFont &font)
{
    constexpr double PointsPerInch = 72;
    return font.pixelSize() > 0 ? font.pixelSize()
                                : static_cast<int>(std::lround(font.pointSizeF() * DotsPerInch / PointsPerInch));
}

} // namespace

SafeArea::SafeArea(const QSize &frame, const NaturalSettings &settings) :
    dOutline(settings.dOutline * frame.height() / 720.0), nReach(static_cast<int>(std::ceil(dOutline)))
{
    const auto margin = [&](int side) { return static_cast<int>(std::lround(side * settings.dSafeArea / 100)); };
    nColumns = std::max(1, frame.width() - 2 * (margin(frame.width()) + nReach));
    nTop = std::min(margin(frame.height()) + nReach, (frame.height() - 1) / 2);
    nBottom = frame.height() - nTop;
}

SafeArea SafeArea::Beside(const TakenRows &taken) const
{
    constexpr int LeastPart = 10; // of the area's height
    SafeArea beside = *this;
    const int rows = taken.TallestGap(Rows()).Count() - 2 * nReach;
    if (rows >= (nBottom - nTop) / LeastPart)
        beside.nTop = std::max(nTop, nBottom - rows);
    return beside;
}

std::vector<TextLayout> FitTexts(const QFont &font, const QSize &frame, const SafeArea &area, const QStringList &texts)
{
    std::vector<TextLayout> layouts = LayOut(font, frame, frame.width(), texts);
    if (Fits(layouts, area))
        return layouts;
    layouts = LayOut(font, frame, area.nColumns, texts);
    if (Fits(layouts, area))
        return layouts;
    // Search for the largest size that fits, between one that does (or 1, if none does) and one that does not.
    QFont smaller = font;
    int fitting = 1;
    int tooLarge = std::max(2, PixelSize(font));
    smaller.setPixelSize(fitting);
    layouts = LayOut(smaller, frame, area.nColumns, texts);
    while (tooLarge - fitting > 1) {
        const int size = (fitting + tooLarge) / 2;
        smaller.setPixelSize(size);
        std::vector<TextLayout> tried = LayOut(smaller, frame, area.nColumns, texts);
        if (Fits(tried, area)) {
            fitting = size;
            layouts = std::move(tried);
        } else {
            tooLarge = size;
        }
    }
    return layouts;
}
