#pragma once

#include "parsers/colorpicture.h"
#include "render/naturalsubtitle.h"

#include <cstdint>
#include <vector>

/** A picture as a frame shows it. */
struct ScaledPicture {
    FrameArea area = {0, 0, 0, 0};
    std::vector<std::uint32_t> listPixels; ///< 0xAARRGGBB, straight alpha
};

/** Scales a picture's canvas to a frame, and moves it down by @p offset rows. Of the result, nothing lies outside the frame. */
ScaledPicture ScalePicture(const ColorPicture &picture, int frameWidth, int frameHeight, int offset);
