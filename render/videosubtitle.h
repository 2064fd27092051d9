#pragma once

#include "api/libsubtitle.h"
#include "parsers/parsermanager.h"
#include "render/compositor.h"
#include "render/textpainter.h"

#include <QFont>
#include <QImage>
#include <QMutex>
#include <QString>

/**
 * The renderer behind a handle; libsubtitle.h says what each operation means to a host.
 *
 * SetSubFontColor(), SetAlpah(), SetLogoPos(), SetSubtitleFile(), SetTimeStamp() and ProcessFrame() wait for each
 * other; nothing else locks.
 *
 * Operations may throw std::bad_alloc. The renderer is then as usable as before: SetSubtitleFile() leaves it without a
 * file, SetTimeStamp() without a due subtitle, ProcessFrame() with the frame untouched, SetFontParam() with the earlier
 * font.
 */
class VideoSubtitle
{
public:
    /** Makes the Qt application object available when this is the first instance. Not thread-safe. */
    VideoSubtitle();
    /** Takes the Qt application object away when this is the last instance. Not thread-safe. */
    virtual ~VideoSubtitle();
    VideoSubtitle(const VideoSubtitle &) = delete;
    VideoSubtitle &operator=(const VideoSubtitle &) = delete;

    /** Sets all defaults for frames of that size; does nothing unless both are positive. */
    void CreateVideoSubtitle(int width, int height);

    /** Does not lock: a thread that draws meanwhile sees any mixture. */
    int SetFontParam(const char *family, int pointSize, int style);
    int SetSubFontColor(uchar r, uchar g, uchar b);
    /** Does not lock. @p enable is accepted and ignored: the outline cannot be switched off. This is meant. */
    int SetSubOutlineColor(int enable, uchar r, uchar g, uchar b);
    int SetAlpah(uchar alpha);
    int SetLogoPos(int percent);
    int SetSubtitleFile(const char *path, int track);
    int SetTimeStamp(long ms);

    int ProcessFrame(AVPicture *frame);
    /** Rebuilds the image if anything changed, then blends it. The caller holds the lock. */
    int DrawSubSurface(AVPicture *frame);
    /** Blends the current image. The caller holds the lock. */
    void ProcessWatermarkFrame(AVPicture *frame);

    /** Paints text into the current image. The caller holds whatever lock is needed. */
    void TextToBmp(const QString &text);
    int TextToBmp(const char *utf8, AVPicture *out, int *rect);

    static int ms_nInstanceCount;

private:
    Q_DECL_HIDDEN TextStyle Style() const;
    /** Loading a font is a stall that must not fall into the first frame with text. */
    Q_DECL_HIDDEN void LoadFont(const QFont &font);
    Q_DECL_HIDDEN int OpenFile(const QString &path, int track);
    /** False without memory. */
    Q_DECL_HIDDEN bool MakeBitmap(const char *utf8, AVPicture &out);

    friend class VideoSubtitlePeer; // through which tests look inside

    ParserManager m_parserManager;
    QMutex m_mutex;
    QString m_strSubtitle;
    int m_bDirty = 0;
    quint32 m_nFontColor = 0;
    quint32 m_nOutlineColor = 0;
    quint8 m_bOutline = 0;
    quint8 m_nAlpha = 0;
    int m_nVideoWidth = 0;
    int m_nVideoHeight = 0;
    int m_nLogoPos = 0;
    int m_nAnchorOffset = 0;
    int m_nSubX = 0;
    int m_nSubY = 0;
    int m_nSubWidth = 0;
    int m_nSubHeight = 0;
    QFont *m_pFont = nullptr;
    QImage *m_pImage = nullptr;
    TextPainter m_textPainter;
    PaintedText m_painted;
    bool m_bInk = false; ///< the compositor has the text's ink, and m_pImage is null
    Compositor m_compositor;
};
