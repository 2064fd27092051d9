#include "media/frameturner.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/display.h>
}

#include <array>
#include <new>
#include <string>

namespace
{

Orientation Clockwise()
{
    std::array<int32_t, 9> listMatrix;
    av_display_rotation_set(listMatrix.data(), 90);
    return Orientation(listMatrix.data());
}

/** Two rows of grey pixels, which are 4:3. */
FramePtr NewPicture(const std::string &strFirst, const std::string &strSecond)
{
    FramePtr pFrame = NewFrame();
    pFrame->width = static_cast<int>(strFirst.size());
    pFrame->height = 2;
    pFrame->format = AV_PIX_FMT_GRAY8;
    pFrame->sample_aspect_ratio = {4, 3};
    if (av_frame_get_buffer(pFrame.get(), 0) < 0)
        throw std::bad_alloc();
    strFirst.copy(reinterpret_cast<char *>(pFrame->data[0]), strFirst.size());
    strSecond.copy(reinterpret_cast<char *>(pFrame->data[0] + pFrame->linesize[0]), strSecond.size());
    return pFrame;
}

std::string Pixels(const AVFrame &frame)
{
    std::string strPixels;
    for (int y = 0; y < frame.height; ++y) {
        const uint8_t *pRow = frame.data[0] + static_cast<ptrdiff_t>(y) * frame.linesize[0];
        strPixels.append(pRow, pRow + frame.width);
    }
    return strPixels;
}

TEST(FrameTurnerTest, FramesAreUprightAndCarryNoMatrixOnceTurned)
{
    FramePtr pFrame = NewPicture("abc", "def");
    pFrame->pts = 7;
    Clockwise().SetOn(*pFrame);
    ASSERT_NE(av_frame_get_side_data(pFrame.get(), AV_FRAME_DATA_DISPLAYMATRIX), nullptr);
    FrameTurner(Clockwise()).Turn(pFrame);
    EXPECT_EQ(pFrame->width, 2);
    EXPECT_EQ(pFrame->height, 3);
    EXPECT_EQ(Pixels(*pFrame), "daebfc");
    EXPECT_EQ(av_cmp_q(pFrame->sample_aspect_ratio, {3, 4}), 0);
    EXPECT_EQ(pFrame->pts, 7);
    EXPECT_EQ(av_frame_get_side_data(pFrame.get(), AV_FRAME_DATA_DISPLAYMATRIX), nullptr);
}

TEST(FrameTurnerTest, PixelsOfSquareFramesAreTurnedAsWell)
{
    FramePtr pFrame = NewPicture("ab", "cd");
    FrameTurner(Clockwise()).Turn(pFrame);
    EXPECT_EQ(Pixels(*pFrame), "cadb");
    EXPECT_EQ(av_cmp_q(pFrame->sample_aspect_ratio, {3, 4}), 0);
}

} // namespace
