#pragma once

#include "parsers/colorpicture.h"
#include "parsers/rowrange.h"

#include <QImage>
#include <QRect>
#include <QString>
#include <QStringList>

/**
 * Reader of one subtitle format. Open() reads the file; the other functions return what is due at a time and, if the
 * subtitles are pictures, the picture. Use it from one thread at a time.
 */
class IParser
{
public:
    virtual ~IParser();

    /** Whether GetSubtitle() returns text to draw; otherwise it returns a key for TextToImage(). */
    virtual bool IsTextSub();

    /**
     * Reads the file. Called once, right after construction.
     * @param track  number of the subtitle track, from 0; text formats ignore it.
     * @return non-zero on success.
     */
    virtual int Open(const QString &path, int track) = 0;

    /** Whether the opened file has the requested track. */
    virtual bool HasTrack();

    /**
     * @param ms  presentation time in milliseconds.
     * @return the text due, with lines separated by "\n", or a key; empty if nothing is due. Equal strings mean the
     *         same subtitle.
     */
    virtual QString GetSubtitle(long ms) = 0;

    /** Sets the size of the frames in pixels. Called once, after a successful Open(). */
    virtual void SetVideoSize(int width, int height);

    /**
     * The picture for a key, as wide as a frame, 4 bytes a pixel in memory order blue, green, red, alpha.
     * @param rect  set to the rows that hold the subtitle; unchanged if there is no picture.
     * @return a null image if there is no picture.
     */
    virtual QImage TextToImage(const QString &key, QRect &rect);

    /** Rows of the last picture; all others are transparent. */
    virtual RowRange VisibleRows();

    /**
     * All texts that are due at a time, in file order; GetSubtitle() returns only one. Empty if subtitles are pictures.
     * @param ms  presentation time in milliseconds.
     */
    virtual QStringList AllDueTexts(long ms);

    /** The picture for a key in its original size and colours; it has no pixels if there is none. */
    virtual ColorPicture ToColorPicture(const QString &key);

    /**
     * The key to ToColorPicture() for all pictures that are due at a time, where the subtitles are pictures that
     * GetSubtitle() has as text; empty when none is due, and of all other subtitles.
     * @param ms  presentation time in milliseconds.
     */
    virtual QString AllDuePictures(long ms);
};
