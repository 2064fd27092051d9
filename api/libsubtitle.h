/**
 * @file libsubtitle.h
 * Burns subtitles into decoded video frames.
 *
 * A host makes one handle per video stream, names a subtitle file, and passes the presentation time and the pixels of
 * each frame; the subtitle due at that time is drawn into the pixels.
 *
 * Calling order
 *  1. CreateVideoSubtitle() with the size of the frames to come.
 *  2. Any setter, at any time; each takes effect at the next processed frame.
 *  3. SetSubtitleFile(); again later to change the file.
 *  4. For each frame SetSubtitleTimeStamp(), then ProcessSubtitleFrame().
 *  5. DestroyVideoSubtitle().
 *
 * A host in twenty lines
 * @code
 *     #include <libsubtitle.h>
 *     #include <stdio.h>
 *
 *     // Reads raw RGB24 frames of 640x360 at 25 per second from stdin, writes them with their subtitles to stdout.
 *     int main(int argc, char **argv)
 *     {
 *         static uint8_t pixels[640 * 360 * 3];
 *         AVPicture frame = { { pixels }, { 640 * 3 } };
 *         void *subtitle = CreateVideoSubtitle(640, 360);
 *         int status = argc > 1 ? SetSubtitleFile(subtitle, argv[1], 0) : -1;
 *
 *         for (long n = 0; status == 0 && fread(pixels, sizeof(pixels), 1, stdin) == 1; ++n) {
 *             SetSubtitleTimeStamp(subtitle, n * 1000 / 25);
 *             ProcessSubtitleFrame(subtitle, &frame);
 *             fwrite(pixels, sizeof(pixels), 1, stdout);
 *         }
 *         DestroyVideoSubtitle(subtitle);
 *         return status == 0 ? 0 : 1;
 *     }
 * @endcode
 *
 * Results
 *  Functions that return int return 0 for "done" and -1 for "refused"; SetSubtitlePos() and SetSubtitleFontColor() also
 *  return -1 when the value was set already, which is no error. Nothing is written to standard output. Only FFmpeg's
 *  log, which SetSubtitleFile() uses, and fontconfig's warnings about its configuration go to standard error.
 *
 * Lack of memory
 *  No C++ exception leaves any function. Without memory a function returns -1 (CreateVideoSubtitle(): null) or does
 *  without what it could not get; its description says what is left then. A frame is either drawn completely or not
 *  touched, and the handle may be used as before. This holds for the library's own allocations, and for those that the
 *  libraries below it survive: when small allocations of their own fail, Qt's text layout and application object, and
 *  FFmpeg's demuxers, can end the process or lay text out wrongly.
 *
 * Handles
 *  With a null handle DestroyVideoSubtitle() does nothing, and every other function returns -1 and does nothing. Any
 *  other handle is not checked: it must come from CreateVideoSubtitle() and not have been destroyed. Handles are
 *  independent of each other.
 *
 * Threads
 *  Creating and destroying handles must happen on one thread at a time in the whole process, and not while another
 *  thread is inside any other function of this library. Different handles may be used on different threads at once. One
 *  handle may be used from several threads with SetSubtitleFile(), SetSubtitleTimeStamp(), SetSubtitleFontColor(),
 *  SetSubtitleAlpah(), SetSubtitlePos() and ProcessSubtitleFrame(): they wait for each other. SetSubtitleFontParam()
 *  and SetSubtitleOutlineColor() do not wait, and may be called at the same time: a frame drawn meanwhile has the old
 *  font and colour, the new ones, or one of each. TextToBmp() does not wait either, and no other thread may use the
 *  same handle meanwhile. Calling threads need a stack of 128 KiB or more. A thread that is cancelled
 *  (pthread_cancel()) inside a function ends when the function has finished.
 *
 * Process-wide effects
 *  While at least one handle lives, the library keeps a Qt application object alive; it creates one only if the host
 *  has none. A host that wants its own QCoreApplication or QGuiApplication creates it before its first handle, or after
 *  its last handle was destroyed, and keeps it as long as a handle lives. No display is needed. The host's locale is
 *  not changed; the encoding of the locale is that of the environment.
 *  The host's floating-point environment, its rounding and traps, makes no difference and is kept.
 *
 * End of the process
 *  Handles need not be destroyed before the process ends. They may also be destroyed while it ends, by functions
 *  registered with atexit(), destructors of static objects and other threads. Once main() has returned or exit() was
 *  called, no handle is created, and functions that would open a file, set a font or draw a new subtitle return -1. The
 *  end of the process waits for such a function on another thread, for a second at most.
 */
