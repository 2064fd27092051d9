#include "render/recordedtext.h"

#include <QImage>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ft2build.h>
#include <limits>
#include <private/qbezier_p.h>
#include <private/qfontengine_p.h>
#include <private/qtextengine_p.h>
#include <tuple>
#include <utility>

#include FT_FREETYPE_H

namespace
{

constexpr double GreatestSize = 512; // pixels; longer edges may not fit QPainter's 16.16 coordinates

/** Pixels; font engines make no images of larger glyphs. */
constexpr int GreatestImage = 64;

/** Greatest size in pixels up to which QPainter asks for glyph images instead of filling outlines. */
int GreatestAskedFor()
{
    static const qint64 set = std::abs(qint64{qEnvironmentVariableIntValue("QT_MAX_CACHED_GLYPH_SIZE")});
    return set > 0 ? static_cast<int>(std::min<qint64>(set, std::numeric_limits<int>::max())) : GreatestImage;
}

/**
 * Whether text is so small that Qt must not be asked for glyph images: FreeType 2.14 cannot rasterise some glyphs of
 * one to three pixels, and Qt then reads from a null pointer.
 */
bool IsTooSmallForImages(double pixelSize)
{
    constexpr double Safe = 8;
    if (pixelSize >= Safe)
        return false;
    static const bool isFreeTypeFaulty = [] {
        FT_Library library = nullptr;
        if (FT_Init_FreeType(&library) != 0)
            return true;
        FT_Int major = 0;
        FT_Int minor = 0;
        FT_Int patch = 0;
        FT_Library_Version(library, &major, &minor, &patch);
        FT_Done_FreeType(library);
        return std::make_pair(major, minor) >= std::make_pair(2, 14);
    }();
    return isFreeTypeFaulty;
}

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
        m_listRuns.emplace_back(position, item);
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
        constexpr int Side = 1 << 15;
        switch (metric) {
        case PdmWidth:
        case PdmHeight:
            return Side;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return DotsPerInch;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 1;
        }
    }

private:
    RecordingEngine &m_engine;
};

/** @param part  subpixel position of the image in x, in 64ths. */
const QFontEngine::Glyph *GlyphData(QFontEngine &font, glyph_t glyph, int part)
{
#if QT_VERSION_MAJOR < 6
    const QFixed place = QFixed::fromFixed(part);
#else
    const QFixedPoint place = {QFixed::fromFixed(part), 0};
#endif
    return font.glyphData(glyph, place, QFontEngine::Format_A8, QTransform());
}

struct ReleaseFont {
    void operator()(QFontEngine *font) const
    {
        if (!font->ref.deref())
            delete font;
    }
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

/** Coverage of a filled path, by QPainter's antialiasing. */
ByteMask FillCoverage(const QPainterPath &path)
{
    const QRect box = path.boundingRect().toAlignedRect().adjusted(-1, -1, 1, 1);
    if (path.isEmpty())
        return {};
    QImage image(box.size(), QImage::Format_Alpha8);
    if (image.isNull())
        return {};
    image.fill(0);
    QPainterPath moved = path.translated(-box.topLeft());
    moved.setFillRule(Qt::WindingFill);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(moved, Qt::black);
    painter.end();
    ByteMask mask = MakeByteMask(box.left(), box.top(), box.width(), box.height());
    for (int row = 0; row < mask.nRows; ++row)
        std::copy_n(image.constScanLine(row), mask.nColumns, mask.Row(row));
    return mask;
}

} // namespace

bool FontKey::operator==(const FontKey &other) const
{
    const auto numbers = [](const FontKey &key) {
        return std::tie(key.nIndex, key.nEncoding, key.nSynthesized, key.nWeight, key.nStyle, key.nStretch,
                        key.pixelSize);
    };
    return numbers(*this) == numbers(other) && fileName == other.fileName && uuid == other.uuid;
}

struct GlyphRun::Item {
    explicit Item(const QTextItemInt &item) :
        pFont(item.fontEngine), flags(item.flags), layout(CopyLayout(item.glyphs, listMemory))
    {
        pFont->ref.ref();
    }

    void Place(const QPointF &position, QVarLengthArray<glyph_t> &glyphs, QVarLengthArray<QFixedPoint> &places) const
    {
        pFont->getGlyphPositions(layout, QTransform::fromTranslate(position.x(), position.y()), flags, glyphs, places);
    }

    std::unique_ptr<QFontEngine, ReleaseFont> pFont;
    QTextItem::RenderFlags flags;
    std::vector<char> listMemory; ///< of layout
    QGlyphLayout layout;
};

