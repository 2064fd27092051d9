// The formats that the element takes, and what the library draws into frames of each.
#include "formattest.h"

#include <set>

namespace
{

constexpr Size EvenSize = {320, 180};

struct UnrefSample {
    void operator()(GstSample *pSample) const { gst_sample_unref(pSample); }
};
using Sample = std::unique_ptr<GstSample, UnrefSample>;

std::string CapsOf(const char *pFormat, const Size &size)
{
    return "video/x-raw,format=" + std::string(pFormat) + ",width=" + std::to_string(size.nWidth) +
           ",height=" + std::to_string(size.nHeight) + ",framerate=1/1,pixel-aspect-ratio=1/1";
}

/** A sample converted by GStreamer. */
Sample Converted(const Sample &pSample, const char *pFormat, const Size &size)
{
    GstCaps *pCaps = gst_caps_from_string(CapsOf(pFormat, size).c_str());
    GError *pError = nullptr;
    Sample pConverted(gst_video_convert_sample(pSample.get(), pCaps, 10 * GST_SECOND, &pError));
    gst_caps_unref(pCaps);
    if (!pConverted) {
        ADD_FAILURE() << pFormat << ": " << pError->message;
        g_error_free(pError);
    }
    return pConverted;
}

Sample GreyFrame(const Size &size)
{
    const std::string strGrey(size.Bytes(), '\x80');
    GstBuffer *pBuffer = gst_buffer_new_memdup(strGrey.data(), strGrey.size());
    GstCaps *pCaps = gst_caps_from_string(CapsOf("RGB", size).c_str());
    Sample pSample(gst_sample_new(pBuffer, pCaps, nullptr, nullptr));
    gst_caps_unref(pCaps);
    gst_buffer_unref(pBuffer);
    return pSample;
}

/** Visits the pixels of a burnt RGB frame whose neighbours, 3 pixels in each direction, all have the same colour. */
template <typename Visit>
void VisitEvenPixels(const std::string &strFrame, const Size &size, Visit visit)
{
    const auto at = [&](int x, int y) {
        return strFrame.substr(static_cast<std::size_t>(y) * size.Stride() + 3 * x, 3);
    };
    for (int y = 3; y < size.nHeight - 3; ++y) {
        for (int x = 3; x < size.nWidth - 3; ++x) {
            const std::string strPixel = at(x, y);
            bool bEven = true;
            for (int n = 0; bEven && n < 49; ++n)
                bEven = at(x - 3 + n % 7, y - 3 + n / 7) == strPixel;
            if (bEven)
                visit(strPixel, x, y);
        }
    }
}

} // namespace

TEST_F(FormatTest, CapsHaveEveryFormatOfTheLibrary)
{
    const Element element("");
    std::set<std::string> setExpected;
    for (const Format &format : Formats)
        setExpected.insert(format.pName);
    for (const char *pPad : {"sink", "src"}) {
        GstCaps *pCaps = gst_pad_template_get_caps(gst_element_get_pad_template(element.Get(), pPad));
        const GValue *pList = gst_structure_get_value(gst_caps_get_structure(pCaps, 0), "format");
        std::set<std::string> setFormats;
        for (guint n = 0; n < gst_value_list_get_size(pList); ++n)
            setFormats.insert(g_value_get_string(gst_value_list_get_value(pList, n)));
        EXPECT_EQ(setFormats, setExpected) << pPad;
        EXPECT_EQ(gst_caps_get_size(pCaps), 1U);
        gst_caps_unref(pCaps);
    }
    for (const char *pOther : {"AYUV", "YVYU", "VYUY", "NV61", "GRAY16_LE", "GRAY10_LE32", "BGR10A2_LE", "r210", "v210",
                               "I420_10BE", "P010_10BE", "P012_LE", "A420_10LE", "GBRA", "RGB16", "ARGB64"})
        EXPECT_FALSE(element.Accepts(CapsOf(pOther, EvenSize))) << pOther;
    EXPECT_TRUE(element.Accepts(CapsOf("NV12", EvenSize)));
}

TEST_F(FormatTest, EveryFormatIsBurntAsTheLibraryDrawsIt)
{
    const Element element("font-color=0xF02010 location=" + m_strSubtitles);
    for (const Format &format : Formats) {
        for (const Size &size : {OddSize, EvenSize, Size{64, 1}}) {
            const RawFrame frame(format, size, ",colorimetry=bt601,chroma-site=mpeg2");
            for (const int nAlpha : {255, 100}) {
                SCOPED_TRACE(format.pName + (" with " + std::to_string(nAlpha)));
                element.Set("alpha", std::to_string(nAlpha));
                const std::string strExpected = Burnt(
                    frame,
                    [](SubtitleFrame &record) {
                        record.colorspace = AVCOL_SPC_SMPTE170M;
                        record.color_range = AVCOL_RANGE_MPEG;
                        record.chroma_location = AVCHROMA_LOC_LEFT;
                    },
                    [&](void *pHandle, void *) {
                        SetSubtitleFontColor(pHandle, 0xF0, 0x20, 0x10);
                        SetSubtitleAlpah(pHandle, nAlpha);
                    });
                EXPECT_EQ(strExpected == frame.Bytes(), size.nHeight == 1);
                EXPECT_TRUE(Pushed(element, frame) == strExpected);
            }
        }
    }
    EXPECT_EQ(element.Message(), "");
}

