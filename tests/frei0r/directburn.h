#pragma once

#include "frames/libsubtitleframe.h"
#include "libsubtitle.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

/**
 * Burns into an RGBA frame by calling the library directly.
 *
 * @param calls  setters to call on the handle before the file is set.
 */
inline std::string DirectBurn(std::string strFrame, int nWidth, int nHeight, long nMilliseconds,
                              const std::string &strFile, const std::function<void(void *)> &calls = {}, int nTrack = 0)
{
    SubtitleFrame frame = {};
    frame.data[0] = reinterpret_cast<std::uint8_t *>(strFrame.data());
    frame.linesize[0] = 4 * nWidth;
    frame.width = nWidth;
    frame.height = nHeight;
    frame.format = SubtitlePixelFormat("rgba");
    void *pSubtitle = CreateVideoSubtitle(nWidth, nHeight);
    void *pBurner = CreateSubtitleBurner(pSubtitle);
    if (calls)
        calls(pSubtitle);
    EXPECT_EQ(SetSubtitleFile(pSubtitle, strFile.c_str(), nTrack), 0);
    EXPECT_EQ(SetSubtitleTimeStamp(pSubtitle, nMilliseconds), 0);
    EXPECT_EQ(BurnSubtitle(pBurner, &frame), 0);
    DestroySubtitleBurner(pBurner);
    DestroyVideoSubtitle(pSubtitle);
    return strFrame;
}
