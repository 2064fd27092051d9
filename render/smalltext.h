#pragma once

#include "render/textink.h"

#include <QFont>
#include <QRect>

#include <optional>

class RecordedText;

/**
 * Draws small text so that it need not be drawn once for each place of the outline. No result where that is not enough to
 * know what the single draws give, pixel for pixel:
 *  - glyphs of that size are drawn as paths, whose points are rounded differently from place to place;
 *  - glyphs bring colours of their own;
 *  - lines begin so far left that the single draws place them at negative coordinates, which Qt rounds differently;
 *  - ink reaches so far below the text that some may lie even further below;
 *  - there is no memory for it.
 *
 * @param text  laid out in @p font and @p box.
 */
std::optional<TextInk> PaintSmallText(const RecordedText &text, const QFont &font, const QSize &frame,
                                      const QRect &box);
