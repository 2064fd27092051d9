// Renderers on several threads, for SUBTITLE_SOAK_SECONDS seconds (default 1). Each frame must be one that its renderer
// also shows when it is alone.
#include "support/guardedframe.h"
#include "support/pictureunit.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <set>
#include <thread>

extern "C" {
#include <libavutil/log.h>
}

namespace
{

using Bytes = std::vector<std::uint8_t>;
using Clock = std::chrono::steady_clock;

/** Seconds for one test; the shares of all tests add up to 1. */
double SoakSeconds(double share)
{
    const char *const pSeconds = std::getenv("SUBTITLE_SOAK_SECONDS"); // NOLINT(concurrency-mt-unsafe): no thread yet
    return share * (pSeconds ? std::atof(pSeconds) : 1.0);             // NOLINT(cert-err34-c)
}

bool IsOver(Clock::time_point start, double seconds)
{
    return std::chrono::duration<double>(Clock::now() - start).count() >= seconds;
}

/** Runs the work on a new thread and waits for its end. */
void OnAThread(const std::function<void()> &work)
{
    std::thread(work).join();
}

struct Setting {
    int nAlpha;
    int nPosition;
    int nRed;
    int nOutline;
    int nPoints; ///< at 49 glyphs are drawn from outlines, at the smaller sizes from cached images
    int nStyle;

    void ApplyTo(void *pHandle) const
    {
        SetSubtitleFontParam(pHandle, "DejaVu Sans", nPoints, nStyle);
        SetSubtitleOutlineColor(pHandle, nOutline, 10, 10);
        SetSubtitleFontColor(pHandle, nRed, 240, 200);
        SetSubtitleAlpah(pHandle, nAlpha);
        SetSubtitlePos(pHandle, nPosition);
    }
};

const std::array<Setting, 4> Settings = {{
    {255, 85, 255, 10, 12, 0},
    {128, 40, 200, 30, 15, SUBTITLE_STYLE_BOLD},
    {255, 60, 90, 200, 49, 0},
    {200, 70, 10, 90, 13, SUBTITLE_STYLE_ITALIC},
}};

constexpr int CueCount = 3;
constexpr int FormatCount = 5;

long CueStart(int nCue)
{
    return 1000 + 2000L * nCue;
}

/** A renderer's files, with cues and pictures that no other renderer's files have. */
class OwnFiles
{
public:
    OwnFiles(const TemporaryFolder &folder, int nNumber, int nWidth, int nHeight) :
        m_folder(folder), m_nNumber(nNumber), m_nWidth(nWidth), m_nHeight(nHeight)
    {
    }

    std::array<std::string, FormatCount> Write() const
    {
        return {Srt(), Ass(), Mkv(), Pair("same", m_nWidth, m_nHeight), Pair("scaled", m_nWidth / 2, m_nHeight / 3)};
    }

private:
    std::string Name(const std::string &extension) const { return std::to_string(m_nNumber) + extension; }

    std::string Text(const std::string &format, int nCue) const
    {
        return format + std::to_string(m_nNumber) + std::string(1, static_cast<char>('a' + nCue));
    }

    std::string Srt() const
    {
        std::string text;
        for (int nCue = 0; nCue < CueCount; ++nCue) {
            const std::string hour = "00:00:0" + std::to_string(CueStart(nCue) / 1000);
            text += std::to_string(nCue + 1) + '\n' + hour + ",000 --> " + hour + ",900\n" + Text("s", nCue) + "\n\n";
        }
        return m_folder.Write(Name(".srt"), text);
    }

    std::string Ass() const
    {
        std::string text = "ScriptType: v4.00+\n";
        for (int nCue = 0; nCue < CueCount; ++nCue) {
            const std::string hour = "0:00:0" + std::to_string(CueStart(nCue) / 1000);
            text += "Dialogue: 0," + hour + ".00," + hour + ".90,Default,,0,0,0,,{\\b1}" + Text("d", nCue) + '\n';
        }
        return m_folder.Write(Name(".ass"), text);
    }

    std::string Mkv() const
    {
        std::vector<MuxedPacket> packets;
        for (int nCue = 0; nCue < CueCount; ++nCue)
            packets.push_back({0, CueStart(nCue), 900, Text("m", nCue)});
        const std::string strFile = m_folder.Write(Name(".mkv"), "");
        MuxSubtitles(strFile, {"subrip"}, packets);
        return strFile;
    }

    /** Each picture covers the whole canvas, so that nothing of earlier ones is left. */
    std::string Pair(const std::string &strName, int nWidth, int nHeight) const
    {
        std::mt19937 random(static_cast<unsigned>(100 * m_nNumber + nWidth));
        VobSubPair pair(nWidth, nHeight, {});
        for (int nCue = 0; nCue < CueCount; ++nCue) {
            PictureUnit unit = PictureUnit::Filled(0, 0, nWidth, nHeight, 0);
            for (int y = nHeight / 2; y < nHeight; ++y)
                for (int x = 0; x < nWidth; x += 8)
                    std::fill_n(unit.listPixels.begin() + y * nWidth + x, 8, static_cast<std::uint8_t>(random() % 4));
            pair.listLanguages[0].push_back({static_cast<int>(CueStart(nCue)), unit.Encode(), {}});
        }
        return pair.Write(m_folder, Name(strName));
    }

