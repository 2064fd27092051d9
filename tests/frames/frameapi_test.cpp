// The C functions of the frame library.
#include "support/frameapitest.h"
#include "support/guardedframe.h"

#include <thread>

TEST_F(FrameApiTest, NullIsRefused)
{
    SubtitleFrame frame = {};
    EXPECT_EQ(CreateSubtitleBurner(nullptr), nullptr);
    DestroySubtitleBurner(nullptr);
    EXPECT_EQ(SetSubtitleBurnerWhite(nullptr, 203), -1);
    EXPECT_EQ(HasSubtitleTrack(nullptr), -1);
    EXPECT_EQ(IsSubtitleDue(nullptr), -1);
    SubtitleRows rows = {};
    EXPECT_EQ(FindSubtitleRows(nullptr, &rows), -1);
    EXPECT_EQ(FindSubtitleRows(m_pBurner, nullptr), -1);
    EXPECT_EQ(SetSubtitleBurnerTakenRows(nullptr, &rows, 1), -1);
    EXPECT_EQ(SetSubtitleBurnerTakenRows(m_pBurner, nullptr, 1), -1);
    EXPECT_EQ(SetSubtitleBurnerTakenRows(m_pBurner, nullptr, 0), 0);
    EXPECT_EQ(BurnSubtitle(nullptr, &frame), -1);
    EXPECT_EQ(BurnSubtitle(m_pBurner, nullptr), -1);
    EXPECT_EQ(BurnSubtitleAVFrame(nullptr, nullptr), -1);
    EXPECT_EQ(BurnSubtitleAVFrame(m_pBurner, nullptr), -1);
}

TEST_F(FrameApiTest, FormatsAreNamedAndNumberedAsFfmpegs)
{
    EXPECT_EQ(SubtitlePixelFormat("yuv420p"), AV_PIX_FMT_YUV420P);
    EXPECT_EQ(SubtitlePixelFormat("yuv420p10"), AV_PIX_FMT_YUV420P10);
    EXPECT_EQ(SubtitlePixelFormat("p010le"), AV_PIX_FMT_P010LE);
    EXPECT_EQ(SubtitlePixelFormat("x2rgb10"), AV_PIX_FMT_X2RGB10);
    for (const char *name :
         {"", "yuv", "nonsense", "yuv410p", "yuv420p10be", "pal8", "vaapi", "nv24", "rgb565le", "ya8"})
        EXPECT_EQ(SubtitlePixelFormat(name), -1) << name;
    EXPECT_EQ(SubtitlePixelFormat(nullptr), -1);
}

TEST_F(FrameApiTest, WhatIsNotKnownIsRefusedWhetherOrNotASubtitleIsDue)
{
    const auto expectRefused = [this](const char *what, auto change) {
        for (const long time : {1500L, 2500L}) {
            SetSubtitleTimeStamp(m_pHandle, time);
            PlaneFrame frame = NewFrame();
            const PlaneFrame before = frame;
            SubtitleFrame record = frame.Frame();
            change(record);
            EXPECT_EQ(BurnSubtitle(m_pBurner, &record), -1) << what << " at " << time;
            EXPECT_TRUE(frame.Bytes() == before.Bytes()) << what;
            record = frame.Frame();
            EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0) << what;
            EXPECT_EQ(frame.Bytes() == before.Bytes(), time == 2500) << what;
        }
    };
    expectRefused("format", [](SubtitleFrame &frame) { frame.format = AV_PIX_FMT_YUV410P; });
    expectRefused("no format", [](SubtitleFrame &frame) { frame.format = -1; });
    expectRefused("width", [](SubtitleFrame &frame) { --frame.width; });
    expectRefused("height", [](SubtitleFrame &frame) { ++frame.height; });
    expectRefused("size of 0", [](SubtitleFrame &frame) { frame.width = frame.height = 0; });
    expectRefused("plane", [](SubtitleFrame &frame) { frame.data[2] = nullptr; });
    expectRefused("line size", [](SubtitleFrame &frame) { frame.linesize[1] = Width / 2 - 1; });
    expectRefused("negative line size", [](SubtitleFrame &frame) { frame.linesize[0] = 1 - Width; });
    expectRefused("matrix", [](SubtitleFrame &frame) { frame.colorspace = AVCOL_SPC_YCGCO; });
    expectRefused("range", [](SubtitleFrame &frame) { frame.color_range = 3; });
    expectRefused("location", [](SubtitleFrame &frame) { frame.chroma_location = 7; });
    expectRefused("orientation", [](SubtitleFrame &frame) { frame.orientation = 8; });
    expectRefused("negative orientation", [](SubtitleFrame &frame) { frame.orientation = -1; });
    expectRefused("turned size", [](SubtitleFrame &frame) { frame.orientation = SUBTITLE_ORIENTATION_TRANSPOSED; });
    expectRefused("primaries", [](SubtitleFrame &frame) {
        frame.color_trc = AVCOL_TRC_SMPTE2084;
        frame.color_primaries = AVCOL_PRI_SMPTE428;
    });
}

