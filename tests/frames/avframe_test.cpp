// BurnSubtitleAVFrame(): every property of a frame is read from the AVFrame itself.
#include "support/frameapitest.h"
#include "support/interlaced.h"

extern "C" {
#include <libavutil/display.h>
#include <libavutil/frame.h>
}

#include <algorithm>
#include <functional>
#include <memory>

namespace
{

struct FreeFrame {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

/** A frame with buffers that FFmpeg allocates, and with every byte of its planes set. */
Frame NewAVFrame(int format, int width, int height)
{
    Frame frame(av_frame_alloc());
    frame->format = format;
    frame->width = width;
    frame->height = height;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    for (const AVBufferRef *buffer : frame->buf) {
        for (std::size_t i = 0; buffer && i < buffer->size; ++i)
            buffer->data[i] = static_cast<std::uint8_t>(i * 7 & 63);
    }
    return frame;
}

std::vector<std::uint8_t> BytesOf(const AVFrame &frame)
{
    std::vector<std::uint8_t> bytes;
    for (const AVBufferRef *buffer : frame.buf) {
        if (buffer)
            bytes.insert(bytes.end(), buffer->data, buffer->data + buffer->size);
    }
    return bytes;
}

class AVFrameTest : public FrameApiTest
{
protected:
    AVFrameTest()
    {
        SetSubtitleFontColor(m_pHandle, 250, 40, 10);
        SetSubtitleOutlineColor(m_pHandle, 10, 60, 160);
    }

    /** Expects a property of an AVFrame to have the same effect as in a SubtitleFrame, and to have an effect at all. */
    void ExpectRead(const char *what, const char *format, const std::function<void(AVFrame &)> &set,
                    const std::function<void(SubtitleFrame &)> &setRecord, int width = Width, int height = Height)
    {
        const Frame frame = NewAVFrame(SubtitlePixelFormat(format), width, height);
        set(*frame);
        EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, frame.get()), 0) << what;
        for (const bool isSet : {true, false}) {
            if (!isSet && width != Width)
                continue; // without its orientation such a frame is refused
            const Frame other = NewAVFrame(frame->format, width, height);
            SubtitleFrame record = {};
            for (int i = 0; i < 4; ++i) {
                record.data[i] = other->data[i];
                record.linesize[i] = other->linesize[i];
            }
            record.width = width;
            record.height = height;
            record.format = frame->format;
            if (isSet)
                setRecord(record);
            EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0) << what;
            EXPECT_EQ(BytesOf(*frame) == BytesOf(*other), isSet) << what;
        }
    }

    static void SetMatrix(AVFrame &frame, std::array<std::int32_t, 4> linear)
    {
        AVFrameSideData *data = av_frame_new_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX, 36);
        auto *matrix = reinterpret_cast<std::int32_t *>(data->data);
        const std::int32_t whole[9] = {linear[0], linear[1], 0, linear[2], linear[3], 0, 0, 0, 1 << 30};
        std::copy(std::begin(whole), std::end(whole), matrix);
    }
};

} // namespace

TEST_F(AVFrameTest, ColoursAndFieldsAreRead)
{
    ExpectRead(
        "matrix", "yuv420p", [](AVFrame &frame) { frame.colorspace = AVCOL_SPC_BT2020_NCL; },
        [](SubtitleFrame &frame) { frame.colorspace = AVCOL_SPC_BT2020_NCL; });
    ExpectRead(
        "range", "nv12", [](AVFrame &frame) { frame.color_range = AVCOL_RANGE_JPEG; },
        [](SubtitleFrame &frame) { frame.color_range = AVCOL_RANGE_JPEG; });
    ExpectRead(
        "transfer", "p010le", [](AVFrame &frame) { frame.color_trc = AVCOL_TRC_SMPTE2084; },
        [](SubtitleFrame &frame) { frame.color_trc = AVCOL_TRC_SMPTE2084; });
    ExpectRead(
        "primaries", "p010le",
        [](AVFrame &frame) {
            frame.color_trc = AVCOL_TRC_ARIB_STD_B67;
            frame.color_primaries = AVCOL_PRI_SMPTE432;
        },
        [](SubtitleFrame &frame) {
            frame.color_trc = AVCOL_TRC_ARIB_STD_B67;
            frame.color_primaries = AVCOL_PRI_SMPTE432;
        });
    ExpectRead(
        "location", "yuv420p", [](AVFrame &frame) { frame.chroma_location = AVCHROMA_LOC_TOPLEFT; },
        [](SubtitleFrame &frame) { frame.chroma_location = AVCHROMA_LOC_TOPLEFT; });
    ExpectRead(
        "fields", "yuv420p", [](AVFrame &frame) { SetInterlaced(frame, true); },
        [](SubtitleFrame &frame) { frame.interlaced = 1; });
}

