// A host that forks, as docs/hosting.md allows: both processes can go on using the existing handles.
#include "examplestest.h"

#include "libsubtitle.h"
#include "support/forked.h"

namespace
{

class ForkTest : public ExamplesTest
{
protected:
    ForkTest() { EXPECT_EQ(SetSubtitleFile(m_pSubtitle, m_strSubtitles.c_str(), 0), 0); }
    ~ForkTest() override { DestroyVideoSubtitle(m_pSubtitle); }

    /** A frame burnt by the handle that existed before the fork. */
    std::string FrameAt(std::size_t nFrame) const
    {
        std::string strFrame = m_film.listFrames[nFrame];
        AVPicture picture = {{reinterpret_cast<std::uint8_t *>(strFrame.data())}, {3 * m_film.nWidth}};
        SetSubtitleTimeStamp(m_pSubtitle, static_cast<long>(nFrame) * 40);
        ProcessSubtitleFrame(m_pSubtitle, &picture);
        return strFrame;
    }

    void *m_pSubtitle = CreateVideoSubtitle(m_film.nWidth, m_film.nHeight);
};

} // namespace

TEST_F(ForkTest, ChildAndParentGoOn)
{
    const std::string strFirst = m_film.Burnt(10, 400, m_strSubtitles);
    const std::string strSecond = m_film.Burnt(30, 1200, m_strSubtitles);
    EXPECT_FALSE(strFirst == m_film.listFrames[10]);
    EXPECT_FALSE(strSecond == m_film.listFrames[30]);
    EXPECT_TRUE(FrameAt(10) == strFirst);
    const int nChild = RunForked([&] {
        const bool bSame = FrameAt(30) == strSecond && FrameAt(10) == strFirst;
        DestroyVideoSubtitle(m_pSubtitle);
        // Without any handle left, the library has to start anew in the child.
        return bSame && m_film.Burnt(30, 1200, m_strSubtitles) == strSecond ? 0 : 1;
    });
    EXPECT_EQ(nChild, 0);
    EXPECT_TRUE(FrameAt(30) == strSecond);
}
