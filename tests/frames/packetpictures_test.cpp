// Picture tracks of containers: which pictures are due when, in each codec, and how many are decoded.
#include "parsers/packetpictures.h"
#include "support/blurayset.h"
#include "support/childprocess.h"
#include "support/containerpicturestest.h"

#include <cmath>

namespace
{

class PacketPicturesTest : public ContainerPicturesTest
{
protected:
    void LoadBluRay(const std::vector<MuxedPacket> &packets)
    {
        MuxSubtitles(File("b.mkv"), {"hdmv_pgs_subtitle"}, packets);
        Load(File("b.mkv"));
    }

    static void Convert(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"ffmpeg", "-nostdin", "-v", "error", "-y"});
        const Outcome outcome = ChildProcess::Run(arguments);
        ASSERT_EQ(outcome.nExit, 0) << outcome.strError;
    }
};

} // namespace

TEST_F(PacketPicturesTest, ThoseOfADiscEndWhenTheySay)
{
    constexpr long Delay = 200;
    constexpr long Shown = Delay * 1024 / 90;
    MuxSubtitles(File("a.mkv"), {"dvd_subtitle"},
                 {{0, 1000, 3000, DiscPicture(10, 40, 32, 12, 0, Opaque, Delay)},
                  {0, 6000, 1000, DiscPicture(50, 4, 20, 10, 1)}},
                 1000, DiscHeader);
    Load(File("a.mkv"));
    EXPECT_EQ(At(1000 + Shown - 1, 20, 45), Of(Red, 15));
    EXPECT_EQ(At(1000 + Shown, 20, 45), 0U) << "the container has it longer";
    EXPECT_EQ(At(6999, 60, 8), Of(Green, 15));
    EXPECT_EQ(At(7000, 60, 8), 0U) << "the picture has it longer";
    // A program stream has no durations, palette and canvas size, and is read to its end by the search for streams.
    Convert({"-f", "lavfi", "-i", "color=s=96x64:r=25:d=8", "-i", File("a.mkv"), "-map", "0", "-map", "1", "-c:v",
             "mpeg2video", "-c:s", "copy", "-f", "vob", File("b.vob")});
    Load(File("b.vob"));
    const long start = 1540; // the muxer's delay comes on top
    EXPECT_EQ(At(start - 10, 20, 45), 0U);
    EXPECT_EQ(At(start + 10, 20, 45) >> 24, 255U);
    EXPECT_EQ(At(start + 10, 9, 45), 0U);
    EXPECT_EQ(At(start + 10, 10, 40) >> 24, 255U);
    EXPECT_EQ(At(start + Shown - 2, 20, 45) >> 24, 255U);
    EXPECT_EQ(At(start + Shown + 2, 20, 45), 0U);
    // The durations of MP4 reach to the next.
    Convert({"-i", File("a.mkv"), "-c:s", "copy", File("b.mp4")});
    Load(File("b.mp4"));
    EXPECT_EQ(At(1000 + Shown - 1, 20, 45) >> 24, 255U);
    EXPECT_EQ(At(1000 + Shown, 20, 45), 0U);
    EXPECT_EQ(At(6999, 60, 8) >> 24, 255U);
}

TEST_F(PacketPicturesTest, ThoseOfABluRayBuildOnEachOther)
{
    BluRaySet first;
    first.listColors = {{1, 235, 128, 128, 255}, {2, 16, 128, 128, 100}};
    first.listObjects = {{1, 10, 8, 1}, {2, 20, 6, 2}};
    first.listPlaces = {{1, 4, 5}};
    BluRaySet second = first;
    second.bStart = false;
    second.listColors.clear();
    second.listObjects.clear();
    second.listPlaces = {{2, 30, 40}, {1, 60, 7}};
    BluRaySet none = second;
    none.listPlaces.clear();
    constexpr std::uint32_t Shade = 0x64000000;
    LoadBluRay({{0, 1000, 0, first.Packet()}, {0, 2000, 0, second.Packet()}, {0, 3000, 0, none.Packet()}});
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(At(1500, 5, 6), White);
        EXPECT_EQ(At(1500, 31, 41), 0U);
        EXPECT_EQ(At(2500, 5, 6), 0U) << "each takes the place of the one before it";
        EXPECT_EQ(At(2500, 31, 41), Shade);
        EXPECT_EQ(At(2500, 61, 8), White);
        EXPECT_EQ(At(3500, 31, 41), 0U);
    }
    Load(File("b.mkv"));
    EXPECT_EQ(At(2500, 31, 41), Shade) << "asked for first";
    EXPECT_EQ(At(1500, 5, 6), White);
}

TEST_F(PacketPicturesTest, PacketsMayHoldPartsOfOne)
{
    BluRaySet set;
    set.listColors = {{1, 235, 128, 128, 255}};
    set.listObjects = {{1, 10, 8, 1}};
    set.listPlaces = {{1, 4, 5}};
    BluRaySet none = set;
    none.bStart = false;
    none.listPlaces.clear();
    std::vector<MuxedPacket> packets;
    for (const std::string &segment : set.Segments())
        packets.push_back({0, 90000, 0, segment});
    for (const std::string &segment : none.Segments())
        packets.push_back({0, 180000, 0, segment});
    MuxSubtitles(File("b.sup"), {"hdmv_pgs_subtitle"}, packets, 90000);
    Load(File("b.sup"));
    EXPECT_EQ(At(999, 5, 6), 0U);
    EXPECT_EQ(At(1000, 5, 6), White);
    EXPECT_EQ(At(1999, 13, 12), White);
    EXPECT_EQ(At(2000, 5, 6), 0U);
}