    const TemporaryFolder &m_folder;
    int m_nNumber;
    int m_nWidth;
    int m_nHeight;
};

/** A renderer, and all frames that it may show. */
class Renderer
{
public:
    Renderer(const TemporaryFolder &folder, int nNumber) :
        m_blank(nNumber % 2 ? 320 : 160, nNumber % 2 ? 120 : 90),
        m_listFiles(OwnFiles(folder, nNumber, m_blank.Width(), m_blank.Height()).Write()),
        m_random(static_cast<unsigned>(nNumber))
    {
        Make();
        for (std::size_t nFile = 0; nFile < FormatCount; ++nFile) {
            Open(nFile);
            for (const Setting &setting : Settings) {
                setting.ApplyTo(m_pHandle);
                for (int nCue = 0; nCue < CueCount; ++nCue)
                    m_listExpected.push_back(FrameAt(CueStart(nCue) + 400));
            }
        }
    }
    ~Renderer() { Drop(); }
    Renderer(const Renderer &) = delete;
    Renderer &operator=(const Renderer &) = delete;

    void Make() { m_pHandle = CreateVideoSubtitle(m_blank.Width(), m_blank.Height()); }
    void Drop()
    {
        DestroyVideoSubtitle(m_pHandle);
        m_pHandle = nullptr;
    }

    /** Shows random cues in random settings; returns how many frames were wrong. */
    int Play(int nSteps)
    {
        int nWrong = 0;
        Open(m_random() % FormatCount);
        for (int nStep = 0; nStep < nSteps; ++nStep) {
            if (m_random() % 8 == 0)
                Open(m_random() % FormatCount);
            const std::size_t nSetting = m_random() % Settings.size();
            Settings[nSetting].ApplyTo(m_pHandle);
            const std::size_t nCue = m_random() % CueCount;
            // Not at its very start, when the picture before it is still due.
            const Bytes frame = FrameAt(CueStart(static_cast<int>(nCue)) + 1 + m_random() % 900);
            nWrong += frame != m_listExpected[(m_nFile * Settings.size() + nSetting) * CueCount + nCue];
            nWrong += FrameAt(CueStart(0) - 1 - m_random() % 900) != m_blank.Bytes();
        }
        return nWrong;
    }

    const std::vector<Bytes> &Expected() const { return m_listExpected; }
    const Bytes &Blank() const { return m_blank.Bytes(); }

private:
    void Open(std::size_t nFile)
    {
        m_nFile = nFile;
        SetSubtitleFile(m_pHandle, m_listFiles[nFile].c_str(), 0);
    }

    Bytes FrameAt(long ms) const
    {
        GuardedFrame frame = m_blank;
        AVPicture picture = frame.Picture();
        SetSubtitleTimeStamp(m_pHandle, ms);
        ProcessSubtitleFrame(m_pHandle, &picture);
        return frame.Bytes();
    }

    const GuardedFrame m_blank;
    const std::array<std::string, FormatCount> m_listFiles;
    std::vector<Bytes> m_listExpected; ///< by file, setting and cue
    std::mt19937 m_random;
    std::size_t m_nFile = 0;
    void *m_pHandle = nullptr;
};

/** One handle that several threads use at once, as the header allows. */
class SharedRenderer
{
public:
    explicit SharedRenderer(const TemporaryFolder &folder) :
        m_listFiles(OwnFiles(folder, 0, m_blank.Width(), m_blank.Height()).Write())
    {
        SetSubtitleFontParam(m_pHandle, "DejaVu Sans", 14, 0);
        // After another file is opened, the old cue stays for a frame. A text file then shows a picture's key as text.
        const std::string strNames = folder.Write(
            "names.ass", "Dialogue: ,0:00:01.00,0:00:02.00,,,,,,,0\nDialogue: ,0:00:03.00,0:00:04.00,,,,,,,1\n"
                         "Dialogue: ,0:00:05.00,0:00:06.00,,,,,,,2\n");
        for (const std::string &strFile : m_listFiles)
            AddFrames(strFile);
        AddFrames(strNames);
        m_setAllowed.insert(m_blank.Bytes());
    }
    ~SharedRenderer() { DestroyVideoSubtitle(m_pHandle); }
    SharedRenderer(const SharedRenderer &) = delete;
    SharedRenderer &operator=(const SharedRenderer &) = delete;

    std::size_t AllowedFrames() const { return m_setAllowed.size(); }

