// VobSub pairs written by authoring tools, burnt through the shared library as a host does it.
#include "libsubtitle.h"

#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace
{

constexpr int Background = 0x5A;

struct Size {
    int nWidth;
    int nHeight;

    std::size_t Pixels() const { return static_cast<std::size_t>(nWidth) * nHeight; }
};

constexpr Size Pal = {720, 576};
constexpr Size FullHd = {1920, 1080};

/** One byte a pixel. */
using Luma = std::vector<std::uint8_t>;

struct Box {
    int nLeft = 1 << 20;
    int nTop = 1 << 20;
    int nRight = -1; ///< the last column; nBottom is the last row
    int nBottom = -1;

    bool Empty() const { return nRight < 0; }
};

/** The box of the pixels that differ from the background by more than @p nSmall. */
Box BoxOf(const Luma &luma, Size size, int nSmall = 0)
{
    Box box;
    for (std::size_t n = 0; n < luma.size(); ++n) {
        if (std::abs(luma[n] - Background) <= nSmall)
            continue;
        const int nX = static_cast<int>(n) % size.nWidth;
        const int nY = static_cast<int>(n) / size.nWidth;
        box = {std::min(box.nLeft, nX), std::min(box.nTop, nY), std::max(box.nRight, nX), std::max(box.nBottom, nY)};
    }
    return box;
}

class RealVobSubTest : public testing::Test
{
protected:
    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }

    std::string Content(const std::string &strFile) const
    {
        std::ostringstream content;
        content << std::ifstream(strFile, std::ios::binary).rdbuf();
        return content.str();
    }

    /** Runs a tool, which must succeed; returns its output. */
    static std::string Run(const std::vector<std::string> &listCommand, const std::string &strInput = "")
    {
        const Outcome outcome = ChildProcess::Run(listCommand, strInput);
        EXPECT_EQ(outcome.nExit, 0) << listCommand.front() << ": " << outcome.strError << outcome.strOut;
        return outcome.strOut;
    }

    /** Burns a plain frame at each of the times and returns its luma. Each must stay grey. */
    static std::vector<Luma> Burnt(const std::string &strIndex, Size size, const std::vector<long> &listTimes)
    {
        void *pSubtitle = CreateVideoSubtitle(size.nWidth, size.nHeight);
        EXPECT_EQ(SetSubtitleFile(pSubtitle, strIndex.c_str(), 0), 0);
        std::vector<Luma> listFrames;
        for (const long nTime : listTimes) {
            std::vector<std::uint8_t> rgb(size.Pixels() * 3, Background);
            AVPicture frame = {{rgb.data()}, {size.nWidth * 3}};
            EXPECT_EQ(SetSubtitleTimeStamp(pSubtitle, nTime), 0);
            EXPECT_EQ(ProcessSubtitleFrame(pSubtitle, &frame), 0);
            Luma luma;
            bool bGrey = true;
            for (std::size_t n = 0; n < rgb.size(); n += 3) {
                bGrey = bGrey && rgb[n] == rgb[n + 1] && rgb[n] == rgb[n + 2];
                luma.push_back(rgb[n]);
            }
            EXPECT_TRUE(bGrey) << nTime << " ms";
            listFrames.push_back(std::move(luma));
        }
        DestroyVideoSubtitle(pSubtitle);
        return listFrames;
    }

    TemporaryFolder m_folder;
};

/** A pair made from text by the tools that make a DVD's subtitles. */
class MadeVobSubTest : public RealVobSubTest
{
protected:
    MadeVobSubTest()
    {
        const std::string strText =
            m_folder.Write("text.srt", "1\n00:00:01,000 --> 00:00:03,000\nA light over the bay\n\n"
                                       "2\n00:00:04,000 --> 00:00:06,000\nTwo lines of it,\nthe second one shorter\n\n"
                                       "3\n00:00:07,000 --> 00:00:09,000\nThe last\n");
        Run({SCRIPTS "/make-vobsub.sh", strText, m_strIndex});
    }

    /** The luma of a plain video with FFmpeg's overlay of the pictures: the frames at the seconds 0 to 11. */
    std::vector<Luma> OverlaidByFfmpeg(Size size) const
    {
        const std::string strScaled = std::to_string(size.nWidth) + ":" + std::to_string(size.nHeight);
        const std::string strRgb =
            Run({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i",
                 "color=c=0x5a5a5a:s=720x576:r=1:d=12,format=rgb24", "-i", m_strIndex, "-filter_complex",
                 "[0:v][1:s]overlay=format=rgb,format=rgb24,scale=" + strScaled + ":flags=bicubic", "-f", "rawvideo",
                 "-pix_fmt", "rgb24", "-"});
        EXPECT_EQ(strRgb.size(), 12 * 3 * size.Pixels());
        std::vector<Luma> listFrames(12, Luma(size.Pixels(), 0));
        for (std::size_t n = 0; n < std::min(strRgb.size() / 3, 12 * size.Pixels()); ++n)
            listFrames[n / size.Pixels()][n % size.Pixels()] = static_cast<std::uint8_t>(strRgb[3 * n]);
        return listFrames;
    }