TEST_F(PacketPicturesTest, ThoseOfABluRayLieTogetherWhereTheContainerSaysSo)
{
    const auto set = [](int x, std::uint8_t luma) {
        BluRaySet made;
        made.listColors = {{1, luma, 128, 128, 255}};
        made.listObjects = {{1, 10, 8, 1}};
        made.listPlaces = {{1, x, 5}};
        return made.Packet();
    };
    LoadBluRay({{0, 1000, 3000, set(4, 235)}, {0, 2000, 1000, set(40, 16)}});
    EXPECT_EQ(At(2500, 5, 6), White);
    EXPECT_EQ(At(2500, 41, 6), 0xFF000000);
    EXPECT_EQ(At(3500, 41, 6), 0U);
    EXPECT_EQ(At(3500, 5, 6), White);
}

TEST_F(PacketPicturesTest, BroadcastsShow)
{
    MuxSubtitles(File("a.mkv"), {"dvd_subtitle"},
                 {{0, 1000, 2000, DiscPicture(10, 40, 32, 12, 0, Opaque, 200)},
                  {0, 5000, 2000, DiscPicture(50, 4, 20, 10, 1, Opaque, 200)}},
                 1000, DiscHeader);
    Convert({"-i", File("a.mkv"), "-c:s", "dvbsub", "-copyts", "-muxdelay", "0", File("b.ts")});
    // Which is in the matrix of broadcasts, a byte for each component.
    const auto expectAbout = [&](long ms, int x, int y, std::uint32_t color) {
        const std::uint32_t pixel = At(ms, x, y);
        EXPECT_EQ(pixel >> 24, 255U) << ms;
        for (const int shift : {16, 8, 0})
            EXPECT_NEAR(pixel >> shift & 255, color >> shift & 255, 3) << ms;
    };
    Load(File("b.ts"));
    expectAbout(1500, 20, 45, Red);
    EXPECT_EQ(At(1500, 60, 8), 0U);
    // Transport streams have no durations: an empty page ends it, when the DVD's picture says.
    expectAbout(3274, 20, 45, Red);
    EXPECT_EQ(At(3276, 20, 45), 0U);
    expectAbout(5500, 60, 8, Green);
    EXPECT_EQ(At(5500, 20, 45), 0U);
    expectAbout(1500, 20, 45, Red);
}

TEST_F(PacketPicturesTest, AreAsLargeAsMayBeDecoded)
{
    BluRaySet set;
    set.nWidth = set.nHeight = MaxCanvasSide;
    set.listObjects = {{1, MaxCanvasSide, MaxCanvasSide, 1}};
    set.listPlaces = {{1, 0, 0}};
    std::vector<MuxedPacket> packets;
    for (int i = 0; i < 6; ++i) {
        set.listColors = {{1, static_cast<std::uint8_t>(16 + 30 * i), 128, 128, 255}};
        packets.push_back({0, 1000, 4000, set.Packet()});
    }
    LoadBluRay(packets);
    EXPECT_EQ(At(1500, 48, 32), 0xFF000000 | 0x010101 * static_cast<std::uint32_t>(std::lround(90 * 255 / 219.0)))
        << "the fourth lies on top";
}

TEST_F(PacketPicturesTest, OnesWithErrorsCountAsLargeAsTheirCanvas)
{
    BluRaySet good;
    good.nWidth = good.nHeight = MaxCanvasSide;
    good.listColors = {{1, 235, 128, 128, 255}};
    good.listObjects = {{1, MaxCanvasSide, 2000, 1}};
    good.listPlaces = {{1, 0, 0}};
    BluRaySet bad = good;
    bad.listObjects[0].nRuns = 1;
    for (const int errors : {3, 4}) {
        std::vector<MuxedPacket> packets(errors, {0, 1000, 4000, bad.Packet()});
        packets.push_back({0, 1000, 4000, good.Packet()});
        LoadBluRay(packets);
        EXPECT_EQ(At(1500, 48, 15), errors == 3 ? White : 0U) << errors;
    }
}

TEST_F(PacketPicturesTest, ThoseBeforeOneAreLookedForNoFurtherThanTheBound)
{
    BluRaySet set;
    set.listColors = {{1, 235, 128, 128, 255}};
    set.listObjects = {{1, 10, 8, 1}};
    set.listPlaces = {{1, 4, 5}};
    std::vector<MuxedPacket> packets = {{0, 1000, 0, set.Packet()}};
    set.bStart = false;
    set.listColors.clear();
    set.listObjects.clear();
    for (int i = 1; i <= 1100; ++i)
        packets.push_back({0, 1000 + 10 * i, 0, set.Packet()});
    LoadBluRay(packets);
    EXPECT_EQ(At(1005 + 10 * 1024, 5, 6), White);
    EXPECT_EQ(At(1005 + 10 * 1100, 5, 6), White) << "the decoder goes on from there";
    LoadBluRay(packets);
    EXPECT_EQ(At(1005 + 10 * 1025, 5, 6), 0U);
}

TEST_F(PacketPicturesTest, LargerCanvasesShowNothing)
{
    BluRaySet set;
    set.nWidth = MaxCanvasSide + 1;
    set.nHeight = MaxCanvasSide;
    set.listColors = {{1, 235, 128, 128, 255}};
    set.listObjects = {{1, 10, 8, 1}};
    set.listPlaces = {{1, 4, 5}};
    LoadBluRay({{0, 1000, 0, set.Packet()}});
    EXPECT_EQ(At(1500, 0, 0), 0U);
}
