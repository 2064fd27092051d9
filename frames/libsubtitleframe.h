/**
 * @file libsubtitleframe.h
 * Burns subtitles into decoded video frames in the decoder's own pixel format.
 *
 * A layer on top of libsubtitle (see libsubtitle.h), which supports packed RGB only. A host creates a burner for a
 * handle of CreateVideoSubtitle() and uses the handle for everything else: file, time, font, colours, opacity and
 * position. The burner replaces ProcessSubtitleFrame().
 *
 * Calling order
 *  1. CreateVideoSubtitle() with the size of the picture as it is shown, SetSubtitleFile() and other setters.
 *  2. CreateSubtitleBurner().
 *  3. For each frame SetSubtitleTimeStamp(), then BurnSubtitleAVFrame() or BurnSubtitle().
 *  4. DestroySubtitleBurner(), then DestroyVideoSubtitle().
 *
 * What a frame gets
 *  The pixels that ProcessSubtitleFrame() would draw, and no others. Each is drawn as follows.
 *  - Opaque text (opacity 255): every sample of a single pixel gets the code value of the colour, rounded to nearest. A
 *    chroma sample of several pixels gets their mean, rounded to nearest: covered pixels count with the code value of
 *    the text, others with the old value of the sample. The weights follow from the chroma position. Along an axis on
 *    which the sample lies midway between two pixels, these count 1/2 each. If it lies on a pixel, that counts 1/2 and
 *    its two neighbours 1/4 each. In interlaced 4:2:0, where it is a quarter away from one line of its field and three
 *    quarters from the next, these count 3/4 and 1/4. Beyond the frame's edge, the pixel at the edge counts.
 *  - Opacity below 255, and pictures: with k the weight of the pixel (the opacity counts twice, see
 *    SetSubtitleAlpah()), R, G, B the frame's pixel and r, g, b the subtitle's,
 *        R' = (k r + (255 - k) B) / 255,   G' = (k g + (255 - k) G) / 255,   B' = (k b + (255 - k) R) / 255.
 *    This swaps red and blue of the frame's pixel, as in RGB frames. In YUV the same is computed within YUV, and a
 *    chroma sample of several pixels is their mean as above. Quotients are rounded to nearest and limited to the range
 *    of the samples; only in RGB formats of 8 bits they are truncated, as in ProcessSubtitleFrame().
 *  - Alpha, if the format has it: A' = (k max + (255 - k) A) / 255, rounded to nearest. Alpha is straight, not
 *    premultiplied. The unused byte or bits of formats such as rgb0 and x2rgb10 are not touched.
 *
 * Colours
 *  The subtitle's colours are full range R'G'B'. YUV code values are those of ITU-R BT.601, BT.709 and BT.2020
 *  (sections on digital representation, for full range ITU-R BT.2100 and JFIF); a colour is converted in floating point
 *  and rounded once.
 *  - PQ and HLG frames: the subtitle's colours are interpreted as sRGB (IEC 61966-2-1), made linear, converted to the
 *    frame's primaries, scaled so that white has the level of SetSubtitleBurnerWhite(), and coded as in ITU-R BT.2100;
 *    for HLG as on a display of 1,000 cd/m2 (system gamma 1.2). With all other transfers the values are used unchanged.
 *
 * The natural look
 *  All of the above is about the exact look, which new burners have. With SUBTITLE_LOOK_NATURAL,
 *  - text is antialiased, and the width of its outline is proportional to the picture's height. Lines are broken and
 *    placed as in the exact look if they fit into the safe area; otherwise lines get narrower and the font smaller.
 *    With more than two lines, the lower edge of the text is where it would be with two;
 *  - all texts that are due are shown, in the order of the file from the bottom up, each once;
 *  - pictures have the colours and the alpha of their palette, no colour is a transparent key, and they are scaled with
 *    a filter;
 *  - picture tracks of containers (DVD, DVB, Blu-ray) are shown as pictures, of which the exact look shows the bytes as
 *    text. All that are due are shown, each at its place, later ones in the file on top;
 *  - the opacity counts once, and red and blue are not swapped: with a the coverage of a pixel times the opacity, 0 to
 *    1, and c the code value of the subtitle's colour, a sample s becomes a c + (1 - a) s, and a chroma sample of
 *    several pixels their mean with the weights above. Results are within one code value of 8 bits of that. Alpha
 *    becomes a max + (1 - a) A.
 *
 * Formats, by FFmpeg's names
 *  yuv420p, yuv422p, yuv444p, also with 10 and 12 bits; yuvj420p, yuvj422p, yuvj444p; yuva420p, yuva422p, yuva444p;
 *  nv12, nv21, nv16, p010; yuyv422, uyvy422; gray, gray10; gbrp, gbrp10; rgb24, bgr24, rgb48; rgba, bgra, argb, abgr,
 *  rgb0, bgr0, 0rgb, 0bgr, x2rgb10. Formats of more than 8 bits in the machine's byte order. All others are refused.
 *
 * Results, lack of memory
 *  0 for "done", -1 for "refused", as in libsubtitle.h; nothing is thrown. A frame is either drawn completely or, with
 *  -1, not touched.
 *
 * Threads
 *  A burner holds the lock of its handle while it draws, so BurnSubtitle(), BurnSubtitleAVFrame(), IsSubtitleDue(),
 *  FindSubtitleRows() and the setters of burners wait for each other and for the functions of libsubtitle.h that wait.
 *  Several burners may use one handle. A burner must not be created or destroyed while another thread is in a function
 *  with it. No other thread may use the frame while it is drawn.
 *
 * Cost
 *  The subtitle is converted when it, or the description of the frames, changes. Otherwise nothing is painted,
 *  searched, converted or allocated, and the cost of a frame is about that of the bytes that the subtitle covers.
 */
