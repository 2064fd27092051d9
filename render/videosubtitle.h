#pragma once

#include "api/libsubtitle.h"
#include "parsers/parsermanager.h"
#include "render/compositor.h"
#include "render/naturalsubtitle.h"
#include "render/textpainter.h"

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
 * VisitShown() and VisitNatural() wait for each other. SetFontParam() and SetSubOutlineColor() may be called meanwhile and do not wait.
 * Nothing else may overlap.
 *
 * While the process ends, everything that would paint, read or set a font returns -1, and there are no new renderers.
 *
 * Operations may throw std::bad_alloc. The renderer is then as usable as before: SetSubtitleFile() leaves it without a
 * file, SetTimeStamp() without a due subtitle, ProcessFrame() with the frame untouched, SetFontParam() with the earlier
 * font.
 */
class VideoSubtitle
{
public:
    /**
     * Makes the Qt application object available when this is the first instance. Not thread-safe. Throws what is no
     * std::bad_alloc as well: without file descriptors, and while the process ends.
     */
    VideoSubtitle();
    /** Takes the Qt application object away when this is the last instance. Not thread-safe. */
    virtual ~VideoSubtitle();
    VideoSubtitle(const VideoSubtitle &) = delete;
    VideoSubtitle &operator=(const VideoSubtitle &) = delete;

    /** Sets all defaults for frames of that size; does nothing unless both are positive. */
    void CreateVideoSubtitle(int width, int height);

    /** Does not wait: frames that another thread draws meanwhile have the old font or the new one. */
    int SetFontParam(const char *family, int pointSize, int style);
    int SetSubFontColor(uchar r, uchar g, uchar b);
    /** Does not wait: see SetFontParam(). @p enable is accepted and ignored: the outline cannot be switched off. This is meant. */
    int SetSubOutlineColor(int enable, uchar r, uchar g, uchar b);
    int SetAlpah(uchar alpha);
    int SetLogoPos(int percent);
    int SetSubtitleFile(const char *path, int track);
    /** Whether the file that is open has the track that was asked for; false without one. Waits as SetSubtitleFile(). */
    bool HasTrack();
    int SetTimeStamp(long ms);

    int ProcessFrame(AVPicture *frame);
    /**
     * Calls @p visitor once with the pixels that ProcessFrame() would draw now, holding the lock; what it throws comes
     * out. When the image cannot be built, -1 or an exception as from ProcessFrame(), and it is not called.
     */
    int VisitShown(ShownVisitor &visitor);
    /**
     * The same with the natural look. It is kept for one kind of settings: those who ask in turn with different ones wait
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
    /** A copy that shares nothing with the font that is set. */
    Q_DECL_HIDDEN QFont Font() const;
    Q_DECL_HIDDEN int OpenFile(const QString &path, int track);
    /** Makes the image of the current subtitle. */
    Q_DECL_HIDDEN void Rebuild();
    /** The same if anything changed. False where the process ends. */
    Q_DECL_HIDDEN bool EnsureBuilt();
    /** Marks what is painted as out of date, in either look. */
    Q_DECL_HIDDEN void MarkChanged();
    /** Paints the natural look if anything changed. False where the process ends. */
    Q_DECL_HIDDEN bool EnsureNatural(const NaturalSettings &settings);
    /** Gives the compositor the current image, unless it has the text's ink. */
    Q_DECL_HIDDEN void LookUpImage();
    Q_DECL_HIDDEN Placement CurrentPlacement() const;
    /** False without memory. */
    Q_DECL_HIDDEN bool MakeBitmap(const char *utf8, AVPicture &out);

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
    QFont *m_pFont = nullptr; ///< not to be painted with: see Font()
    QImage *m_pImage = nullptr;
    mutable std::mutex m_fontMutex; ///< for *m_pFont, held to copy it only
    std::unique_ptr<TextPainter> m_pTextPainter;
    PaintedText m_painted;
    RowRange m_rowsVisible = RowRange::All(); ///< in all others the image has no visible pixel
    bool m_bInk = false;                      ///< the compositor has the text's ink, and m_pImage is null
    Compositor m_compositor;
    std::atomic<unsigned> m_nChanges = 0;        ///< of style and file
    long m_nTime = 0;                            ///< set last
    std::unique_ptr<NaturalView> m_pNaturalView; ///< null until someone asks
};
