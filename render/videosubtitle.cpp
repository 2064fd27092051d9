#include "render/videosubtitle.h"

#include "render/messagesilencer.h"
#include "render/naturalview.h"
#include "render/qtruntime.h"
#include "render/qtuse.h"
#include "render/scopedlock.h"
#include "render/textbitmap.h"
#include "render/textfont.h"
#include "render/textpainter.h"
#include "textio/localecodec.h"
#include "vobsub/hostsymbol.h"

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>

namespace
{

int PercentOf(int whole, int percent)
{
    return static_cast<int>(static_cast<qint64>(whole) * percent / 100);
}

/** Frame row of an image's row 0. */
int FrameOffset(int height, int percent, int anchorOffset)
{
    return PercentOf(height, percent) - anchorOffset;
}

int instanceCount = 0;

// Looked up when the library is loaded, since the lookup takes the dynamic linker's lock.
int &exportedInstanceCount =
    *static_cast<int *>(HostObject("_ZN13VideoSubtitle17ms_nInstanceCountE", &VideoSubtitle::ms_nInstanceCount));

/**
 * The Qt objects of renderers that are destroyed while the process ends, when Qt must not be used. They stay reachable,
 * so that they do not count as leaks.
 */
struct Remains {
    QFont *pFont;
    QImage *pImage;
    TextPainter *pTextPainter;
    Remains *pNext;
};
Remains *remains = nullptr;

} // namespace

int VideoSubtitle::ms_nInstanceCount = 0;

VideoSubtitle::VideoSubtitle() : m_pTextPainter(std::make_unique<TextPainter>())
{
    const QtUse use;
    if (!use)
        throw std::runtime_error("the process ends");
    if (instanceCount == 0) {
        try {
            InitQt();
        } catch (...) {
            UnInitQt();
            throw;
        }
    }
    exportedInstanceCount = ++instanceCount;
}

VideoSubtitle::~VideoSubtitle()
{
    const QtUse use;
    exportedInstanceCount = --instanceCount;
    if (!use) {
        remains = new (std::nothrow) Remains{m_pFont, m_pImage, m_pTextPainter.release(), remains};
        return;
    }
    if (instanceCount == 0)
        UnInitQt();
    delete m_pFont;
    delete m_pImage;
}

void VideoSubtitle::CreateVideoSubtitle(int width, int height)
{
    const QtUse use;
    if (width <= 0 || height <= 0 || !use)
        return;
    m_nAlpha = 255;
    EnsureFonts();
    auto font = std::make_unique<QFont>();
    auto image = std::make_unique<QImage>();
    // Qt refuses a size of 0 with a warning and keeps the font's own size.
    if (const int pixelSize = height / 14; pixelSize > 0)
        font->setPixelSize(pixelSize);
    delete m_pFont;
    m_pFont = font.release();
    delete m_pImage;
    m_pImage = image.release();
    m_bInk = false;
    m_painted = {};
    m_nFontColor = 0xFFFFFFFF;
    m_nOutlineColor = 0xFF0A0A0A;
    m_nVideoHeight = height;
    m_bOutline = 1;
    m_nLogoPos = 85;
    m_nVideoWidth = width;
    ++m_nChanges;
}

int VideoSubtitle::SetFontParam(const char *family, int pointSize, int style)
{
    const QtUse use(QtUse::Work::Loading);
    if (!m_pFont || !use)
        return -1;
    EnsureFonts();
    const QFont font = ChangedFont(Font(), family, pointSize, style);
    if (font != Font()) {
        TextPainter().Load(font); // not m_pTextPainter, which another thread may paint a frame with
        const std::lock_guard<std::mutex> lock(m_fontMutex);
        *m_pFont = font;
    }
    MarkChanged();
    return 0;
}

int VideoSubtitle::SetSubFontColor(uchar r, uchar g, uchar b)
{
    const ScopedLock lock(m_mutex);
    // Intentional: no text is ever black, as opaque black marks pixels that are not drawn.
    if (r == 0 && g == 0 && b == 0)
        b = 1;
    const quint32 color = qRgb(r, g, b);
    if (color == m_nFontColor)
        return -1;
    m_nFontColor = color;
    MarkChanged();
    return 0;
}

int VideoSubtitle::SetSubOutlineColor(int /*enable*/, uchar r, uchar g, uchar b)
{
    m_nOutlineColor = qRgb(r, g, b);
    MarkChanged();
    return 0;
}

