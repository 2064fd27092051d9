#pragma once

#include "render/textpainter.h"

#include "support/fonts.h"
#include "support/paintoracle.h"

#include <gtest/gtest.h>

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
