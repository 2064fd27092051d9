#pragma once

#include <gst/video/video.h>
#include <libsubtitleframe.h>

/** Caps of the frames that the library can draw into, best format first. The caller unreferences them. */
GstCaps *RawFrameCaps(void);

/** The library's number of a format; -1 for one that is not in the caps. */
gint RawFrameFormat(GstVideoFormat format);

/** SUBTITLE_ORIENTATION_... of frames to which a GstVideoOrientationMethod is applied when they are shown. */
gint RawFrameOrientation(gint nMethod);

/**
 * The part of a buffer's frame that is shown, in pixels: the area of its crop meta, extended at the left and at the top
 * to whole chroma samples. Without a crop meta, the whole frame.
 */
GstVideoRectangle RawFrameArea(GstBuffer *pBuffer, const GstVideoInfo *pInfo);

/**
 * Describes a mapped frame to the library.
 *
 * @param nFormat  from RawFrameFormat().
 * @return the description, with pointers into the frame.
 */
SubtitleFrame RawFrameDescribe(const GstVideoFrame *pFrame, gint nFormat, gint nOrientation);
