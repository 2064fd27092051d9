// Memory use of the frame library: a frame like the one before allocates nothing, and when memory runs out a frame is
// drawn whole or not at all.
#include "support/faultymemory.h"
#include "support/frameapitest.h"
#include "support/pictureunit.h"
#include "support/subtitlemuxer.h"

class FrameMemoryTest : public FrameApiTest, public testing::WithParamInterface<int>
{
protected:
    FrameMemoryTest() { EXPECT_EQ(SetSubtitleBurnerLook(m_pBurner, GetParam()), 0); }

    /** Burns several frames alike, of which only the first may allocate memory. */
    void ExpectSteady(const char *format)
    {
        PlaneFrame frame = NewFrame(format);
        const PlaneFrame before = frame;
        const SubtitleFrame record = frame.Frame();
        EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
        EXPECT_FALSE(frame.Bytes() == before.Bytes());
        faultymemory::Choose({});
        faultymemory::Go();
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
        faultymemory::Pause();
        EXPECT_EQ(faultymemory::Count(), 0) << format;
    }
};

INSTANTIATE_TEST_SUITE_P(Looks, FrameMemoryTest, testing::Values(SUBTITLE_LOOK_EXACT, SUBTITLE_LOOK_NATURAL),
                         [](const auto &info) { return info.param == SUBTITLE_LOOK_EXACT ? "Exact" : "Natural"; });

TEST_P(FrameMemoryTest, ASteadyFrameAllocatesNothing)
{
    const char *const formats[] = {"yuv420p", "yuyv422", "p010le", "gbrp10", "rgba", "yuva420p"};
    for (const char *format : formats) {
        for (const int opacity : {255, 128}) {
            SetSubtitleAlpah(m_pHandle, opacity);
            ExpectSteady(format);
        }
    }
}

TEST_P(FrameMemoryTest, ASteadyFrameBesideTakenRowsAllocatesNothing)
{
    const SubtitleRows taken[] = {{40, 10}, {0, 5}};
    EXPECT_EQ(SetSubtitleBurnerTakenRows(m_pBurner, taken, 2), 0);
    ExpectSteady("yuv420p");
    faultymemory::Choose({});
    faultymemory::Go();
    SubtitleRows rows = {};
    const int isSet = SetSubtitleBurnerTakenRows(m_pBurner, taken, 2);
    const int isDue = FindSubtitleRows(m_pBurner, &rows);
    faultymemory::Pause();
    EXPECT_EQ(isSet, 0);
    EXPECT_EQ(isDue, 1);
    EXPECT_EQ(faultymemory::Count(), 0);
}

TEST_P(FrameMemoryTest, WithoutMemoryTheTakenRowsStay)
{
    const SubtitleRows taken = {40, 10};
    const SubtitleRows others[] = {{40, 10}, {0, 5}};
    EXPECT_EQ(SetSubtitleBurnerTakenRows(m_pBurner, &taken, 1), 0);
    const PlaneFrame expected = Burnt(NewFrame("yuv420p"));
    for (int failures = 0; failures < 3; ++failures) {
        faultymemory::Choose({}, failures);
        faultymemory::Go();
        const int result = SetSubtitleBurnerTakenRows(m_pBurner, others, 2);
        faultymemory::Pause();
        EXPECT_EQ(result, -1);
        EXPECT_TRUE(Burnt(NewFrame("yuv420p")).Bytes() == expected.Bytes());
    }
    EXPECT_EQ(SetSubtitleBurnerTakenRows(m_pBurner, others, 2), 0);
}

TEST_P(FrameMemoryTest, WithoutMemoryAFrameIsUntouchedAndTheNextOneIsDrawn)
{
    for (const char *format : {"yuv420p", "p010le", "rgba"}) {
        for (const int opacity : {255, 128}) {
            SetSubtitleAlpah(m_pHandle, opacity);
            const PlaneFrame expected = Burnt(NewFrame(format));
            long failures = 0;
            for (bool isDrawn = false; !isDrawn; ++failures) {
                // A new burner, which has to build everything anew.
                void *burner = CreateSubtitleBurner(m_pHandle);
                EXPECT_EQ(SetSubtitleBurnerLook(burner, GetParam()), 0);
                PlaneFrame frame = NewFrame(format);
                const SubtitleFrame record = frame.Frame();
                faultymemory::Choose({}, failures);
                faultymemory::Go();
                const int result = BurnSubtitle(burner, &record);
                faultymemory::Pause();
                isDrawn = result == 0;
                EXPECT_TRUE(frame.Bytes() == (isDrawn ? expected.Bytes() : NewFrame(format).Bytes())) << failures;
                EXPECT_EQ(BurnSubtitle(burner, &record), 0);
                EXPECT_TRUE(isDrawn || frame.Bytes() == expected.Bytes()) << failures;
                DestroySubtitleBurner(burner);
            }
            EXPECT_GT(failures, 2) << format << " at " << opacity;
        }
    }
}

