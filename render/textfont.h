#pragma once

#include <QFont>

/**
 * A font with parameters as for SetSubtitleFontParam() of libsubtitle.h.
 *
 * @param font       keeps its family if @p family is null, and its size if @p pointSize is below 1.
 * @param family     in the encoding of the locale; "" selects the default font's.
 * @param pointSize  limited to 4096.
 * @param style      SUBTITLE_STYLE_BOLD and SUBTITLE_STYLE_ITALIC; other bits are ignored.
 */
QFont ChangedFont(const QFont &font, const char *family, int pointSize, int style);

/** A copy that shares nothing with the font, so that another thread may use it. */
QFont DeepCopy(const QFont &font);
