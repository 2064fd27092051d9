#include "render/textpainter.h"

#include "parsers/framelimit.h"
#include "render/messagesilencer.h"
#include "render/recordedtext.h"
#include "render/smalltext.h"
#include "render/textcanvas.h"

#include <QPainter>
#include <QThread>

#include <algorithm>
#include <functional>
#include <new>

namespace
{

constexpr int MeasureFlags = Qt::TextWordWrap;
constexpr int DrawFlags = Qt::AlignHCenter | Qt::TextWordWrap;

constexpr int LongText = 4096;   // UTF-16 units
constexpr int WideFrame = 16384; // pixels; Qt's rasteriser tells places in 16 bits, and draws nothing beyond

/** What is painted of a text. Surrogate pairs are not parted. */
QString Beginning(const QString &text)
{
    constexpr int Size = TextPainter::MaxTextSize;
    return text.left(text.size() > Size && text.at(Size - 1).isHighSurrogate() ? Size - 1 : Size);
}

QRect MeasureText(const QFont &font, int width, int height, const QString &text)
{
    QImage canvas = CreateCanvas(1, 1);
    if (canvas.isNull())
        throw std::bad_alloc(); // nothing is measured without it
    QPainter painter(&canvas);
    PreparePainter(painter);
    painter.setFont(PaintFont(font));
    return painter.boundingRect(QRect(0, 0, width, height), MeasureFlags, text);
}

/** Draws with the two colours as with so many drawText() calls, but lays out as rarely as gives the same. */
class SingleDraws
{
public:
    SingleDraws(QImage &canvas, const RecordedText &text, const std::function<RecordedText(int)> &layOut) :
        m_painter(&canvas), m_text(text)
    {
        PreparePainter(m_painter);
        // A long text of images would be laid out for seconds; there a line may be off by a 64th of a pixel.
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
    std::vector<RecordedText> m_listMoved; ///< for each distance to the side
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

std::optional<TextInk> TextPainter::PaintInk(const RecordedText &text, const QFont &font, const QSize &frame,
                                             const QRect &box)
{
    if (std::max(frame.width(), frame.height()) > WideFrame)
        return std::nullopt;
    std::optional<TextInk> ink = m_pathText.Paint(text, frame);
    return ink ? ink : PaintSmallText(text, font, frame, box);
}

PaintedText TextPainter::Paint(const TextStyle &style, int width, int height, const QString &wholeText)
{
    if (!IsPossibleFrame(width, height))
        return {};
    const MessageSilencer silencer;
    const QString text = Beginning(wholeText);
    const QRect bounds = MeasureText(style.font, width, height, text);
    const int halfWidth = bounds.width() / 2;
    PaintedText result;
    result.nTextHeight = bounds.height();
    const QRect box(QPoint(width / 2 - halfWidth, 0), QPoint(width / 2 + halfWidth + 1, bounds.height()));
    result.rcText = box;
    const QFont font = PaintFont(style.font);
    const auto layOut = [&](int dx) { return RecordedText(font, box.translated(dx, 0), DrawFlags, text); };
    const RecordedText recorded = layOut(0);
    if (style.bOutline)
        result.ink = PaintInk(recorded, font, {width, height}, box);
    if (!result.ink) {
        result.image = CreateCanvas(width, height);
        if (!result.image.isNull())
            PaintBySingleDraws(result.image, style, recorded, layOut);
    }
    return result;
}

std::optional<TextInk> TextPainter::Load(const QFont &font, int width, int height)
{
    // Qt keeps fonts for each thread.
    const Qt::HANDLE thread = QThread::currentThreadId();
    if (!IsPossibleFrame(width, height) || (font == m_loadedFont && thread == m_pLoadingThread))
        return std::nullopt;
    m_loadedFont = font;
    m_pLoadingThread = thread;
    const MessageSilencer silencer;
    const QString letters = QStringLiteral("The quick brown fox jumps over\nthe lazy dog. AEIOU, BCDFG\n"
                                           "HJKLM; NPQRS: VWXYZ? 01234\n56789 -!\"'()");
    const QSize frame(8192, 4096);
    const QRect bounds = MeasureText(font, frame.width(), frame.height(), letters);
    const QRect box = bounds.translated(100, 0);
    const QFont aliased = PaintFont(font);
    PaintInk(RecordedText(aliased, box, DrawFlags, letters), aliased, frame, box);
    const QString text = QStringLiteral("The quick brown fox\njumps over the lazy dog");
    return Paint({font, 0xFFFFFFFF, 0xFF0A0A0A, true}, std::min(width, frame.width()), std::min(height, frame.height()),
                 text)
        .ink;
}

QImage MakeImage(const PaintedText &painted, const TextStyle &style, int width, int height)
{
    if (!painted.ink)
        return painted.image;
    QImage image = CreateCanvas(width, height);
    const TextInk &ink = *painted.ink;
    for (int row = 0; row < ink.text.nRows && !image.isNull(); ++row) {
        const int y = ink.text.nTop + row;
        if (y >= 0 && y < height)
            PaintRow(reinterpret_cast<QRgb *>(image.scanLine(y)), ink, row, width, style);
    }
    return image;
}
