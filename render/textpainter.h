#pragma once

#include <QFont>
#include <QImage>
#include <QRect>
#include <QString>

/** How text looks; colours are 0xAARRGGBB words whose alpha is 0xFF. */
struct TextStyle {
    QFont font;
    QRgb nFontColor;
    QRgb nOutlineColor;
    bool bOutline;
};

/** Text painted into an image of a frame's size. */
struct TextImage {
    QImage image;    ///< QImage::Format_ARGB32, transparent black where no text is; null when there is no memory for it
    QRect rcText;    ///< what counts of it; it may reach beyond the image
    int nTextHeight; ///< in pixels
};

/**
 * Paints text centred at the top of a frame, wrapped at words where it is wider, with an outline of 2 pixels. Every
 * painted pixel has exactly one of the two colours, but for glyphs that bring colours of their own.
 *
 * @param width, height  frame size in pixels, 1 or more.
 */
TextImage PaintText(const TextStyle &style, int width, int height, const QString &text);