TEST_F(FrameApiTest, AHandleOfNoSizeRefusesAllFrames)
{
    void *handle = CreateVideoSubtitle(0, 0);
    void *burner = CreateSubtitleBurner(handle);
    SubtitleFrame frame = {};
    EXPECT_EQ(BurnSubtitle(burner, &frame), -1);
    DestroySubtitleBurner(burner);
    DestroyVideoSubtitle(handle);
}

TEST_F(FrameApiTest, WhatIsLeftOpenIsTakenAsDocumented)
{
    const auto expectSame = [this](const char *format, auto leaveOpen, auto set) {
        const auto unspecified = [&](SubtitleFrame &frame) {
            frame.colorspace = AVCOL_SPC_UNSPECIFIED;
            frame.color_primaries = AVCOL_PRI_UNSPECIFIED;
            leaveOpen(frame);
        };
        EXPECT_TRUE(Burnt(NewFrame(format), set).Bytes() == Burnt(NewFrame(format), leaveOpen).Bytes()) << format;
        EXPECT_TRUE(Burnt(NewFrame(format), set).Bytes() == Burnt(NewFrame(format), unspecified).Bytes()) << format;
    };
    const auto nothing = [](SubtitleFrame &) {};
    SetSubtitleFontColor(m_pHandle, 250, 40, 10);
    expectSame("yuv420p", nothing, [](SubtitleFrame &frame) {
        frame.colorspace = AVCOL_SPC_BT470BG;
        frame.color_range = AVCOL_RANGE_MPEG;
        frame.chroma_location = AVCHROMA_LOC_LEFT;
    });
    expectSame("yuvj420p", nothing, [](SubtitleFrame &frame) {
        frame.colorspace = AVCOL_SPC_SMPTE170M;
        frame.color_range = AVCOL_RANGE_JPEG;
        frame.chroma_location = AVCHROMA_LOC_CENTER;
    });
    // yuvj420p is full range whatever color_range says.
    expectSame("yuvj420p", nothing, [](SubtitleFrame &frame) { frame.color_range = AVCOL_RANGE_MPEG; });
    expectSame("gray", nothing, [](SubtitleFrame &frame) { frame.color_range = AVCOL_RANGE_JPEG; });
    expectSame("rgb24", nothing, [](SubtitleFrame &frame) {
        frame.color_range = AVCOL_RANGE_MPEG;
        frame.colorspace = AVCOL_SPC_BT2020_CL;
    });
    const auto pq = [](SubtitleFrame &frame) { frame.color_trc = AVCOL_TRC_SMPTE2084; };
    expectSame("yuv444p10", pq, [](SubtitleFrame &frame) {
        frame.color_trc = AVCOL_TRC_SMPTE2084;
        frame.color_primaries = AVCOL_PRI_BT2020;
    });
}

