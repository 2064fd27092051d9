#pragma once

#include "render/messagesilencer.h"
#include "render/textpainter.h"

#include <QPainter>

#include <ft2build.h>

#include FT_FREETYPE_H

struct PlainText {
    QImage image;
    QRect rcText;
    int nTextHeight;
};

/** Whether Qt paints all glyphs of a font; with FreeType 2.14 it crashes on some below eight pixels. */
inline bool QtPaints(const QFont &font)
{
    return FREETYPE_MAJOR * 100 + FREETYPE_MINOR < 214 || font.pixelSize() >= 8 || font.pointSize() >= 6;
}

/** Paints text with 20 draws for the outline and one for the text: slow, but as plain as possible. */
inline PlainText PaintTextPlainly(const TextStyle &style, int width, int height, const QString &text)
{
    static constexpr int Offsets[20][2] = {
        {-1, -2}, {0, -2}, {1, -2}, {-2, -1}, {-1, -1}, {0, -1}, {1, -1}, {2, -1}, {-2, 0}, {-1, 0},
        {1, 0},   {2, 0},  {-2, 1}, {-1, 1},  {0, 1},   {1, 1},  {2, 1},  {-1, 2}, {0, 2},  {1, 2},
    };
    const MessageSilencer silencer;
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(0);
    image.setDotsPerMeterX(3780);
    image.setDotsPerMeterY(3780);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing, false);
    QFont font = style.font;
    font.setStyleStrategy(QFont::NoAntialias);
    painter.setFont(font);

    const QRect br = painter.boundingRect(QRect(0, 0, width, height), 0x1000, text);
    const int tw = br.right() - br.left() + 1;
    const int th = br.bottom() - br.top() + 1;
    QRect d;
    d.setCoords(width / 2 - tw / 2, 0, width / 2 + tw / 2 + 1, th);
    if (style.bOutline) {
        painter.setPen(QColor(style.nOutlineColor));
        for (const auto &offset : Offsets) { // cppcheck-suppress constVariable; it is constant
            QRect moved;
            moved.setCoords(d.left() + offset[0], d.top() + offset[1], d.right() + offset[0], d.bottom() + offset[1]);
            painter.drawText(moved, 0x1004, text);
        }
    }
    painter.setPen(QColor(style.nFontColor));
    painter.drawText(d, 0x1004, text);
    painter.end();
    return {image, d, th};
}
