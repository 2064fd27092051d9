// Compares frames of subburn's output with those that the library burns, byte by byte.
#include "subburntest.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "api/libsubtitle.h"
#include "frames/libsubtitleframe.h"

#include <algorithm>
#include <functional>
#include <ostream>

namespace
{

struct Case {
    const char *pName;
    const char *pPixels;
    const char *pTags;    ///< the clip's tags; its frames have them, since newer FFmpegs ignore an encoder's
    Arguments listInput;  ///< how FFmpeg encodes the clip
    Arguments listOutput; ///< subburn's options
    SubtitleFrame tags;   ///< colour and field tags of its frames

    friend std::ostream &operator<<(std::ostream &stream, const Case &c) { return stream << c.pName; }
};

class ExactTest : public SubburnTest, public testing::WithParamInterface<Case>
{
protected:
    ExactTest()
    {
        SetSubtitleFontParam(m_pHandle, "DejaVu Sans", 14, 0);
        SetSubtitleFontColor(m_pHandle, 255, 200, 0);
        EXPECT_EQ(SetSubtitleFile(m_pHandle, m_strSubtitles.c_str(), 0), 0);
    }
    ~ExactTest() override
    {
        DestroySubtitleBurner(m_pBurner);
        DestroyVideoSubtitle(m_pHandle);
    }

    /** Burns into a frame by the library alone. */
    void BurnFrame(std::string &strFrame, const Case &c, int nMilliseconds)
    {
        SubtitleFrame frame = c.tags;
        frame.width = 322;
        frame.height = 180;
        frame.format = SubtitlePixelFormat(c.pPixels);
        uint8_t *pPlanes[4];
        auto *pBytes = reinterpret_cast<uint8_t *>(strFrame.data());
        ASSERT_EQ(av_image_fill_arrays(pPlanes, frame.linesize, pBytes, static_cast<AVPixelFormat>(frame.format),
                                       frame.width, frame.height, 1),
                  static_cast<int>(strFrame.size()));
        std::copy_n(pPlanes, 4, frame.data);
        SetSubtitleTimeStamp(m_pHandle, nMilliseconds);
        ASSERT_EQ(BurnSubtitle(m_pBurner, &frame), 0);
    }

    void *m_pHandle = CreateVideoSubtitle(322, 180);
    void *m_pBurner = CreateSubtitleBurner(m_pHandle);
};

const Arguments Lossless = {"--codec", "ffv1"};
const Arguments Faint = {"--codec", "ffv1", "--opacity", "128"};
const Arguments LosslessX264 = {"--crf", "0", "--preset", "ultrafast"};

SubtitleFrame Tags(
    AVColorSpace matrix, AVColorRange range,
    const std::function<void(SubtitleFrame &)> &setMore = [](SubtitleFrame &) {})
{
    SubtitleFrame tags = {};
    tags.colorspace = matrix;
    tags.color_range = range;
    setMore(tags);
    return tags;
}

const Arguments ToFfv1 = {"-c:v", "ffv1"};

const Case Cases[] = {
    {"Yuv420", "yuv420p", "colorspace=smpte170m:range=tv", ToFfv1, Lossless,
     Tags(AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG)},
    {"Untagged", "yuv420p", "", ToFfv1, Lossless, Tags(AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED)},
    {"Faint", "yuv420p", "colorspace=bt709:range=tv", ToFfv1, Faint, Tags(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG)},
    {"FullRange422",
     "yuv422p",
     "colorspace=bt709:range=pc",
     {"-c:v", "ffv1", "-color_range", "pc"},
     Lossless,
     Tags(AVCOL_SPC_BT709, AVCOL_RANGE_JPEG)},
    {"Alpha", "yuva420p", "colorspace=bt709:range=tv", ToFfv1, Faint, Tags(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG)},
    {"Rgb", "bgra", "", ToFfv1, Faint, Tags(AVCOL_SPC_RGB, AVCOL_RANGE_JPEG)},
    {"TopLeft",
     "yuv420p",
     "colorspace=bt709",
     {"-c:v", "libx264", "-preset", "ultrafast", "-bsf:v", "h264_metadata=chroma_sample_loc_type=2"},
     LosslessX264,
     Tags(AVCOL_SPC_BT709, AVCOL_RANGE_UNSPECIFIED,
          [](SubtitleFrame &tags) { tags.chroma_location = AVCHROMA_LOC_TOPLEFT; })},
    {"Fields",
     "yuv420p",
     "colorspace=bt709:field_mode=tff",
     {"-c:v", "libx264", "-preset", "ultrafast", "-flags", "+ildct+ilme", "-x264opts", "tff=1"},
     LosslessX264,
     Tags(AVCOL_SPC_BT709, AVCOL_RANGE_UNSPECIFIED, [](SubtitleFrame &tags) { tags.interlaced = 1; })},
    {"HighDynamicRange", "yuv420p10le", "colorspace=bt2020nc:range=tv:color_trc=smpte2084:color_primaries=bt2020",
     ToFfv1, Lossless,
     Tags(AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG,
          [](SubtitleFrame &tags) {
              tags.color_trc = AVCOL_TRC_SMPTE2084;
              tags.color_primaries = AVCOL_PRI_BT2020;
          })},
    // Values that the library does not know count as unspecified.
    {"UnknownMatrix", "yuv444p", "colorspace=ycgco:range=tv", ToFfv1, Lossless,
     Tags(AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_MPEG)},
    {"UnknownPrimaries", "yuv422p10le", "colorspace=bt2020nc:range=tv:color_trc=smpte2084:color_primaries=smpte431",
     ToFfv1, Lossless,
     Tags(AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, [](SubtitleFrame &tags) { tags.color_trc = AVCOL_TRC_SMPTE2084; })},
};

} // namespace