GlyphRun::~GlyphRun() = default;
GlyphRun::GlyphRun(GlyphRun &&) noexcept = default;
GlyphRun &GlyphRun::operator=(GlyphRun &&) noexcept = default;

GlyphRun::GlyphRun(const QPointF &position, const QTextItem &item) :
    m_position(position), m_pItem(std::make_unique<Item>(static_cast<const QTextItemInt &>(item)))
{
    QVarLengthArray<glyph_t> glyphs;
    QVarLengthArray<QFixedPoint> places;
    m_pItem->Place(position, glyphs, places);
    m_listGlyphs.assign(glyphs.begin(), glyphs.end());
    m_listPlaces.reserve(m_listGlyphs.size());
    for (const QFixedPoint &place : places)
        m_listPlaces.push_back({place.x.value(), place.y.value()});
    const auto [highest, lowest] = std::minmax_element(m_listPlaces.begin(), m_listPlaces.end(),
                                                       [](FixedPoint a, FixedPoint b) { return a.nY < b.nY; });
    if (highest != m_listPlaces.end()) {
        m_nHighest = RoundToPixel(highest->nY);
        m_nLowest = RoundToPixel(lowest->nY);
    }
}

FontKey GlyphRun::Key() const
{
    const QFontEngine &font = *m_pItem->pFont;
    const QFontEngine::FaceId face = font.faceId();
    const QFontDef &def = font.fontDef;
    return {face.filename,
            face.uuid,
            face.index,
            face.encoding,
            font.synthesized(),
            static_cast<int>(def.weight),
            static_cast<int>(def.style),
            static_cast<int>(def.stretch),
            def.pixelSize};
}

GlyphSource GlyphRun::Source() const
{
    const QFontEngine &font = *m_pItem->pFont;
    if (font.type() != QFontEngine::Freetype || font.glyphFormat == QFontEngine::Format_ARGB ||
        font.fontDef.pixelSize > GreatestSize)
        return GlyphSource::Unknown;
    const bool isPath = font.fontDef.pixelSize > std::min(GreatestImage, GreatestAskedFor()) ||
                        IsTooSmallForImages(font.fontDef.pixelSize);
    return isPath ? GlyphSource::Path : GlyphSource::Image;
}

bool GlyphRun::IsRightToLeft() const
{
    return m_pItem->flags.testFlag(QTextItem::RightToLeft);
}

bool GlyphRun::IsColored() const
{
    return m_pItem->pFont->glyphFormat == QFontEngine::Format_ARGB;
}

double GlyphRun::RightEdge() const
{
    QFixed edge;
    for (std::size_t i = 0; i < m_listGlyphs.size(); ++i) {
        const glyph_metrics_t box = m_pItem->pFont->boundingBox(m_listGlyphs[i]);
        edge = std::max(edge, QFixed::fromFixed(m_listPlaces[i].nX) + box.x + box.width);
    }
    return edge.toReal();
}

int GlyphRun::Reach() const
{
    return static_cast<int>(4 * m_pItem->pFont->fontDef.pixelSize);
}

int GlyphRun::SubPixelOf(FixedPoint place) const
{
    return m_pItem->pFont->subPixelPositionForX(QFixed::fromFixed(place.nX)).value();
}

std::optional<BitMask> GlyphRun::Image(std::uint32_t glyph, int part) const
{
    const QFontEngine::Glyph *image = GlyphData(*m_pItem->pFont, glyph, part);
    if (!image || !image->data)
        return BitMask();
    const bool isMono = image->format == QFontEngine::Format_Mono;
    if (!isMono && image->format != QFontEngine::Format_A8)
        return std::nullopt;
    BitMask mask = MakeMask(image->x, -image->y, image->width, image->height);
    const int stride = isMono ? (image->width + 31) / 32 * 4 : (image->width + 3) / 4 * 4; // of Qt's glyph images
    for (int row = 0; row < mask.nRows; ++row) {
        const uchar *bytes = image->data + static_cast<std::ptrdiff_t>(row) * stride;
        for (int column = 0; column < mask.nColumns; ++column) {
            const int alpha = isMono ? bytes[column / 8] & 0x80 >> (column % 8) : bytes[column];
            if (alpha != 0)
                mask.Row(row)[column / 64] |= std::uint64_t{1} << (column % 64);
            if (!isMono && alpha != 0 && alpha != 255)
                return std::nullopt;
        }
    }
    return mask;
}

