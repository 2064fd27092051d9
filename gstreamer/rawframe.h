#pragma once

#include <gst/video/video.h>
#include <libsubtitleframe.h>

/** Caps of the frames that the library draws into, best format first; to be unreferenced. */
GstCaps *RawFrameCaps(void);

/** The number by which the library knows a format; -1 for any that the caps do not have. */
gint RawFrameFormat(GstVideoFormat format);

/** SUBTITLE_ORIENTATION_... of a picture that is turned by a GstVideoOrientationMethod when it is shown. */
gint RawFrameOrientation(gint nMethod);

/**
 * The part of a buffer's frame that is shown, in pixels: what its crop meta says, widened to whole chroma samples at the
 * left and at the top. Without one, all of it.
 */
GstVideoRectangle RawFrameArea(GstBuffer *pBuffer, const GstVideoInfo *pInfo);

/**
 * What the library has to know of a mapped frame.
 *
 * @param nFormat  from RawFrameFormat().
 * @return the description, with pointers into the frame.
 */
SubtitleFrame RawFrameDescribe(const GstVideoFrame *pFrame, gint nFormat, gint nOrientation);
