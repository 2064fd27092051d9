#include "render/textcanvas.h"

#include <QPainter>

QImage CreateCanvas(int width, int height)
{
    QImage canvas(width, height, QImage::Format_ARGB32);
    canvas.fill(0);
    constexpr int DotsPerMeter = 3780;
    canvas.setDotsPerMeterX(DotsPerMeter);
    canvas.setDotsPerMeterY(DotsPerMeter);
    return canvas;
}

QFont PaintFont(const QFont &font)
{
    QFont aliased = font;
    aliased.setStyleStrategy(QFont::NoAntialias);
    return aliased;
}

void PreparePainter(QPainter &painter)
{
    // The hint alone leaves small glyphs antialiased.
    painter.setRenderHint(QPainter::TextAntialiasing, false);
}

double PixelSize(const QFont &font)
{
    return font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * 96 / 72;
}
