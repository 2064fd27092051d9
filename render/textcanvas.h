#pragma once

#include <QFont>
#include <QImage>

class QPainter;

/** A transparent image at 96 dpi, so that a point size gives the same pixels in every host; null without memory. */
QImage CreateCanvas(int width, int height);

/** The font as every text is painted: without antialiasing, which would bring other colours than the pen's. */
QFont PaintFont(const QFont &font);

/** Sets the painter up for text in a PaintFont(). */
void PreparePainter(QPainter &painter);

/** In pixels of a canvas. */
double PixelSize(const QFont &font);
