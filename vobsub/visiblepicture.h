#pragma once

#include "parsers/colorpicture.h"

/** What shows on the decoder's canvas, from the first visible row and column to the last. */
ColorPicture VisiblePicture();
