#include "formattest.h"

const std::vector<Format> Formats = {{"I420", "yuv420p"},
                                     {"YV12", "yuv420p", {0, 2, 1, 3}},
                                     {"Y42B", "yuv422p"},
                                     {"Y444", "yuv444p"},
                                     {"A420", "yuva420p"},
                                     {"NV12", "nv12"},
                                     {"NV21", "nv21"},
                                     {"NV16", "nv16"},
                                     {"YUY2", "yuyv422"},
                                     {"UYVY", "uyvy422"},
                                     {"I420_10LE", "yuv420p10le"},
                                     {"I422_10LE", "yuv422p10le"},
                                     {"Y444_10LE", "yuv444p10le"},
                                     {"I420_12LE", "yuv420p12le"},
                                     {"I422_12LE", "yuv422p12le"},
                                     {"Y444_12LE", "yuv444p12le"},
                                     {"P010_10LE", "p010le"},
                                     {"GRAY8", "gray"},
                                     {"GBR", "gbrp"},
                                     {"RGBP", "gbrp", {1, 2, 0, 3}},
                                     {"BGRP", "gbrp", {1, 0, 2, 3}},
                                     {"GBR_10LE", "gbrp10le"},
                                     {"RGB", "rgb24"},
                                     {"BGR", "bgr24"},
                                     {"RGBA", "rgba"},
                                     {"BGRA", "bgra"},
                                     {"ARGB", "argb"},
                                     {"ABGR", "abgr"},
                                     {"RGBx", "rgb0"},
                                     {"BGRx", "bgr0"},
                                     {"xRGB", "0rgb"},
                                     {"xBGR", "0bgr"}};

RawFrame::RawFrame(const Format &format, const Size &size, const std::string &strMore) :
    m_format(format),
    m_pCaps(gst_caps_from_string(("video/x-raw,format=" + std::string(format.pName) + ",width=" +
                                  std::to_string(size.nWidth) + ",height=" + std::to_string(size.nHeight) + strMore)
                                     .c_str()),
            gst_caps_unref)
{
    EXPECT_TRUE(gst_video_info_from_caps(&m_info, m_pCaps.get())) << format.pName << strMore;
    m_strBytes.resize(GST_VIDEO_INFO_SIZE(&m_info));
    const int nDepth = GST_VIDEO_INFO_COMP_DEPTH(&m_info, 0);
    // Values that text and outline do not have. Samples of 9 to 15 bits in the low bits must not exceed their depth.
    const int nHighBits =
        nDepth > 8 && GST_VIDEO_FORMAT_INFO_SHIFT(m_info.finfo, 0) == 0 ? (1 << (nDepth - 8)) - 1 : 255;
    for (std::size_t n = 0; n < m_strBytes.size(); ++n)
        m_strBytes[n] = static_cast<char>((60 + n % 120) & (n % 2 == 1 ? nHighBits : 255));
}

GstBuffer *RawFrame::NewBuffer(GstClockTime nTime) const
{
    GstVideoInfo info = m_info;
    GstBuffer *pBuffer = gst_buffer_new_memdup(m_strBytes.data(), m_strBytes.size());
    GST_BUFFER_PTS(pBuffer) = nTime;
    gst_buffer_add_video_meta_full(pBuffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_INFO_FORMAT(&info),
                                   GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info),
                                   GST_VIDEO_INFO_N_PLANES(&info), info.offset, info.stride);
    return pBuffer;
}

SubtitleFrame RawFrame::Description()
{
    SubtitleFrame frame = {};
    for (unsigned n = 0; n < GST_VIDEO_INFO_N_PLANES(&m_info); ++n) {
        const int nPlane = m_format.planes[n];
        frame.data[n] = reinterpret_cast<std::uint8_t *>(&m_strBytes[GST_VIDEO_INFO_PLANE_OFFSET(&m_info, nPlane)]);
        frame.linesize[n] = GST_VIDEO_INFO_PLANE_STRIDE(&m_info, nPlane);
    }
    frame.width = GST_VIDEO_INFO_WIDTH(&m_info);
    frame.height = GST_VIDEO_INFO_HEIGHT(&m_info);
    frame.format = SubtitlePixelFormat(m_format.pFfmpegName);
    return frame;
}

std::string FormatTest::Burnt(RawFrame frame, const Change &change,
                              const std::function<void(void *, void *)> &calls) const
{
    SubtitleFrame description = frame.Description();
    if (change)
        change(description);
    const bool bTransposed = description.orientation & SUBTITLE_ORIENTATION_TRANSPOSED;
    void *pHandle = CreateVideoSubtitle(bTransposed ? description.height : description.width,
                                        bTransposed ? description.width : description.height);
    void *pBurner = CreateSubtitleBurner(pHandle);
    if (calls)
        calls(pHandle, pBurner);
    EXPECT_EQ(SetSubtitleFile(pHandle, m_strSubtitles.c_str(), 0), 0);
    EXPECT_EQ(SetSubtitleTimeStamp(pHandle, 1500), 0);
    EXPECT_EQ(BurnSubtitle(pBurner, &description), 0);
    DestroySubtitleBurner(pBurner);
    DestroyVideoSubtitle(pHandle);
    return frame.Bytes();
}

std::string FormatTest::Pushed(const Element &element, const RawFrame &frame)
{
    element.SetCaps(frame.Caps());
    return element.Push(frame.Bytes(), 1500 * GST_MSECOND);
}
