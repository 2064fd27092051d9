// Memory in the library for the frames of decoders: a steady frame asks for none, and where there is none a frame is
// drawn whole or not at all.
#include "support/faultymemory.h"
#include "support/frameapitest.h"

class FrameMemoryTest : public FrameApiTest, public testing::WithParamInterface<int>
{
protected:
    FrameMemoryTest() { EXPECT_EQ(SetSubtitleBurnerLook(m_pBurner, GetParam()), 0); }

    /** Burns more frames like one, of which only the first may ask for memory. */
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

TEST_P(FrameMemoryTest, WithoutMemoryAFrameIsUntouchedAndTheNextOneIsDrawn)
{
    for (const char *format : {"yuv420p", "p010le", "rgba"}) {
        for (const int opacity : {255, 128}) {
            SetSubtitleAlpah(m_pHandle, opacity);
            const PlaneFrame expected = Burnt(NewFrame(format));
            long failures = 0;
            for (bool isDrawn = false; !isDrawn; ++failures) {
                // Another burner, which has to build all anew.
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

TEST_F(FrameApiTest, WithoutMemoryThereIsNoBurner)
{
    faultymemory::Choose({}, 0);
    faultymemory::Go();
    void *burner = CreateSubtitleBurner(m_pHandle);
    faultymemory::Pause();
    EXPECT_EQ(burner, nullptr);
}
