#pragma once

#include "support/forked.h"
#include "support/pictureunit.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include "libsubtitle.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

/** A subtitle file of each kind, and what a host gets from it without and with faults. */
class FaultsTest : public testing::Test
{
protected:
    using Frame = std::vector<std::uint8_t>;

    struct File {
        std::string strName;
        std::vector<Frame> listFrames; ///< at m_listTimes
    };

    /** The outcome of one use of a file. */
    enum Result {
        Shown = 0,   ///< opened, every frame right
        Partly = 1,  ///< opened, some frames right and the others untouched
        Nothing = 2, ///< opened, every frame untouched
        Refused = 3, ///< not opened, every frame untouched
        WrongFrame = 10,
        WrongResult = 11,
        WrongAfterwards = 12,
    };

    /** Which of the library's functions is called. */
    enum class Call { Open, Time, Frame };

    /** @param nCues  in each text file, one a second. */
    FaultsTest(int nWidth, int nHeight, int nCues) :
        m_nWidth(nWidth),
        m_nHeight(nHeight),
        m_nCues(nCues),
        m_listTimes({500, 1500, 2500, nCues / 2 * 1000L + 500, nCues * 1000L + 500}),
        m_pHandle(CreateVideoSubtitle(nWidth, nHeight)),
        m_untouched(static_cast<std::size_t>(nWidth) * nHeight * 3, 90),
        m_frame(m_untouched)
    {
    }
    ~FaultsTest() override { DestroyVideoSubtitle(m_pHandle); }

    void SetUp() override
    {
        for (const std::string &strName : WriteFiles()) {
            ASSERT_EQ(SetSubtitleFile(m_pHandle, strName.c_str(), 0), 0) << strName;
            File file{strName, {}};
            for (const long ms : m_listTimes) {
                EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, ms), 0);
                EXPECT_EQ(Process(), 0);
                EXPECT_EQ(m_frame == m_untouched, ms == m_listTimes.front()) << strName << ' ' << ms;
                file.listFrames.push_back(m_frame);
            }
            m_listFiles.push_back(file);
        }
    }

    /** Called around each call of the library: faults may happen only in between. */
    virtual void BeginCall(Call /*call*/) {}
    virtual void EndCall() {}

    /** Burns the current subtitle into m_frame. The test itself allocates nothing here. */
    int Process()
    {
        m_frame = m_untouched;
        AVPicture picture = {{m_frame.data()}, {m_nWidth * 3}};
        BeginCall(Call::Frame);
        const int nResult = ProcessSubtitleFrame(m_pHandle, &picture);
        EndCall();
        return nResult;
    }

    /** Opens a file and processes two frames for each of the times. */
    Result Use(const File &file)
    {
        BeginCall(Call::Open);
        const int nOpened = SetSubtitleFile(m_pHandle, file.strName.c_str(), 0);
        EndCall();
        std::size_t nRight = 0;
        for (std::size_t n = 0; n < m_listTimes.size(); ++n) {
            BeginCall(Call::Time);
            const int nTime = SetSubtitleTimeStamp(m_pHandle, m_listTimes[n]);
            EndCall();
            for (int nTry = 0; nTry < 2; ++nTry) {
                const int nFrame = Process();
                if (!IsResult(nOpened) || !IsResult(nTime) || !IsResult(nFrame))
                    return WrongResult;
                const bool bMayShow = nOpened == 0 && nTime == 0 && nFrame == 0;
                if (m_frame != m_untouched && !(bMayShow && m_frame == file.listFrames[n]))
                    return WrongFrame;
            }
            nRight += m_frame != m_untouched ? 1 : 0;
        }
        if (nRight == m_listTimes.size() - 1)
            return Shown;
        return nOpened != 0 ? Refused : nRight == 0 ? Nothing : Partly;
    }

    /** Calls Use() with a fault in a fork, and then once more without it. */
    template <typename Begin, typename End>
    int UseWithFault(const File &file, Begin begin, End end)
    {
        return RunForked([&] {
            begin();
            const Result result = Use(file);
            end();
            return result < WrongFrame && Use(file) != Shown ? WrongAfterwards : result;
        });
    }

    static bool IsResult(int nResult) { return nResult == 0 || nResult == -1; }

    const int m_nWidth;
    const int m_nHeight;
    const int m_nCues;
    const std::vector<long> m_listTimes; ///< nothing is due at the first one
    TemporaryFolder m_folder;
    void *m_pHandle;
    const Frame m_untouched;
    Frame m_frame;
    std::vector<File> m_listFiles;

private:
    std::vector<std::string> WriteFiles() const
    {
        std::string srt;
        std::string ass = "[Script Info]\nScriptType: v4.00+\n[Events]\n";
        std::vector<MuxedPacket> packets;
        for (int n = 1; n <= m_nCues; ++n) {
            const std::string text = "Cue " + std::to_string(n * 37 % 1000);
            srt += std::to_string(n) + '\n' + Stamp(n, ",000") + " --> " + Stamp(n, ",900") + '\n' + text + "\n\n";
            ass += "Dialogue: 0," + Stamp(n, ".00") + ',' + Stamp(n, ".90") + ",Default,,0,0,0,," + text + '\n';
            packets.push_back({0, n * 1000L, 900, text});
            packets.push_back({1, n * 1000L, 900, std::string(200, 'x')});
        }
        const std::string container = (m_folder.Path() / "file.mkv").string();
        MuxSubtitles(container, {"subrip", "subrip"}, packets);
        return {m_folder.Write("local.srt", srt),
                m_folder.Write("utf8.srt", "\xEF\xBB\xBF" + srt),
                m_folder.Write("utf16.srt", Utf16(srt)),
                m_folder.Write("file.ass", ass),
                container,
                WritePictures()};
    }

    /** Each picture covers the canvas, so that it does not depend on earlier ones. */
    std::string WritePictures() const
    {
        VobSubPair pair;
        pair.listLanguages.emplace_back();
        for (const int n : {1, 2, m_nCues / 2, m_nCues}) {
            PictureUnit unit = PictureUnit::Filled(0, 0, pair.nWidth, pair.nHeight, 1);
            for (std::size_t at = 0; at < unit.listPixels.size(); at += static_cast<std::size_t>(n % 7) + 2)
                unit.listPixels[at] = 2;
            unit.listPixels[0] = 3;
            pair.listLanguages[0].push_back({n * 1000, unit.Encode(), {}});
        }
        return pair.Write(m_folder);
    }

    static std::string Stamp(int nSeconds, const std::string &strFraction)
    {
        const auto twoDigits = [](int n) { return std::to_string(100 + n).substr(1); };
        return twoDigits(nSeconds / 3600) + ':' + twoDigits(nSeconds / 60 % 60) + ':' + twoDigits(nSeconds % 60) +
               strFraction;
    }

    static std::string Utf16(const std::string &strAscii)
    {
        std::string units = "\xFF\xFE";
        for (const char character : strAscii)
            units += {character, '\0'};
        return units;
    }
};
