#pragma once

#include <cstdint>
#include <vector>

/** Part of a canvas, pixels 0xAARRGGBB with straight alpha; the canvas is transparent around it. */
struct ColorPicture {
    int nCanvasWidth = 0;
    int nCanvasHeight = 0;
    int nLeft = 0; ///< on the canvas
    int nTop = 0;
    int nColumns = 0; ///< 0 when nothing shows
    int nRows = 0;
    std::vector<std::uint32_t> listPixels;
};

/** The colour that shows where @p above lies over @p below, both 0xAARRGGBB with straight alpha. */
std::uint32_t LaidOver(std::uint32_t below, std::uint32_t above);

/**
 * Combines pictures into one, each over those before it in the list. Canvases of different sizes are not mixed: a
 * picture with another canvas than the one before it replaces all before it. Null pointers and empty pictures are
 * skipped.
 */
ColorPicture LaidTogether(const std::vector<const ColorPicture *> &pictures);
