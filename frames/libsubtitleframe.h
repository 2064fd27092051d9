/**
 * @file libsubtitleframe.h
 * Burns subtitles into decoded video frames in the format that the decoder made.
 *
 * A layer on libsubtitle (see libsubtitle.h), which knows packed RGB only. A host makes a burner for a handle of
 * CreateVideoSubtitle() and goes on using the handle for everything else: file, time, font, colours, opacity and
 * position. The burner takes the place of ProcessSubtitleFrame().
 *
 * Calling order
 *  1. CreateVideoSubtitle() with the size of the picture as it is shown, SetSubtitleFile() and other setters.
 *  2. CreateSubtitleBurner().
 *  3. For each frame SetSubtitleTimeStamp(), then BurnSubtitleAVFrame() or BurnSubtitle().
 *  4. DestroySubtitleBurner(), then DestroyVideoSubtitle().
 *
 * What a frame gets
 *  The pixels that ProcessSubtitleFrame() would draw, and no others. Each is drawn as follows.
 *  - Opaque text (opacity 255): every sample that belongs to one pixel becomes the colour's own code value, rounded to
 *    nearest. A chroma sample that belongs to several pixels becomes their mean, rounded to nearest: covered pixels
 *    count with the text's code value, the others with what the sample was. The weights follow from the chroma
 *    position: along an axis on which the sample lies midway between two pixels these count 1/2 each; where it lies on
 *    a pixel, that counts 1/2 and its two neighbours 1/4 each; in interlaced 4:2:0, where it lies a quarter away from
 *    one line of its field and three quarters from the next, these count 3/4 and 1/4. A neighbour beyond the frame's
 *    edge is the pixel at the edge.
 *  - Opacity below 255, and pictures: with k the weight of the pixel (the opacity counts twice, see
 *    SetSubtitleAlpah()), R, G, B the frame's pixel and r, g, b the subtitle's,
 *        R' = (k r + (255 - k) B) / 255,   G' = (k g + (255 - k) G) / 255,   B' = (k b + (255 - k) R) / 255.
 *    Red and blue of what is below change places, as in RGB frames. In YUV the same is computed without leaving YUV,
 *    and a chroma sample of several pixels is the mean as above. Quotients are rounded to nearest and limited to what
 *    the samples hold, except in RGB formats of 8 bits, where they are truncated and equal those of
 *    ProcessSubtitleFrame().
 *  - Alpha, where the format has it: A' = (k max + (255 - k) A) / 255, rounded to nearest. Alpha is
 *    taken as straight, not premultiplied. The unused byte or bits of formats as rgb0 and x2rgb10 are not touched.
 *
 * Colours
 *  The subtitle's colours are full range R'G'B'. YUV code values are those of ITU-R BT.601, BT.709 and BT.2020
 *  (sections on digital representation, for full range ITU-R BT.2100 and JFIF); a colour is converted in floating point
 *  and rounded once.
 *  - PQ and HLG frames: the subtitle's colours are taken as sRGB (IEC 61966-2-1), made linear, converted to the frame's
 *    primaries, scaled so that white has the level of SetSubtitleBurnerWhite(), and coded as ITU-R BT.2100 says; for
 *    HLG as on a display of 1,000 cd/m2 (system gamma 1.2). All other transfers take the values as they are.
 *
 * The natural look
 *  What the above says holds for the exact look, which is that of a new burner. With SUBTITLE_LOOK_NATURAL,
 *  - text is smooth, and its outline has a width that follows the picture's height. Lines are broken and placed as in
 *    the exact look where they fit into the safe area; where they do not, lines are made narrower, and the font smaller. Of
 *    more than two lines the lower edge lies where that of two does;
 *  - all texts that are due show, in the order of the file from the bottom up, each once;
 *  - pictures have the colours of their palette and the alpha that they bring, without a colour that counts as
 *    transparent, and are scaled with a filter;
 *  - the opacity counts once and nothing changes places: with a the coverage of a pixel times the opacity, from 0 to 1, and c
 *    the code value of the subtitle's colour, a sample s becomes a c + (1 - a) s, and a chroma sample of several pixels
 *    the mean of that, with the weights above. Results are within a code value of 8 bits of that. Alpha becomes
 *    a max + (1 - a) A.
 *
 * Formats, by FFmpeg's names
 *  yuv420p, yuv422p, yuv444p, also with 10 and 12 bits; yuvj420p, yuvj422p, yuvj444p; yuva420p, yuva422p, yuva444p;
 *  nv12, nv21, nv16, p010; yuyv422, uyvy422; gray, gray10; gbrp, gbrp10; rgb24, bgr24, rgb48; rgba, bgra, argb, abgr,
 *  rgb0, bgr0, 0rgb, 0bgr, x2rgb10. Those of more than 8 bits in the byte order of the machine. Any other is refused.
 *
 * Results, lack of memory
 *  0 for "done", -1 for "refused", as in libsubtitle.h; nothing is thrown. A frame is either drawn completely or, with
 *  -1, not touched.
 *
 * Threads
 *  A burner holds the lock of its handle while it draws, so BurnSubtitle(), BurnSubtitleAVFrame(), IsSubtitleDue() and
 *  the setters of burners wait for each other and for the functions of libsubtitle.h that wait. Several burners may
 *  work on one handle. Creating and destroying a burner must not happen while another thread is in a function with the
 *  same burner. No other thread may use the frame while it is drawn.
 *
 * Cost
 *  The subtitle is converted when what shows, or the frames' description, is another than before. Otherwise nothing is
 *  drawn anew, searched, converted or allocated, and a frame costs about the bytes that the subtitle covers.
 */