    const std::string m_strIndex = File("film.idx");
};

/** A picture's start in milliseconds, and the display area in its unit. */
struct Picture {
    long nStart;
    int nX;
    int nY;
    int nWidth;
    int nHeight;
};

const Picture SintelPictures[] = {
    {107250, 623, 1001, 670, 55}, {111792, 552, 1012, 815, 44}, {118000, 564, 936, 786, 120},
    {121750, 502, 1001, 911, 55}, {125250, 821, 1001, 273, 55}, {127500, 903, 1010, 111, 46},
    {129417, 604, 936, 710, 120}, {135000, 625, 1001, 669, 55}, {138000, 701, 935, 518, 121},
    {143417, 836, 1001, 241, 55}, {148833, 503, 1001, 908, 55}, {152958, 620, 936, 675, 120},
    {207250, 620, 1010, 675, 46}, {210750, 814, 1001, 291, 55}, {228250, 716, 1000, 484, 56},
    {250333, 624, 1003, 668, 53}, {265250, 862, 1010, 195, 46}, {304000, 755, 1010, 404, 46},
    {338750, 869, 1010, 178, 46}, {445833, 804, 1012, 311, 44}, {452792, 633, 1001, 649, 55},
    {457792, 571, 1000, 774, 56}, {460833, 583, 1001, 748, 55}, {557583, 869, 1010, 178, 46},
    {621583, 862, 1010, 195, 46}, {626208, 854, 1010, 209, 46}};

/** A pair from a public repository, with units of up to 10 KB. Its index has no line with the size. */
class SintelTest : public RealVobSubTest
{
protected:
    SintelTest() : m_strFound(Content(TEST_DATA "/sintel.idx"))
    {
        m_folder.Write("sized.sub", Content(TEST_DATA "/sintel.sub"));
    }

    /** Writes an index with that line added. */
    std::string Sized(const std::string &strIndex) const
    {
        return m_folder.Write("sized.idx", "size: 1920x1080\n" + strIndex);
    }

    /** The index with a palette of greys: none is black, so every colour shows. */
    std::string Greyed() const
    {
        std::string strIndex = m_strFound;
        const std::size_t nPalette = strIndex.find("palette: ");
        std::string strGreys = "202020";
        for (int n = 1; n < 16; ++n)
            strGreys += ", c0c0c0";
        return strIndex.replace(nPalette, strIndex.find('\n', nPalette) - nPalette, "palette: " + strGreys);
    }

    const std::string m_strFound;
};

} // namespace

TEST_F(MadeVobSubTest, PicturesComeAndGoAtTheirTimes)
{
    const auto listFrames = Burnt(m_strIndex, Pal, {999, 1000, 2000, 4000, 4001, 7000, 7001, 10000, 10001, 500, 2000});
    const std::vector<Luma> listPictures = {Luma(Pal.Pixels(), Background), listFrames[2], listFrames[4],
                                            listFrames[6]};
    for (std::size_t n = 0; n < listPictures.size(); ++n) {
        for (std::size_t m = 0; m < n; ++m)
            EXPECT_TRUE(listPictures[n] != listPictures[m]) << n << " and " << m;
    }
    // Each shows up to and including the start of the next one, the last for three seconds.
    const std::array<std::size_t, 11> listExpected = {0, 1, 1, 1, 2, 2, 3, 3, 0, 0, 1};
    for (std::size_t n = 0; n < listFrames.size(); ++n)
        EXPECT_TRUE(listFrames[n] == listPictures[listExpected[n]]) << n;
}

TEST_F(MadeVobSubTest, EveryPixelLiesWhereFfmpegLaysIt)
{
    const auto listOverlaid = OverlaidByFfmpeg(Pal);
    const auto listBurnt = Burnt(m_strIndex, Pal, {500, 2000, 5000, 8000, 11000});
    const std::array<std::size_t, 5> listSeconds = {0, 2, 5, 8, 11};
    for (std::size_t n = 0; n < listBurnt.size(); ++n) {
        const Luma &overlaid = listOverlaid[listSeconds[n]];
        const Box box = BoxOf(overlaid, Pal);
        EXPECT_EQ(box.Empty(), n == 0 || n == 4) << n;
        int nPainted = 0;
        int nLost = 0;
        for (std::size_t nPixel = 0; nPixel < overlaid.size(); ++nPixel) {
            const int nOverlaid = overlaid[nPixel];
            const int nBurnt = listBurnt[n][nPixel];
            if (nOverlaid != Background && nBurnt == Background) {
                // The last four bytes of a picture are not decoded: the end of its last row, or of the last but one.
                ++nLost;
                EXPECT_GE(static_cast<int>(nPixel) / Pal.nWidth, box.nBottom - 1) << n << ": " << nPixel;
            } else {
                // A contrast of 15 is an alpha of 240 here and of 255 in FFmpeg; each rounds once.
                EXPECT_NEAR(nBurnt, Background + (nOverlaid - Background) * 240.0 / 255, 1) << n << ": " << nPixel;
                nPainted += nOverlaid != Background ? 1 : 0;
            }
        }
        EXPECT_LT(nLost, 40) << n;
        EXPECT_EQ(nPainted > 1000, !box.Empty()) << n;
    }
}