ByteMask GlyphRun::Coverage(std::uint32_t glyph, int fraction, double pixelAspect) const
{
    if (pixelAspect != 1)
        return FillCoverage(QTransform(1 / pixelAspect, 0, 0, 1, fraction / 64.0, 0).map(Path(glyph)));
    const QFontEngine::Glyph *image =
        Source() == GlyphSource::Image ? GlyphData(*m_pItem->pFont, glyph, fraction) : nullptr;
    if (!image || !image->data || image->format != QFontEngine::Format_A8)
        return FillCoverage(Path(glyph).translated(fraction / 64.0, 0));
    ByteMask mask = MakeByteMask(image->x, -image->y, image->width, image->height);
    const int stride = (image->width + 3) / 4 * 4; // of Qt's glyph images
    for (int row = 0; row < mask.nRows; ++row)
        std::copy_n(image->data + static_cast<std::ptrdiff_t>(row) * stride, mask.nColumns, mask.Row(row));
    return mask;
}

QPainterPath GlyphRun::Path(std::uint32_t glyph) const
{
    QPainterPath path;
    QFixedPoint origin;
    m_pItem->pFont->addGlyphsToPath(&glyph, &origin, 1, &path, {});
    return path;
}

void GlyphRun::Draw(QPainter &painter, const QPoint &offset) const
{
    if (m_nLowest + offset.y() < -Reach() || m_nHighest + offset.y() > painter.device()->height() + Reach())
        return;
    QFontEngine &font = *m_pItem->pFont;
    const double size = font.fontDef.pixelSize;
    const bool lacksImages = (size > GreatestImage && size <= GreatestAskedFor()) || IsTooSmallForImages(size);
    if (!lacksImages || font.glyphFormat == QFontEngine::Format_ARGB) {
        QTextItemInt item;
        item.flags = m_pItem->flags;
        item.glyphs = m_pItem->layout;
        item.fontEngine = &font;
        painter.drawTextItem(m_position + offset, item);
        return;
    }
    // QPainter would ask for an image, get none and draw nothing, or crash.
    QVarLengthArray<glyph_t> glyphs;
    QVarLengthArray<QFixedPoint> places;
    m_pItem->Place(m_position + offset, glyphs, places);
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    font.addGlyphsToPath(glyphs.data(), places.data(), glyphs.size(), &path, m_pItem->flags);
    painter.fillPath(path, painter.pen().brush());
}

QPolygonF CurvePoints(QPointF start, QPointF first, QPointF second, QPointF end)
{
    constexpr double FlatEnough = 0.25; // Qt's threshold for paths that are not scaled
    QPolygonF points;
    points.reserve(16); // more than most curves have
    QBezier::fromPoints(start, first, second, end).addToPolygon(&points, FlatEnough);
    return points;
}

RecordedText::RecordedText(const QFont &font, const QRectF &box, int flags, const QString &text) :
    m_rcBox(box),
    m_nSize(text.size()),
    m_bHasTabsOrObjects(text.contains(QLatin1Char('\t')) || text.contains(QChar(QChar::ObjectReplacementCharacter))),
    m_bHasSoftHyphens(text.contains(QChar(QChar::SoftHyphen)))
{
    RecordingEngine engine(m_listRuns);
    RecordingDevice device(engine);
    QPainter painter(&device);
    painter.setFont(font);
    painter.drawText(box, flags, text, &m_rcBounds);
    m_bClipped = engine.IsClipped();
}

bool RecordedText::HasLinesOfBox(int width) const
{
    if (width > m_rcBox.width() || m_bHasTabsOrObjects || m_bHasSoftHyphens)
        return false;
    constexpr double Rounded = 1; // pixels; more than the rounding of positions and advances amounts to
    double line = 0;
    double left = 0;
    for (const GlyphRun &run : m_listRuns) {
        if (run.Position().y() != line)
            left = run.Position().x();
        line = run.Position().y();
        if (run.IsRightToLeft() || run.RightEdge() - left > width - Rounded)
            return false;
    }
    return true;
}

bool RecordedText::IsMovable(int distance) const
{
    if (m_bHasTabsOrObjects)
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

bool RecordedText::IsPositive(int distance) const
{
    // A line that starts with a tab starts inside the box unless it is wider than the box.
    return (!m_bHasTabsOrObjects || m_rcBox.left() >= distance) &&
           std::all_of(m_listRuns.begin(), m_listRuns.end(), [=](const GlyphRun &run) {
               return run.Position().x() >= distance && run.Position().y() >= distance;
           });
}

void RecordedText::Draw(QPainter &painter, const QPoint &offset) const
{
    if (m_bClipped)
        painter.setClipRect(m_rcBox.translated(offset));
    for (const GlyphRun &run : m_listRuns)
        run.Draw(painter, offset);
}
