#pragma once

#include <cstdint>

/* The variables that hosts see. The decoder publishes its state there, and reads back only what a host may set. */

/** What a host may set between subtitle_init() and a unit. */
struct host_settings {
    int32_t color;        ///< Subt_Color
    int32_t offset;       ///< Subt_Offset
    int32_t format;       ///< chroma_format
    int32_t chroma_width; ///< Chroma_Width
};
host_settings Read_Settings();

/** Resets the settings to their defaults, except Chroma_Width, which Publish_Canvas() sets. */
void Reset_Settings();

/** Sets Subt_Color. */
void Set_Colour(int32_t colour);

/** Publishes the canvas's size and planes. */
void Publish_Canvas();

/** Publishes the last unit's times and rows. */
void Publish_Picture();
