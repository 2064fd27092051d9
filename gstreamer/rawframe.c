#include "rawframe.h"

#if G_BYTE_ORDER == G_LITTLE_ENDIAN
#define NATIVE(format) format##LE
#else
#define NATIVE(format) format##BE
#endif

/* GStreamer's formats with FFmpeg's name of the same layout. Planes may be in another order, see ComponentOfPlane(). */
static const struct {
    GstVideoFormat format;
    const char *pName;
} formats[] = {{GST_VIDEO_FORMAT_I420, "yuv420p"},
               {GST_VIDEO_FORMAT_YV12, "yuv420p"},
               {GST_VIDEO_FORMAT_Y42B, "yuv422p"},
               {GST_VIDEO_FORMAT_Y444, "yuv444p"},
               {GST_VIDEO_FORMAT_A420, "yuva420p"},
               {GST_VIDEO_FORMAT_NV12, "nv12"},
               {GST_VIDEO_FORMAT_NV21, "nv21"},
               {GST_VIDEO_FORMAT_NV16, "nv16"},
               {GST_VIDEO_FORMAT_YUY2, "yuyv422"},
               {GST_VIDEO_FORMAT_UYVY, "uyvy422"},
               {NATIVE(GST_VIDEO_FORMAT_I420_10), "yuv420p10"},
               {NATIVE(GST_VIDEO_FORMAT_I422_10), "yuv422p10"},
               {NATIVE(GST_VIDEO_FORMAT_Y444_10), "yuv444p10"},
               {NATIVE(GST_VIDEO_FORMAT_I420_12), "yuv420p12"},
               {NATIVE(GST_VIDEO_FORMAT_I422_12), "yuv422p12"},
               {NATIVE(GST_VIDEO_FORMAT_Y444_12), "yuv444p12"},
               {NATIVE(GST_VIDEO_FORMAT_P010_10), "p010"},
               {GST_VIDEO_FORMAT_GRAY8, "gray"},
               {GST_VIDEO_FORMAT_GBR, "gbrp"},
               {GST_VIDEO_FORMAT_RGBP, "gbrp"},
               {GST_VIDEO_FORMAT_BGRP, "gbrp"},
               {NATIVE(GST_VIDEO_FORMAT_GBR_10), "gbrp10"},
               {GST_VIDEO_FORMAT_RGB, "rgb24"},
               {GST_VIDEO_FORMAT_BGR, "bgr24"},
               {GST_VIDEO_FORMAT_RGBA, "rgba"},
               {GST_VIDEO_FORMAT_BGRA, "bgra"},
               {GST_VIDEO_FORMAT_ARGB, "argb"},
               {GST_VIDEO_FORMAT_ABGR, "abgr"},
               {GST_VIDEO_FORMAT_RGBx, "rgb0"},
               {GST_VIDEO_FORMAT_BGRx, "bgr0"},
               {GST_VIDEO_FORMAT_xRGB, "0rgb"},
               {GST_VIDEO_FORMAT_xBGR, "0bgr"}};

gint RawFrameFormat(GstVideoFormat format)
{
    for (guint i = 0; i < G_N_ELEMENTS(formats); ++i) {
        if (formats[i].format == format)
            return SubtitlePixelFormat(formats[i].pName);
    }
    return -1;
}

GstCaps *RawFrameCaps(void)
{
    GstVideoFormat listKnown[G_N_ELEMENTS(formats)];
    guint nKnown = 0;
    guint nAll = 0;
    const GstVideoFormat *listAll = gst_video_formats_raw(&nAll);
    for (guint i = 0; i < nAll; ++i) {
        if (RawFrameFormat(listAll[i]) >= 0)
            listKnown[nKnown++] = listAll[i];
    }
    return gst_video_make_raw_caps(listKnown, nKnown);
}

gint RawFrameOrientation(gint nMethod)
{
    switch (nMethod) {
    case GST_VIDEO_ORIENTATION_90R:
        return SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED;
    case GST_VIDEO_ORIENTATION_180:
        return SUBTITLE_ORIENTATION_MIRRORED | SUBTITLE_ORIENTATION_UPSIDE_DOWN;
    case GST_VIDEO_ORIENTATION_90L:
        return SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_UPSIDE_DOWN;
    case GST_VIDEO_ORIENTATION_HORIZ:
        return SUBTITLE_ORIENTATION_MIRRORED;
    case GST_VIDEO_ORIENTATION_VERT:
        return SUBTITLE_ORIENTATION_UPSIDE_DOWN;
    case GST_VIDEO_ORIENTATION_UL_LR:
        return SUBTITLE_ORIENTATION_TRANSPOSED;
    case GST_VIDEO_ORIENTATION_UR_LL:
        return SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED | SUBTITLE_ORIENTATION_UPSIDE_DOWN;
    default:
        return SUBTITLE_ORIENTATION_UPRIGHT;
    }
}

/* In FFmpeg, planes of YUV are in the order of the components, and those of RGB are green, blue, red. */
static guint ComponentOfPlane(const GstVideoFormatInfo *pFormat, guint nPlane)
{
    const gboolean bPlanarRgb = GST_VIDEO_FORMAT_INFO_IS_RGB(pFormat) && GST_VIDEO_FORMAT_INFO_N_PLANES(pFormat) == 3;
    return bPlanarRgb ? (nPlane + 1) % 3 : nPlane;
}

