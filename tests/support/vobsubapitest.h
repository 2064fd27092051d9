#pragma once

#include "support/blendoracle.h"
#include "support/guardedframe.h"
#include "support/pictureunit.h"
#include "support/plaincanvas.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

/** Handles for videos of the canvas's size, whose frames are compared with the plain canvas and the plain blend. */
class VobSubApiTest : public testing::Test
{
protected:
    using Bytes = std::vector<std::uint8_t>;

    static constexpr int Width = 96;
    static constexpr int Height = 64;

    ~VobSubApiTest() override { DestroyVideoSubtitle(m_pHandle); }

    static int OpenFile(void *pHandle, const std::string &strFile, int nTrack = 0)
    {
        return SetSubtitleFile(pHandle, strFile.c_str(), nTrack);
    }

    /** A frame with the subtitle at that time. */
    static Bytes FrameAt(void *pHandle, long ms, int nWidth = Width, int nHeight = Height)
    {
        EXPECT_EQ(SetSubtitleTimeStamp(pHandle, ms), 0);
        GuardedFrame frame(nWidth, nHeight, 5);
        AVPicture picture = frame.Picture();
        EXPECT_EQ(ProcessSubtitleFrame(pHandle, &picture), 0);
        return frame.Bytes();
    }
    Bytes FrameAt(long ms) const { return FrameAt(m_pHandle, ms); }

    static Bytes Untouched(int nWidth = Width, int nHeight = Height)
    {
        return GuardedFrame(nWidth, nHeight, 5).Bytes();
    }

    /** The expected frame with a picture of the same size, moved down by @p nRows. */
    static Bytes Blended(const PlainCanvas &canvas, int nOpacity = 255, int nRows = 0)
    {
        const int nWidth = canvas.Width();
        const int nHeight = canvas.Height();
        GuardedFrame frame(nWidth, nHeight, 5);
        const AVPicture picture = frame.Picture();
        BlendPlainly(picture.data[0], picture.linesize[0],
                     {canvas.Image().data(), 0, 0, nWidth, nHeight, nWidth, nHeight, nOpacity, nRows});
        return frame.Bytes();
    }

    /** The expected canvas of the pair after these units. */
    static PlainCanvas Drawn(const VobSubPair &pair, const std::vector<PictureUnit> &listUnits)
    {
        PlainCanvas canvas(pair.nWidth, pair.nHeight);
        for (const PictureUnit &unit : listUnits)
            canvas.Draw(unit, pair.palette);
        return canvas;
    }
    static Bytes Shown(const VobSubPair &pair, const std::vector<PictureUnit> &listUnits)
    {
        return Blended(Drawn(pair, listUnits));
    }

    TemporaryFolder m_folder;
    void *const m_pHandle = CreateVideoSubtitle(Width, Height);
    const PictureUnit m_a = PictureUnit::Filled(2, 3, 40, 10, 1);
    const PictureUnit m_b = PictureUnit::Filled(30, 20, 50, 11, 2);
    const PictureUnit m_c = PictureUnit::Filled(5, 40, 60, 12, 3);
    const VobSubPair m_pair{
        Width, Height, {{1000, m_a.Encode(), {}}, {2000, m_b.Encode(), {}}, {3000, m_c.Encode(), {}}}};
};
