#pragma once

#include "render/blendkernel.h"

#include <cstddef>
#include <cstdint>

/** What a host may set about the natural look. */
struct NaturalSettings {
    double dOutline = 2;     ///< width of the outline in pixels of a frame with 720 rows
    double dSafeArea = 2.5;  ///< percent of the frame's sides at each edge that text keeps clear of
    double dPixelAspect = 1; ///< width of a pixel as it is shown, by its height

    bool operator==(const NaturalSettings &other) const
    {
        return dOutline == other.dOutline && dSafeArea == other.dSafeArea && dPixelAspect == other.dPixelAspect;
    }
};

/** A rectangle of a frame. */
struct FrameArea {
    int nLeft, nTop, nColumns, nRows;

    bool IsEmpty() const { return nColumns <= 0 || nRows <= 0; }
};

/**
 * A subtitle as viewers are to see it. The outline lies lowest, then the text, then the picture: colour glyphs or what a
 * DVD has. All areas lie in the frame; a row follows the one above it without padding.
 */
struct NaturalSubtitle {
    FrameArea text;
    const std::uint8_t *pText;    ///< coverage, 255 for the whole pixel
    const std::uint8_t *pOutline; ///< the same; also below the text
    InkColors colors;             ///< of both, red first
    FrameArea picture;
    const std::uint32_t *pPicture; ///< 0xAARRGGBB, straight alpha
    int nOpacity;                  ///< of all, 0 to 255
    int nFrameWidth, nFrameHeight; ///< 0 on a renderer that is not configured
    std::uint64_t nVersion;        ///< another one whenever anything above is another; 0 while nothing shows
};

/** Receives what shows. */
class NaturalVisitor
{
public:
    /** @param shown  with all that it points to, valid until the call returns. */
    virtual void Visit(const NaturalSubtitle &shown) = 0;

protected:
    NaturalVisitor() = default;
    NaturalVisitor(const NaturalVisitor &) = default;
    NaturalVisitor &operator=(const NaturalVisitor &) = default;
    ~NaturalVisitor() = default;
};
