// The shared library when memory runs out: it must survive and show no wrong frame.
//
// Not every allocation is made to fail. When HarfBuzz gets no memory, Qt continues with glyphs of wrong or no width;
// Qt's text layouts crash when they cannot grow; FFmpeg's demuxers do not check all their allocations. So while text is
// painted or a container is opened, small allocations fail only if the library itself makes them.
#include "support/faultstest.h"
#include "support/faultymemory.h"
#include "support/plaincanvas.h"
#include "support/programstream.h"
#include "vobsub/psstream.h"
#include "vobsub/subtitledecoder.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <set>

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

bool bLocalesFail = false;

} // namespace

/** Overrides the C library's, whose own allocations cannot be made to fail apart from others. */
extern "C" locale_t newlocale(int nMask, const char *pName, locale_t base) noexcept
{
    if (bLocalesFail) {
        errno = ENOMEM;
        return nullptr;
    }
    static const auto pLibrarys = reinterpret_cast<decltype(&newlocale)>(dlsym(RTLD_NEXT, "newlocale"));
    return pLibrarys(nMask, pName, base);
}

namespace
{

using faultymemory::Selection;

const Selection Every;
const Selection Own = {0, reinterpret_cast<const void *>(&CreateVideoSubtitle), false};

class MemoryFaultsTest : public FaultsTest
{
protected:
    explicit MemoryFaultsTest(int nWidth = 96, int nHeight = 64, int nCues = 6) : FaultsTest(nWidth, nHeight, nCues) {}

    void BeginCall(Call call) override
    {
        if (m_setCalls.count(call) != 0)
            faultymemory::Go();
    }
    void EndCall() override { faultymemory::Pause(); }

    /** Runs a task in forks. In each another allocation fails, alone or with all after it. @return all results. */
    template <typename Task>
    std::set<int> ResultsOf(Selection selection, Task task)
    {
        faultymemory::Choose(selection);
        EXPECT_EQ(RunForked([&] { return task() == 0 && faultymemory::Count() > 0 ? 0 : 1; }), 0);
        std::set<int> setResults;
        for (const bool bLasting : {false, true}) {
            selection.bLasting = bLasting;
            for (long n = 0;; ++n) {
                faultymemory::Choose(selection, n);
                const int nResult = RunForked([&] {
                    const int nTask = task();
                    return faultymemory::Count() <= n ? 100 : nTask;
                });
                if (nResult == 100)
                    break;
                setResults.insert(nResult);
                if (nResult < 0)
                    break;
            }
        }
        return setResults;
    }

    /** The results of using a file while allocations in these calls fail. */
    std::set<int> ResultsOf(const File &file, const Selection &selection, const std::set<Call> &setCalls)
    {
        return ResultsOf(selection, [&] {
            m_setCalls = setCalls;
            const Result result = Use(file);
            m_setCalls.clear();
            return result < WrongFrame && Use(file) != Shown ? WrongAfterwards : static_cast<int>(result);
        });
    }

    static bool IsContainer(const File &file) { return file.strName.find(".mkv") != std::string::npos; }

    std::set<Call> m_setCalls;
};

class LargeMemoryFaultsTest : public MemoryFaultsTest
{
protected:
    LargeMemoryFaultsTest() : MemoryFaultsTest(640, 360, 700) {}
};

} // namespace

TEST_F(MemoryFaultsTest, FileIsOpenedWholeOrNotAtAll)
{
    for (const File &file : m_listFiles) {
        std::set<int> setResults = ResultsOf(file, IsContainer(file) ? Own : Every, {Call::Open});
        // Shown: nothing else depends on atexit(), and the canvas of an index is allocated again when it is needed.
        if (!IsContainer(file))
            setResults.erase(Shown);
        EXPECT_EQ(setResults, std::set<int>{Refused}) << file.strName;
    }
}

TEST_F(MemoryFaultsTest, TimeThatCannotBeLookedUpShowsNothing)
{
    std::set<int> setExpected = {Partly, Nothing};
    // Qt 6 makes some of the pictures' keys without allocating, so some pictures always show.
    if (QT_GENERATION == 6)
        setExpected.erase(Nothing);
    EXPECT_EQ(ResultsOf(m_listFiles.back(), Every, {Call::Time}), setExpected);
}