// The test above would not notice planes or channels swapped in element and library alike; GStreamer's converter does.
TEST_F(FormatTest, EveryFormatShowsTheColours)
{
    const std::string strBlocks = m_folder.Write("blocks.srt", "1\n00:00:01,000 --> 00:00:02,000\n████\n\n");
    const std::string strProperties = "font-size=40 font-color=0xE04010 outline-color=0x2050F0 location=" + strBlocks;
    const Sample pGrey = GreyFrame(EvenSize);
    const std::string strReference =
        Element(strProperties, EvenSize).Push(Bytes(gst_sample_get_buffer(pGrey.get())), 1500 * GST_MSECOND);
    for (const Format &format : Formats) {
        SCOPED_TRACE(format.pName);
        const Sample pPlain = Converted(pGrey, format.pName, EvenSize);
        ASSERT_TRUE(pPlain);
        const Element element(strProperties, EvenSize);
        element.SetCaps(gst_sample_get_caps(pPlain.get()));
        GstBuffer *pBuffer = gst_buffer_copy(gst_sample_get_buffer(pPlain.get()));
        GST_BUFFER_PTS(pBuffer) = 1500 * GST_MSECOND;
        GstBuffer *pOutput = element.PushBuffer(pBuffer);
        ASSERT_NE(pOutput, nullptr);
        const Sample pBurnt(gst_sample_new(pOutput, gst_sample_get_caps(pPlain.get()), nullptr, nullptr));
        gst_buffer_unref(pOutput);
        const Sample pRgb = Converted(pBurnt, "RGB", EvenSize);
        ASSERT_TRUE(pRgb);
        const std::string strRgb = Bytes(gst_sample_get_buffer(pRgb.get()));
        const bool bGrey = format.pName == std::string("GRAY8");
        int nWrong = 0;
        int nText = 0;
        VisitEvenPixels(strReference, EvenSize, [&](const std::string &strPixel, int x, int y) {
            const auto channel = [](const std::string &strBytes, std::size_t n) {
                return static_cast<int>(static_cast<unsigned char>(strBytes[n]));
            };
            nText += strPixel[0] != strPixel[1];
            const double luma =
                0.299 * channel(strPixel, 0) + 0.587 * channel(strPixel, 1) + 0.114 * channel(strPixel, 2);
            for (std::size_t n = 0; n < 3; ++n) {
                const double expected = bGrey ? luma : channel(strPixel, n);
                const std::size_t nFrom = static_cast<std::size_t>(y) * EvenSize.Stride() + 3 * x;
                nWrong += std::abs(channel(strRgb, nFrom + n) - expected) > 5;
            }
        });
        EXPECT_EQ(nWrong, 0);
        EXPECT_GT(nText, 500);
    }
}

TEST_F(FormatTest, RowsMayBeAtAnyDistanceAndPlanesAnywhere)
{
    const Format &format = Formats.front();
    RawFrame frame(format, OddSize);
    const std::string strBurnt = Burnt(frame, [](SubtitleFrame &record) {
        record.colorspace = AVCOL_SPC_SMPTE170M;
        record.chroma_location = AVCHROMA_LOC_CENTER;
    });
    // The planes in reverse order, with gaps.
    gsize offsets[GST_VIDEO_MAX_PLANES] = {60013, 30011, 5};
    gint strides[GST_VIDEO_MAX_PLANES] = {341, 177, 211};
    const SubtitleFrame record = frame.Description();
    std::string strWide(60013 + 341 * OddSize.nHeight, '\x55');
    std::string strExpected = strWide;
    for (int nPlane = 0; nPlane < 3; ++nPlane) {
        const int nColumns = nPlane == 0 ? OddSize.nWidth : (OddSize.nWidth + 1) / 2;
        const int nRows = nPlane == 0 ? OddSize.nHeight : (OddSize.nHeight + 1) / 2;
        const std::size_t nPlaneOffset = record.data[nPlane] - record.data[0];
        for (int y = 0; y < nRows; ++y) {
            const std::size_t nFrom = nPlaneOffset + static_cast<std::size_t>(y) * record.linesize[nPlane];
            const std::size_t nTo = offsets[nPlane] + static_cast<std::size_t>(y) * strides[nPlane];
            strWide.replace(nTo, nColumns, frame.Bytes(), nFrom, nColumns);
            strExpected.replace(nTo, nColumns, strBurnt, nFrom, nColumns);
        }
    }
    const Element element("location=" + m_strSubtitles);
    element.SetCaps(frame.Caps());
    GstBuffer *pBuffer = gst_buffer_new_memdup(strWide.data(), strWide.size());
    GST_BUFFER_PTS(pBuffer) = 1500 * GST_MSECOND;
    gst_buffer_add_video_meta_full(pBuffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_I420, OddSize.nWidth,
                                   OddSize.nHeight, 3, offsets, strides);
    GstBuffer *pOutput = element.PushBuffer(pBuffer);
    ASSERT_NE(pOutput, nullptr);
    EXPECT_TRUE(strExpected != strWide);
    EXPECT_TRUE(Bytes(pOutput) == strExpected);
    gst_buffer_unref(pOutput);
}
