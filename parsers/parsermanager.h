#pragma once

#include "parsers/iparser.h"

/**
 * Owns the parser of the current subtitle file, at most one, and forwards to it. Has no lock of its own.
 */
class ParserManager
{
public:
    ParserManager();
    virtual ~ParserManager();
    ParserManager(const ParserManager &) = delete;
    ParserManager &operator=(const ParserManager &) = delete;

    /**
     * Drops the current parser, makes one for the file's extension and lets it read the file.
     * @param track  number of the subtitle track, from 0.
     * @return non-zero on success; 0 when @p path is empty, when no parser reads such files, and when the parser fails.
     *         A parser that failed stays.
     */
    int Open(const QString &path, int track);

    /** Whether the file has the track that was asked for; false without a parser. */
    Q_DECL_HIDDEN bool HasTrack();

    /** What is due at @p ms milliseconds; empty without a parser. */
    QString GetSubtitle(long ms);

    /** True without a parser. */
    bool IsTextSub();

    /** Does nothing without a parser. */
    void SetVideoSize(int w, int h);

    /** A null image, and @p rect untouched, without a parser. */
    QImage TextToImage(const QString &key, QRect &rect);

    /** Rows of the last picture; all others are transparent. All rows without a parser. */
    RowRange VisibleRows();

    /** All texts that are due at @p ms milliseconds, in file order; none without a parser and of pictures. */
    Q_DECL_HIDDEN QStringList AllDueTexts(long ms);

    /** The picture for a key in its own size and colours; without pixels when there is none. */
    Q_DECL_HIDDEN ColorPicture ToColorPicture(const QString &key);

private:
    IParser *m_pParser = nullptr;
};