    /** Returns how many frames were none of the allowed ones, which have one whole subtitle or none. */
    int Play(unsigned seed, double seconds) const
    {
        std::mt19937 random(seed);
        const Clock::time_point start = Clock::now();
        int nWrong = 0;
        while (!IsOver(start, seconds)) {
            // Many changes for each frame compared, so that both threads are inside the library most of the time.
            for (int nChange = 0; nChange < 100; ++nChange)
                Change(random);
            if (random() % 4 == 0)
                SetSubtitleFile(m_pHandle, m_listFiles[random() % FormatCount].c_str(), 0);
            nWrong += m_setAllowed.count(Frame()) == 0;
        }
        return nWrong;
    }

private:
    static constexpr std::array Reds = {255, 40};
    static constexpr std::array Alphas = {255, 100};
    static constexpr std::array Positions = {85, 50};

    void Change(std::mt19937 &random) const
    {
        switch (random() % 4) {
        case 0:
            SetSubtitleFontColor(m_pHandle, Reds[random() % 2], 240, 200);
            break;
        case 1:
            SetSubtitleAlpah(m_pHandle, Alphas[random() % 2]);
            break;
        case 2:
            SetSubtitlePos(m_pHandle, Positions[random() % 2]);
            break;
        default:
            SetSubtitleTimeStamp(m_pHandle, 500 + static_cast<long>(random() % 6000));
        }
    }

    void AddFrames(const std::string &strFile)
    {
        SetSubtitleFile(m_pHandle, strFile.c_str(), 0);
        for (int n = 0; n < 8; ++n) {
            SetSubtitleFontColor(m_pHandle, Reds[n & 1], 240, 200);
            SetSubtitleAlpah(m_pHandle, Alphas[n >> 1 & 1]);
            SetSubtitlePos(m_pHandle, Positions[n >> 2]);
            for (int nCue = 0; nCue < CueCount; ++nCue) {
                SetSubtitleTimeStamp(m_pHandle, CueStart(nCue) + 400);
                m_setAllowed.insert(Frame());
            }
        }
    }

    Bytes Frame() const
    {
        GuardedFrame frame = m_blank;
        AVPicture picture = frame.Picture();
        ProcessSubtitleFrame(m_pHandle, &picture);
        return frame.Bytes();
    }

    const GuardedFrame m_blank{160, 90};
    const std::array<std::string, FormatCount> m_listFiles;
    std::set<Bytes> m_setAllowed;
    void *const m_pHandle = CreateVideoSubtitle(160, 90);
};

/** Silences FFmpeg, which would log the end of each container. */
class SoakTest : public testing::Test
{
protected:
    SoakTest() { av_log_set_level(AV_LOG_QUIET); }
};

} // namespace

TEST_F(SoakTest, RenderersShowTheirOwnOnManyThreads)
{
    constexpr int ThreadCount = 8;
    constexpr int StepsPerRound = 40;
    const double seconds = SoakSeconds(0.75);
    const TemporaryFolder folder;
    std::vector<std::unique_ptr<Renderer>> renderers;
    std::set<Bytes> distinct;
    std::size_t nFrames = 0;
    for (int nNumber = 0; nNumber < ThreadCount; ++nNumber) {
        renderers.push_back(std::make_unique<Renderer>(folder, nNumber));
        distinct.insert(renderers.back()->Expected().begin(), renderers.back()->Expected().end());
        distinct.insert(renderers.back()->Blank());
        nFrames += renderers.back()->Expected().size();
    }
    ASSERT_EQ(distinct.size(), nFrames + 2); // and the blank frames of both sizes

    std::atomic<int> nWrong = 0;
    const Clock::time_point start = Clock::now();
    for (std::size_t nRound = 0; nRound < 2 || !IsOver(start, seconds); ++nRound) {
        std::vector<std::thread> threads;
        threads.reserve(renderers.size());
        for (const auto &pRenderer : renderers)
            threads.emplace_back([&] { nWrong += pRenderer->Play(StepsPerRound); });
        for (std::thread &thread : threads)
            thread.join();
        // Some renderers are destroyed and made again on new threads; in every fourth round all, and Qt with them.
        const std::size_t nGoing = nRound % 4 == 3 ? ThreadCount : 1 + nRound % 2;
        const auto forThoseGoing = [&](void (Renderer::*pWork)()) {
            for (std::size_t n = 0; n < nGoing; ++n)
                ((*renderers[(nRound + n) % ThreadCount]).*pWork)();
        };
        OnAThread([&] { forThoseGoing(&Renderer::Drop); });
        OnAThread([&] { forThoseGoing(&Renderer::Make); });
    }
    EXPECT_EQ(nWrong, 0);
}

TEST_F(SoakTest, HandleShowsWholeSubtitlesOnTwoThreads)
{
    const double seconds = SoakSeconds(0.25);
    const TemporaryFolder folder;
    const SharedRenderer renderer(folder);
    // Four text files of three cues in 8 settings each; two picture files of three pictures in 4, as pictures have no
    // colour to set; and the blank frame.
    ASSERT_EQ(renderer.AllowedFrames(), 4U * 3 * 8 + 2 * 3 * 4 + 1);
    int nWrong = 0;
    std::thread thread([&] { nWrong = renderer.Play(1, seconds); });
    const int nWrongHere = renderer.Play(2, seconds);
    thread.join();
    EXPECT_EQ(nWrong, 0);
    EXPECT_EQ(nWrongHere, 0);
}