TEST_F(MemoryFaultsTest, PictureIsShownWholeOrNotAtAll)
{
    // A new handle, which has to allocate everything anew.
    DestroyVideoSubtitle(m_pHandle);
    m_pHandle = CreateVideoSubtitle(m_nWidth, m_nHeight);
    EXPECT_EQ(ResultsOf(m_listFiles.back(), Every, {Call::Frame}), (std::set<int>{Shown, Partly, Nothing}));
}

TEST_F(MemoryFaultsTest, TextIsShownWholeOrNotAtAll)
{
    for (const File &file : m_listFiles) {
        if (&file == &m_listFiles.back())
            break;
        EXPECT_EQ(ResultsOf(file, Own, {Call::Frame}), (std::set<int>{Shown, Partly, Nothing})) << file.strName;
    }
}

TEST_F(LargeMemoryFaultsTest, LargeAllocationsMayAllFail)
{
    const Selection large = {16 * 1024, nullptr, false};
    for (const File &file : m_listFiles) {
        const std::set<int> setResults = ResultsOf(file, large, {Call::Open, Call::Time, Call::Frame});
        ASSERT_FALSE(setResults.empty()) << file.strName;
        EXPECT_GE(*setResults.begin(), Shown) << file.strName;
        EXPECT_LE(*setResults.rbegin(), Refused) << file.strName;
    }
}

TEST_F(MemoryFaultsTest, TextToBmpHandsOutTheBitmapOrNone)
{
    const File &file = m_listFiles.front();
    ASSERT_EQ(SetSubtitleFile(m_pHandle, file.strName.c_str(), 0), 0);
    ASSERT_EQ(SetSubtitleTimeStamp(m_pHandle, m_listTimes[1]), 0);
    EXPECT_EQ(Process(), 0);
    AVPicture right = {};
    int rectRight[4] = {};
    ASSERT_EQ(TextToBmp(m_pHandle, "Bitmap", &right, rectRight), 0);
    AVPicture out = {};
    int rect[4] = {};
    ASSERT_EQ(TextToBmp(m_pHandle, "Earlier", &out, rect), 0);
    SetSubtitleTimeStamp(m_pHandle, m_listTimes[0]);
    SetSubtitleTimeStamp(m_pHandle, m_listTimes[1]);
    EXPECT_EQ(Process(), 0);
    EXPECT_TRUE(m_frame == file.listFrames[1]);

    const auto task = [&] {
        faultymemory::Go();
        const int nResult = TextToBmp(m_pHandle, "Bitmap", &out, rect);
        faultymemory::Pause();
        if (nResult == 0) {
            const bool bRight = std::equal(rect, rect + 4, rectRight) && out.linesize[0] == right.linesize[0] &&
                                std::equal(out.data[0], out.data[0] + rect[2] * rect[3], right.data[0]) &&
                                std::equal(out.data[1], out.data[1] + 1024, right.data[1]);
            return bRight ? 0 : 2;
        }
        if (nResult != -1 || out.data[0] || out.data[1])
            return 3;
        // The subtitle shows again.
        return Process() == 0 && m_frame == file.listFrames[1] ? 1 : 4;
    };
    EXPECT_EQ(ResultsOf(Own, task), (std::set<int>{1}));
    EXPECT_EQ(ResultsOf({0, reinterpret_cast<const void *>(&av_mallocz), false}, task), (std::set<int>{1}));
    EXPECT_EQ(ResultsOf({static_cast<std::size_t>(m_nWidth) * m_nHeight * 4, nullptr, false}, task),
              (std::set<int>{1}));
    for (AVPicture *picture : {&right, &out}) {
        av_freep(&picture->data[0]);
        av_freep(&picture->data[1]);
    }
}

