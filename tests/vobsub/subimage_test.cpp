// Pictures at another size than the canvas's, compared with what libswscale makes of it.
#include "support/subparsertest.h"

extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <atomic>
#include <random>

namespace
{

std::atomic<int> nMessages;

void CountMessage(void * /*context*/, int nLevel, const char * /*format*/, va_list /*arguments*/)
{
    if (nLevel <= AV_LOG_INFO) // printed by default
        ++nMessages;
}

class SubImageTest : public SubParserTest
{
protected:
    static constexpr std::size_t Padding = 64; // the scaler reads and writes whole vectors

    /** Scales the canvas's four planes with one scaler, one after the other into one buffer. Empty if it refuses. */
    static Bytes Scaled(const PlainCanvas &canvas, int nWidth, int nHeight)
    {
        SwsContext *const pContext = sws_getContext(canvas.Width(), canvas.Height(), AV_PIX_FMT_GRAY8, nWidth, nHeight,
                                                    AV_PIX_FMT_GRAY8, SWS_BICUBIC, nullptr, nullptr, nullptr);
        if (!pContext)
            return {};
        const std::size_t nPixels = static_cast<std::size_t>(nWidth) * nHeight;
        Bytes planes(4 * nPixels + Padding);
        std::size_t nAt = 0;
        for (Bytes plane : {canvas.Luma(), canvas.U(), canvas.V(), canvas.Alpha()}) {
            plane.resize(plane.size() + Padding);
            const std::uint8_t *const from[4] = {plane.data()};
            const int fromStride[4] = {canvas.Width()};
            std::uint8_t *const to[4] = {planes.data() + nAt};
            const int toStride[4] = {nWidth};
            EXPECT_EQ(sws_scale(pContext, from, fromStride, 0, canvas.Height(), to, toStride), nHeight);
            nAt += nPixels;
        }
        sws_freeContext(pContext);
        Bytes image;
        for (std::size_t i = 0; i < nPixels; ++i)
            image.insert(image.end(), {planes[i], planes[i], planes[i], planes[3 * nPixels + i]});
        return image;
    }

    Bytes Expected(int nWidth, int nHeight) const
    {
        return Scaled(PlainCanvas(m_pair.nWidth, m_pair.nHeight).Draw(m_unit, m_pair.palette), nWidth, nHeight);
    }

    /** Shapes of all four colours and contrasts. */
    static PictureUnit Shapes(int nX, int nY, int nWidth, int nHeight)
    {
        PictureUnit unit = PictureUnit::Filled(nX, nY, nWidth, nHeight);
        for (int y = 0; y < nHeight; ++y)
            for (int x = 0; x < nWidth; ++x)
                unit.listPixels[static_cast<std::size_t>(y) * nWidth + x] = (x / 5 + y / 3 + x * y / 40) % 4;
        unit.nColours = 0x1E27;
        unit.nContrasts = 0xF9C3;
        return unit;
    }

    const PictureUnit m_unit = Shapes(7, 9, 80, 50);
    const VobSubPair m_pair{96, 64, {{1000, m_unit.Encode(), {}}, {2000, m_unit.Encode(), {}}}};
};

} // namespace

TEST_F(SubImageTest, PictureIsScaledAsTheScalerDoesIt)
{
    Open(m_pair);
    for (const auto &[nWidth, nHeight] : {std::pair(192, 128),
                                          {1280, 720},
                                          {150, 100},
                                          {97, 64},
                                          {96, 65},
                                          {95, 63},
                                          {48, 32},
                                          {33, 17},
                                          {640, 8},
                                          {8, 640},
                                          {1, 64},
                                          {96, 1},
                                          {3, 3},
                                          {1, 1},
                                          {96, 64}}) {
        m_parser.SetVideoSize(nWidth, nHeight);
        const Bytes expected = Expected(nWidth, nHeight);
        EXPECT_EQ(expected.size(), 4U * nWidth * nHeight);
        EXPECT_TRUE(Picture(0) == expected) << nWidth << 'x' << nHeight;
    }
}

TEST_F(SubImageTest, OddCanvasesAreScaledAsTheScalerDoesIt)
{
    for (const auto &[nWidth, nHeight] : {std::pair(37, 29), {101, 67}, {16, 16}, {9, 200}, {719, 11}, {5, 4}}) {
        const PictureUnit unit = Shapes(1, 1, nWidth - 2, nHeight - 2);
        const VobSubPair pair(nWidth, nHeight, {{1000, unit.Encode(), {}}});
        Open(pair);
        const PlainCanvas canvas = PlainCanvas(nWidth, nHeight).Draw(unit, pair.palette);
        EXPECT_TRUE(Picture(0) == canvas.Image());
        for (const auto &[nVideoWidth, nVideoHeight] : {std::pair(320, 180), {51, 77}, {36, 30}}) {
            m_parser.SetVideoSize(nVideoWidth, nVideoHeight);
            EXPECT_TRUE(Picture(0) == Scaled(canvas, nVideoWidth, nVideoHeight)) << nWidth << 'x' << nHeight;
        }
    }
}

