/**
 * @file subtitledecoder.h
 * Decoder of DVD sub-picture units: plain functions over process-wide state, one decoder a process, as hosts bind to it.
 * They include it as `<libsubtitle/subtitledecoder.h>`; it needs no other header of the library, and is C (C99) and
 * C++ (C++98), and newer.
 *
 * Set up with subtitle_init(), fed with the payload of the program stream's packets through subtitle_decode() in pieces
 * of any size, read with subtitle_write(), given back with subtitle_release(). A unit is decoded by the call that brings
 * its last byte. Nothing is guarded: calls must not overlap. While a renderer has a VobSub file open, it uses this
 * decoder under a lock of its own; a host that decodes by itself does so while no renderer builds a picture.
 *
 * Nothing in a unit makes the decoder read or write outside its buffers. A unit is refused when its pixel data or its
 * control area lie outside it, or when more than 65,536 bytes come in before it is complete: all bytes held are dropped,
 * and no pixel is visible. A display area that is empty or not wholly on the canvas shows nothing.
 *
 * No function throws. None but subtitle_init() allocates, whose canvas serves until subtitle_release().
 */
#ifndef SUBTITLEDECODER_H
#define SUBTITLEDECODER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The longest side that a canvas may have; display areas have 12-bit coordinates and reach no further. */
#define SUBTITLE_MAX_SIDE 4096

/** Where the canvas is, and when and where the last unit shows. Pointers are null before the first subtitle_init(). */
struct subtitle_canvas {
    unsigned char *plane[4]; /**< Y, U, V, alpha; Coded_Picture_Width bytes a row; Y, U and V are one block */
    void *reserved_a[5];     /**< null */
    unsigned char *out[3];   /**< what subtitle_write_x() places the picture in, of the planes' size */
    void *reserved_b[6];     /**< null */
    double start;            /**< ms, by the unit's own command; whatever an earlier unit said when it has none */
    double stop;             /**< the same for the end */
    int32_t top;             /**< first canvas row with a visible pixel; beyond bottom when no pixel is visible */
    int32_t bottom;          /**< last canvas row with a visible pixel */
};

/** What subtitle_write() hands out: nine words of a pointer's size. The planes stay the decoder's. */
struct SubtitlePlanes {
    unsigned char *plane[4]; /**< Y, U, V, alpha */
    void *reserved[3];       /**< null */
    intptr_t top;            /**< first canvas row with a visible pixel; beyond bottom when no pixel is visible */
    intptr_t bottom;         /**< last canvas row with a visible pixel */
};

/**
 * @name What a host sees of the decoder
 * A host may set Chroma_Width, chroma_format, Subt_Color and Subt_Offset after subtitle_init(). What it writes to the others
 * has no effect, and is overwritten.
 * @{
 */
extern struct subtitle_canvas mediadata; /**< of the last unit */
extern int32_t Coded_Picture_Width;      /**< of the canvas, in pixels; 0 when none could be had */
extern int32_t Coded_Picture_Height;     /**< likewise */
extern int32_t Chroma_Width;             /**< bytes a chroma row in subtitle_write_x() */
extern int32_t Chroma_Height;            /**< for the host's information */
extern int32_t chroma_format;            /**< MPEG-2 code: 3 is 4:4:4, 1 is 4:2:0 in subtitle_write_x() */
extern int32_t Subt_Color;               /**< 0: every unit replaces the palette by black and white */
extern int32_t Subt_Offset;              /**< rows by which subtitle_write_x() moves the picture down */
/** @} */

/**
 * Sets the decoder up for a canvas and forgets what it holds.
 * @param palette  16 words 0x00VVUUYY, taken byte by byte without conversion: of 0x00RRGGBB blue becomes Y.
 * @param width, height  1 to SUBTITLE_MAX_SIDE. Other sizes, and a lack of memory, leave a decoder without canvas
 *        (planes null, width and height 0), on which no unit shows.
 * @return 1
 */
int subtitle_init(const unsigned int *palette, int width, int height);

/** Frees the canvas, if there is one. The addresses in mediadata stay as they are. */
void subtitle_release(void);

/**
 * Takes the next bytes of the sub-picture stream, and decodes the unit that they complete, one a call.
 * @param data  any piece of it; not kept.
 * @param len   may be 0, which decodes a whole unit that the last one left behind; less does nothing.
 * @return 1
 */
int subtitle_decode(const unsigned char *data, int len);

/**
 * Tells where the picture is.
 * @param out  receives that.
 */
void subtitle_write(struct SubtitlePlanes *out);

/**
 * As subtitle_write(), after placing the picture on a plain background in the output planes and packing these three bytes
 * a pixel into the block of Y, U and V, whose pixels are gone by that. Rows that would leave the picture are dropped.
 * @param out  receives where the picture is then.
 */
void subtitle_write_x(struct SubtitlePlanes *out);

/**
 * @name The decoder's parts
 * The readers read on from the decoder's position in the bytes that it holds; 0 without a decoder and behind its buffer.
 * @{
 */
int Get_HalfByte(void); /**< @return 4 bits, the upper ones of a byte first */
int Get_Byte(void);     /**< @return 8 bits */
int Get_Short(void);    /**< @return 16 bits, big-endian */

/**
 * Begins a picture in a display area: makes the canvas transparent and goes to the area's first pixel.
 * @param x, y           the area's top left pixel.
 * @param width, height  of the area.
 * @param alpha_word, colour_word  four bits a pixel code, code 0 lowest: contrast, index into the palette.
 */
void Init_RleOutput(int x, int y, int width, int height, unsigned int alpha_word, unsigned int colour_word);

/** Goes to the start of the field's next line. */
void New_Line(void);

/**
 * Writes a run of pixels. What passes the line's end is not drawn.
 * @param code  its length times 4, plus the pixel code.
 */
void Rle_Output(unsigned int code);

/** @} */

#ifdef __cplusplus
}
#endif

#if defined(__cplusplus) && __cplusplus >= 201103L
static_assert(sizeof(subtitle_canvas) == 18 * sizeof(void *) + 2 * sizeof(double) + 2 * sizeof(int32_t),
              "hosts read the record word by word");
static_assert(sizeof(SubtitlePlanes) == 9 * sizeof(void *), "hosts hand in nine words");
#endif

#endif
