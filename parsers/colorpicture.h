#pragma once

#include <cstdint>
#include <vector>

/** A part of a canvas in colours with straight alpha, 0xAARRGGBB; all around it the canvas is transparent. */
struct ColorPicture {
    int nCanvasWidth = 0;
    int nCanvasHeight = 0;
    int nLeft = 0; ///< on the canvas
    int nTop = 0;
    int nColumns = 0; ///< 0 when nothing shows
    int nRows = 0;
    std::vector<std::uint32_t> listPixels;
};
