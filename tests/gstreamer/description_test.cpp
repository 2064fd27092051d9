// The description of a frame in caps, tags and metas reaches the library.
#include "formattest.h"

#include <algorithm>
#include <map>

namespace
{

const std::string Red = "font-color=0xE03010 ";

class DescriptionTest : public FormatTest
{
protected:
    /** What the library draws, in red. Expects a result different from those of all descriptions passed before. */
    std::string Distinct(const RawFrame &frame, const Change &change)
    {
        const std::string strBurnt = Burnt(frame, change, SetRed);
        EXPECT_TRUE(m_mapSeen.insert({strBurnt, true}).second) << "the descriptions make no difference";
        return strBurnt;
    }

    static void SetRed(void *pHandle, void * /*burner*/) { SetSubtitleFontColor(pHandle, 0xE0, 0x30, 0x10); }

    Element m_element{Red + "location=" + m_strSubtitles};

private:
    std::map<std::string, bool> m_mapSeen;
};

std::string Colorimetry(GstVideoColorRange range, GstVideoColorMatrix matrix, GstVideoTransferFunction transfer,
                        GstVideoColorPrimaries primaries)
{
    const GstVideoColorimetry colorimetry = {range, matrix, transfer, primaries};
    gchar *pText = gst_video_colorimetry_to_string(&colorimetry);
    const std::string strText = std::string(",chroma-site=mpeg2,colorimetry=") + pText;
    g_free(pText);
    return strText;
}

} // namespace