TEST_F(FrameApiTest, AnUnknownMatrixFollowsTheSize)
{
    for (const auto &[width, height, matrix] :
         {std::array<int, 3>{1279, 48, AVCOL_SPC_SMPTE170M}, std::array<int, 3>{1280, 48, AVCOL_SPC_BT709},
          std::array<int, 3>{96, 576, AVCOL_SPC_SMPTE170M}, std::array<int, 3>{96, 577, AVCOL_SPC_BT709}}) {
        void *handle = CreateVideoSubtitle(width, height);
        SetSubtitleFile(handle, m_strFile.c_str(), 0);
        SetSubtitleFontColor(handle, 250, 40, 10);
        SetSubtitleTimeStamp(handle, 1500);
        void *burner = CreateSubtitleBurner(handle);
        PlaneFrame guessed = NewFrame("yuv420p", width, height);
        PlaneFrame told = guessed;
        SubtitleFrame record = guessed.Frame();
        EXPECT_EQ(BurnSubtitle(burner, &record), 0);
        record = told.Frame();
        record.colorspace = matrix;
        EXPECT_EQ(BurnSubtitle(burner, &record), 0);
        EXPECT_TRUE(guessed.Bytes() == told.Bytes()) << width << "x" << height;
        record.colorspace = matrix == AVCOL_SPC_BT709 ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
        EXPECT_EQ(BurnSubtitle(burner, &record), 0);
        EXPECT_FALSE(guessed.Bytes() == told.Bytes()) << width << "x" << height;
        DestroySubtitleBurner(burner);
        DestroyVideoSubtitle(handle);
    }
}

TEST_F(FrameApiTest, Rgb24EqualsProcessSubtitleFrame)
{
    for (int opacity = 0; opacity < 256; ++opacity) {
        SetSubtitleAlpah(m_pHandle, opacity);
        GuardedFrame frame(Width, Height, 7);
        GuardedFrame expected(Width, Height, 7);
        AVPicture picture = expected.Picture();
        EXPECT_EQ(ProcessSubtitleFrame(m_pHandle, &picture), 0);
        picture = frame.Picture();
        const SubtitleFrame record = {
            {picture.data[0]}, {picture.linesize[0]}, Width, Height, AV_PIX_FMT_RGB24, 0, 0, 0, 0, 0, 0, 0};
        EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
        EXPECT_TRUE(frame.Bytes() == expected.Bytes()) << opacity;
        EXPECT_EQ(frame.Bytes() != GuardedFrame(Width, Height, 7).Bytes(), opacity > 0) << opacity;
    }
}

TEST_F(FrameApiTest, SettersAndTimesTakeEffectAtTheNextFrame)
{
    std::vector<PlaneFrame> frames = {Burnt(NewFrame())};
    const auto expectChange = [&](const char *what) {
        frames.push_back(Burnt(NewFrame()));
        EXPECT_FALSE(frames.back().Bytes() == frames[frames.size() - 2].Bytes()) << what;
        EXPECT_TRUE(Burnt(NewFrame()).Bytes() == frames.back().Bytes()) << what;
    };
    SetSubtitleTimeStamp(m_pHandle, 3500);
    expectChange("text");
    SetSubtitlePos(m_pHandle, 30);
    expectChange("position");
    SetSubtitleFontColor(m_pHandle, 10, 200, 30);
    expectChange("colour");
    SetSubtitleOutlineColor(m_pHandle, 100, 20, 30);
    expectChange("outline");
    SetSubtitleAlpah(m_pHandle, 100);
    expectChange("opacity");
    SetSubtitleFontParam(m_pHandle, nullptr, 18, SUBTITLE_STYLE_BOLD);
    expectChange("font");
    SetSubtitleTimeStamp(m_pHandle, 2500);
    expectChange("end");
    EXPECT_TRUE(frames.back().Bytes() == NewFrame().Bytes());
}