TEST_F(MadeVobSubTest, ScaledPicturesLieWhereFfmpegScalesThemTo)
{
    const Size size = {1280, 720};
    const auto listOverlaid = OverlaidByFfmpeg(size);
    const auto listBurnt = Burnt(m_strIndex, size, {2000, 5000, 8000});
    for (std::size_t n = 0; n < listBurnt.size(); ++n) {
        const Luma &overlaid = listOverlaid[2 + 3 * n];
        // Scaling rings, but by less than 8.
        const Box expected = BoxOf(overlaid, size, 8);
        const Box box = BoxOf(listBurnt[n], size, 8);
        EXPECT_NEAR(box.nLeft, expected.nLeft, 2) << n;
        EXPECT_NEAR(box.nTop, expected.nTop, 2) << n;
        EXPECT_NEAR(box.nRight, expected.nRight, 2) << n;
        EXPECT_NEAR(box.nBottom, expected.nBottom, 2) << n;
        double dDifference = 0;
        double dPicture = 0;
        for (std::size_t nPixel = 0; nPixel < overlaid.size(); ++nPixel) {
            dDifference += std::abs(listBurnt[n][nPixel] - overlaid[nPixel]);
            dPicture += std::abs(overlaid[nPixel] - Background);
        }
        // The alpha of 240 makes 6 %. The rest is at the edges: here colour and alpha are scaled separately.
        EXPECT_LT(dDifference, 0.1 * dPicture) << n;
    }
}

TEST_F(SintelTest, AnIndexWithoutASizeIsRefused)
{
    void *pSubtitle = CreateVideoSubtitle(FullHd.nWidth, FullHd.nHeight);
    EXPECT_EQ(SetSubtitleFile(pSubtitle, TEST_DATA "/sintel.idx", 0), -1);
    EXPECT_EQ(SetSubtitleFile(pSubtitle, Sized(m_strFound).c_str(), 1), -1);
    EXPECT_EQ(SetSubtitleFile(pSubtitle, Sized(m_strFound).c_str(), 0), 0);
    DestroyVideoSubtitle(pSubtitle);
}

TEST_F(SintelTest, EveryPictureFillsItsArea)
{
    std::vector<long> listTimes;
    for (const Picture &picture : SintelPictures)
        listTimes.push_back(picture.nStart + 1);
    const auto listFrames = Burnt(Sized(Greyed()), FullHd, listTimes);
    for (std::size_t n = 0; n < listFrames.size(); ++n) {
        const Picture &picture = SintelPictures[n];
        const Box box = BoxOf(listFrames[n], FullHd);
        EXPECT_EQ(box.nLeft, picture.nX) << n;
        EXPECT_EQ(box.nTop, picture.nY) << n;
        EXPECT_EQ(box.nRight, picture.nX + picture.nWidth - 1) << n;
        // The last four bytes of a picture are not decoded; where they are a whole row, that row is missing.
        const int nBottom = picture.nY + picture.nHeight - 1;
        EXPECT_TRUE(box.nBottom == nBottom || box.nBottom == nBottom - 1) << n << ": " << box.nBottom;
    }
}

TEST_F(SintelTest, TheFirstAndTheLastPictureHaveTheirTimes)
{
    const auto listFrames = Burnt(Sized(Greyed()), FullHd, {1, 107249, 107250, 111792, 111793, 629208, 629209});
    const std::array<bool, 7> listShows = {false, false, true, true, true, true, false};
    for (std::size_t n = 0; n < listFrames.size(); ++n)
        EXPECT_EQ(BoxOf(listFrames[n], FullHd).Empty(), !listShows[n]) << n;
    EXPECT_TRUE(listFrames[2] == listFrames[3]);
    EXPECT_TRUE(listFrames[3] != listFrames[4]);
}

TEST_F(SintelTest, ABlackOutlineIsKeyedOut)
{
    const std::vector<long> listTimes = {107251};
    const Luma found = Burnt(Sized(m_strFound), FullHd, listTimes).front();
    const Luma greyed = Burnt(Sized(Greyed()), FullHd, listTimes).front();
    const int nOutline = (240 * 0x20 + 15 * Background) / 255;
    int nOutlined = 0;
    for (std::size_t n = 0; n < found.size(); ++n) {
        const bool bBare = greyed[n] == Background || greyed[n] == nOutline;
        EXPECT_EQ(found[n] == Background, bBare) << n;
        nOutlined += greyed[n] == nOutline ? 1 : 0;
    }
    EXPECT_GT(nOutlined, 1000);
}
