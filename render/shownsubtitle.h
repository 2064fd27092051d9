#pragma once

#include "render/blendkernel.h"

#include <cstddef>
#include <cstdint>

/** The pixels that a frame gets, in the coordinates of its subtitle: nOffset is still to be added to the rows. */
struct ShownSubtitle {
    const InkBlock *pInk; ///< from the top to the bottom, all in the frame's rows
    std::size_t nInkCount;
    InkColors inkColors;          ///< red first
    int nInkWeight;               ///< of all ink, 0 to 255
    const PictureBlock *pPicture; ///< from the top to the bottom, all in the frame's rows; colours with red first
    std::size_t nPictureCount;
    int nUntouched;                ///< weight in a picture's block of what is not drawn
    int nOffset;                   ///< added to a block's row to get the frame's
    int nFrameWidth, nFrameHeight; ///< 0 on a renderer that is not configured
    std::uint64_t nVersion;        ///< another one whenever anything above is another; 0 while nothing shows
};

/** Receives what shows. */
class ShownVisitor
{
public:
    /** @param shown  with all that it points to, valid until the call returns. */
    virtual void Visit(const ShownSubtitle &shown) = 0;

protected:
    ShownVisitor() = default;
    ShownVisitor(const ShownVisitor &) = default;
    ShownVisitor &operator=(const ShownVisitor &) = default;
    ~ShownVisitor() = default;
};
