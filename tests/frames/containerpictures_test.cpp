// Pictures in the tracks of containers, as the natural look shows them: all that are due, each over those before it.
#include "parsers/ffparser.h"
#include "parsers/packetpictures.h"
#include "support/containerpicturestest.h"

#include <cmath>
#include <tuple>

namespace
{

/** The definition of "over", in doubles. */
std::uint32_t Over(std::uint32_t below, std::uint32_t above)
{
    const double alpha = (above >> 24) / 255.0;
    const double rest = (below >> 24) / 255.0 * (1 - alpha);
    auto result = static_cast<std::uint32_t>(std::lround(255 * (alpha + rest)));
    for (const int shift : {16, 8, 0}) {
        const double sum = (above >> shift & 255) * alpha + (below >> shift & 255) * rest;
        result = result << 8 | static_cast<std::uint32_t>(std::lround(alpha + rest > 0 ? sum / (alpha + rest) : 0));
    }
    return result;
}

} // namespace

TEST_F(ContainerPicturesTest, AllThatAreDueShowInTheirPlaces)
{
    LoadDisc({{0, 1000, 4000, DiscPicture(10, 40, 30, 12, 0)}, {0, 2000, 1000, DiscPicture(50, 4, 20, 10, 3, 0x80)}});
    EXPECT_EQ(At(1500, 20, 45), Of(Red, 15));
    EXPECT_EQ(At(1500, 60, 8), 0U);
    EXPECT_EQ(At(2500, 20, 45), Of(Red, 15));
    EXPECT_EQ(At(2500, 60, 8), Of(Yellow, 8));
    EXPECT_EQ(At(2500, 50, 4), Of(Yellow, 8)) << "its first pixel";
    EXPECT_EQ(At(2500, 69, 13), Of(Yellow, 8)) << "its last pixel";
    EXPECT_EQ(At(2500, 49, 4), 0U);
    EXPECT_EQ(At(2500, 45, 20), 0U) << "between them";
    EXPECT_EQ(At(3500, 20, 45), Of(Red, 15)) << "one ended before the other";
    EXPECT_EQ(At(3500, 60, 8), 0U);
    EXPECT_EQ(At(5500, 20, 45), 0U);
}

TEST_F(ContainerPicturesTest, LaterOnesLieOverThoseBeforeThem)
{
    LoadDisc({{0, 1000, 4000, DiscPicture(10, 10, 40, 30, 0, 0xA0)},
              {0, 1000, 3000, DiscPicture(20, 20, 40, 30, 2, 0x50)},
              {0, 1000, 2000, DiscPicture(30, 5, 10, 50, 1)},
              {0, 1000, 1000, DiscPicture(32, 24, 4, 4, 3, 0x70)}});
    const std::uint32_t both = Over(Of(Red, 10), Of(Blue, 5));
    EXPECT_EQ(At(1500, 12, 12), Of(Red, 10));
    EXPECT_EQ(At(1500, 25, 25), both);
    EXPECT_EQ(At(1500, 55, 45), Of(Blue, 5));
    EXPECT_EQ(At(1500, 31, 22), Of(Green, 15));
    EXPECT_EQ(At(1500, 33, 25), Over(Of(Green, 15), Of(Yellow, 7)));
    EXPECT_EQ(At(2500, 33, 25), Of(Green, 15));
    EXPECT_EQ(At(3500, 33, 25), both);
    EXPECT_EQ(At(4500, 33, 25), Of(Red, 10));
}

TEST_F(ContainerPicturesTest, OfTwoThatFollowEachOtherOneShows)
{
    LoadDisc({{0, 1000, 1000, DiscPicture(10, 10, 10, 10, 0)}, {0, 2000, 1000, DiscPicture(40, 10, 10, 10, 1)}});
    EXPECT_EQ(At(999, 15, 15), 0U);
    EXPECT_EQ(At(1000, 15, 15), Of(Red, 15));
    EXPECT_EQ(At(1999, 15, 15), Of(Red, 15));
    EXPECT_EQ(At(1999, 45, 15), 0U);
    EXPECT_EQ(At(2000, 15, 15), 0U);
    EXPECT_EQ(At(2000, 45, 15), Of(Green, 15));
    EXPECT_EQ(At(2999, 45, 15), Of(Green, 15));
    EXPECT_EQ(At(3000, 45, 15), 0U);
}

TEST_F(ContainerPicturesTest, OnesWithErrorsAreLeftOut)
{
    const std::string good = DiscPicture(10, 10, 10, 10, 0);
    LoadDisc({{0, 1000, 3000, good.substr(0, good.size() / 2)},
              {0, 1000, 3000, good},
              {0, 1000, 3000, std::string(200, '\x55')},
              {0, 1000, 3000, DiscPicture(40, 10, 10, 10, 1)},
              {0, 1000, 3000, "x"}});
    EXPECT_EQ(At(1500, 15, 15), Of(Red, 15));
    EXPECT_EQ(At(1500, 45, 15), Of(Green, 15));
    EXPECT_EQ(At(1500, 30, 30), 0U);
}

