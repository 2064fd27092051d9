#pragma once

#include "parsers/colorpicture.h"
#include "parsers/rowrange.h"

#include <QImage>
#include <QRect>
#include <QString>
#include <QStringList>

/**
 * A subtitle file in some format: read whole by Open(), then asked what is due at a time and, where the subtitles are
 * pictures, what they look like. Used by one thread at a time.
 */
class IParser
{
public:
    virtual ~IParser();

    /** Whether GetSubtitle() returns text to draw; otherwise it returns a key for TextToImage(). */
    virtual bool IsTextSub();

    /**
     * Reads the whole file. Called once, right after construction.
     * @param track  number of the subtitle track, from 0; text formats ignore it.
     * @return non-zero on success.
     */
    virtual int Open(const QString &path, int track) = 0;

    /** Whether the file that was opened has the track that was asked for. */
    virtual bool HasTrack();

    /**
     * @param ms  presentation time in milliseconds.
     * @return what is due: text with lines separated by "\n", or a key; empty when nothing is due. Equal strings mean
     *         the same subtitle.
     */
    virtual QString GetSubtitle(long ms) = 0;

    /** Tells the size of the frames in pixels, once after a successful Open(). */
    virtual void SetVideoSize(int width, int height);

    /**
     * The picture for a key, as wide as a frame, 4 bytes a pixel in memory order blue, green, red, alpha.
     * @param rect  set to the rows that hold the subtitle; left alone when there is no picture.
     * @return a null image when there is no picture.
     */
    virtual QImage TextToImage(const QString &key, QRect &rect);

    /** Rows of the last picture; all others are transparent. */
    virtual RowRange VisibleRows();

    /**
     * All texts that are due at a time, in file order, where GetSubtitle() has one; none where subtitles are pictures.
     * @param ms  presentation time in milliseconds.
     */
    virtual QStringList AllDueTexts(long ms);

    /** The picture for a key in its own size and colours; without pixels when there is none. */
    virtual ColorPicture ToColorPicture(const QString &key);
};
