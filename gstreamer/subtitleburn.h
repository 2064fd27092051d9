/**
 * @file subtitleburn.h
 * The GStreamer element `subtitleburn`: burns the subtitles of a file into video frames, in place and in the format that
 * the decoder made.
 *
 *     gst-launch-1.0 filesrc location=film.mkv ! decodebin ! subtitleburn location=film.srt ! autovideosink
 *
 * Caps are video/x-raw in system memory, of any size, in every format of libsubtitleframe.h that GStreamer has: GRAY8;
 * I420, YV12, Y42B, Y444 and A420; NV12, NV21 and NV16; YUY2 and UYVY; I420, I422 and Y444 of 10 and 12 bits; P010; GBR,
 * RGBP, BGRP and GBR of 10 bits; RGB, BGR and the eight orders of these with alpha or padding. Those of more than 8 bits
 * in the byte order of the machine. A new format or size in the middle of a stream is taken. A buffer has a whole frame:
 * interlace-mode "fields" and "alternate" are refused.
 *
 * A frame's matrix, range, primaries, transfer, chroma site and interlacing are those of its caps, or what GStreamer
 * takes for them where the caps leave them open; in interlace-mode "mixed" its flags say whether it is interlaced. Where
 * a buffer has a crop meta, only what that leaves is drawn into.
 *
 * What shows is due at the stream time of a frame, to the nearest millisecond: the film's own clock, which seeking sets.
 * A frame without a time passes as it is. Frames into which nothing is drawn stay in their buffers, also in those that
 * others hold; for the rest such a buffer is copied. Without a file the element is in passthrough mode and does not use
 * the library.
 *
 * Properties may be set at any time and count from the next frame on. What each means is documented in libsubtitle.h and
 * libsubtitleframe.h, at the setter that it is for.
 *
 *  - location (string, none): SetSubtitleFile(), a file's name as it is in the file system. Null or "" is no file. Setting
 *    it reads the file anew.
 *  - track (int, 0 or more, 0): its track
 *  - alpha (int, 0 to 255, 255): SetSubtitleAlpah()
 *  - pos (int, 0 to 100, 85): SetSubtitlePos()
 *  - font-family (string, none), font-size (int, 0 or more, 0), bold, italic (boolean, FALSE): SetSubtitleFontParam(),
 *    the family in UTF-8. Null or "" is the default font's family, size 0 a 14th of the frame's height.
 *  - font-color (uint, 0 to 0xFFFFFF, 0xFFFFFF): SetSubtitleFontColor(), as 0xRRGGBB
 *  - outline-color (uint, 0 to 0xFFFFFF, 0x0A0A0A): SetSubtitleOutlineColor(), as 0xRRGGBB
 *  - white-level (double, 1 to 10000, 203): SetSubtitleBurnerWhite(), in cd/m2
 *  - look (exact or natural, exact): SetSubtitleBurnerLook()
 *  - outline-width (double, 0 to 20, 2): SetSubtitleBurnerOutline()
 *  - orientation (GstVideoOrientationMethod, auto): how the picture is turned after this element, so that text is upright
 *    when it is shown; the frame is not turned. "auto" is as the stream's image-orientation tag says, "identity" upright.
 *
 * A file that is no regular file, cannot be read, is refused by the library or does not have the track is a warning on
 * the bus (GST_RESOURCE_ERROR_READ) when it is set or the element starts; frames pass without subtitles.
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