TEST_P(ExactTest, FramesAreThoseThatTheLibraryBurns)
{
    const Case &c = GetParam();
    const std::string strFilter = "format=" + std::string(c.pPixels) + ",setparams=";
    Arguments listArguments = {"-f", "lavfi", "-i", "testsrc2=s=322x180:r=25:d=2", "-vf", strFilter + c.pTags};
    listArguments.insert(listArguments.end(), c.listInput.begin(), c.listInput.end());
    const std::string strInput = Clip("in.mkv", listArguments);
    Arguments listOptions = c.listOutput;
    listOptions.insert(listOptions.end(), {"--size", "14", "--color", "#ffc800"});
    SetSubtitleAlpah(m_pHandle, c.listOutput == Faint ? 128 : 255);
    for (const int nLook : {SUBTITLE_LOOK_NATURAL, SUBTITLE_LOOK_EXACT}) {
        if (nLook == SUBTITLE_LOOK_EXACT)
            listOptions.emplace_back("--exact");
        SetSubtitleBurnerLook(m_pBurner, nLook);
        const auto listAfter = Frames(Burn(strInput, "out.mkv", listOptions), c.pPixels);
        auto listExpected = Frames(strInput, c.pPixels);
        ASSERT_EQ(listAfter.size(), 50U);
        ASSERT_EQ(listExpected.size(), 50U);
        for (size_t n = 0; n < listAfter.size(); ++n) {
            const std::string strBefore = listExpected[n];
            BurnFrame(listExpected[n], c, static_cast<int>(n) * 40);
            EXPECT_EQ(listExpected[n] != strBefore, IsDue(n)) << "look " << nLook << ", frame " << n;
            EXPECT_TRUE(listAfter[n] == listExpected[n]) << "look " << nLook << ", frame " << n;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, ExactTest, testing::ValuesIn(Cases),
                         [](const testing::TestParamInfo<Case> &info) { return std::string(info.param.pName); });

struct AlphaFormat {
    const char *pPixels;
    size_t nBytes; ///< per sample

    friend std::ostream &operator<<(std::ostream &stream, const AlphaFormat &format)
    {
        return stream << format.pPixels;
    }
};

class AlphaTest : public SubburnTest, public testing::WithParamInterface<AlphaFormat>
{
};

TEST_P(AlphaTest, OnlyCoveredPixelsBecomeOpaque)
{
    const AlphaFormat &format = GetParam();
    const size_t nPixels = 320 * 180;
    const auto Frame = [&](const std::string &strPixels, const std::string &strName) {
        const std::string strInput =
            Clip("in.mkv", {"-f", "lavfi", "-i", "color=black@0.25:s=320x180:r=25:d=0.6,format=rgba", "-pix_fmt",
                            strPixels, "-c:v", "ffv1"});
        const std::string strOutput = Burn(strInput, strName, {"--codec", "ffv1", "--exact"});
        EXPECT_EQ(Probe(strOutput, "stream=pix_fmt"), "pix_fmt=" + strPixels + "\n");
        return std::make_pair(Frames(strInput, strPixels)[12], Frames(strOutput, strPixels)[12]);
    };
    const auto gray = Frame("gray", "gray.mkv");
    const auto burnt = Frame(format.pPixels, "alpha.mkv");
    const size_t nAlpha = burnt.first.size() - nPixels * format.nBytes; // the last plane
    const auto Value = [&](const std::string &strFrame, size_t nPixel) {
        unsigned nValue = 0;
        for (size_t n = 0; n < format.nBytes; ++n)
            nValue |= static_cast<unsigned>(static_cast<unsigned char>(strFrame[nAlpha + nPixel * format.nBytes + n]))
                      << 8 * n;
        return nValue;
    };
    const AVPixFmtDescriptor *pDescriptor = av_pix_fmt_desc_get(av_get_pix_fmt(format.pPixels));
    const unsigned nOpaque = (1U << pDescriptor->comp[3].depth) - 1;
    int nCovered = 0;
    for (size_t n = 0; n < nPixels; ++n) {
        const bool bCovered = gray.first[n] != gray.second[n];
        nCovered += bCovered ? 1 : 0;
        ASSERT_LT(Value(burnt.first, n), nOpaque / 2);
        ASSERT_EQ(Value(burnt.second, n), bCovered ? nOpaque : Value(burnt.first, n)) << n % 320 << "," << n / 320;
    }
    EXPECT_GT(nCovered, 200);
}

// The library can draw into the first format; subburn has to convert the others and back.
INSTANTIATE_TEST_SUITE_P(Formats, AlphaTest,
                         testing::Values(AlphaFormat{"yuva420p", 1}, AlphaFormat{"yuva444p10le", 2},
                                         AlphaFormat{"yuva422p16le", 2}, AlphaFormat{"gbrap10le", 2},
                                         AlphaFormat{"gbrap12le", 2}),
                         [](const testing::TestParamInfo<AlphaFormat> &info) {
                             return std::string(info.param.pPixels);
                         });
