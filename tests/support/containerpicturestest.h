#pragma once

#include "frames/libsubtitleframe.h"
#include "render/videosubtitle.h"
#include "support/callingvisitor.h"
#include "support/pictureunit.h"
#include "support/planeframe.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

/** A renderer of small frames, and a burner with the natural look, for pictures in the tracks of containers. */
class ContainerPicturesTest : public testing::Test
{
protected:
    using Visitor = CallingVisitor<NaturalVisitor, NaturalSubtitle>;

    static constexpr int Width = 96;
    static constexpr int Height = 64;
    static constexpr unsigned Opaque = 0xFFFF;
    static constexpr std::uint32_t White = 0xFFFFFFFF;

    static constexpr std::uint32_t Red = 0xFF0000;
    static constexpr std::uint32_t Green = 0x00FF00;
    static constexpr std::uint32_t Blue = 0x0000FF;
    static constexpr std::uint32_t Yellow = 0xFFFF00;

    /** What stands ahead of a track of a DVD's pictures: the first colours of the palette are those above. */
    static constexpr char DiscHeader[] =
        "size: 96x64\npalette: ff0000, 00ff00, 0000ff, ffff00, 000000, 000000, 000000, 000000, 000000, "
        "000000, 000000, 000000, 000000, 000000, 000000, 000000\n";

    /**
     * A rectangle of one of the first four colours.
     * @param contrasts  of the four colours; 15 is opaque.
     * @param stopDelay  when it ends, in 1024/90 ms.
     */
    static std::string DiscPicture(int x, int y, int width, int height, int color, unsigned contrasts = Opaque,
                                   unsigned stopDelay = 0xFFFF)
    {
        PictureUnit unit = PictureUnit::Filled(x, y, width, height, 1);
        unit.nColours = static_cast<unsigned>(color) << 4;
        unit.nContrasts = contrasts;
        unit.nStopDelay = stopDelay;
        const std::vector<std::uint8_t> bytes = unit.Encode();
        return {bytes.begin(), bytes.end()};
    }

    ContainerPicturesTest() { m_renderer.CreateVideoSubtitle(Width, Height); }
    ~ContainerPicturesTest() override { DestroySubtitleBurner(m_pBurner); }

    std::string File(const std::string &name) const { return (m_folder.Path() / name).string(); }

    void Load(const std::string &path) { ASSERT_EQ(m_renderer.SetSubtitleFile(path.c_str(), 0), 0); }

    void LoadDisc(const std::vector<MuxedPacket> &packets)
    {
        MuxSubtitles(File("a.mkv"), {"dvd_subtitle"}, packets, 1000, DiscHeader);
        Load(File("a.mkv"));
    }

    /** The picture that shows, without its colour where it is transparent. */
    std::uint32_t At(long ms, int x, int y)
    {
        std::uint32_t pixel = 0;
        Visitor visitor([&](const NaturalSubtitle &shown) {
            const FrameArea &area = shown.picture;
            EXPECT_TRUE(shown.text.IsEmpty());
            if (shown.nVersion != 0 && x >= area.nLeft && x < area.nLeft + area.nColumns && y >= area.nTop &&
                y < area.nTop + area.nRows)
                pixel = shown.pPicture[static_cast<std::size_t>(y - area.nTop) * area.nColumns + (x - area.nLeft)];
        });
        m_renderer.SetTimeStamp(ms);
        EXPECT_EQ(m_renderer.VisitNatural({}, visitor), 0);
        return pixel >> 24 == 0 ? 0 : pixel;
    }

    PlaneFrame Burnt(const char *format, const PlaneFrame &before)
    {
        PlaneFrame frame = before;
        SubtitleFrame record = frame.Frame();
        record.format = SubtitlePixelFormat(format);
        record.colorspace = AVCOL_SPC_SMPTE170M;
        record.color_range = AVCOL_RANGE_JPEG;
        EXPECT_EQ(SetSubtitleBurnerLook(m_pBurner, SUBTITLE_LOOK_NATURAL), 0);
        EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
        return frame;
    }

    static std::uint32_t Of(std::uint32_t color, unsigned contrast) { return contrast * 17 << 24 | color; }

    TemporaryFolder m_folder;
    VideoSubtitle m_renderer;
    void *m_pBurner = CreateSubtitleBurner(&m_renderer);
};