/** A handle with two pictures of a container due at once, and a burner with the natural look. */
class FramePicturesTest : public FrameApiTest
{
protected:
    FramePicturesTest()
    {
        MuxSubtitles(File(), {"dvd_subtitle"}, {{0, 1000, 5000, Picture(10, 1)}, {0, 1500, 5000, Picture(20, 2)}}, 1000,
                     "size: 96x54\n");
        EXPECT_EQ(SetSubtitleFile(m_pHandle, File().c_str(), 0), 0);
        EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, 2000), 0);
        EXPECT_EQ(SetSubtitleBurnerLook(m_pBurner, SUBTITLE_LOOK_NATURAL), 0);
    }
    std::string File() const { return (m_folder.Path() / "pictures.mkv").string(); }

    /** The result of burning after opening the file, if an allocation of the library with @p code fails. */
    std::pair<int, PlaneFrame> BurntWithout(long failure, const void *code)
    {
        EXPECT_EQ(SetSubtitleFile(m_pHandle, File().c_str(), 0), 0);
        PlaneFrame frame = NewFrame("rgba");
        const SubtitleFrame record = frame.Frame();
        faultymemory::Choose({0, code}, failure);
        faultymemory::Go();
        const int result = BurnSubtitle(m_pBurner, &record);
        faultymemory::Pause();
        return {result, frame};
    }

    static std::string Picture(int x, int code)
    {
        PictureUnit unit = PictureUnit::Filled(x, 10, 30, 20, code);
        unit.nContrasts = 0xF880;
        unit.nStopDelay = 0xFFFF;
        const std::vector<std::uint8_t> bytes = unit.Encode();
        return {bytes.begin(), bytes.end()};
    }
};

TEST_F(FramePicturesTest, ASteadyFrameAllocatesNothing)
{
    for (const char *format : {"rgb24", "yuv420p", "p010le"}) {
        PlaneFrame frame = NewFrame(format);
        const PlaneFrame before = frame;
        const SubtitleFrame record = frame.Frame();
        EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, 2000), 0);
        EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
        EXPECT_FALSE(frame.Bytes() == before.Bytes());
        faultymemory::Choose({});
        faultymemory::Go();
        for (int i = 1; i < 4; ++i) {
            EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, 2000 + 40 * i), 0);
            EXPECT_EQ(IsSubtitleDue(m_pBurner), 1);
            EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
        }
        faultymemory::Pause();
        EXPECT_EQ(faultymemory::Count(), 0) << format;
    }
}

TEST_F(FramePicturesTest, WithoutMemoryAFrameIsUntouchedAndTheNextOneIsDrawn)
{
    const PlaneFrame expected = Burnt(NewFrame("rgba"));
    long failures = 0;
    for (bool isDrawn = false; !isDrawn; ++failures) {
        const auto [result, frame] = BurntWithout(failures, reinterpret_cast<const void *>(&SetSubtitleFile));
        isDrawn = faultymemory::Count() <= failures;
        EXPECT_EQ(result, isDrawn ? 0 : -1) << failures;
        EXPECT_TRUE(frame.Bytes() == (isDrawn ? expected.Bytes() : NewFrame("rgba").Bytes())) << failures;
        EXPECT_TRUE(Burnt(NewFrame("rgba")).Bytes() == expected.Bytes()) << failures;
    }
    EXPECT_GT(failures, 10);
}

TEST_F(FramePicturesTest, WithoutMemoryInFFmpegPicturesAreWholeOrLeftOut)
{
    std::vector<PlaneFrame> expected = {NewFrame("rgba")};
    for (const long ms : {1200, 6200, 2000}) {
        EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, ms), 0);
        expected.push_back(Burnt(NewFrame("rgba")));
    }
    long failures = 0;
    for (bool isDrawn = false; !isDrawn; ++failures) {
        const auto [result, frame] = BurntWithout(failures, nullptr);
        isDrawn = faultymemory::Count() <= failures;
        const PlaneFrame &burnt = frame;
        EXPECT_TRUE(std::any_of(expected.begin(), expected.end(), [&](const PlaneFrame &other) {
            return burnt.Bytes() == other.Bytes();
        })) << failures;
        EXPECT_TRUE(result == 0 || burnt.Bytes() == expected.front().Bytes()) << failures;
        EXPECT_TRUE(!isDrawn || burnt.Bytes() == expected.back().Bytes()) << failures;
    }
    EXPECT_GT(failures, 40);
}

class FrameApiMemoryTest : public FrameApiTest
{
};

TEST_F(FrameApiMemoryTest, WithoutMemoryThereIsNoBurner)
{
    faultymemory::Choose({}, 0);
    faultymemory::Go();
    void *burner = CreateSubtitleBurner(m_pHandle);
    faultymemory::Pause();
    EXPECT_EQ(burner, nullptr);
}
