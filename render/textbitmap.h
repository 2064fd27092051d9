#pragma once

#include "api/libsubtitle.h"

#include <QImage>
#include <QRect>

/** What the palette of a text bitmap is made of: 0xAARRGGBB words, and the alpha that its entries get. */
struct BitmapColors {
    quint32 nFontColor;
    quint32 nOutlineColor;
    quint8 nAlpha;
};

/**
 * Hands text out as a paletted bitmap, as TextToBmp() of libsubtitle.h describes it.
 *
 * @param out     data[0] and data[1] are freed and made anew.
 * @param image   the painted text, QImage::Format_ARGB32.
 * @param rcText  the part to hand out. Pixels are counted through the whole image, row after row, so that columns
 * beyond its left or right edge show what stands at the other end of the neighbouring row; before the first and behind
 * the last pixel all is background.
 * @return false, with data[0] and data[1] null, when there is no memory.
 */
bool CreateTextBitmap(AVPicture &out, const QImage &image, const QRect &rcText, const BitmapColors &colors);

/** Frees data[0] and data[1] and makes them null. */
void FreeTextBitmap(AVPicture &out);
