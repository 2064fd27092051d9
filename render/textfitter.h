#pragma once

#include "render/naturalsubtitle.h"
#include "render/textlayout.h"

#include <QFont>
#include <QStringList>

#include <vector>

/** The part of a frame that text and its outline may fill. */
struct SafeArea {
    SafeArea(const QSize &frame, const NaturalSettings &settings);

    /** Rows of text with its outline. */
    RowSpan Rows() const { return {nTop - nReach, nBottom + nReach}; }
    /** The same area, no higher than the tallest part without taken rows, unless that is too low for legible text. */
    SafeArea Beside(const TakenRows &taken) const;

    double dOutline; ///< width of the outline in pixels of the frame
    int nReach;      ///< reach of the outline in whole pixels
    int nColumns;    ///< for the text alone
    int nTop;        ///< first row, for the text alone
    int nBottom;     ///< row after the last, for the text alone
};

/**
 * Lays out texts with LayOutText(), with lines as wide as the frame. If they do not fit the area, breaks the lines at
 * its width; if that is not enough, makes the font smaller too.
 */
std::vector<TextLayout> FitTexts(const QFont &font, const QSize &frame, const SafeArea &area, const QStringList &texts);
