#pragma once

#include "commandline/options.h"
#include "media/ffmpegptr.h"
#include "subtitles/subtitlefile.h"
#include "subtitles/subtitlelibrary.h"

#include <memory>
#include <vector>

/** What is to be shown at a time. */
enum class Due {
    Nothing,
    Unseen, ///< a picture whose colours have no blue, which the exact look does not show
    Shown
};

/** A handle of the library with its burner, set up by the options. */
class SubtitleRenderer
{
public:
    /**
     * Throws a Failure if the subtitles cannot be read.
     * @param nWidth, nHeight  of the picture as it is shown.
     */
    SubtitleRenderer(const SubtitleLibrary &library, int nWidth, int nHeight, const Subtitle &subtitle,
                     Console &console);

    /** Sets the pixel aspect ratio of the picture as shown, for the text's layout; unknown (0) counts as 1:1. */
    void SetPixelAspect(AVRational aspect) const;

    /** Has what is drawn in the natural look keep clear of rows. */
    void KeepClearOf(const std::vector<SubtitleRows> &listRows) const;

    /** The rows that what is due takes up. */
    SubtitleRows Rows() const;

    /** Goes to a time of the pictures. */
    Due Seek(long nMilliseconds) const;

    /**
     * Draws the selected subtitle so that it is upright after turning by the frame's display matrix.
     * @return false, with the frame untouched, if the library does not support its format or colour tags.
     */
    bool Draw(AVFrame &frame) const;

    /** The pixel formats that the library can draw into. */
    std::vector<AVPixelFormat> Formats() const;

    /** Whether the subtitles are not text. */
    bool HasPictures() const { return m_pFile != nullptr; }

    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }

private:
    using Burner = std::unique_ptr<void, decltype(&::DestroySubtitleBurner)>;

    void Open(const SubtitleSource &source);
    void Apply(const Style &style);
    Burner MakeBurner(int nLook) const;
    bool Draws(const Burner &pBurner) const;

    const SubtitleLibrary &m_library;
    double m_dStretch;
    int64_t m_nDelay;
    // Null once the handle no longer needs the file.
    std::unique_ptr<SubtitleFile> m_pFile;
    int64_t m_nOrigin;
    std::unique_ptr<void, decltype(&::DestroyVideoSubtitle)> m_pHandle;
    Burner m_pBurner;
    Burner m_pNaturalBurner; ///< for pictures in the exact look, to find Due::Unseen; else null
    int m_nWidth;
    int m_nHeight;
};
