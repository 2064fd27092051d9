#include "render/textpainter.h"

#include "parsers/framelimit.h"
#include "render/messagesilencer.h"
#include "render/recordedtext.h"
#include "render/textlayout.h"

#include <QPainter>
#include <QThread>

#include <algorithm>
#include <functional>

namespace
{

constexpr int LongText = 4096;   // UTF-16 units
constexpr int WideFrame = 16384; // pixels; Qt's rasteriser has 16-bit coordinates and draws nothing beyond

/** The font without antialiasing, which would make other colours than the pen's. */
QFont PaintFont(const QFont &font)
{
    QFont aliased = font;
    aliased.setStyleStrategy(QFont::NoAntialias);
    return aliased;
}

/**
 * Reference path: draws what one drawText() call for each offset and colour would draw, but repeats the layout only if
 * it would come out differently.
 */
class SingleDraws
{
public:
    SingleDraws(QImage &canvas, const RecordedText &text, const std::function<RecordedText(int)> &layOut) :
        m_painter(&canvas), m_text(text)
    {
        // This hint alone would leave small glyphs antialiased; see PaintFont().
        m_painter.setRenderHint(QPainter::TextAntialiasing, false);
        // Laying out a long text five times may take seconds; accept that a line is then off by 1/64 pixel.
        const bool isMovable = text.IsMovable(OutlineRadius) || text.Size() > LongText;
        for (int dx = -OutlineRadius; dx <= OutlineRadius && !isMovable; ++dx)
            m_listMoved.push_back(layOut(dx));
    }

    void Draw(QRgb color, const Offset &offset)
    {
        m_painter.setPen(QColor(color));
        if (m_listMoved.empty())
            m_text.Draw(m_painter, {offset.nX, offset.nY});
        else
            m_listMoved[OutlineRadius + offset.nX].Draw(m_painter, {0, offset.nY});
    }

private:
    QPainter m_painter;
    const RecordedText &m_text;
    std::vector<RecordedText> m_listMoved; ///< the layout for each horizontal offset; empty if m_text can be moved
};

void PaintBySingleDraws(QImage &canvas, const TextStyle &style, const RecordedText &text,
                        const std::function<RecordedText(int)> &layOut)
{
    SingleDraws draws(canvas, text, layOut);
    for (const Offset &offset : OutlineOffsets) {
        if (style.bOutline)
            draws.Draw(style.nOutlineColor, offset);
    }
    draws.Draw(style.nFontColor, {0, 0});
}

void PaintRow(QRgb *pixels, const TextInk &ink, int row, int width, const TextStyle &style)
{
    for (int bit = std::max(0, -ink.text.nLeft); bit < 64 * ink.text.nWords && ink.text.nLeft + bit < width; ++bit) {
        const auto isSet = [&](const BitMask &mask) { return mask.Row(row)[bit / 64] >> (bit % 64) & 1; };
        if (isSet(ink.text))
            pixels[ink.text.nLeft + bit] = style.nFontColor;
        else if (isSet(ink.outline))
            pixels[ink.text.nLeft + bit] = style.nOutlineColor;
    }
}

} // namespace

QImage CreateTextCanvas(int width, int height)
{
    constexpr double InchesPerMeter = 1 / 0.0254;
    QImage canvas(width, height, QImage::Format_ARGB32);
    canvas.fill(0);
    canvas.setDotsPerMeterX(qRound(DotsPerInch * InchesPerMeter));
    canvas.setDotsPerMeterY(qRound(DotsPerInch * InchesPerMeter));
    return canvas;
}

PaintedText TextPainter::Paint(const TextStyle &style, int width, int height, const QString &wholeText)
{
    if (!IsPossibleFrame(width, height))
        return {};
    const QString text = PaintedPart(wholeText);
    std::optional<MessageSilencer> silencer;
    if (HasNewCharacters(style.font, text))
        silencer.emplace();
    const QFont font = PaintFont(style.font);
    const auto [recorded, box] = LayOutText(font, {width, height}, width, text);
    PaintedText result;
    result.nTextHeight = box.height() - 1;
    result.rcText = box;
    const auto layOut = [&font = font, &text = text, rcBox = box](int dx) {
        return RecordedText(font, rcBox.translated(dx, 0), TextFlags, text);
    };
    if (style.bOutline && std::max(width, height) <= WideFrame)
        result.ink = m_glyphPainter.Paint(recorded, {width, height});
    if (!result.ink) {
        result.image = CreateTextCanvas(width, height);
        if (!result.image.isNull())
            PaintBySingleDraws(result.image, style, recorded, layOut);
    }
    return result;
}

void TextPainter::Load(const QFont &font)
{
    const QString text = QStringLiteral("x");
    if (!HasNewCharacters(font, text))
        return;
    const MessageSilencer silencer;
    (void)RecordedText(PaintFont(font), QRectF(0, 0, 1, 1), TextFlags, text);
}

bool TextPainter::HasNewCharacters(const QFont &font, const QString &text)
{
    // Qt keeps fonts for each thread.
    const Qt::HANDLE thread = QThread::currentThreadId();
    if (font != m_knownFont || thread != m_pKnownThread) {
        m_knownFont = font;
        m_pKnownThread = thread;
        m_knownCharacters.reset();
    }
    bool hasNew = false;
    for (const QChar character : text) {
        hasNew |= !m_knownCharacters[character.unicode()];
        m_knownCharacters.set(character.unicode());
    }
    return hasNew;
}

QImage MakeImage(const PaintedText &painted, const TextStyle &style, int width, int height)
{
    if (!painted.ink)
        return painted.image;
    QImage image = CreateTextCanvas(width, height);
    const TextInk &ink = *painted.ink;
    for (int row = 0; row < ink.text.nRows && !image.isNull(); ++row) {
        const int y = ink.text.nTop + row;
        if (y >= 0 && y < height)
            PaintRow(reinterpret_cast<QRgb *>(image.scanLine(y)), ink, row, width, style);
    }
    return image;
}
