#pragma once

#include "parsers/iparser.h"
#include "textio/exported.h"

/**
 * Owns the parser of the current subtitle file, at most one, and forwards to it. Has no lock of its own.
 */
class SUBTITLE_EXPORT ParserManager
{
public:
    ParserManager();
    virtual ~ParserManager();
    ParserManager(const ParserManager &) = delete;
    ParserManager &operator=(const ParserManager &) = delete;

    /**
     * Deletes the current parser, creates one for the file's extension and has it read the file.
     * @param track  number of the subtitle track, from 0.
     * @return non-zero on success; 0 if @p path is empty or the parser fails. A parser that failed is kept.
     */
    int Open(const QString &path, int track);

    /** Whether the file has the requested track; false without a parser. */
    Q_DECL_HIDDEN bool HasTrack();

    /** The text or key due at @p ms milliseconds; empty without a parser. */
    QString GetSubtitle(long ms);

    /** True without a parser. */
    bool IsTextSub();

    /** Does nothing without a parser. */
    void SetVideoSize(int w, int h);

    /** Returns a null image and leaves @p rect unchanged without a parser. */
    QImage TextToImage(const QString &key, QRect &rect);

    /** Rows of the last picture; all others are transparent. All rows without a parser. */
    RowRange VisibleRows();

    /** All texts that are due at @p ms milliseconds, in file order; empty for pictures and without a parser. */
    Q_DECL_HIDDEN QStringList AllDueTexts(long ms);

    /** The key for all pictures that are due at @p ms milliseconds; see IParser. Empty without a parser. */
    Q_DECL_HIDDEN QString AllDuePictures(long ms);

    /** The picture for a key in its original size and colours; it has no pixels if there is none. */
    Q_DECL_HIDDEN ColorPicture ToColorPicture(const QString &key);

private:
    IParser *m_pParser = nullptr;
};