TEST_F(ContainerPicturesTest, AreBurntInRgbAndInYuv)
{
    LoadDisc(
        {{0, 1000, 4000, DiscPicture(10, 10, 40, 30, 0, 0xA0)}, {0, 1000, 4000, DiscPicture(20, 20, 40, 30, 2, 0x50)}});
    m_renderer.SetTimeStamp(1500);
    const double red = 10 / 15.0;
    const double blue = 5 / 15.0;
    const PlaneFrame rgb(AV_PIX_FMT_RGB24, Width, Height);
    const PlaneFrame burnt = Burnt("rgb24", rgb);
    for (const auto &[x, y, first, second] :
         {std::tuple(12, 12, red, 0.0), {25, 25, red, blue}, {55, 45, 0.0, blue}, {70, 60, 0.0, 0.0}}) {
        for (int i = 0; i < 3; ++i) {
            const double before = rgb.Get(i, x, y);
            const double below = before * (1 - first) + (i == 0 ? 255 * first : 0);
            EXPECT_NEAR(burnt.Get(i, x, y), below * (1 - second) + (i == 2 ? 255 * second : 0), 1) << x << " " << y;
        }
    }
    const PlaneFrame yuv(AV_PIX_FMT_YUV420P, Width, Height);
    const PlaneFrame drawn = Burnt("yuv420p", yuv);
    const double redCodes[] = {255 * 0.299, 128 - 255 * 0.168736, 128 + 255 * 0.5};
    const double blueCodes[] = {255 * 0.114, 128 + 255 * 0.5, 128 - 255 * 0.081312};
    for (int i = 0; i < 3; ++i) {
        const int at = i == 0 ? 26 : 13;
        const double below = yuv.Get(i, at, at) * (1 - red) + std::min(255.0, redCodes[i]) * red;
        EXPECT_NEAR(drawn.Get(i, at, at), below * (1 - blue) + std::min(255.0, blueCodes[i]) * blue, 1) << i;
        EXPECT_EQ(drawn.Get(i, 2, 2), yuv.Get(i, 2, 2));
    }
}

TEST_F(ContainerPicturesTest, AreAsManyAsMayShow)
{
    std::vector<MuxedPacket> packets;
    for (int i = 0; i < 90; ++i)
        packets.push_back({0, 1000, 4000, DiscPicture(2 + i, 10, 1, 4, i % 4)});
    LoadDisc(packets);
    const std::uint32_t colors[] = {Red, Green, Blue, Yellow};
    for (int i = 0; i < 90; ++i)
        EXPECT_EQ(At(1500, 2 + i, 12), i < static_cast<int>(MaxDuePictures) ? Of(colors[i % 4], 15) : 0U) << i;
}

TEST_F(ContainerPicturesTest, WhatTheExactLookShowsStays)
{
    const std::string payload = DiscPicture(10, 10, 10, 10, 0);
    LoadDisc({{0, 1000, 1000, payload}});
    FFParser parser;
    EXPECT_NE(parser.Open(QString::fromStdString(File("a.mkv")), 0), 0);
    EXPECT_TRUE(parser.IsTextSub());
    EXPECT_EQ(parser.GetSubtitle(1500), QString::fromUtf8(payload.data(), static_cast<int>(payload.size())));
    QRect rect;
    EXPECT_TRUE(parser.TextToImage(QStringLiteral("0"), rect).isNull());
    EXPECT_TRUE(parser.AllDueTexts(1500).isEmpty());
    EXPECT_FALSE(parser.AllDuePictures(1500).isEmpty());
    EXPECT_TRUE(parser.AllDuePictures(0).isEmpty());
    EXPECT_TRUE(parser.AllDuePictures(-5).isEmpty());
    EXPECT_EQ(parser.ToColorPicture(QStringLiteral("another")).nColumns, 0);
}

TEST_F(ContainerPicturesTest, TextsOfOtherTracksStay)
{
    MuxSubtitles(File("a.mkv"), {"subrip", "dvd_subtitle"},
                 {{0, 1000, 1000, "text"}, {1, 1000, 1000, DiscPicture(10, 10, 10, 10, 0)}}, 1000, DiscHeader);
    FFParser parser;
    parser.Open(QString::fromStdString(File("a.mkv")), 1);
    EXPECT_FALSE(parser.AllDuePictures(1500).isEmpty());
    parser.Open(QString::fromStdString(File("a.mkv")), 0);
    EXPECT_TRUE(parser.AllDuePictures(1500).isEmpty()) << "one track has no other's pictures";
    EXPECT_EQ(parser.AllDueTexts(1500), QStringList(QStringLiteral("text")));
}