TEST_F(AVFrameTest, EachOrientationIsReadOffTheDisplayMatrix)
{
    constexpr std::int32_t One = 1 << 16;
    const auto expectOrientation = [this](std::array<std::int32_t, 4> matrix, int orientation) {
        const bool isTransposed = orientation & SUBTITLE_ORIENTATION_TRANSPOSED;
        ExpectRead(
            "orientation", "yuv420p", [&](AVFrame &frame) { SetMatrix(frame, matrix); },
            [&](SubtitleFrame &frame) { frame.orientation = orientation; }, isTransposed ? Height : Width,
            isTransposed ? Width : Height);
    };
    expectOrientation({-One, 0, 0, One}, SUBTITLE_ORIENTATION_MIRRORED);
    expectOrientation({One, 0, 0, -One}, SUBTITLE_ORIENTATION_UPSIDE_DOWN);
    expectOrientation({-One, 0, 0, -One}, SUBTITLE_ORIENTATION_MIRRORED | SUBTITLE_ORIENTATION_UPSIDE_DOWN);
    expectOrientation({0, One, One, 0}, SUBTITLE_ORIENTATION_TRANSPOSED);
    expectOrientation({0, One, -One, 0}, SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_MIRRORED);
    expectOrientation({0, -One, One, 0}, SUBTITLE_ORIENTATION_TRANSPOSED | SUBTITLE_ORIENTATION_UPSIDE_DOWN);
    expectOrientation({0, -One, -One, 0}, 7);
}

TEST_F(AVFrameTest, TextIsUprightOnAPictureThatIsShownTurned)
{
    // Turned clockwise for display: the frame's top row becomes the last column.
    const Frame frame = NewAVFrame(AV_PIX_FMT_GRAY8, Height, Width);
    AVFrameSideData *data = av_frame_new_side_data(frame.get(), AV_FRAME_DATA_DISPLAYMATRIX, 36);
    av_display_rotation_set(reinterpret_cast<std::int32_t *>(data->data), 90);
    const auto asShown = [&] {
        PlaneFrame upright(AV_PIX_FMT_GRAY8, Width, Height);
        for (int y = 0; y < Height; ++y) {
            for (int x = 0; x < Width; ++x)
                upright.Set(0, x, y, frame->data[0][(Width - 1 - x) * frame->linesize[0] + y]);
        }
        return upright;
    };
    const PlaneFrame expected = Burnt(asShown());
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, frame.get()), 0);
    EXPECT_TRUE(asShown().Bytes() == expected.Bytes());
}

TEST_F(AVFrameTest, AMatrixThatIsNoneOfTheEightIsRefused)
{
    const std::array<std::int32_t, 4> matrices[] = {
        {46341, 46341, -46341, 46341}, {0, 0, 0, 0}, {65536, 0, 0, 0}, {0, 65536, 0, 0}, {65536, 1, 0, 65536}};
    for (const auto &matrix : matrices) {
        const Frame frame = NewAVFrame(AV_PIX_FMT_YUV420P, Width, Height);
        const auto before = BytesOf(*frame);
        SetMatrix(*frame, matrix);
        EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, frame.get()), -1);
        EXPECT_EQ(BytesOf(*frame), before);
    }
}

TEST_F(AVFrameTest, SharedBuffersAreLeftToTheirOtherOwners)
{
    const Frame frame = NewAVFrame(AV_PIX_FMT_YUV420P, Width, Height);
    const auto before = BytesOf(*frame);
    const Frame shared(av_frame_clone(frame.get()));
    SetSubtitleTimeStamp(m_pHandle, 2500);
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, shared.get()), 0);
    EXPECT_EQ(shared->data[0], frame->data[0]);
    SetSubtitleTimeStamp(m_pHandle, 1500);
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, shared.get()), 0);
    EXPECT_NE(shared->data[0], frame->data[0]);
    EXPECT_EQ(BytesOf(*frame), before);
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, frame.get()), 0);
    EXPECT_NE(BytesOf(*frame), before);
    for (int y = 0; y < Height; ++y)
        EXPECT_TRUE(std::equal(frame->data[0] + y * frame->linesize[0], frame->data[0] + y * frame->linesize[0] + Width,
                               shared->data[0] + y * shared->linesize[0]));
}

TEST_F(AVFrameTest, AFrameWithoutBuffersIsDrawnIntoWhereItIs)
{
    const Frame owner = NewAVFrame(AV_PIX_FMT_NV12, Width, Height);
    const auto before = BytesOf(*owner);
    const Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_NV12;
    frame->width = Width;
    frame->height = Height;
    for (int i = 0; i < 2; ++i) {
        frame->data[i] = owner->data[i];
        frame->linesize[i] = owner->linesize[i];
    }
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, frame.get()), 0);
    EXPECT_EQ(frame->data[0], owner->data[0]);
    EXPECT_NE(BytesOf(*owner), before);
}

TEST_F(AVFrameTest, FramesOfHardwareAndWithoutPlanesAreRefused)
{
    const Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_VAAPI;
    frame->width = Width;
    frame->height = Height;
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, frame.get()), -1);
    frame->format = AV_PIX_FMT_YUV420P;
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, frame.get()), -1);
}