TEST_F(MemoryFaultsTest, HandleIsMadeWholeOrNotAtAll)
{
    const auto task = [&] {
        DestroyVideoSubtitle(m_pHandle); // so that the next handle is the first again
        faultymemory::Go();
        void *pHandle = CreateVideoSubtitle(m_nWidth, m_nHeight);
        faultymemory::Pause();
        const bool bFailed = !pHandle;
        if (bFailed)
            pHandle = CreateVideoSubtitle(m_nWidth, m_nHeight);
        m_frame = m_untouched;
        AVPicture picture = {{m_frame.data()}, {m_nWidth * 3}};
        if (SetSubtitleFile(pHandle, m_listFiles[0].strName.c_str(), 0) != 0 ||
            SetSubtitleTimeStamp(pHandle, m_listTimes[1]) != 0 || ProcessSubtitleFrame(pHandle, &picture) != 0 ||
            m_frame != m_listFiles[0].listFrames[1])
            return 2;
        DestroyVideoSubtitle(pHandle);
        return bFailed ? 1 : 0;
    };
    EXPECT_EQ(ResultsOf(Own, task), (std::set<int>{1}));
}

TEST_F(MemoryFaultsTest, HandleIsNotMadeWithoutTheLocalesCodec)
{
    EXPECT_EQ(RunForked([&] {
                  DestroyVideoSubtitle(m_pHandle);
                  bLocalesFail = true;
                  void *pHandle = CreateVideoSubtitle(m_nWidth, m_nHeight);
                  bLocalesFail = false;
                  if (pHandle)
                      return 1;
                  pHandle = CreateVideoSubtitle(m_nWidth, m_nHeight);
                  DestroyVideoSubtitle(pHandle);
                  return pHandle ? 0 : 2;
              }),
              0);
}

TEST_F(MemoryFaultsTest, LastHandleIsDestroyedWithoutMemory)
{
    EXPECT_EQ(RunForked([&] {
                  faultymemory::Choose({0, nullptr, true}, 0);
                  faultymemory::Go();
                  DestroyVideoSubtitle(m_pHandle);
                  faultymemory::Pause();
                  return 0;
              }),
              0);
}

TEST_F(MemoryFaultsTest, FontIsChangedWholeOrNotAtAll)
{
    const File &file = m_listFiles.front();
    ASSERT_EQ(SetSubtitleFile(m_pHandle, file.strName.c_str(), 0), 0);
    ASSERT_EQ(SetSubtitleTimeStamp(m_pHandle, m_listTimes[1]), 0);
    const auto task = [&] {
        faultymemory::Go();
        const int nResult = SetSubtitleFontParam(m_pHandle, "DejaVu Serif", 20, 3);
        faultymemory::Pause();
        if (!IsResult(nResult) || Process() != 0 || (m_frame == file.listFrames[1]) != (nResult == -1))
            return 2;
        return nResult == -1 ? 1 : 0;
    };
    EXPECT_EQ(ResultsOf(Own, task), (std::set<int>{1}));
}

TEST_F(MemoryFaultsTest, DecoderNeedsNoMemoryButItsCanvas)
{
    constexpr int Rows = 700; // more than any canvas before had
    const PictureUnit unit = PictureUnit::Filled(2, 3, 40, 10, 1);
    const std::array<unsigned int, 16> palette = {0x101010, 0xEBEBEB};
    const std::vector<std::uint8_t> alpha = PlainCanvas(96, Rows).Draw(unit, palette).Alpha();
    std::vector<std::uint8_t> stream = ProgramStream().Private(0x20, unit.Encode()).Private(0x20, unit.Encode()).Get();
    subtitle_init(palette.data(), 96, Rows);
    faultymemory::Choose({0, nullptr, true}, 0);
    faultymemory::Go();
    DecodePSStream(stream.data(), static_cast<int>(stream.size()));
    faultymemory::Pause();
    EXPECT_EQ(faultymemory::Count(), 0);
    EXPECT_TRUE(std::equal(alpha.begin(), alpha.end(), mediadata.plane[3]));
    subtitle_release();
}

TEST_F(MemoryFaultsTest, DecoderWithoutMemoryHasNoCanvas)
{
    const std::array<unsigned int, 16> palette = {};
    for (long n = 0; n < 5; ++n) {
        faultymemory::Choose(Every, n);
        faultymemory::Go();
        EXPECT_EQ(subtitle_init(palette.data(), 96, 64), 1);
        faultymemory::Pause();
        EXPECT_EQ(mediadata.plane[0], nullptr);
        EXPECT_EQ(mediadata.plane[3], nullptr);
        EXPECT_EQ(Coded_Picture_Width, 0);
        subtitle_release();
    }
}