TEST_F(SubImageTest, PicturesInAnyRowsAreScaledAsTheScalerDoesIt)
{
    std::mt19937 random(7);
    const auto below = [&](int nEnd) { return static_cast<int>(random() % static_cast<unsigned>(nEnd)); };
    for (int n = 0; n < 150; ++n) {
        const int nWidth = 8 + below(60);
        const int nHeight = 8 + below(90);
        std::vector<PictureUnit> listUnits;
        std::vector<VobSubEntry> listEntries;
        for (int nStart = 1000; nStart <= 3000; nStart += 1000) {
            const int nTop = below(nHeight - 4);
            listUnits.push_back(Shapes(below(4), nTop, 1 + below(nWidth - 4), 1 + below(nHeight - nTop)));
            if (n % 5 == 0)
                listUnits.back().nContrasts = 0; // invisible, but its luma stays for later pictures
            listEntries.push_back({nStart, listUnits.back().Encode(), {}});
        }
        const VobSubPair pair(nWidth, nHeight, listEntries);
        Open(pair);
        const int nVideoWidth = 1 + below(150);
        const int nVideoHeight = n % 3 == 0 ? 1 + below(nHeight) : nHeight + below(150);
        m_parser.SetVideoSize(nVideoWidth, nVideoHeight);
        PlainCanvas canvas(nWidth, nHeight);
        for (int nEntry = 0; nEntry < 3; ++nEntry) {
            const Bytes expected = Scaled(canvas.Draw(listUnits[nEntry], pair.palette), nVideoWidth, nVideoHeight);
            EXPECT_TRUE(Picture(nEntry) == expected) << n << ": " << nVideoWidth << 'x' << nVideoHeight;
            const RowRange rows = m_parser.VisibleRows();
            for (std::size_t i = 3; i < expected.size(); i += 4) {
                EXPECT_TRUE(expected[i] == 0 || rows.Contains(static_cast<int>(i / 4) / nVideoWidth));
            }
        }
    }
}

TEST_F(SubImageTest, ScalerIsMadeForTheFirstPictureAndKept)
{
    Open(m_pair);
    m_parser.SetVideoSize(150, 100);
    EXPECT_EQ(m_peer.Context(), nullptr);
    EXPECT_EQ(m_peer.ImageBuffer(), nullptr);
    EXPECT_TRUE(Picture(0) == Expected(150, 100));
    const SwsContext *const pContext = m_peer.Context();
    const unsigned char *const pBuffer = m_peer.ImageBuffer();
    EXPECT_NE(pContext, nullptr);
    EXPECT_NE(pBuffer, nullptr);
    m_parser.SetVideoSize(150, 100);
    EXPECT_TRUE(Picture(1) == Expected(150, 100));
    EXPECT_EQ(m_peer.Context(), pContext);
    EXPECT_EQ(m_peer.ImageBuffer(), pBuffer);
}

TEST_F(SubImageTest, VideoMayChangeItsSize)
{
    Open(m_pair);
    for (const auto &[nWidth, nHeight] :
         {std::pair(150, 100), {1500, 1000}, {100, 150}, {1, 1}, {150, 100}, {96, 64}, {64, 96}, {600, 25}}) {
        m_parser.SetVideoSize(nWidth, nHeight);
        EXPECT_TRUE(Picture(0) == Expected(nWidth, nHeight)) << nWidth << 'x' << nHeight;
    }
}

TEST_F(SubImageTest, CanvasMayChangeItsSize)
{
    for (const auto &[nWidth, nHeight] : {std::pair(96, 64), {720, 480}, {64, 96}, {20, 20}, {96, 64}}) {
        const PictureUnit unit = Shapes(2, 2, std::min(nWidth - 5, 200), std::min(nHeight - 5, 90));
        const VobSubPair pair(nWidth, nHeight, {{1000, unit.Encode(), {}}});
        Open(pair);
        m_parser.SetVideoSize(150, 100);
        const PlainCanvas canvas = PlainCanvas(nWidth, nHeight).Draw(unit, pair.palette);
        EXPECT_TRUE(Picture(0) == Scaled(canvas, 150, 100)) << nWidth << 'x' << nHeight;
    }
}

TEST_F(SubImageTest, PictureIsTheCallersOwn)
{
    const VobSubPair pair(96, 64, {{1000, m_unit.Encode(), {}}, {2000, PictureUnit::Filled(0, 0, 9, 9).Encode(), {}}});
    Open(pair);
    QRect rect;
    const QImage first = m_parser.TextToImage(QStringLiteral("0"), rect);
    const Bytes before(first.constBits(), first.constBits() + first.sizeInBytes());
    EXPECT_FALSE(Picture(1) == before);
    EXPECT_TRUE(Bytes(first.constBits(), first.constBits() + first.sizeInBytes()) == before);
}

TEST_F(SubImageTest, GreatestCanvasIsScaled)
{
    const PictureUnit unit = PictureUnit::Filled(4000, 4000, 96, 96);
    const VobSubPair pair(4096, 4096, {{1000, unit.Encode(), {}}});
    Open(pair);
    m_parser.SetVideoSize(128, 128);
    EXPECT_TRUE(Picture(0) == Scaled(PlainCanvas(4096, 4096).Draw(unit, pair.palette), 128, 128));
}

TEST_F(SubImageTest, ImpossibleVideoSizeGivesNothing)
{
    Open(m_pair);
    m_parser.SetVideoSize(150, 100);
    EXPECT_FALSE(Picture(0).empty());
    m_parser.SetVideoSize(0x7FFFFFFF, 0x7FFFFFFF);
    EXPECT_TRUE(Picture(0).empty());
    m_parser.SetVideoSize(150, 100);
    EXPECT_TRUE(Picture(1) == Expected(150, 100));
}

TEST_F(SubImageTest, NoMessageIsWritten)
{
    Open(m_pair);
    nMessages = 0;
    av_log_set_callback(CountMessage);
    for (const auto &[nWidth, nHeight] : {std::pair(96, 64), {150, 100}, {333, 187}, {33, 17}}) {
        m_parser.SetVideoSize(nWidth, nHeight);
        EXPECT_FALSE(Picture(0).empty());
    }
    av_log_set_callback(av_log_default_callback);
    EXPECT_EQ(nMessages, 0);
}
