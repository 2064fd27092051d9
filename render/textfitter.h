#pragma once

#include "render/naturalsubtitle.h"
#include "render/textlayout.h"

#include <QFont>
#include <QStringList>

#include <vector>

/** What is left of a frame for text and its outline. */
struct SafeArea {
    SafeArea(const QSize &frame, const NaturalSettings &settings);

    double dOutline; ///< in pixels of the frame
    int nColumns;    ///< for the text alone
    int nTop;        ///< row
    int nBottom;     ///< row after the last
};

/**
 * Lays out texts as LayOutText() does with the frame's width, narrower where they are too wide for the area, and in a smaller
 * font where they are too wide or too high then.
 */
std::vector<TextLayout> FitTexts(const QFont &font, const QSize &frame, const SafeArea &area, const QStringList &texts);
