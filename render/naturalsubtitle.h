#pragma once

#include "render/blendkernel.h"
#include "render/takenrows.h"

#include <cstddef>
#include <cstdint>

/** Settings of the natural look. */
struct NaturalSettings {
    double dOutline = 2;     ///< width of the outline in pixels of a frame with 720 rows
    double dSafeArea = 2.5;  ///< margin around text, in percent of the frame's width and height
    double dPixelAspect = 1; ///< pixel width divided by pixel height, as shown
    TakenRows taken = {};    ///< rows that the subtitle is moved clear of

    bool operator==(const NaturalSettings &other) const
    {
        return dOutline == other.dOutline && dSafeArea == other.dSafeArea && dPixelAspect == other.dPixelAspect &&
               taken == other.taken;
    }
};

/** A rectangle of a frame. */
struct FrameArea {
    int nLeft, nTop, nColumns, nRows;

    bool IsEmpty() const { return nColumns <= 0 || nRows <= 0; }
};

/**
 * A subtitle in the natural look, in three layers: the outline at the bottom, the text, and on top the picture (colour
 * glyphs, or a DVD subtitle). All areas lie in the frame; their rows have no padding between them.
 */
struct NaturalSubtitle {
    FrameArea text;
    const std::uint8_t *pText;    ///< coverage, 255 for the whole pixel
    const std::uint8_t *pOutline; ///< the same for the outline, which also covers the pixels of the text
    InkColors colors;             ///< of text and outline, red first
    FrameArea picture;
    const std::uint32_t *pPicture; ///< 0xAARRGGBB, straight alpha
    int nOpacity;                  ///< of all layers, 0 to 255
    RowSpan rows;                  ///< rows that it takes up: whole lines of text, and all that is covered
    int nFrameWidth, nFrameHeight; ///< 0 on a renderer that is not configured
    std::uint64_t nVersion;        ///< changes whenever anything above changes; 0 while nothing is visible
};

/** Receives the visible subtitle. */
class NaturalVisitor
{
public:
    /** @param shown  valid until the call returns, with everything that it points to. */
    virtual void Visit(const NaturalSubtitle &shown) = 0;

protected:
    NaturalVisitor() = default;
    NaturalVisitor(const NaturalVisitor &) = default;
    NaturalVisitor &operator=(const NaturalVisitor &) = default;
    ~NaturalVisitor() = default;
};
