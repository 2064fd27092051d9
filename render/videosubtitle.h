#pragma once

#include "api/libsubtitle.h"
#include "parsers/parsermanager.h"
#include "render/compositor.h"
#include "render/naturalsubtitle.h"
#include "render/textpainter.h"
#include "textio/exported.h"

#include <QFont>
#include <QImage>
#include <QMutex>
#include <QString>

#include <atomic>
#include <memory>
#include <mutex>

class NaturalView;

/**
 * The renderer behind a handle; libsubtitle.h says what each operation means to a host.
 *
 * SetSubFontColor(), SetAlpah(), SetLogoPos(), SetSubtitleFile(), HasTrack(), SetTimeStamp(), ProcessFrame(),
 * VisitShown() and VisitNatural() wait for each other. SetFontParam() and SetSubOutlineColor() do not wait and may be
 * called at the same time. No other calls may overlap.
 *
 * While the process ends, everything that would paint, read or set a font returns -1, and no renderer can be created.
 *
 * Operations may throw std::bad_alloc. The renderer remains usable: SetSubtitleFile() leaves it without a file,
 * SetTimeStamp() without a due subtitle, ProcessFrame() with the frame untouched, SetFontParam() with the earlier font.
 */
class SUBTITLE_EXPORT VideoSubtitle
{
public:
    /**
     * Calls InitQt() for the first instance. Not thread-safe. Throws other exceptions than std::bad_alloc too: without
     * file descriptors, and while the process ends.
     */
    VideoSubtitle();
    /** Calls UnInitQt() for the last instance. Not thread-safe. */
    virtual ~VideoSubtitle();
    VideoSubtitle(const VideoSubtitle &) = delete;
    VideoSubtitle &operator=(const VideoSubtitle &) = delete;

    /** Sets all defaults for frames of that size; does nothing unless both are positive. */
    void CreateVideoSubtitle(int width, int height);

    /** Does not wait: frames that another thread draws meanwhile have the old or the new font. */
    int SetFontParam(const char *family, int pointSize, int style);
    int SetSubFontColor(uchar r, uchar g, uchar b);
    /** Does not wait: see SetFontParam(). Intentional: @p enable is ignored, as the outline cannot be switched off. */
    int SetSubOutlineColor(int enable, uchar r, uchar g, uchar b);
    int SetAlpah(uchar alpha);
    int SetLogoPos(int percent);
    int SetSubtitleFile(const char *path, int track);
    /** Whether the open file has the requested track; false if no file is open. Waits as SetSubtitleFile(). */
    bool HasTrack();
    int SetTimeStamp(long ms);

    int ProcessFrame(AVPicture *frame);
    /**
     * Calls @p visitor once with the pixels that ProcessFrame() would draw now. Holds the lock meanwhile; exceptions of
     * the visitor are passed on. If the image cannot be built, returns -1 or throws as ProcessFrame() does, and does
     * not call it.
     */
    int VisitShown(ShownVisitor &visitor);
    /**
     * The same with the natural look. Only one look is cached: callers that alternate between different settings wait
     * for it to be painted each time.
     */
    int VisitNatural(const NaturalSettings &settings, NaturalVisitor &visitor);
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
    /** A deep copy of the font that is set. */
    Q_DECL_HIDDEN QFont Font() const;
    Q_DECL_HIDDEN int OpenFile(const QString &path, int track);
    /** Builds the image of the current subtitle. */
    Q_DECL_HIDDEN void Rebuild();
    /** Calls Rebuild() if anything changed. False if the process is ending. */
    [[nodiscard]] Q_DECL_HIDDEN bool EnsureBuilt();
    /** Marks both looks as out of date. */
    Q_DECL_HIDDEN void MarkChanged();
    /** Passes the current image to the compositor, unless that has the text's ink. */
    Q_DECL_HIDDEN void UpdateCompositor();
    Q_DECL_HIDDEN Placement CurrentPlacement() const;
    /** False if there is no memory. */
    [[nodiscard]] Q_DECL_HIDDEN bool MakeBitmap(const char *utf8, AVPicture &out);

    friend class VideoSubtitlePeer; // through which tests look inside

    ParserManager m_parserManager;
    QMutex m_mutex;
    QString m_strSubtitle;
    std::atomic<int> m_bDirty = 0;
    quint32 m_nFontColor = 0;
    std::atomic<quint32> m_nOutlineColor = 0;
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
    QFont *m_pFont = nullptr; ///< paint with Font() instead
    QImage *m_pImage = nullptr;
    mutable std::mutex m_fontMutex; ///< for *m_pFont; held only to copy or replace it
    std::unique_ptr<TextPainter> m_pTextPainter;
    PaintedText m_painted;
    RowRange m_rowsVisible = RowRange::All(); ///< no pixel of the image is visible in other rows
    bool m_bInk = false;                      ///< the compositor has the text's ink, and m_pImage is null
    Compositor m_compositor;
    std::atomic<unsigned> m_nChanges = 0;        ///< counts the changes of style and file
    long m_nTime = 0;                            ///< set last, in milliseconds
    std::unique_ptr<NaturalView> m_pNaturalView; ///< null until it is asked for
};
