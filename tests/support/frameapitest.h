#pragma once

#include "api/libsubtitle.h"
#include "support/planeframe.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>
#include <string>

/** A handle whose file has text due at the current time, and a burner for it. */
class FrameApiTest : public testing::Test
{
protected:
    static constexpr int Width = 96;
    static constexpr int Height = 54;

    FrameApiTest()
    {
        EXPECT_EQ(SetSubtitleFontParam(m_pHandle, "DejaVu Sans", 14, 0), 0);
        const std::string cues = "00:00:01,000 --> 00:00:02,000\nText\n\n00:00:03,000 --> 00:00:04,000\nother\n";
        m_strFile = m_folder.Write("cues.srt", cues);
        EXPECT_EQ(SetSubtitleFile(m_pHandle, m_strFile.c_str(), 0), 0);
        EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, 1500), 0);
    }
    ~FrameApiTest() override
    {
        DestroySubtitleBurner(m_pBurner);
        DestroyVideoSubtitle(m_pHandle);
    }

    static PlaneFrame NewFrame(const char *format = "yuv420p", int width = Width, int height = Height)
    {
        return PlaneFrame(static_cast<AVPixelFormat>(SubtitlePixelFormat(format)), width, height);
    }

    /** The frame with the subtitle burnt in. @p change may first set members of its SubtitleFrame. */
    template <typename Change>
    PlaneFrame Burnt(PlaneFrame frame, Change change)
    {
        SubtitleFrame record = frame.Frame();
        change(record);
        EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
        return frame;
    }
    PlaneFrame Burnt(PlaneFrame frame)
    {
        return Burnt(std::move(frame), [](SubtitleFrame &) {});
    }

    TemporaryFolder m_folder;
    std::string m_strFile;
    void *m_pHandle = CreateVideoSubtitle(Width, Height);
    void *m_pBurner = CreateSubtitleBurner(m_pHandle);
};
