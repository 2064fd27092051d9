#include "render/recordedtext.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cstdlib>

namespace
{

class RecordingEngine : public QPaintEngine
{
public:
    explicit RecordingEngine(std::vector<GlyphRun> &runs) : QPaintEngine(AllFeatures), m_listRuns(runs) {}
    bool begin(QPaintDevice * /*device*/) override
    {
        setActive(true);
        return true;
    }
    bool end() override
    {
        setActive(false);
        return true;
    }
    void updateState(const QPaintEngineState & /*state*/) override {}
    void drawPixmap(const QRectF & /*to*/, const QPixmap & /*pixmap*/, const QRectF & /*from*/) override {}
    void drawTextItem(const QPointF &position, const QTextItem &item) override
    {
        m_bClipped |= painter()->hasClipping();
        m_listRuns.emplace_back(position, static_cast<const QTextItemInt &>(item));
    }
    Type type() const override { return User; }

    bool IsClipped() const { return m_bClipped; }

private:
    std::vector<GlyphRun> &m_listRuns;
    bool m_bClipped = false;
};

class RecordingDevice : public QPaintDevice
{
public:
    explicit RecordingDevice(RecordingEngine &engine) : m_engine(engine) {}
    QPaintEngine *paintEngine() const override { return &m_engine; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        constexpr int Dpi = 96;
        constexpr int Side = 1 << 15;
        switch (metric) {
        case PdmWidth:
        case PdmHeight:
            return Side;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return Dpi;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 1;
        }
    }

private:
    RecordingEngine &m_engine;
};

QGlyphLayout CopyLayout(const QGlyphLayout &from, std::vector<char> &memory)
{
    memory.resize(static_cast<std::size_t>(from.numGlyphs) * QGlyphLayout::SpaceNeeded);
    QGlyphLayout copy(memory.data(), from.numGlyphs);
    std::copy_n(from.offsets, from.numGlyphs, copy.offsets);
    std::copy_n(from.glyphs, from.numGlyphs, copy.glyphs);
    std::copy_n(from.advances, from.numGlyphs, copy.advances);
    std::copy_n(from.justifications, from.numGlyphs, copy.justifications);
    std::copy_n(from.attributes, from.numGlyphs, copy.attributes);
    return copy;
}

} // namespace

GlyphRun::GlyphRun(const QPointF &position, const QTextItemInt &item) :
    m_position(position), m_pFont(item.fontEngine), m_flags(item.flags), m_layout(CopyLayout(item.glyphs, m_listMemory))
{
    m_pFont->ref.ref();
    QVarLengthArray<glyph_t> glyphs;
    QVarLengthArray<QFixedPoint> places;
    m_pFont->getGlyphPositions(m_layout, QTransform::fromTranslate(position.x(), position.y()), m_flags, glyphs,
                               places);
    m_listGlyphs.assign(glyphs.begin(), glyphs.end());
    m_listPlaces.assign(places.begin(), places.end());
    const auto [highest, lowest] = std::minmax_element(
        m_listPlaces.begin(), m_listPlaces.end(), [](const QFixedPoint &a, const QFixedPoint &b) { return a.y < b.y; });
    if (highest != m_listPlaces.end()) {
        m_nHighest = highest->y.toInt();
        m_nLowest = lowest->y.toInt();
    }
}

void GlyphRun::ReleaseFont::operator()(QFontEngine *font) const
{
    if (!font->ref.deref())
        delete font;
}

void GlyphRun::Draw(QPainter &painter, const QPoint &offset) const
{
    const auto reach = static_cast<int>(4 * m_pFont->fontDef.pixelSize); // further than glyphs go from their origin
    if (m_nLowest + offset.y() < -reach || m_nHighest + offset.y() > painter.device()->height() + reach)
        return;
    QTextItemInt item;
    item.flags = m_flags;
    item.glyphs = m_layout;
    item.fontEngine = m_pFont.get();
    painter.drawTextItem(m_position + offset, item);
}

RecordedText::RecordedText(const QFont &font, const QRect &box, int flags, const QString &text) :
    m_rcBox(box),
    m_nSize(text.size()),
    m_bHasGaps(text.contains(QLatin1Char('\t')) || text.contains(QChar(QChar::ObjectReplacementCharacter)))
{
    RecordingEngine engine(m_listRuns);
    RecordingDevice device(engine);
    QPainter painter(&device);
    painter.setFont(font);
    painter.drawText(box, flags, text);
    m_bClipped = engine.IsClipped();
}

bool RecordedText::IsMovable(int distance) const
{
    if (m_bHasGaps)
        return false;
    for (auto run = m_listRuns.begin(); run != m_listRuns.end();) {
        const double line = run->Position().y();
        double left = run->Position().x();
        for (++run; run != m_listRuns.end() && run->Position().y() == line; ++run)
            left = std::min(left, run->Position().x());
        if (std::abs(left) < distance)
            return false;
    }
    return true;
}

void RecordedText::Draw(QPainter &painter, const QPoint &offset) const
{
    if (m_bClipped)
        painter.setClipRect(m_rcBox.translated(offset));
    for (const GlyphRun &run : m_listRuns)
        run.Draw(painter, offset);
}