TEST_F(FrameApiTest, WhetherASubtitleIsDueIsKnownWithoutAFrame)
{
    for (const long time : {0L, 999L, 1000L, 2000L, 2001L, 2999L, 3000L, 4000L, 4001L, 1500L}) {
        SetSubtitleTimeStamp(m_pHandle, time);
        const int isDue = IsSubtitleDue(m_pBurner);
        EXPECT_EQ(isDue, Burnt(NewFrame()).Bytes() != NewFrame().Bytes()) << time;
        EXPECT_EQ(IsSubtitleDue(m_pBurner), isDue) << time;
    }
    EXPECT_EQ(SetSubtitleFile(m_pHandle, (m_folder.Path() / "none.srt").c_str(), 0), 0);
    SetSubtitleTimeStamp(m_pHandle, 1500);
    EXPECT_EQ(IsSubtitleDue(m_pBurner), 0);
    void *handle = CreateVideoSubtitle(0, 0);
    void *burner = CreateSubtitleBurner(handle);
    EXPECT_EQ(IsSubtitleDue(burner), 0);
    DestroySubtitleBurner(burner);
    DestroyVideoSubtitle(handle);
}

TEST_F(FrameApiTest, MissingTracksAreKnown)
{
    void *handle = CreateVideoSubtitle(Width, Height);
    EXPECT_EQ(HasSubtitleTrack(handle), 0);
    const std::string container =
        m_folder.Write("cues.vtt", "WEBVTT\n\n00:01.000 --> 00:02.000\nText\n\n00:03.000 --> 00:04.000\nother\n");
    const std::string broken = m_folder.Write("broken.mkv", "no container");
    const std::string index = m_folder.Write("refused.idx", "no index\n");
    const std::string missing = (m_folder.Path() / "none").string();
    const auto has = [&](const std::string &file, int track) {
        SetSubtitleFile(handle, file.c_str(), track);
        return HasSubtitleTrack(handle);
    };
    EXPECT_EQ(has(container, 0), 1);
    EXPECT_EQ(has(container, 1), 0);
    EXPECT_EQ(has(container, -1), 0);
    EXPECT_EQ(has(m_strFile, 5), 1);
    EXPECT_EQ(has(broken, 0), 0);
    EXPECT_EQ(has(missing, 0), 0);
    EXPECT_EQ(has(missing + ".srt", 0), 1);
    EXPECT_EQ(has(container, 0), 1);
    EXPECT_EQ(SetSubtitleFile(handle, index.c_str(), 0), -1);
    EXPECT_EQ(HasSubtitleTrack(handle), 0) << "a refused file";
    DestroyVideoSubtitle(handle);
}

TEST_F(FrameApiTest, DescriptionsMayChangeFromFrameToFrame)
{
    const PlaneFrame limited = Burnt(NewFrame());
    const PlaneFrame tenBits = Burnt(NewFrame("yuv420p10"));
    const auto full = [](SubtitleFrame &frame) { frame.color_range = AVCOL_RANGE_JPEG; };
    EXPECT_FALSE(Burnt(NewFrame(), full).Bytes() == limited.Bytes());
    EXPECT_TRUE(Burnt(NewFrame()).Bytes() == limited.Bytes());
    EXPECT_TRUE(Burnt(NewFrame("yuv420p10")).Bytes() == tenBits.Bytes());
}

TEST_F(FrameApiTest, BurnersOfOneHandleOnManyThreads)
{
    const std::array<const char *, 4> formats = {"yuv420p", "nv12", "p010le", "rgb24"};
    std::vector<PlaneFrame> expected;
    for (const char *format : formats)
        expected.push_back(Burnt(NewFrame(format)));
    std::vector<std::thread> threads;
    for (std::size_t n = 0; n < 8; ++n) {
        threads.emplace_back([&, n] {
            void *burner = CreateSubtitleBurner(m_pHandle);
            for (int i = 0; i < 40; ++i) {
                PlaneFrame frame = NewFrame(formats[n % formats.size()]);
                const SubtitleFrame record = frame.Frame();
                EXPECT_EQ(BurnSubtitle(burner, &record), 0);
                EXPECT_TRUE(frame.Bytes() == expected[n % formats.size()].Bytes());
                // Neither changes what these frames show.
                SetSubtitleTimeStamp(m_pHandle, 1400 + i);
                SetSubtitleBurnerWhite(m_pBurner, 100 + i);
            }
            DestroySubtitleBurner(burner);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
}
