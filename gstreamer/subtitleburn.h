/**
 * @file subtitleburn.h
 * The GStreamer element `subtitleburn`: burns the subtitles of a file into video frames, in place and in the format
 * that the decoder made.
 *
 *     gst-launch-1.0 filesrc location=film.mkv ! decodebin ! subtitleburn location=film.srt ! autovideosink
 *
 * Caps are video/x-raw in system memory, of any size, in every format of libsubtitleframe.h that GStreamer has: GRAY8;
 * I420, YV12, Y42B, Y444 and A420; NV12, NV21 and NV16; YUY2 and UYVY; I420, I422 and Y444 of 10 and 12 bits; P010;
 * GBR, RGBP, BGRP and GBR of 10 bits; RGB, BGR and the eight orders of these with alpha or padding. Formats of more
 * than 8 bits are in the byte order of the machine. Format and size may change in the middle of a stream. A buffer has
 * a whole frame: interlace-mode "fields" and "alternate" are refused.
 *
 * A frame's matrix, range, primaries, transfer, chroma site and interlacing are taken from its caps, or are GStreamer's
 * defaults if the caps leave them open. In interlace-mode "mixed" the buffer's flags say whether it is interlaced. If a
 * buffer has a crop meta, only the area that it leaves is drawn into.
 *
 * The subtitle that is drawn is the one that is due at the frame's stream time, rounded to the nearest millisecond.
 * That is the position in the film, also after seeking. A frame without a time passes unchanged. Frames into which
 * nothing is drawn stay in their buffers, even in shared ones; to draw into a shared buffer, the element copies it.
 * Without a file the element is in passthrough mode and does not use the library.
 *
 * Properties may be set at any time and apply from the next frame on. libsubtitle.h and libsubtitleframe.h document
 * them, at the setter that is named here. Type, range and default are in parentheses.
 *
 *  - location (string, none): SetSubtitleFile(), a file name in the encoding of the file system. Null or "" is no file.
 *    Setting it reads the file again.
 *  - track (int, 0 or more, 0): the track of SetSubtitleFile()
 *  - alpha (int, 0 to 255, 255): SetSubtitleAlpah()
 *  - pos (int, 0 to 100, 85): SetSubtitlePos()
 *  - font-family (string, none), font-size (int, 0 or more, 0), bold, italic (boolean, FALSE): SetSubtitleFontParam(),
 *    the family in UTF-8. Null or "" is the default font's family; size 0 is a 14th of the frame's height.
 *  - font-color (uint, 0 to 0xFFFFFF, 0xFFFFFF): SetSubtitleFontColor(), as 0xRRGGBB
 *  - outline-color (uint, 0 to 0xFFFFFF, 0x0A0A0A): SetSubtitleOutlineColor(), as 0xRRGGBB
 *  - white-level (double, 1 to 10000, 203): SetSubtitleBurnerWhite(), in cd/m2
 *  - look (exact or natural, exact): SetSubtitleBurnerLook()
 *  - outline-width (double, 0 to 20, 2): SetSubtitleBurnerOutline()
 *  - orientation (GstVideoOrientationMethod, auto): how the picture is turned after this element, so that text is
 *    upright when it is shown; the frame is not turned. "auto" uses the stream's image-orientation tag, "identity" is
 *    upright.
 *
 * Anything but a regular file, a file that cannot be read or that the library refuses, and a file without the track
 * cause a warning on the bus (GST_RESOURCE_ERROR_READ) when the property is set or the element starts. Frames pass
 * without subtitles.
 *
 * The elements of a process keep the threading rules of libsubtitle.h among themselves. A host that also calls the
 * library itself must not do so at the same time as they create or destroy a handle. They may do that at any time while
 * their pipeline runs or changes its state.
 */
#pragma once

#include <gst/video/gstvideofilter.h>

G_BEGIN_DECLS

#define SUBTITLE_TYPE_BURN (subtitle_burn_get_type())
G_DECLARE_FINAL_TYPE(SubtitleBurn, subtitle_burn, SUBTITLE, BURN, GstVideoFilter)

GST_ELEMENT_REGISTER_DECLARE(subtitleburn)

G_END_DECLS
