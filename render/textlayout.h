#pragma once

#include "render/recordedtext.h"

#include <QRect>
#include <QSize>

/** Text laid out in lines that are centred in a frame, the first at its top. */
struct TextLayout {
    RecordedText text;
    QRect rcBox; ///< of the lines; it may reach beyond the frame
};

/** Flags of such text for QPainter::drawText(). */
constexpr int TextFlags = Qt::AlignHCenter | Qt::TextWordWrap;

/** @param width  of the lines, in pixels: longer ones are broken. */
TextLayout LayOutText(const QFont &font, const QSize &frame, int width, const QString &text);

/** The beginning of a text that is painted; see TextPainter::MaxTextSize. Surrogate pairs are not split. */
QString PaintedPart(const QString &text);