TEST_F(DescriptionTest, MatrixAndRange)
{
    struct Case {
        const char *pColorimetry;
        int nMatrix;
        int nRange;
    };
    for (const Case &n :
         {Case{"bt601", AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG}, Case{"bt709", AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
          Case{"smpte240m", AVCOL_SPC_SMPTE240M, AVCOL_RANGE_MPEG},
          Case{"bt2020", AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG}, Case{"2:2:5:1", AVCOL_SPC_FCC, AVCOL_RANGE_MPEG},
          Case{"1:4:0:0", AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG}, Case{"1:3:5:1", AVCOL_SPC_BT709, AVCOL_RANGE_JPEG}}) {
        SCOPED_TRACE(n.pColorimetry);
        const RawFrame frame({"Y444_12LE", "yuv444p12le"}, OddSize, std::string(",colorimetry=") + n.pColorimetry);
        const std::string strExpected = Distinct(frame, [&](SubtitleFrame &record) {
            record.colorspace = n.nMatrix;
            record.color_range = n.nRange;
        });
        EXPECT_TRUE(Pushed(m_element, frame) == strExpected);
    }
}

TEST_F(DescriptionTest, WhatCapsLeaveOpenIsAsGStreamerTakesIt)
{
    const auto expect = [this](const Size &size, int nMatrix, int nLocation) {
        const RawFrame frame({"I420", "yuv420p"}, size);
        EXPECT_TRUE(Pushed(m_element, frame) == Distinct(frame, [&](SubtitleFrame &record) {
                        record.colorspace = nMatrix;
                        record.color_range = AVCOL_RANGE_MPEG;
                        record.chroma_location = nLocation;
                    }));
    };
    expect({1282, 576}, AVCOL_SPC_SMPTE170M, AVCHROMA_LOC_CENTER);
    expect({322, 578}, AVCOL_SPC_BT709, AVCHROMA_LOC_LEFT);
    const RawFrame grey({"GRAY8", "gray"}, OddSize);
    EXPECT_TRUE(Pushed(m_element, grey) ==
                Distinct(grey, [](SubtitleFrame &record) { record.colorspace = AVCOL_SPC_SMPTE170M; }));
    const RawFrame limited({"GRAY8", "gray"}, OddSize, ",colorimetry=2:4:0:0");
    EXPECT_TRUE(Pushed(m_element, limited) == Distinct(limited, [](SubtitleFrame &record) {
                    record.colorspace = AVCOL_SPC_SMPTE170M;
                    record.color_range = AVCOL_RANGE_MPEG;
                }));
}

TEST_F(DescriptionTest, ChromaSite)
{
    const std::map<std::string, int> mapSites = {{"jpeg", AVCHROMA_LOC_CENTER},
                                                 {"mpeg2", AVCHROMA_LOC_LEFT},
                                                 {"cosited", AVCHROMA_LOC_TOPLEFT},
                                                 {"v-cosited", AVCHROMA_LOC_TOP}};
    const auto describe = [](int nLocation) {
        return [=](SubtitleFrame &record) {
            record.colorspace = AVCOL_SPC_SMPTE170M;
            record.chroma_location = nLocation;
        };
    };
    for (const auto &[strSite, nLocation] : mapSites) {
        const RawFrame frame({"NV12", "nv12"}, OddSize, ",colorimetry=bt601,chroma-site=" + strSite);
        EXPECT_TRUE(Pushed(m_element, frame) == Distinct(frame, describe(nLocation))) << strSite;
    }
    const RawFrame frame({"NV12", "nv12"}, OddSize, ",colorimetry=bt601,chroma-site=dv");
    EXPECT_TRUE(Pushed(m_element, frame) == Burnt(frame, describe(AVCHROMA_LOC_TOPLEFT), SetRed));
}

TEST_F(DescriptionTest, HighDynamicRange)
{
    struct Case {
        GstVideoTransferFunction transfer;
        GstVideoColorPrimaries primaries;
        int nTransfer;
        int nPrimaries;
    };
    for (const Case &n :
         {Case{GST_VIDEO_TRANSFER_SMPTE2084, GST_VIDEO_COLOR_PRIMARIES_BT2020, AVCOL_TRC_SMPTE2084, AVCOL_PRI_BT2020},
          Case{GST_VIDEO_TRANSFER_SMPTE2084, GST_VIDEO_COLOR_PRIMARIES_SMPTEEG432, AVCOL_TRC_SMPTE2084,
               AVCOL_PRI_SMPTE432},
          Case{GST_VIDEO_TRANSFER_ARIB_STD_B67, GST_VIDEO_COLOR_PRIMARIES_BT2020, AVCOL_TRC_ARIB_STD_B67,
               AVCOL_PRI_BT2020},
          Case{GST_VIDEO_TRANSFER_BT2020_10, GST_VIDEO_COLOR_PRIMARIES_BT2020, AVCOL_TRC_BT2020_10,
               AVCOL_PRI_BT2020}}) {
        SCOPED_TRACE(n.transfer);
        const RawFrame frame(
            {"P010_10LE", "p010le"}, OddSize,
            Colorimetry(GST_VIDEO_COLOR_RANGE_16_235, GST_VIDEO_COLOR_MATRIX_BT2020, n.transfer, n.primaries));
        const auto describe = [&](SubtitleFrame &record) {
            record.colorspace = AVCOL_SPC_BT2020_NCL;
            record.color_range = AVCOL_RANGE_MPEG;
            record.color_trc = n.nTransfer;
            record.color_primaries = n.nPrimaries;
            record.chroma_location = AVCHROMA_LOC_LEFT;
        };
        m_element.Set("white-level", "203");
        const std::string strExpected = Distinct(frame, describe);
        EXPECT_TRUE(Pushed(m_element, frame) == strExpected);
        m_element.Set("white-level", "400");
        const std::string strBright = Burnt(frame, describe, [](void *pHandle, void *pBurner) {
            SetRed(pHandle, pBurner);
            SetSubtitleBurnerWhite(pBurner, 400);
        });
        EXPECT_EQ(strBright == strExpected, n.nTransfer == AVCOL_TRC_BT2020_10);
        EXPECT_TRUE(Pushed(m_element, frame) == strBright);
    }
}

TEST_F(DescriptionTest, Interlacing)
{
    const auto frameOf = [](const char *pMode) {
        return RawFrame({"I420", "yuv420p"}, OddSize,
                        std::string(",colorimetry=bt601,chroma-site=mpeg2,interlace-mode=") + pMode);
    };
    const auto describe = [](int nInterlaced) {
        return [=](SubtitleFrame &record) {
            record.colorspace = AVCOL_SPC_SMPTE170M;
            record.interlaced = nInterlaced;
        };
    };
    const std::string strFields = Distinct(frameOf("interleaved"), describe(1));
    EXPECT_TRUE(Pushed(m_element, frameOf("interleaved")) == strFields);
    EXPECT_TRUE(Pushed(m_element, frameOf("progressive")) == Distinct(frameOf("progressive"), describe(0)));
    // In mixed mode each buffer says it. The layout of mixed frames of odd size differs from that of progressive ones.
    const RawFrame mixed = frameOf("mixed");
    EXPECT_TRUE(Pushed(m_element, mixed) == Distinct(mixed, describe(0)));
    GstBuffer *pBuffer = gst_buffer_new_memdup(mixed.Bytes().data(), mixed.Bytes().size());
    GST_BUFFER_PTS(pBuffer) = 1500 * GST_MSECOND;
    GST_BUFFER_FLAG_SET(pBuffer, GST_VIDEO_BUFFER_FLAG_INTERLACED);
    GstBuffer *pOutput = m_element.PushBuffer(pBuffer);
    ASSERT_NE(pOutput, nullptr);
    EXPECT_TRUE(Bytes(pOutput) == strFields);
    gst_buffer_unref(pOutput);
    // Buffers with single fields are refused.
    EXPECT_FALSE(m_element.Accepts("video/x-raw(format:Interlaced),format=I420,width=322,height=180,"
                                   "interlace-mode=alternate"));
    EXPECT_EQ(Pushed(m_element, frameOf("fields")), "");
    EXPECT_EQ(m_element.LastFlow(), GST_FLOW_NOT_NEGOTIATED);
}

TEST_F(DescriptionTest, Orientation)
{
    const std::vector<std::pair<const char *, int>> listTags = {
        {"rotate-90", SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED},
        {"rotate-180", SUBTITLE_ORIENTATION_MIRRORED | SUBTITLE_ORIENTATION_UPSIDE_DOWN},
        {"rotate-270", SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_UPSIDE_DOWN},
        {"flip-rotate-0", SUBTITLE_ORIENTATION_MIRRORED},
        {"flip-rotate-90",
         SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED | SUBTITLE_ORIENTATION_UPSIDE_DOWN},
        {"flip-rotate-180", SUBTITLE_ORIENTATION_UPSIDE_DOWN},
        {"flip-rotate-270", SUBTITLE_ORIENTATION_TRANSPOSED},
        {"rotate-0", SUBTITLE_ORIENTATION_UPRIGHT}};
    const RawFrame frame({"Y42B", "yuv422p"}, OddSize, ",colorimetry=bt601,chroma-site=mpeg2");
    for (const auto &[pTag, nOrientation] : listTags) {
        SCOPED_TRACE(pTag);
        m_element.SetOrientation(pTag);
        EXPECT_TRUE(Pushed(m_element, frame) == Distinct(frame, [orientation = nOrientation](SubtitleFrame &record) {
                        record.colorspace = AVCOL_SPC_SMPTE170M;
                        record.orientation = orientation;
                    }));
    }
    // The property takes precedence over tags.
    m_element.SetOrientation("rotate-90");
    m_element.Set("orientation", "180");
    EXPECT_TRUE(Pushed(m_element, frame) == Burnt(
                                                frame,
                                                [](SubtitleFrame &record) {
                                                    record.colorspace = AVCOL_SPC_SMPTE170M;
                                                    record.orientation = SUBTITLE_ORIENTATION_MIRRORED |
                                                                         SUBTITLE_ORIENTATION_UPSIDE_DOWN;
                                                },
                                                SetRed));
    m_element.Set("orientation", "auto");
    m_element.SetOrientation("rotate-0");
    // A new stream starts without an orientation.
    const std::string strUpright = Pushed(m_element, frame);
    m_element.SetOrientation("rotate-90");
    EXPECT_FALSE(Pushed(m_element, frame) == strUpright);
    m_element.StartStream();
    EXPECT_TRUE(Pushed(m_element, frame) == strUpright);
}

TEST_F(DescriptionTest, WhatIsCroppedAwayIsLeftAlone)
{
    constexpr Size Shown = {OddSize.nWidth - 16, OddSize.nHeight - 9};
    for (const char *pFormat : {"I420", "YUY2", "NV12", "RGB"}) {
        const auto format = std::find_if(Formats.begin(), Formats.end(),
                                         [&](const Format &other) { return other.pName == std::string(pFormat); });
        const bool bColumns = pFormat != std::string("RGB");
        const bool bRows = pFormat[0] == 'I' || pFormat[0] == 'N';
        SCOPED_TRACE(pFormat);
        RawFrame frame(*format, OddSize, ",colorimetry=bt601,chroma-site=mpeg2");
        // A crop that starts inside a chroma sample includes the whole sample.
        for (const int nOff : {0, 1}) {
            const int x = 6 + (bColumns ? 0 : nOff);
            const int y = 4 + (bRows ? 0 : nOff);
            const std::string strExpected = Burnt(frame, [&](SubtitleFrame &record) {
                const int bytes = pFormat == std::string("YUY2") ? 2 : pFormat == std::string("RGB") ? 3 : 1;
                record.colorspace = AVCOL_SPC_SMPTE170M;
                record.data[0] += static_cast<std::ptrdiff_t>(y) * record.linesize[0] + x * bytes;
                for (int n = 1; n < 3; ++n)
                    record.data[n] += y / 2 * record.linesize[n] + (pFormat[0] == 'N' ? x : x / 2);
                record.width = 6 + nOff + Shown.nWidth - x;
                record.height = 4 + nOff + Shown.nHeight - y;
            });
            Element element("location=" + m_strSubtitles);
            element.SetCaps(RawFrame(*format, Shown, ",colorimetry=bt601,chroma-site=mpeg2").Caps());
            GstBuffer *pBuffer = frame.NewBuffer(1500 * GST_MSECOND);
            GstVideoCropMeta *pCrop = gst_buffer_add_video_crop_meta(pBuffer);
            pCrop->x = 6 + nOff;
            pCrop->y = 4 + nOff;
            pCrop->width = Shown.nWidth;
            pCrop->height = Shown.nHeight;
            GstBuffer *pOutput = element.PushBuffer(pBuffer);
            ASSERT_NE(pOutput, nullptr);
            EXPECT_TRUE(strExpected != frame.Bytes());
            EXPECT_TRUE(Bytes(pOutput) == strExpected);
            gst_buffer_unref(pOutput);
        }
    }
}