#ifndef LIBSUBTITLEFRAME_H
#define LIBSUBTITLEFRAME_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct AVFrame;

/**
 * How the picture lies in the frame: the picture as it is shown results when the frame is transposed, if so, and what
 * came of that is then mirrored. Added up they make eight orientations.
 */
enum {
    SUBTITLE_ORIENTATION_UPRIGHT = 0,
    SUBTITLE_ORIENTATION_MIRRORED = 1,    /**< left and right exchanged */
    SUBTITLE_ORIENTATION_UPSIDE_DOWN = 2, /**< top and bottom exchanged; with MIRRORED, turned by 180 degrees */
    SUBTITLE_ORIENTATION_TRANSPOSED = 4   /**< first, rows and columns exchanged */
};

/** How a burner's subtitles look: see SetSubtitleBurnerLook(). */
enum {
    SUBTITLE_LOOK_EXACT = 0,  /**< the pixels that ProcessSubtitleFrame() draws */
    SUBTITLE_LOOK_NATURAL = 1 /**< smooth text with an outline that scales, pictures in their colours */
};

/**
 * A frame: where it is and what its samples mean. Members named after FFmpeg's take the numbers of its enumerations;
 * for each of these, AVCOL_..._UNSPECIFIED and 0 say that the host does not know. Zero what is not known.
 */
typedef struct SubtitleFrame {
    uint8_t *data[4]; /**< the top row of each plane that the format has */
    int linesize[4]; /**< bytes from a row to the one below; negative when rows lie bottom up. Padding is not touched */
    int width;       /**< pixels, as stored */
    int height;      /**< pixels, as stored */
    int format;      /**< AVPixelFormat; see SubtitlePixelFormat() */
    int colorspace;  /**< AVColorSpace: FCC, BT470BG, SMPTE170M, SMPTE240M, BT709 and BT2020_NCL. Unknown: BT709 from
                              1280 columns or 577 rows on, else SMPTE170M. RGB formats do not look at it */
    int color_range; /**< AVColorRange. Unknown: full for yuvj and gray formats, else limited. RGB and yuvj formats are
                              full range with any */
    int color_primaries; /**< AVColorPrimaries; looked at in PQ and HLG frames only. Unknown: BT2020. Those
                              whose white is D65 are known: BT709, BT470BG, SMPTE170M, SMPTE240M, BT2020, SMPTE432,
                              EBU3213 */
    int color_trc;       /**< AVColorTransferCharacteristic; only SMPTE2084 (PQ) and ARIB_STD_B67 (HLG) matter */
    int chroma_location; /**< AVChromaLocation. Unknown: CENTER for yuvj formats, else LEFT */
    int interlaced;      /**< not 0: 4:2:0 chroma belongs to the fields, the frame's even lines and its odd ones */
    int orientation;     /**< SUBTITLE_ORIENTATION_..., 0 to 7; of its eight, text is upright on the picture as shown */
} SubtitleFrame;

/**
 * The number of a pixel format.
 *
 * @param name  FFmpeg's, as "yuv420p" or "p010le".
 * @return AVPixelFormat, 0 or more, for a format that can be burnt into; -1 for any other and for null.
 *
 * Threads: any, at any time.
 */
int SubtitlePixelFormat(const char *name);

/**
 * Whether the file of a handle has the track that SetSubtitleFile() was asked for. That function takes a container
 * without the track for one without subtitles; this one is for hosts that warn of it.
 *
 * @param handle  from CreateVideoSubtitle().
 * @return 1; 0 when the file has no such track, when a container was missing or could not be opened, and while no file is
 *         open; -1 for a null handle. Files with the extension "srt", "ass" or "ssa" have every track, missing ones too.
 *
 * Threads: waits, as SetSubtitleFile().
 */
int HasSubtitleTrack(void *handle);

/**
 * Makes a burner.
 *
 * @param handle  from CreateVideoSubtitle(), which must outlive the burner; the burner does not own it.
 * @return the burner, which the host owns until DestroySubtitleBurner(); null for a null handle and without memory.
 */