/* The first pixel that shares a chroma sample with this one. */
static gint AlignToChroma(gint nPixel, guint nLog2)
{
    return nPixel >> nLog2 << nLog2;
}

GstVideoRectangle RawFrameArea(GstBuffer *pBuffer, const GstVideoInfo *pInfo)
{
    const GstVideoMeta *pMeta = gst_buffer_get_video_meta(pBuffer);
    GstVideoRectangle area = {0, 0, GST_VIDEO_INFO_WIDTH(pInfo), GST_VIDEO_INFO_HEIGHT(pInfo)};
    if (pMeta) {
        area.w = (gint)pMeta->width;
        area.h = (gint)pMeta->height;
    }
    const GstVideoCropMeta *pCrop = gst_buffer_get_video_crop_meta(pBuffer);
    if (pCrop && pCrop->x < (guint)area.w && pCrop->y < (guint)area.h) {
        const gboolean bChroma = GST_VIDEO_INFO_IS_YUV(pInfo);
        const gint nRight = (gint)MIN((guint64)pCrop->x + pCrop->width, (guint64)area.w);
        const gint nBottom = (gint)MIN((guint64)pCrop->y + pCrop->height, (guint64)area.h);
        area.x = AlignToChroma((gint)pCrop->x, bChroma ? GST_VIDEO_FORMAT_INFO_W_SUB(pInfo->finfo, 1) : 0);
        area.y = AlignToChroma((gint)pCrop->y, bChroma ? GST_VIDEO_FORMAT_INFO_H_SUB(pInfo->finfo, 1) : 0);
        area.w = nRight - area.x;
        area.h = nBottom - area.y;
    }
    return area;
}

/* AVColorRange */
static gint Range(GstVideoColorRange range)
{
    switch (range) {
    case GST_VIDEO_COLOR_RANGE_0_255:
        return 2;
    case GST_VIDEO_COLOR_RANGE_16_235:
        return 1;
    default:
        return 0;
    }
}

/* AVChromaLocation */
static gint ChromaLocation(GstVideoChromaSite site)
{
    enum { Unspecified, Left, Center, TopLeft, Top };
    /* With chroma on alternate lines, as in DV, both components are taken to lie on the first line. */
    switch ((guint)site & ~(guint)GST_VIDEO_CHROMA_SITE_ALT_LINE) {
    case GST_VIDEO_CHROMA_SITE_NONE:
        return Center;
    case GST_VIDEO_CHROMA_SITE_H_COSITED:
        return Left;
    case GST_VIDEO_CHROMA_SITE_V_COSITED:
        return Top;
    case GST_VIDEO_CHROMA_SITE_COSITED:
        return TopLeft;
    default:
        return Unspecified;
    }
}

SubtitleFrame RawFrameDescribe(const GstVideoFrame *pFrame, gint nFormat, gint nOrientation)
{
    const GstVideoFormatInfo *pFormat = pFrame->info.finfo;
    const GstVideoColorimetry *pColors = &pFrame->info.colorimetry;
    const GstVideoRectangle area = RawFrameArea(pFrame->buffer, &pFrame->info);
    /* FFmpeg's numbers of matrices, primaries and transfers are those of ISO/IEC 23091-2. */
    SubtitleFrame frame = {.width = area.w,
                           .height = area.h,
                           .format = nFormat,
                           .colorspace = (int)gst_video_color_matrix_to_iso(pColors->matrix),
                           .color_range = Range(pColors->range),
                           .color_primaries = (int)gst_video_color_primaries_to_iso(pColors->primaries),
                           .color_trc = (int)gst_video_transfer_function_to_iso(pColors->transfer),
                           .chroma_location = ChromaLocation(GST_VIDEO_INFO_CHROMA_SITE(&pFrame->info)),
                           .interlaced = GST_VIDEO_FRAME_IS_INTERLACED(pFrame),
                           .orientation = nOrientation};
    for (guint i = 0; i < GST_VIDEO_FRAME_N_PLANES(pFrame) && i < G_N_ELEMENTS(frame.data); ++i) {
        const guint nComponent = ComponentOfPlane(pFormat, i);
        const guint nPlane = GST_VIDEO_FORMAT_INFO_PLANE(pFormat, nComponent);
        const gint nStride = GST_VIDEO_FRAME_PLANE_STRIDE(pFrame, nPlane);
        const gint nColumn = area.x >> GST_VIDEO_FORMAT_INFO_W_SUB(pFormat, nComponent);
        const gint nRow = area.y >> GST_VIDEO_FORMAT_INFO_H_SUB(pFormat, nComponent);
        frame.data[i] = (guint8 *)GST_VIDEO_FRAME_PLANE_DATA(pFrame, nPlane) + (gssize)nRow * nStride +
                        (gssize)nColumn * GST_VIDEO_FORMAT_INFO_PSTRIDE(pFormat, nComponent);
        frame.linesize[i] = nStride;
    }
    return frame;
}
