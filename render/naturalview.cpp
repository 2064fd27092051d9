#include "render/naturalview.h"

#include "render/messagesilencer.h"
#include "render/qtruntime.h"
#include "render/qtuse.h"
#include "render/textfitter.h"

#include <algorithm>

namespace
{

/**
 * The image without the transparent rows and columns around its visible pixels. @param place  of the image in the frame
 */
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

/** The range of rows with visible pixels. */
RowSpan VisibleRows(const ScaledPicture &picture)
{
    RowSpan rows;
    const auto isVisible = [](std::uint32_t pixel) { return pixel >> 24 != 0; };
    for (int row = 0; row < picture.area.nRows; ++row) {
        const auto from = picture.listPixels.begin() + std::ptrdiff_t{row} * picture.area.nColumns;
        if (std::any_of(from, from + picture.area.nColumns, isVisible))
            rows.Add({picture.area.nTop + row, picture.area.nTop + row + 1});
    }
    return rows;
}

/** Drops invisible rows at the top and the bottom, which might be moved out of the frame. */
void CropRows(ScaledPicture &picture, const RowSpan &visible)
{
    if (visible.IsEmpty())
        return;
    const auto from = picture.listPixels.begin();
    const std::ptrdiff_t columns = picture.area.nColumns;
    picture.listPixels.erase(from + (visible.nEnd - picture.area.nTop) * columns, picture.listPixels.end());
    picture.listPixels.erase(from, from + (visible.nTop - picture.area.nTop) * columns);
    picture.area.nTop = visible.nTop;
    picture.area.nRows = visible.Count();
}

} // namespace

bool NaturalView::Update(NaturalKey key, const NaturalSource &source)
{
    const bool isText = source.parsers.IsTextSub();
    if (isText)
        key.listTexts = source.parsers.AllDueTexts(source.nTime);
    key.strPicture = isText ? source.parsers.AllDuePictures(source.nTime) : source.strDue;
    if (IsOf(key))
        return true;
    const QtUse use(QtUse::Work::Painting);
    if (!use)
        return false;
    if (isText && key.strPicture.isEmpty()) {
        EnsureFonts();
        PaintText(key, source.style());
        return true;
    }
    const MessageSilencer silencer; // Qt warns of a seek that fails
    ColorPicture picture;
    if (!key.strPicture.isEmpty())
        picture = source.parsers.ToColorPicture(key.strPicture);
    PaintPicture(key, picture, source.nPictureOffset);
    return true;
}

void NaturalView::Clear()
{
    m_bPainted = false;
    m_ink.Clear();
    m_picture = {};
    m_rows = {};
    ++m_nVersion;
}

void NaturalView::Evade(const TakenRows &taken, const RowSpan &area)
{
    const RowSpan visible = VisibleRows(m_picture);
    CropRows(m_picture, visible);
    m_rows.Add(visible);
    const int move = taken.Evasion(m_rows, area);
    for (int *row : {&m_ink.text.nTop, &m_ink.outline.nTop, &m_picture.area.nTop, &m_rows.nTop, &m_rows.nEnd})
        *row += move;
}

void NaturalView::PaintText(const NaturalKey &key, const TextStyle &style)
{
    Clear();
    m_painter.Paint(style, key.frame, key.listTexts, key.nPosition, key.settings, m_ink);
    m_colors = InkColors::Of(style.nFontColor, style.nOutlineColor);
    if (!m_ink.colored.isNull())
        m_picture = Cropped(m_ink.colored, m_ink.ptColored);
    m_ink.colored = QImage();
    m_rows = m_ink.lines;
    m_rows.Add({m_ink.outline.nTop, m_ink.outline.nTop + m_ink.outline.nRows});
    Evade(key.settings.taken, SafeArea(key.frame, key.settings).Rows());
    m_key = key;
    m_bPainted = true;
}

void NaturalView::PaintPicture(const NaturalKey &key, const ColorPicture &picture, int offset)
{
    Clear();
    m_picture = ScalePicture(picture, key.frame.width(), key.frame.height(), offset);
    Evade(key.settings.taken, {0, key.frame.height()});
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
    shown.rows = m_rows;
    if (opacity > 0 && m_bPainted && (!shown.text.IsEmpty() || !shown.picture.IsEmpty()))
        shown.nVersion = m_nVersion;
    return shown;
}
