#include "media/frameturner.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/display.h>
}

#include <array>
#include <cstring>
#include <string>

namespace
{

TEST(FrameTurnerTest, FramesAreUprightAndCarryNoMatrixOnceTurned)
{
    std::array<int32_t, 9> listMatrix;
    av_display_rotation_set(listMatrix.data(), 90); // clockwise
    FramePtr pFrame = NewFrame();
    pFrame->width = 3;
    pFrame->height = 2;
    pFrame->format = AV_PIX_FMT_GRAY8;
    pFrame->sample_aspect_ratio = {4, 3};
    pFrame->pts = 7;
    ASSERT_EQ(av_frame_get_buffer(pFrame.get(), 0), 0);
    std::memcpy(pFrame->data[0], "abc", 3);
    std::memcpy(pFrame->data[0] + pFrame->linesize[0], "def", 3);
    const Orientation orientation(listMatrix.data());
    orientation.SetOn(*pFrame);
    ASSERT_NE(av_frame_get_side_data(pFrame.get(), AV_FRAME_DATA_DISPLAYMATRIX), nullptr);

    FrameTurner(orientation).Turn(pFrame);

    ASSERT_EQ(pFrame->width, 2);
    ASSERT_EQ(pFrame->height, 3);
    const auto Row = [&](int y) {
        return std::string(reinterpret_cast<const char *>(pFrame->data[0] + ptrdiff_t(y) * pFrame->linesize[0]), 2);
    };
    EXPECT_EQ(Row(0) + Row(1) + Row(2), "daebfc");
    EXPECT_EQ(av_cmp_q(pFrame->sample_aspect_ratio, {3, 4}), 0);
    EXPECT_EQ(pFrame->pts, 7);
    EXPECT_EQ(av_frame_get_side_data(pFrame.get(), AV_FRAME_DATA_DISPLAYMATRIX), nullptr);
}

} // namespace
