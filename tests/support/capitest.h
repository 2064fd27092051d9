#pragma once

#include "libsubtitle.h"

#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

constexpr int Width = 320;
constexpr int Height = 180;

/** A handle of the shared library for small frames, and a file with one cue, from 1 s to 2 s. */
class CApiTest : public testing::Test
{
protected:
    ~CApiTest() override { DestroyVideoSubtitle(m_subtitle); }

    /** A grey frame with the subtitle at that time. */
    std::vector<uint8_t> FrameAt(long ms, void *subtitle = nullptr)
    {
        std::vector<uint8_t> pixels(Width * Height * 3, 90);
        AVPicture frame = {{pixels.data()}, {Width * 3}};
        SetSubtitleTimeStamp(subtitle ? subtitle : m_subtitle, ms);
        EXPECT_EQ(ProcessSubtitleFrame(subtitle ? subtitle : m_subtitle, &frame), 0);
        return pixels;
    }

    static long CountChanged(const std::vector<uint8_t> &pixels)
    {
        return std::count_if(pixels.begin(), pixels.end(), [](uint8_t byte) { return byte != 90; });
    }

    TemporaryFolder m_folder;
    std::string m_strFile = m_folder.Write("a.srt", "00:00:01,000 --> 00:00:02,000\nHello\n");
    void *m_subtitle = CreateVideoSubtitle(Width, Height);
};