void *CreateSubtitleBurner(void *handle);

/**
 * Frees a burner; its handle stays.
 *
 * @param burner  null does nothing.
 */
void DestroySubtitleBurner(void *burner);

/**
 * Sets the level of white subtitles on PQ and HLG frames. Without it that is 203 cd/m2, the reference white of
 * ITU-R BT.2408. HLG frames take levels above 1,000 cd/m2 as 1,000.
 *
 * @param burner  the burner.
 * @param level  cd/m2, 1 to 10,000.
 * @return 0; -1, with nothing changed, for a level out of range and for a null burner.
 */
int SetSubtitleBurnerWhite(void *burner, double level);

/**
 * Chooses how subtitles look. A new burner has SUBTITLE_LOOK_EXACT. See "The natural look" above.
 *
 * @param burner  the burner.
 * @param look  SUBTITLE_LOOK_EXACT or SUBTITLE_LOOK_NATURAL.
 * @return 0; -1, with nothing changed, for any other look and for a null burner.
 */
int SetSubtitleBurnerLook(void *burner, int look);

/**
 * Sets how wide the outline of text is in the natural look: 2 without it.
 *
 * @param burner  the burner.
 * @param width  pixels in a picture of 720 rows, 0 to 20; in others it is wider or narrower as they are higher or lower.
 *               0 draws no outline.
 * @return 0; -1, with nothing changed, for a width out of range and for a null burner.
 */
int SetSubtitleBurnerOutline(void *burner, double width);

/**
 * Sets what text keeps clear of at the picture's edges in the natural look: 2.5 without it.
 *
 * @param burner  the burner.
 * @param percent  of the picture's width at the left and at the right, and of its height at the top and at the bottom;
 *                 0 to 25.
 * @return 0; -1, with nothing changed, for a number out of range and for a null burner.
 */
int SetSubtitleBurnerSafeArea(void *burner, double percent);

/**
 * Sets the shape of the pixels of the picture as it is shown: 1 to 1 without it. Text of the natural look is laid out in
 * the shape that viewers see and drawn narrower or wider, so that its letters are not stretched. Pictures, which are made
 * for the pixels of their film, and the exact look do not follow it.
 *
 * @param burner  the burner.
 * @param width   of a pixel, as the numerator of FFmpeg's sample_aspect_ratio; at least 1.
 * @param height  of a pixel, as the denominator; at least 1. A picture that is shown turned by a quarter has both exchanged.
 * @return 0; -1, with nothing changed, for a number below 1, where one is more than ten times the other, and for a null
 *         burner.
 */
int SetSubtitleBurnerPixelAspect(void *burner, int width, int height);

/**
 * Whether a subtitle is due. A host whose frames are shared or out of reach copies, maps or fetches a frame only when
 * this returns 1.
 *
 * @param burner  the burner.
 * @return 1 when BurnSubtitle() would draw, 0 when it would leave any frame as it is; -1 for a null burner and where
 *         ProcessSubtitleFrame() returns -1.
 */
int IsSubtitleDue(void *burner);

/**
 * Draws the due subtitle into a frame; without one the frame is not touched.
 *
 * @param burner  the burner.
 * @param frame  the frame, which the host keeps; no pointer to it is kept. Its size is that of the handle, with
 *               width and height exchanged for a transposed orientation.
 * @return 0; -1, with the frame untouched: for null arguments and planes, for a format or orientation that is not
 *         known, for a line size less than a row, for a frame of another size, and where ProcessSubtitleFrame() returns
 *         -1. Numbers of colour members that are not known are refused as well: a range and a chroma location in any
 *         format, a colorspace in YUV and grey, primaries in PQ and HLG. A frame is refused, or not, whether or not a
 *         subtitle is due.
 */
int BurnSubtitle(void *burner, const SubtitleFrame *frame);

/**
 * The same with a frame of FFmpeg's, from which everything is read: planes, size, format, colour members, whether it is
 * interlaced, and the orientation from its display matrix (AV_FRAME_DATA_DISPLAYMATRIX); its cropping is not looked at.
 * The library must be built with the major version of libavutil that the host uses.
 *
 * A frame whose buffers are shared (av_frame_is_writable()), as decoders hand them out that still predict from them, is
 * made writable when a subtitle is drawn into it: its planes are then in new buffers, with the old ones' contents.
 * Frames without a subtitle, and frames without buffers of FFmpeg's, stay where they are.
 *
 * @param burner  the burner.
 * @param frame  the frame, in memory: frames of hardware are refused.
 * @return as BurnSubtitle(); -1 also for a display matrix that is none of the eight orientations, and without
 *         memory for new buffers.
 */
int BurnSubtitleAVFrame(void *burner, struct AVFrame *frame);

#ifdef __cplusplus
}
#endif

#endif