int VideoSubtitle::SetAlpah(uchar alpha)
{
    const ScopedLock lock(m_mutex);
    m_nAlpha = alpha;
    return 0;
}

int VideoSubtitle::SetLogoPos(int percent)
{
    const ScopedLock lock(m_mutex);
    const int position = std::clamp(percent, 0, 100);
    if (position == m_nLogoPos)
        return -1;
    m_nLogoPos = position;
    return 0;
}

int VideoSubtitle::SetSubtitleFile(const char *path, int track)
{
    const ScopedLock lock(m_mutex);
    MarkChanged();
    m_nAnchorOffset = PercentOf(m_nVideoHeight, 85);
    const QtUse use;
    if (!path || !*path || !use)
        return -1;
    try {
        return OpenFile(LocaleCodec::Current()->Decode(path, qstrlen(path)), track);
    } catch (...) {
        // Leave no parser with half a file, and no picture's key to a text parser.
        m_parserManager.Open(QString(), 0);
        m_strSubtitle.clear();
        throw;
    }
}

bool VideoSubtitle::HasTrack()
{
    const ScopedLock lock(m_mutex);
    return m_parserManager.HasTrack();
}

int VideoSubtitle::OpenFile(const QString &path, int track)
{
    const MessageSilencer silencer; // Qt warns of a seek that fails
    if (!m_parserManager.Open(path, track))
        return -1;
    m_parserManager.SetVideoSize(m_nVideoWidth, m_nVideoHeight);
    if (m_pFont) {
        const QtUse use(QtUse::Work::Loading);
        EnsureFonts();
        m_pTextPainter->Load(Font());
    }
    return 0;
}

int VideoSubtitle::SetTimeStamp(long ms)
{
    const ScopedLock lock(m_mutex);
    if (ms < 0)
        return -1;
    try {
        m_nTime = ms;
        const QString subtitle = m_parserManager.GetSubtitle(ms);
        if (subtitle != m_strSubtitle) {
            m_strSubtitle = subtitle;
            m_bDirty = 1;
        }
    } catch (...) {
        m_strSubtitle.clear(); // rather no subtitle than one of another time
        m_nTime = 0;
        throw;
    }
    return 0;
}

int VideoSubtitle::ProcessFrame(AVPicture *frame)
{
    const ScopedLock lock(m_mutex);
    return !m_strSubtitle.isEmpty() && m_pImage && frame ? DrawSubSurface(frame) : 0;
}

int VideoSubtitle::VisitShown(ShownVisitor &visitor)
{
    const ScopedLock lock(m_mutex);
    ShownSubtitle shown = {};
    if (!m_strSubtitle.isEmpty() && m_pImage) {
        if (!EnsureBuilt())
            return -1;
        UpdateCompositor();
        shown = m_compositor.Shown(CurrentPlacement());
    }
    shown.nFrameWidth = m_nVideoWidth;
    shown.nFrameHeight = m_nVideoHeight;
    visitor.Visit(shown);
    return 0;
}

int VideoSubtitle::VisitNatural(const NaturalSettings &settings, NaturalVisitor &visitor)
{
    const ScopedLock lock(m_mutex);
    NaturalSubtitle shown = {};
    if (m_pFont) {
        if (!m_pNaturalView)
            m_pNaturalView = std::make_unique<NaturalView>();
        // m_nChanges is read before the style: if another thread sets the font meanwhile, the next call paints again.
        const NaturalKey key = {{}, {}, QSize(m_nVideoWidth, m_nVideoHeight), m_nLogoPos, m_nChanges, settings};
        const int pictureOffset = FrameOffset(m_nVideoHeight, m_nLogoPos, PercentOf(m_nVideoHeight, 85));
        if (!m_pNaturalView->Update(
                key, {m_parserManager, m_strSubtitle, m_nTime, pictureOffset, [this] { return Style(); }}))
            return -1;
        shown = m_pNaturalView->Shown(m_nAlpha);
    }
    shown.nFrameWidth = m_nVideoWidth;
    shown.nFrameHeight = m_nVideoHeight;
    visitor.Visit(shown);
    return 0;
}

void VideoSubtitle::MarkChanged()
{
    m_bDirty = 1;
    ++m_nChanges;
}

int VideoSubtitle::DrawSubSurface(AVPicture *frame)
{
    if (!EnsureBuilt())
        return -1;
    ProcessWatermarkFrame(frame);
    return 0;
}

