#pragma once

#include "render/recordedtext.h"

#include <QRect>
#include <QSize>

/** Text laid out in lines that are centred in a frame, the first at its top. */
struct TextLayout {
    RecordedText text;
    QRect rcBox; ///< of the lines; it may reach beyond the frame
};

/** How QPainter::drawText() gets such text. */
constexpr int TextFlags = Qt::AlignHCenter | Qt::TextWordWrap;

/** @param width  at which lines are broken, in pixels. */
TextLayout LayOutText(const QFont &font, const QSize &frame, int width, const QString &text);

/** What is painted of a text. Surrogate pairs are not split. */
QString PaintedPart(const QString &text);