#ifndef LIBSUBTITLE_H
#define LIBSUBTITLE_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* the library is compiled with -fvisibility=hidden */
#endif
#ifdef __cplusplus
extern "C" {
#endif

#if !defined(LIBAVCODEC_VERSION_MAJOR) || LIBAVCODEC_VERSION_MAJOR >= 59
/**
 * A picture: pointers to its planes and the bytes from one row to the next in each.
 *
 * FFmpeg removed its own AVPicture with libavcodec 59; this is the same struct. It has the layout of the first two
 * members of FFmpeg's AVFrame, so a host that decodes into an AVFrame of format AV_PIX_FMT_RGB24 passes that as it is:
 * @code
 *     ProcessSubtitleFrame(subtitle, (AVPicture *)avframe);
 * @endcode
 * A host that builds against an older FFmpeg includes <libavcodec/avcodec.h> before this header.
 */
typedef struct AVPicture {
    uint8_t *data[8]; /**< the top row of each plane */
    int linesize[8];  /**< bytes from a row to the one below; negative when rows lie bottom up */
} AVPicture;
#endif

/** Bits of the style argument of SetSubtitleFontParam(). */
enum {
    SUBTITLE_STYLE_BOLD = 1,  /**< bold weight */
    SUBTITLE_STYLE_ITALIC = 2 /**< italic slant */
};

/**
 * Creates a renderer for frames of one size.
 *
 * It starts with the default font at a pixel size of height / 14 (below a height of 14: the default font's own size),
 * white text, a near-black outline (10, 10, 10), opacity 255 and a vertical position of 85 percent.
 *
 * @param width   frame width in pixels, 1 or more.
 * @param height  frame height in pixels, 1 or more.
 * @return the handle; the host owns it until DestroyVideoSubtitle(). Null when there is no memory for it, when the
 *         process ends, and when the first handle finds fewer than 16 free file descriptors, which fontconfig needs to
 *         read its configuration; a later call may succeed. With a width or height below 1 the handle has no font: it
 *         draws nothing, SetSubtitleFontParam() and TextToBmp() return -1 on it. In frames with a side above 65,536
 *         pixels or more than 2^28 pixels it draws nothing, and TextToBmp() returns -1.
 *
 * Threads: not while another thread is in any function of this library, on whatever handle.
 */
void *CreateVideoSubtitle(int width, int height);

/**
 * Frees a renderer and all it owns. The handle is invalid afterwards.
 *
 * @param handle  the renderer; null does nothing.
 *
 * Threads: not while another thread is in any function of this library, on whatever handle.
 */
void DestroyVideoSubtitle(void *handle);

/**
 * Opens a subtitle file and reads all of it; nothing of it stays open. (For bitmap subtitles that is the index; the
 * pictures are read one by one when they are due.) The renderer's earlier file is closed first, and stays closed if the
 * new one is refused. What was due stays due until the next SetSubtitleTimeStamp(): a text stays on display. If one of
 * the two files has text and the other pictures, set the time before the next frame. Otherwise that frame shows one of
 * the pictures instead of the text, or the picture's number as text.
 *
 * The name's extension, in either case, selects the format: "srt" is SubRip text, "ass" and "ssa" are scripts, "idx" is
 * the index of DVD bitmap subtitles, whose pictures are in the file of the same folder and name with "sub" as its last
 * three characters. A file with any other extension, or none, is opened with FFmpeg's demuxers, whose packets are taken
 * as UTF-8 text as they are stored. Anything but a regular file, such as a pipe, counts as missing, and nothing waits
 * for it; an address with another protocol than "file:" is left to FFmpeg, and may wait. A script, an index or a SubRip
 * file that starts with a byte-order mark is read as UTF-8 or UTF-16, any other in the 8-bit encoding of the locale.
 * (The first UTF-16 file of a process decides on the byte order: one of the other byte order that is opened later, on
 * any handle, is read with its bytes swapped and shows nothing.) A read error counts as the end of the file, and a file
 * that grows meanwhile is read up to the size that it had when it was opened. A text file or container that is missing,
 * cannot be opened or has no such track counts as a file without subtitles, not as a failure. An index is refused in
 * these cases, and if the size of its pictures is missing or has a side above 4096 pixels. docs/formats.md has the
 * details.
 *
 * @param handle  the renderer.
 * @param path   the file's name in the encoding of the locale; null or "" is refused, and keeps the earlier file.
 * @param track  number of the subtitle track, from 0, among the subtitle streams of a container; for "idx" the number
 *               after "index:" on the line of the wanted language; "srt", "ass" and "ssa" files have one track and
 *               ignore it.
 * @return 0 when the file was opened; -1 when it was refused; -1, with no file open and no subtitle on display, when
 *         there is no memory for it.
 *
 * Threads: waits for other threads that use the handle, but see TextToBmp(). Frames on other threads wait until the
 * file is read.
 */
int SetSubtitleFile(void *handle, const char *path, int track);

/**
 * Sets the presentation time of the frame that ProcessSubtitleFrame() gets next, and looks up the subtitle due then.
 * Times may come in any order. A subtitle is due from its start to its end, both included; if several are due, only the
 * first one in the file is shown. At time 0 none is ever due.
 *
 * @param handle  the renderer.
 * @param ms  time in milliseconds, 0 or more.
 * @return 0; -1 for a negative time, which changes nothing; -1, with no subtitle due, when there is no memory.
 *
 * Threads: waits, as SetSubtitleFile(). One thread should set the times and process the frames of a handle: another's
 * time may come between the two.
 */
int SetSubtitleTimeStamp(void *handle, long ms);

/**
 * Draws the due subtitle into a frame. If none is due, the frame is not touched.
 *
 * @param handle  the renderer.
 * @param frame  packed RGB, 3 bytes a pixel with red first (FFmpeg's AV_PIX_FMT_RGB24), of the size given to
 *               CreateVideoSubtitle(). Only data[0], which points to the top row, and linesize[0] are used; linesize[0]
 *               is in bytes, at least 3 * width (padding between rows is never written), or negative when rows lie
 *               bottom up in memory. The host keeps the frame; no pointer to it is kept. A null frame or a null data[0]
 *               does nothing.
 * @return 0; -1, with the frame untouched, when there is no memory, and the next frame tries again. If the
 *         subtitle's picture cannot be read, or there is no memory to make it, the result may be 0 instead, and the
 *         subtitle stays away until it is due again.
 *
 * Threads: waits, as SetSubtitleFile(). No other thread may use the frame meanwhile.
 */
int ProcessSubtitleFrame(void *handle, AVPicture *frame);

/**
 * Sets the opacity of the subtitle as a whole. It counts twice: a pixel of the subtitle covers the frame by about
 * (alpha / 255) squared. Below 255, the first and third byte of the frame's pixels change places under the subtitle.
 * Under the pictures of an index they do so at 255 as well, since these are never quite opaque.
 *
 * @param handle  the renderer.
 * @param alpha  0 (nothing is drawn) to 255 (opaque); only the low 8 bits are used.
 * @return 0.
 *
 * Threads: waits, as SetSubtitleFile().
 */
int SetSubtitleAlpah(void *handle, int alpha);

/**
 * Sets the vertical position of the subtitle's centre line.
 *
 * @param handle  the renderer.
 * @param percent  of the frame height from the top, 0 to 100; values outside are clamped.
 * @return 0 when the position changed, -1 when it was set already.
 *
 * Threads: waits, as SetSubtitleFile().
 */
int SetSubtitlePos(void *handle, int percent);

/**
 * Sets the font of text subtitles: family, size, weight and slant together. Characters that the family lacks are taken
 * from other installed fonts.
 *
 * @param handle  the renderer.
 * @param family     name in the encoding of the locale, of which the first 1,024 UTF-16 units count; a family that
 *                   is not installed is substituted, "" selects the default font's. Null keeps the family.
 * @param pointSize  size in points at 96 dots per inch (72 points are 96 pixels of the frame), 1 to 4096; below that
 *                   the size stays as it is, above that it is 4096.
 * @param style      SUBTITLE_STYLE_BOLD, SUBTITLE_STYLE_ITALIC, both (3) or 0; other bits are ignored.
 * @return 0; -1 on a handle without a font; -1, with the font as it was, when there is no memory.
 *
 * Threads: does not wait. Frames drawn on other threads meanwhile have the old font or the new one. Not while another
 * thread sets the font, or is in TextToBmp(), on the same handle.
 */
int SetSubtitleFontParam(void *handle, const char *family, int pointSize, int style);

/**
 * Sets the colour of text subtitles. Black is stored as (0, 0, 1).
 *
 * @param handle  the renderer.
 * @param r, g, b  components 0 to 255; only the low 8 bits of each are used.
 * @return 0 when the colour changed, -1 when it was set already.
 *
 * Threads: waits, as SetSubtitleFile().
 */
int SetSubtitleFontColor(void *handle, int r, int g, int b);

/**
 * Sets the colour of the 2-pixel outline of text subtitles. Pure black (0, 0, 0) makes the outline disappear from
 * frames; any other colour shows.
 *
 * @param handle  the renderer.
 * @param r, g, b  components 0 to 255; only the low 8 bits of each are used.
 * @return 0.
 *
 * Threads: does not wait. Frames drawn on other threads meanwhile have the old colour or the new one. Not while another
 * thread is in TextToBmp() on the same handle.
 */
int SetSubtitleOutlineColor(void *handle, int r, int g, int b);

/**
 * Renders any text with the handle's font and colours into a paletted bitmap. The subtitle on display is replaced by
 * this text until it next changes. On a handle whose file is an index, pictures are then drawn at other rows until the
 * next SetSubtitleFile(): use a separate handle for this.
 *
 * On return
 *  - out->data[0] holds rect[2] * rect[3] bytes, rows from the top: index 1 where the text's pixels have the text
 *    colour, 2 elsewhere (outline and background alike), 0 only for pixels of pure black;
 *  - out->linesize[0] is rect[2];
 *  - out->data[1] holds 256 palette words of 32 bits, alpha << 24 | Y << 16 | U << 8 | V (ITU-R BT.601, limited range,
 *    8-bit integer form, with red and blue exchanged), entries 1 and 2 set with the handle's opacity as alpha, all
 *    others 0;
 *  - rect holds the left column and the top row in the frame, both negative if the text is larger than the frame, the
 *    width and the height, in pixels.
 *
 * The host owns both buffers and frees them with FFmpeg's av_free() or av_freep(), or passes out again: what data[0]
 * and data[1] point to is freed first. They must therefore be null before the first call. The other members of out are
 * not touched.
 *
 * @param handle  the renderer.
 * @param text  UTF-8, lines separated by "\n"; null counts as "".
 * @param out   receives the bitmap.
 * @param rect  receives four integers.
 * @return 0; -1, with nothing changed, when out or rect is null or the handle has no font; -1, with data[0] and data[1]
 *         freed and null and the subtitle on display as before, when there is no memory for the bitmap, and in frames
 *         of a size in which nothing is drawn (see CreateVideoSubtitle()).
 *
 * Threads: does not wait; not while another thread is in any function on the same handle.
 */
int TextToBmp(void *handle, const char *text, AVPicture *out, int *rect);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
