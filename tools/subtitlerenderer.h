#pragma once

#include "box.h"
#include "options.h"
#include "subtitlefile.h"
#include "subtitlelibrary.h"

#include <array>
#include <memory>

/** One renderer of the library, and the knowledge of where it draws. */
class SubtitleRenderer
{
public:
    /** Throws a Failure when the subtitles that the options name cannot be read. */
    SubtitleRenderer(const SubtitleLibrary &library, int nWidth, int nHeight, const Options &options);

    /**
     * Goes to a time and finds out which pixels the subtitle due then covers.
     * @return whether there are any.
     */
    bool Seek(long nMilliseconds);

    /** Bounds of the covered pixels. */
    const Box &Covered() const { return m_covered; }

    /** One byte for each pixel of the frame, not 0 where it is covered; valid inside Covered() only. */
    const uint8_t *Mask() const { return m_listMask.data(); }

    /** Draws the due subtitle into a picture of packed RGB. */
    void Draw(uint8_t *pPixels, int nStride) const;

    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }

private:
    void Open(const SubtitleSource &source);
    void Apply(const Style &style);
    void ChooseBlank(const Style &style);
    void FindCovered();
    void FillMask();

    const SubtitleLibrary &m_library;
    // Kept as long as the handle needs it.
    std::unique_ptr<SubtitleFile> m_pFile;
    std::unique_ptr<void, decltype(&::DestroyVideoSubtitle)> m_pHandle;
    int m_nWidth;
    int m_nHeight;
    std::array<uint8_t, 3> m_listBlank{};
    std::vector<uint8_t> m_listBlankRow;
    std::vector<uint8_t> m_listScratch;
    std::vector<uint8_t> m_listMask;
    Box m_covered;
};
