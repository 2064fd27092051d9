#include "render/naturalview.h"

#include <algorithm>

namespace
{

std::array<std::uint8_t, 3> Bytes(QRgb color)
{
    return {static_cast<std::uint8_t>(qRed(color)), static_cast<std::uint8_t>(qGreen(color)),
            static_cast<std::uint8_t>(qBlue(color))};
}

/** The pixels of an image in the rows and columns that have any. */
ScaledPicture Cropped(const QImage &image, QPoint place)
{
    QRect used;
    for (int row = 0; row < image.height(); ++row) {
        const auto *pixels = reinterpret_cast<const QRgb *>(image.constScanLine(row));
        const auto isVisible = [](QRgb pixel) { return qAlpha(pixel) != 0; };
        const auto *end = pixels + image.width();
        const auto *first = std::find_if(pixels, end, isVisible);
        if (first == end)
            continue;
        const auto *last = end - 1;
        while (qAlpha(*last) == 0)
            --last;
        used |= QRect(QPoint(static_cast<int>(first - pixels), row), QPoint(static_cast<int>(last - pixels), row));
    }
    ScaledPicture picture;
    if (used.isEmpty())
        return picture;
    picture.area = {place.x() + used.left(), place.y() + used.top(), used.width(), used.height()};
    picture.listPixels.reserve(static_cast<std::size_t>(used.width()) * used.height());
    for (int row = used.top(); row <= used.bottom(); ++row) {
        const auto *pixels = reinterpret_cast<const QRgb *>(image.constScanLine(row)) + used.left();
        picture.listPixels.insert(picture.listPixels.end(), pixels, pixels + used.width());
    }
    return picture;
}

} // namespace

void NaturalView::Clear()
{
    m_bPainted = false;
    m_ink.Clear();
    m_picture = {};
    ++m_nVersion;
}

void NaturalView::PaintText(const NaturalKey &key, const TextStyle &style)
{
    Clear();
    m_painter.Paint(style, key.frame, key.listTexts, key.nPosition, key.settings, m_ink);
    m_colors = {Bytes(style.nFontColor), Bytes(style.nOutlineColor)};
    if (!m_ink.colored.isNull())
        m_picture = Cropped(m_ink.colored, m_ink.ptColored);
    m_ink.colored = QImage();
    m_key = key;
    m_bPainted = true;
}

void NaturalView::PaintPicture(const NaturalKey &key, const ColorPicture &picture, int offset)
{
    Clear();
    m_picture = ScalePicture(picture, key.frame.width(), key.frame.height(), offset);
    m_key = key;
    m_bPainted = true;
}

NaturalSubtitle NaturalView::Shown(int opacity)
{
    if (opacity != m_nOpacity) {
        m_nOpacity = opacity;
        ++m_nVersion;
    }
    NaturalSubtitle shown = {};
    shown.text = {m_ink.text.nLeft, m_ink.text.nTop, m_ink.text.nColumns, m_ink.text.nRows};
    shown.pText = m_ink.text.listBytes.data();
    shown.pOutline = m_ink.outline.listBytes.data();
    shown.colors = m_colors;
    shown.picture = m_picture.area;
    shown.pPicture = m_picture.listPixels.data();
    shown.nOpacity = opacity;
    if (opacity > 0 && m_bPainted && (!shown.text.IsEmpty() || !shown.picture.IsEmpty()))
        shown.nVersion = m_nVersion;
    return shown;
}
