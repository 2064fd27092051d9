#include "examplestest.h"

#include "libsubtitle.h"

#include <algorithm>
#include <set>

bool Film::IsDue(long nMilliseconds)
{
    return (nMilliseconds >= 400 && nMilliseconds <= 800) || (nMilliseconds >= 1200 && nMilliseconds <= 1400);
}

Film Film::Make(int nWidth, int nHeight, int nFrames)
{
    Film film{nWidth, nHeight, {}};
    for (int n = 0; n < nFrames; ++n) {
        std::string strFrame;
        for (int y = 0; y < nHeight; ++y) {
            for (int x = 0; x < nWidth; ++x) {
                for (const int nByte : {60 + (x + 3 * n) % 120, 60 + y % 120, 60 + n})
                    strFrame += static_cast<char>(nByte);
            }
        }
        film.listFrames.push_back(strFrame);
    }
    return film;
}

std::string Film::Bytes() const
{
    std::string strBytes;
    for (const std::string &strFrame : listFrames)
        strBytes += strFrame;
    return strBytes;
}

std::string Film::Burnt(std::size_t nFrame, long nMilliseconds, const std::string &strSubtitles) const
{
    std::string strFrame = listFrames[nFrame];
    AVPicture picture = {{reinterpret_cast<std::uint8_t *>(strFrame.data())}, {3 * nWidth}};
    void *pSubtitle = CreateVideoSubtitle(nWidth, nHeight);
    EXPECT_EQ(SetSubtitleFile(pSubtitle, strSubtitles.c_str(), 0), 0);
    EXPECT_EQ(SetSubtitleTimeStamp(pSubtitle, nMilliseconds), 0);
    EXPECT_EQ(ProcessSubtitleFrame(pSubtitle, &picture), 0);
    DestroyVideoSubtitle(pSubtitle);
    return strFrame;
}

void Film::ExpectFrame(std::size_t nFrame, const std::string &strFrame, long nMilliseconds,
                       const std::string &strSubtitles) const
{
    SCOPED_TRACE("frame " + std::to_string(nFrame) + " at " + std::to_string(nMilliseconds) + " ms");
    const std::string &strInput = listFrames[nFrame];
    ASSERT_EQ(strFrame.size(), strInput.size());
    if (!IsDue(nMilliseconds)) {
        EXPECT_TRUE(strFrame == strInput);
        return;
    }
    EXPECT_TRUE(strFrame == Burnt(nFrame, nMilliseconds, strSubtitles));
    std::set<std::string> listColors;
    std::size_t nTop = nHeight;
    std::size_t nBottom = 0;
    for (std::size_t n = 0; n < strFrame.size(); n += 3) {
        const std::string strPixel = strFrame.substr(n, 3);
        if (strPixel == strInput.substr(n, 3))
            continue;
        listColors.insert(strPixel);
        nTop = std::min(nTop, n / 3 / nWidth);
        nBottom = std::max(nBottom, n / 3 / nWidth);
    }
    EXPECT_EQ(listColors, (std::set<std::string>{"\x0a\x0a\x0a", "\xff\xff\xff"}));
    EXPECT_GE(nTop, static_cast<std::size_t>(nHeight) * 70 / 100);
    EXPECT_LE(nBottom, static_cast<std::size_t>(nHeight) * 99 / 100);
}

void ExamplesTest::ExpectFilm(const std::string &strBytes, int nRate, int nScale) const
{
    ASSERT_EQ(strBytes.size(), m_film.Bytes().size());
    for (std::size_t n = 0; n < m_film.listFrames.size(); ++n) {
        // Rounded to the nearest millisecond, halves up.
        const long nMilliseconds = (static_cast<long>(n) * 2000 * nScale + nRate) / (2 * nRate);
        m_film.ExpectFrame(n, strBytes.substr(n * m_film.FrameBytes(), m_film.FrameBytes()), nMilliseconds,
                           m_strSubtitles);
    }
}

std::string ExamplesTest::Video(const std::string &strName, const std::vector<std::string> &listOptions) const
{
    const std::string strSize = std::to_string(m_film.nWidth) + "x" + std::to_string(m_film.nHeight);
    std::vector<std::string> listCommand = {"ffmpeg", "-v",          "error", "-f",         "rawvideo", "-pixel_format",
                                            "rgb24",  "-video_size", strSize, "-framerate", "25",       "-i",
                                            "-"};
    listCommand.insert(listCommand.end(), listOptions.begin(), listOptions.end());
    listCommand.push_back(File(strName));
    const Outcome outcome = ChildProcess::Run(listCommand, m_film.Bytes());
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    return File(strName);
}
