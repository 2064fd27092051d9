#include "render/textlayout.h"

#include "render/textpainter.h"

#include <QFont>
#include <QtMath>

#include <utility>

TextLayout LayOutText(const QFont &font, const QSize &frame, int width, const QString &text)
{
    // Centre the lines where the text's box, which depends on them, will have its centre.
    const int middle = frame.width() / 2;
    const QRectF frameBox(middle + 1 - width / 2.0, 0, width, frame.height());
    RecordedText recorded(font, frameBox, TextFlags | Qt::TextDontClip, text);
    const int textHeight = qCeil(recorded.Bounds().height());
    const int halfWidth = qCeil(recorded.Bounds().width()) / 2;
    const QRect box(QPoint(middle - halfWidth, 0), QPoint(middle + halfWidth + 1, textHeight));
    if (!recorded.HasLinesOfBox(box.width()))
        recorded = RecordedText(font, box, TextFlags, text);
    return {std::move(recorded), box};
}

QString PaintedPart(const QString &text)
{
    constexpr int Size = TextPainter::MaxTextSize;
    return text.left(text.size() > Size && text.at(Size - 1).isHighSurrogate() ? Size - 1 : Size);
}
