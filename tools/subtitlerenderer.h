#pragma once

#include "ffmpegptr.h"
#include "options.h"
#include "subtitlefile.h"
#include "subtitlelibrary.h"

#include <memory>
#include <vector>

/** What a subtitle file has for a time. */
enum class Due {
    Nothing,
    Unseen, ///< a picture without blue, of which the exact look shows nothing
    Shown
};

/** A renderer of the library with a burner for it, set up as the options say. */
class SubtitleRenderer
{
public:
    /**
     * Throws a Failure when the subtitles that the options name cannot be read.
     * @param nWidth, nHeight  of the picture as it is shown.
     */
    SubtitleRenderer(const SubtitleLibrary &library, int nWidth, int nHeight, const Options &options, Console &console);

    /** Has text laid out for pixels of that shape, of the picture as it is shown; 0 for an unknown one. */
    void SetPixelAspect(AVRational aspect) const;

    /** Goes to a time of the pictures. */
    Due Seek(long nMilliseconds) const;

    /**
     * Draws that subtitle, upright by the frame's display matrix.
     * @return false, with the frame untouched, where the library does not know the format or what its tags say.
     */
    bool Draw(AVFrame &frame) const;

    /** The pixel formats that the library knows. */
    std::vector<AVPixelFormat> Formats() const;

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
    // Kept as long as the handle needs it.
    std::unique_ptr<SubtitleFile> m_pFile;
    std::unique_ptr<void, decltype(&::DestroyVideoSubtitle)> m_pHandle;
    Burner m_pBurner;
    Burner m_pNaturalBurner; ///< of pictures in the exact look, to find those of which it shows nothing
    int m_nWidth;
    int m_nHeight;
};
