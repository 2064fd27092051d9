#pragma once

#include "render/pathtext.h"
#include "render/textink.h"

#include <QFont>
#include <QImage>
#include <QRect>
#include <QString>

#include <optional>

/** How text looks; colours are 0xAARRGGBB words whose alpha is 0xFF. */
struct TextStyle {
    QFont font;
    QRgb nFontColor;
    QRgb nOutlineColor;
    bool bOutline;
};

/** Text painted for a frame: its ink, or an image where the ink alone does not tell all. */
struct PaintedText {
    std::optional<TextInk> ink;
    QImage image;        ///< see MakeImage(); null when there is ink
    QRect rcText;        ///< what counts of it; it may reach beyond the frame
    int nTextHeight = 0; ///< in pixels
};

/**
 * Paints text centred at the top of a frame, wrapped at words where it is wider, with an outline of 2 pixels. Every
 * painted pixel has exactly one of the two colours, but for glyphs that bring colours of their own.
 */
class TextPainter
{
public:
    /**
     * UTF-16 units of a text that are painted: more than any frame holds in letters of legible size. To lay out the
     * megabytes that a file may hold in one cue would stall the host.
     */
    static constexpr int MaxTextSize = 16384;

    /** @param width, height  frame size in pixels; nothing is painted unless IsPossibleFrame(). */
    PaintedText Paint(const TextStyle &style, int width, int height, const QString &text);

    /**
     * Does ahead what the first text in a font would have to wait for.
     * @return a text that was painted for that, for the caller to go on with; nothing where the font is loaded.
     */
    std::optional<TextInk> Load(const QFont &font, int width, int height);

private:
    /** @return nothing where only the single draws tell. */
    std::optional<TextInk> PaintInk(const RecordedText &text, const QFont &font, const QSize &frame, const QRect &box);

    PathText m_pathText;
    std::optional<QFont> m_loadedFont; ///< none before the first, since Qt may not be there yet
    Qt::HANDLE m_pLoadingThread = nullptr;
};

/**
 * The text as an image of the frame's size, QImage::Format_ARGB32, transparent black where no text is; null when there is
 * no memory for it.
 */
QImage MakeImage(const PaintedText &painted, const TextStyle &style, int width, int height);