#ifndef LIBSUBTITLEFRAME_H
#define LIBSUBTITLEFRAME_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* the library is compiled with -fvisibility=hidden */
#endif
#ifdef __cplusplus
extern "C" {
#endif

struct AVFrame;

/**
 * How to get the picture as shown from the stored frame: transpose it first, if set, then mirror the result. The sums
 * of these values are the eight orientations.
 */
enum {
    SUBTITLE_ORIENTATION_UPRIGHT = 0,
    SUBTITLE_ORIENTATION_MIRRORED = 1,    /**< left and right swapped */
    SUBTITLE_ORIENTATION_UPSIDE_DOWN = 2, /**< top and bottom swapped; with MIRRORED, turned by 180 degrees */
    SUBTITLE_ORIENTATION_TRANSPOSED = 4   /**< rows and columns swapped, before the others */
};

/** The looks of subtitles; see SetSubtitleBurnerLook(). */
enum {
    SUBTITLE_LOOK_EXACT = 0,  /**< the pixels that ProcessSubtitleFrame() draws */
    SUBTITLE_LOOK_NATURAL = 1 /**< antialiased text with an outline that scales, pictures in their colours */
};

/**
 * A frame: its memory, and the meaning of its samples. Members with FFmpeg's names have the values of its enumerations;
 * AVCOL_..._UNSPECIFIED and 0 mean unknown. Set members to 0 if they are unknown.
 */
typedef struct SubtitleFrame {
    uint8_t *data[4]; /**< the top row of each plane that the format has */
    int linesize[4];  /**< bytes from a row to the one below; negative if rows lie bottom up. Padding is not touched */
    int width;        /**< pixels, as stored */
    int height;       /**< pixels, as stored */
    int format;       /**< AVPixelFormat; see SubtitlePixelFormat() */
    int colorspace;   /**< AVColorSpace: FCC, BT470BG, SMPTE170M, SMPTE240M, BT709 and BT2020_NCL. Unknown: BT709 from
                              1280 columns or 577 rows on, else SMPTE170M. Not used for RGB formats */
    int color_range;  /**< AVColorRange. Unknown: full for yuvj and gray formats, else limited. RGB and yuvj formats are
                              full range with any */
    int color_primaries; /**< AVColorPrimaries; used in PQ and HLG frames only. Unknown: BT2020. Supported
                              are those with white D65: BT709, BT470BG, SMPTE170M, SMPTE240M, BT2020, SMPTE432,
                              EBU3213 */
    int color_trc;       /**< AVColorTransferCharacteristic; only SMPTE2084 (PQ) and ARIB_STD_B67 (HLG) matter */
    int chroma_location; /**< AVChromaLocation. Unknown: CENTER for yuvj formats, else LEFT */
    int interlaced;      /**< not 0: 4:2:0 chroma belongs to the fields, that is to the even and to the odd lines */
    int orientation;     /**< sum of SUBTITLE_ORIENTATION_..., 0 to 7; text is upright on the picture as shown */
} SubtitleFrame;

/** Neighbouring rows of the picture as shown. */
typedef struct SubtitleRows {
    int top;   /**< first row, 0 at the top of the picture */
    int count; /**< number of rows */
} SubtitleRows;

/**
 * The number of a pixel format.
 *
 * @param name  FFmpeg's name, such as "yuv420p" or "p010le".
 * @return the AVPixelFormat, 0 or more, of a supported format; -1 for any other and for null.
 *
 * Threads: any, at any time.
 */
int SubtitlePixelFormat(const char *name);

/**
 * Whether the file of a handle has the track that was passed to SetSubtitleFile(). That function accepts a container
 * without the track, and then shows no subtitles; hosts can warn of it with this one.
 *
 * @param handle  from CreateVideoSubtitle().
 * @return 1; 0 if the file has no such track, if a container is missing or could not be opened, and while no file is
 *         open; -1 for a null handle. Always 1 for files with the extension "srt", "ass" or "ssa", even if missing.
 *
 * Threads: waits, as SetSubtitleFile().
 */
int HasSubtitleTrack(void *handle);

/**
 * Creates a burner.
 *
 * @param handle  from CreateVideoSubtitle(); must outlive the burner, which does not own it.
 * @return the burner, owned by the host until DestroySubtitleBurner(); null for a null handle and without memory.
 */
void *CreateSubtitleBurner(void *handle);

/**
 * Destroys a burner, but not its handle.
 *
 * @param burner  null does nothing.
 */
void DestroySubtitleBurner(void *burner);

/**
 * Sets the level of white subtitles on PQ and HLG frames. The default is 203 cd/m2, the reference white of
 * ITU-R BT.2408. On HLG frames levels above 1,000 cd/m2 count as 1,000.
 *
 * @param burner  the burner.
 * @param level  cd/m2, 1 to 10,000.
 * @return 0; -1, with nothing changed, for a level out of range and for a null burner.
 */
int SetSubtitleBurnerWhite(void *burner, double level);

/**
 * Selects the look of subtitles; see "The natural look" above. The default is SUBTITLE_LOOK_EXACT.
 *
 * @param burner  the burner.
 * @param look  SUBTITLE_LOOK_EXACT or SUBTITLE_LOOK_NATURAL.
 * @return 0; -1, with nothing changed, for any other look and for a null burner.
 */
int SetSubtitleBurnerLook(void *burner, int look);

/**
 * Sets the width of the outline of text in the natural look. The default is 2.
 *
 * @param burner  the burner.
 * @param width  pixels in a picture of 720 rows, 0 to 20; proportional to the height in others. 0 draws no outline.
 * @return 0; -1, with nothing changed, for a width out of range and for a null burner.
 */
int SetSubtitleBurnerOutline(void *burner, double width);

/**
 * Sets the margin between text and the picture's edges in the natural look. The default is 2.5.
 *
 * @param burner  the burner.
 * @param percent  of the picture's width at the left and at the right, and of its height at the top and at the bottom;
 *                 0 to 25.
 * @return 0; -1, with nothing changed, for a number out of range and for a null burner.
 */
int SetSubtitleBurnerSafeArea(void *burner, double percent);

/**
 * Sets the aspect of the pixels of the picture as shown. The default is 1:1. Text of the natural look is laid out for
 * the displayed shape and drawn narrower or wider, so that viewers do not see stretched letters. It does not affect
 * pictures, which are made for the pixels of their film, and the exact look.
 *
 * @param burner  the burner.
 * @param width   of a pixel, as the numerator of FFmpeg's sample_aspect_ratio; at least 1.
 * @param height  of a pixel, as the denominator; at least 1. Swap both for a picture that is turned by a quarter.
 * @return 0; -1, with nothing changed, for a number below 1, if one is more than ten times the other, and for a null
 *         burner.
 */
int SetSubtitleBurnerPixelAspect(void *burner, int width, int height);

/**
 * Sets rows of the picture as shown that are in use by something else: a host's own display, or other subtitles, see
 * FindSubtitleRows(). In the natural look, a subtitle that would overlap them is moved: up as far as needed, or down if
 * there is no room above. Text that is too high for any free part gets the smaller font that it would have in a picture
 * as high as the tallest free part. If that part is less than a tenth of the rows, and for pictures that are too high,
 * nothing is moved. It does not affect the exact look.
 *
 * @param burner  the burner.
 * @param rows  array of @p count elements in any order, which may overlap, be empty and lie beyond the picture; it is
 *              copied. Null for none.
 * @param count  0 or more; the default is 0.
 * @return 0; -1, with nothing changed, for a negative number anywhere, for null rows with a count above 0, for a null
 *         burner, and without memory.
 */
int SetSubtitleBurnerTakenRows(void *burner, const SubtitleRows *rows, int count);

/**
 * The rows of the due subtitle: all that BurnSubtitle() would draw to and, for text in the natural look, its lines in
 * the full height of the font. With it a host can show several files at once, one above the other. Each file has a
 * handle and a burner. For each frame the host sets the time of all handles, then for each burner calls
 * SetSubtitleBurnerTakenRows() with the rows of the burners before it, and this function; then it calls BurnSubtitle()
 * with each burner.
 *
 * @param burner  the burner.
 * @param rows  set if the result is 0 or 1; the count is 0 if nothing is due.
 * @return as IsSubtitleDue(); -1 also for null rows.
 */
int FindSubtitleRows(void *burner, SubtitleRows *rows);

/**
 * Whether a subtitle is due. A host whose frames are shared or in another memory needs to copy, map or download only
 * those for which this returns 1.
 *
 * @param burner  the burner.
 * @return 1 if BurnSubtitle() would draw, 0 if it would change no frame; -1 for a null burner and whenever
 *         ProcessSubtitleFrame() returns -1.
 */
int IsSubtitleDue(void *burner);

/**
 * Draws the due subtitle into a frame. Without one the frame is not touched.
 *
 * @param burner  the burner.
 * @param frame  owned by the host; no pointer to it is kept. It has the size of the handle, with width and height
 *               swapped for a transposed orientation.
 * @return 0; -1, with the frame untouched, for null arguments and planes, for an unsupported format or orientation, for
 *         a line size less than a row, for a frame of another size, and whenever ProcessSubtitleFrame() returns -1.
 *         Also for unsupported values of a range or chroma location in any format, of a colorspace in YUV and grey, and
 *         of primaries in PQ and HLG. Whether a frame is refused does not depend on whether a subtitle is due.
 */
int BurnSubtitle(void *burner, const SubtitleFrame *frame);

/**
 * The same with an AVFrame, which describes itself: planes, size, format, colour members, whether it is interlaced, and
 * the orientation in its display matrix (AV_FRAME_DATA_DISPLAYMATRIX). Its cropping is ignored. The library must be
 * built with the same major version of libavutil as the host.
 *
 * A frame whose buffers are shared (see av_frame_is_writable()), as with decoders that still predict from it, is made
 * writable when a subtitle is drawn into it: its planes are then in new buffers with the same contents. Frames without
 * a subtitle, and frames without AVBufferRefs, keep their memory.
 *
 * @param burner  the burner.
 * @param frame  the frame, in memory: hardware frames are refused.
 * @return as BurnSubtitle(); -1 also for a display matrix that is none of the eight orientations, and without
 *         memory for new buffers.
 */
int BurnSubtitleAVFrame(void *burner, struct AVFrame *frame);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
