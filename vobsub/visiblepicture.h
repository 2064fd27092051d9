#pragma once

#include "parsers/colorpicture.h"

/** The visible part of the decoder's canvas, cut to its visible rows and columns. */
ColorPicture VisiblePicture();
