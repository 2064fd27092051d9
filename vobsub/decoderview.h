#pragma once

#include <cstdint>

/* What hosts see of the decoder: variables that it publishes, and reads only where a host may set them. */

/** What a host may set between subtitle_init() and a unit. */
struct host_settings {
    int32_t color;        ///< Subt_Color
    int32_t offset;       ///< Subt_Offset
    int32_t format;       ///< chroma_format
    int32_t chroma_width; ///< Chroma_Width
};
host_settings Read_Settings();

/** Puts the settings, except Chroma_Width, back to what they are before a host sets them. */
void Reset_Settings();

/** Sets Subt_Color. */
void Set_Colour(int32_t colour);

/** Shows hosts the canvas's size and planes. */
void Publish_Canvas();

/** Shows hosts the last unit's times and rows. */
void Publish_Picture();
