/**
 * @file subtitleburn.h
 * The GStreamer element `subtitleburn`: burns the subtitles of a file into packed RGB frames, in place.
 *
 *     gst-launch-1.0 filesrc location=film.mkv ! decodebin ! videoconvert ! subtitleburn location=film.srt ! videoconvert ! …
 *
 * Caps are video/x-raw, format RGB, of any size; a new size in the middle of a stream is taken. What shows is due at the
 * stream time of a frame, to the nearest millisecond: the film's own clock, which seeking sets. A frame without a time
 * passes as it is.
 *
 * Properties may be set at any time and count from the next frame on. What each means stands in libsubtitle.h, at the
 * setter that it is for.
 *
 *  - file (string, none): SetSubtitleFile(), a file's name as it is in the file system. Null or "" is no file. Setting it
 *    reads the file anew.
 *  - track (int, 0 or more, 0): its track
 *  - alpha (int, 0 to 255, 255): SetSubtitleAlpah()
 *  - pos (int, 0 to 100, 85): SetSubtitlePos()
 *  - font-family (string, none), font-size (int, 0 or more, 0), bold, italic (boolean, FALSE): SetSubtitleFontParam(),
 *    the family in UTF-8. Null or "" is the default font's family, size 0 a 14th of the frame's height.
 *  - font-color (uint, 0 to 0xFFFFFF, 0xFFFFFF): SetSubtitleFontColor(), as 0xRRGGBB
 *  - outline-color (uint, 0 to 0xFFFFFF, 0x0A0A0A): SetSubtitleOutlineColor(), as 0xRRGGBB
 *
 * A file that is no regular file or cannot be read when the element starts, or that the library refuses before the first
 * frame, is an error, and the element does not start. When that happens later, it is a warning, and the film goes on
 * without subtitles.
 *
 * Elements among themselves see to it that handles are made and destroyed as libsubtitle.h asks. A host that calls the
 * library itself as well has to keep apart from them: they may make and destroy one at any time while their pipeline
 * runs or changes its state.
 */
#pragma once

#include <gst/video/gstvideofilter.h>

G_BEGIN_DECLS

#define SUBTITLE_TYPE_BURN (subtitle_burn_get_type())
G_DECLARE_FINAL_TYPE(SubtitleBurn, subtitle_burn, SUBTITLE, BURN, GstVideoFilter)

GST_ELEMENT_REGISTER_DECLARE(subtitleburn)

G_END_DECLS
