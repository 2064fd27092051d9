/**
 * @file subtitledecoder.h
 * Decoder of DVD sub-picture units: plain functions over process-wide state, so there is one decoder per process.
 * Include it as `<libsubtitle/subtitledecoder.h>`. It needs no other header of the library and is valid C99, C++98 and
 * newer.
 *
 * Set it up with subtitle_init(), pass the payload of the program stream's packets to subtitle_decode() in pieces of
 * any size, get the picture with subtitle_write() and free the canvas with subtitle_release(). A unit is decoded by the
 * call that completes it. Not thread-safe: calls must not overlap. While a renderer has a VobSub file open, it uses
 * this decoder under a lock of its own; a host may use the decoder only while no renderer builds a picture.
 *
 * Nothing in a unit makes the decoder read or write outside its buffers. A unit is refused if its pixel data or its
 * control area lie outside it, or if more than 65,536 bytes come in before it is complete: all bytes held are dropped,
 * and no pixel is visible. A display area that is empty or not wholly on the canvas shows nothing.
 *
 * No function throws. Only subtitle_init() allocates memory, the canvas, which lasts until subtitle_release().
 */
#ifndef SUBTITLEDECODER_H
#define SUBTITLEDECODER_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* the library is compiled with -fvisibility=hidden */
#endif
#ifdef __cplusplus
extern "C" {
#endif

/** The longest side that a canvas may have; display areas have 12-bit coordinates and reach no further. */
#define SUBTITLE_MAX_SIDE 4096

/** Where the canvas is, and when and where the last unit shows. Pointers are null before the first subtitle_init(). */
struct subtitle_canvas {
    unsigned char *plane[4]; /**< Y, U, V, alpha; Coded_Picture_Width bytes a row; Y, U and V are one block */
    void *reserved_a[5];     /**< null */
    unsigned char *out[3];   /**< output planes of subtitle_write_x(), of the same size */
    void *reserved_b[6];     /**< null */
    double start;            /**< ms, by the unit's start command; without one, the value of an earlier unit */
    double stop;             /**< ms, likewise by its stop command */
    int32_t top;             /**< first canvas row with a visible pixel; beyond bottom when no pixel is visible */
    int32_t bottom;          /**< last canvas row with a visible pixel */
};

/** Filled in by subtitle_write(): nine words of a pointer's size. The decoder still owns the planes. */
struct SubtitlePlanes {
    unsigned char *plane[4]; /**< Y, U, V, alpha */
    void *reserved[3];       /**< null */
    intptr_t top;            /**< first canvas row with a visible pixel; beyond bottom when no pixel is visible */
    intptr_t bottom;         /**< last canvas row with a visible pixel */
};

/**
 * @name Variables shared with hosts
 * A host may set Chroma_Width, chroma_format, Subt_Color and Subt_Offset after subtitle_init(). Writing to the others
 * has no effect, and the decoder overwrites them.
 * @{
 */
extern struct subtitle_canvas mediadata; /**< of the last unit */
extern int32_t Coded_Picture_Width;      /**< of the canvas, in pixels; 0 without a canvas */
extern int32_t Coded_Picture_Height;     /**< likewise */
extern int32_t Chroma_Width;             /**< bytes per chroma row in subtitle_write_x() */
extern int32_t Chroma_Height;            /**< height of the canvas; not used by the decoder */
extern int32_t chroma_format;            /**< MPEG-2 code: 3 is 4:4:4, 1 is 4:2:0 in subtitle_write_x() */
extern int32_t Subt_Color;               /**< if 0, every unit replaces the palette by black and white */
extern int32_t Subt_Offset;              /**< rows by which subtitle_write_x() moves the picture down */
/** @} */

/**
 * Sets the decoder up with a new canvas and drops all bytes that it holds.
 * @param palette  16 words 0x00VVUUYY, used without conversion: if they are 0x00RRGGBB, blue becomes Y.
 * @param width, height  1 to SUBTITLE_MAX_SIDE. Other sizes, and lack of memory, leave a decoder without a canvas
 *        (planes null, width and height 0), on which no unit shows.
 * @return 1
 */
int subtitle_init(const unsigned int *palette, int width, int height);

/** Frees the canvas, if there is one. The pointers in mediadata are not cleared. */
void subtitle_release(void);

/**
 * Takes the next bytes of the sub-picture stream. If they complete a unit, decodes it, at most one per call.
 * @param data  any piece of the stream; not kept.
 * @param len   in bytes. 0 decodes a complete unit that is still held after the last one; below 0 does nothing.
 * @return 1
 */
int subtitle_decode(const unsigned char *data, int len);

/**
 * Returns where the picture is.
 * @param out  receives the result; must not be null.
 */
void subtitle_write(struct SubtitlePlanes *out);

/**
 * Places the picture on a plain background in the output planes and packs these, three bytes per pixel, into the block
 * of Y, U and V, whose pixels are lost; then does what subtitle_write() does. Rows that would leave the canvas are
 * dropped.
 * @param out  receives the result; must not be null.
 */
void subtitle_write_x(struct SubtitlePlanes *out);

/**
 * @name The decoder's parts
 * The Get functions read from the decoder's position in its buffer. They return 0 without a decoder and past the end of
 * the buffer.
 * @{
 */
int Get_HalfByte(void); /**< @return 4 bits, the upper ones of a byte first */
int Get_Byte(void);     /**< @return 8 bits */
int Get_Short(void);    /**< @return 16 bits, big-endian */

/**
 * Begins a picture in a display area: makes the canvas transparent and moves to the area's first pixel.
 * @param x, y           the area's top left pixel.
 * @param width, height  of the area.
 * @param alpha_word, colour_word  four bits per pixel code, code 0 lowest: contrasts and indices into the palette.
 */
void Init_RleOutput(int x, int y, int width, int height, unsigned int alpha_word, unsigned int colour_word);

/** Moves to the field's next line, two rows down. */
void New_Line(void);

/**
 * Writes a run of pixels. Pixels past the end of the line are not drawn.
 * @param code  its length times 4, plus the pixel code.
 */
void Rle_Output(unsigned int code);

/** @} */

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#if defined(__cplusplus) && __cplusplus >= 201103L
static_assert(sizeof(subtitle_canvas) == 18 * sizeof(void *) + 2 * sizeof(double) + 2 * sizeof(int32_t),
              "hosts read the record word by word");
static_assert(sizeof(SubtitlePlanes) == 9 * sizeof(void *), "hosts hand in nine words");
#endif

#endif
