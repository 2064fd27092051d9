#pragma once

#include "render/glyphpainter.h"
#include "render/textink.h"

#include <QFont>
#include <QImage>
#include <QRect>
#include <QString>

#include <bitset>
#include <optional>

/** A transparent image of DotsPerInch, QImage::Format_ARGB32; null without memory. */
QImage CreateTextCanvas(int width, int height);

/** How text looks; colours are 0xAARRGGBB words whose alpha is 0xFF. */
struct TextStyle {
    QFont font;
    QRgb nFontColor;
    QRgb nOutlineColor;
    bool bOutline;
};

/** Text painted for a frame: its ink, or an image if it needed the reference path (21 QPainter draws). */
struct PaintedText {
    std::optional<TextInk> ink;
    QImage image;        ///< see MakeImage(); null when there is ink
    QRect rcText;        ///< the box of its lines; it may reach beyond the frame
    int nTextHeight = 0; ///< in pixels
};

/**
 * Paints text centred at the top of a frame, with lines wrapped at words and an outline of 2 pixels. Every painted
 * pixel has exactly one of the two colours, except in colour glyphs.
 */
class TextPainter
{
public:
    /**
     * How many UTF-16 units of a text are painted: more than any frame holds in letters of legible size. A file may
     * hold megabytes in one cue, and laying them out would stall the host.
     */
    static constexpr int MaxTextSize = 16384;

    /** @param width, height  frame size in pixels; nothing is painted unless IsPossibleFrame(). */
    PaintedText Paint(const TextStyle &style, int width, int height, const QString &text);

    /** Makes Qt find and load a font on the calling thread, so that the first text in it need not wait for that. */
    void Load(const QFont &font);

private:
    bool HasNewCharacters(const QFont &font, const QString &text);

    GlyphPainter m_glyphPainter;
    std::bitset<1 << 16> m_knownCharacters; ///< UTF-16 units that Qt has loaded fonts for
    std::optional<QFont> m_knownFont;       ///< of m_knownCharacters; none at first: Qt may not be initialised yet
    Qt::HANDLE m_pKnownThread = nullptr;
};

/**
 * The text as an image of the frame's size, QImage::Format_ARGB32, transparent black around the text; null if there is
 * no memory for it.
 */
QImage MakeImage(const PaintedText &painted, const TextStyle &style, int width, int height);
