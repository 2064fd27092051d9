#pragma once

#include "api/libsubtitle.h"

#include <QImage>
#include <QRect>

/** The colours of a text bitmap's palette, 0xAARRGGBB, and the alpha that its entries get. */
struct BitmapColors {
    quint32 nFontColor;
    quint32 nOutlineColor;
    quint8 nAlpha;
};

/**
 * Makes the paletted bitmap that TextToBmp() of libsubtitle.h describes.
 *
 * @param out     data[0] and data[1] are freed and allocated anew.
 * @param image   the painted text, QImage::Format_ARGB32.
 * @param rcText  the part to copy. Pixels are counted through the whole image, row after row: columns beyond its left
 *                or right side show the other end of the neighbouring row. Before the first and after the last pixel
 *                everything is background.
 * @return false, with data[0] and data[1] null, when there is no memory.
 */
bool CreateTextBitmap(AVPicture &out, const QImage &image, const QRect &rcText, const BitmapColors &colors);

/** Frees data[0] and data[1] and sets them to null. */
void FreeTextBitmap(AVPicture &out);
