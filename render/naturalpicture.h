#pragma once

#include "parsers/colorpicture.h"
#include "render/naturalsubtitle.h"

#include <cstdint>
#include <vector>

/** A picture scaled to a frame. */
struct ScaledPicture {
    FrameArea area = {0, 0, 0, 0};
    std::vector<std::uint32_t> listPixels; ///< 0xAARRGGBB, straight alpha
};

/** Scales a picture with its canvas to a frame, moves it down by @p offset frame rows and clips it to the frame. */
ScaledPicture ScalePicture(const ColorPicture &picture, int frameWidth, int frameHeight, int offset);
