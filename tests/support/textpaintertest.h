#pragma once

#include "render/textpainter.h"

#include "support/fonts.h"
#include "support/paintoracle.h"

#include <ft2build.h>
#include <gtest/gtest.h>

#include FT_FREETYPE_H

struct Look {
    bool bBold;
    bool bItalic;
};

inline TextStyle Style(const QFont &font, const Look &look = {})
{
    TextStyle style = {font, 0xFFFFFFFF, 0xFF0A0A0A, true};
    style.font.setBold(look.bBold);
    style.font.setItalic(look.bItalic);
    return style;
}

/** Uses one painter for all calls, so that its glyph cache is tested too. */
inline PlainText PaintText(const TextStyle &style, int width, int height, const QString &text)
{
    static TextPainter painter;
    const PaintedText painted = painter.Paint(style, width, height, text);
    return {MakeImage(painted, style, width, height), painted.rcText, painted.nTextHeight};
}

/** Whether Qt paints all glyphs of a font; with FreeType 2.14 it crashes on some below eight pixels. */
inline bool QtPaints(const QFont &font)
{
    return FREETYPE_MAJOR * 100 + FREETYPE_MINOR < 214 || font.pixelSize() >= 8 || font.pointSize() >= 6;
}

inline void ExpectAsPlain(const TextStyle &style, const QSize &size, const QString &text)
{
    const PlainText painted = PaintText(style, size.width(), size.height(), text);
    if (!QtPaints(style.font))
        return;
    const PlainText plain = PaintTextPlainly(style, size.width(), size.height(), text);
    EXPECT_EQ(painted.rcText, plain.rcText);
    EXPECT_EQ(painted.nTextHeight, plain.nTextHeight);
    EXPECT_TRUE(painted.image == plain.image) << size.width() << "x" << size.height() << " "
                                              << style.font.toString().toStdString() << " " << text.toStdString();
}