bool VideoSubtitle::EnsureBuilt()
{
    if (!m_bDirty)
        return true;
    const QtUse use;
    if (!use)
        return false;
    // Clear the flag first: if another thread sets the font meanwhile, it is set again.
    m_bDirty = 0;
    try {
        Rebuild();
    } catch (...) {
        m_bDirty = 1;
        throw;
    }
    return true;
}

void VideoSubtitle::Rebuild()
{
    if (m_parserManager.IsTextSub()) {
        TextToBmp(m_strSubtitle);
        return;
    }
    const MessageSilencer silencer; // as in OpenFile()
    QRect rect;
    *m_pImage = QImage(); // so that the parser can reuse its memory
    *m_pImage = m_parserManager.TextToImage(m_strSubtitle, rect);
    m_bInk = false;
    m_nSubX = 0;
    m_nSubY = rect.top();
    m_nSubWidth = m_pImage->width();
    m_nSubHeight = rect.height();
    m_rowsVisible = m_parserManager.VisibleRows();
}

void VideoSubtitle::ProcessWatermarkFrame(AVPicture *frame)
{
    if (!frame->data[0])
        return;
    UpdateCompositor();
    m_compositor.Blend(frame->data[0], frame->linesize[0], CurrentPlacement());
}

void VideoSubtitle::UpdateCompositor()
{
    if (!m_bInk)
        m_compositor.SetImage(*m_pImage,
                              QRect(m_nSubX, m_nSubY, m_nSubWidth, m_nSubHeight) &
                                  QRect(m_nSubX, m_rowsVisible.nFirst, m_nSubWidth, m_rowsVisible.nCount),
                              m_nVideoWidth, m_nVideoHeight);
}

Placement VideoSubtitle::CurrentPlacement() const
{
    return {FrameOffset(m_nVideoHeight, m_nLogoPos, m_nAnchorOffset), m_nAlpha};
}

QFont VideoSubtitle::Font() const
{
    const std::lock_guard<std::mutex> lock(m_fontMutex);
    return DeepCopy(*m_pFont);
}

TextStyle VideoSubtitle::Style() const
{
    return {Font(), m_nFontColor, m_nOutlineColor, m_bOutline != 0};
}

void VideoSubtitle::TextToBmp(const QString &text)
{
    const QtUse use(QtUse::Work::Painting);
    if (!m_pFont || !use)
        return;
    EnsureFonts();
    m_painted = m_pTextPainter->Paint(Style(), m_nVideoWidth, m_nVideoHeight, text);
    m_nAnchorOffset = m_painted.nTextHeight / 2;
    m_nSubX = m_painted.rcText.left();
    m_nSubY = m_painted.rcText.top();
    m_nSubWidth = m_painted.rcText.width();
    m_nSubHeight = m_painted.rcText.height();
    m_rowsVisible = RowRange::All();
    // An image of the frame's size costs more than the text in it: with ink it is null, and MakeImage() makes one if
    // needed.
    *m_pImage = m_painted.image;
    m_bInk = m_painted.ink.has_value();
    if (m_bInk)
        m_compositor.SetText(*m_painted.ink, m_nFontColor, m_nOutlineColor, m_painted.rcText, m_nVideoWidth,
                             m_nVideoHeight);
}

bool VideoSubtitle::MakeBitmap(const char *utf8, AVPicture &out)
{
    try {
        TextToBmp(QString::fromUtf8(utf8));
        const QRect rcText(m_nSubX, m_nSubY, m_nSubWidth, m_nSubHeight);
        const QImage image = MakeImage(m_painted, Style(), m_nVideoWidth, m_nVideoHeight);
        return !image.isNull() && CreateTextBitmap(out, image, rcText, {m_nFontColor, m_nOutlineColor, m_nAlpha});
    } catch (const std::bad_alloc &) {
        return false;
    }
}

int VideoSubtitle::TextToBmp(const char *utf8, AVPicture *out, int *rect)
{
    const QtUse use;
    if (!m_pFont || !out || !rect || !use)
        return -1;
    if (!MakeBitmap(utf8, *out)) {
        FreeTextBitmap(*out);
        m_bDirty = 1;
        return -1;
    }
    rect[0] = m_nSubX;
    rect[1] = FrameOffset(m_nVideoHeight, m_nLogoPos, m_nAnchorOffset);
    rect[2] = m_nSubWidth;
    rect[3] = m_nSubHeight;
    return 0;
}
