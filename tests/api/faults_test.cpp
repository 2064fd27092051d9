// Faults of the file system under the shared library must never lead to a wrong frame.
#include "support/faultstest.h"
#include "support/faultyio.h"

#include <algorithm>

using faultyio::Fault;

namespace
{

class FileFaultsTest : public FaultsTest
{
protected:
    FileFaultsTest() : FaultsTest(96, 64, 900) {} // 900 cues are more than one read fetches

    /** The results of using a file with a fault in each of its file system calls in turn. */
    std::vector<int> ResultsOf(const File &file, Fault fault)
    {
        return ForEachCall(file, [&](long nCall) {
            return UseWithFault(
                file, [&] { faultyio::Begin(m_folder.Path().string(), fault, nCall); }, [] { faultyio::End(); });
        });
    }

    template <typename ResultOf>
    std::vector<int> ForEachCall(const File &file, const ResultOf &resultOf)
    {
        faultyio::Begin(m_folder.Path().string());
        EXPECT_EQ(Use(file), Shown);
        const long nCalls = faultyio::End().nCalls;
        EXPECT_GE(nCalls, 5) << file.strName;
        std::vector<int> listResults;
        for (long nCall = 0; nCall < nCalls; ++nCall)
            listResults.push_back(resultOf(nCall));
        return listResults;
    }

    /**
     * The result of using a text file with a fault in one call. Partly: the frames are those of a file that ends where
     * the reading ended.
     */
    int ResultOfText(const File &file, Fault fault, long nCall)
    {
        return RunForked([&] {
            faultyio::Begin(m_folder.Path().string(), fault, nCall);
            const std::vector<Frame> listFaulty = FramesOf(file.strName);
            const auto nRead = static_cast<std::uintmax_t>(faultyio::End().nFurthest);
            if (Use(file) != Shown)
                return WrongAfterwards;
            if (listFaulty == file.listFrames)
                return Shown;
            const std::vector<Frame> listNothing(m_listTimes.size(), m_untouched);
            if (listFaulty == listNothing)
                return Nothing;
            const std::filesystem::path name = file.strName;
            const auto cut = name.parent_path() / ("cut" + name.extension().string());
            std::filesystem::copy_file(name, cut, std::filesystem::copy_options::overwrite_existing);
            std::filesystem::resize_file(cut, nRead);
            return listFaulty == FramesOf(cut.string()) ? Partly : WrongFrame;
        });
    }

    std::vector<Frame> FramesOf(const std::string &strName)
    {
        std::vector<Frame> listFrames;
        EXPECT_EQ(SetSubtitleFile(m_pHandle, strName.c_str(), 0), 0);
        for (const long ms : m_listTimes) {
            EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, ms), 0);
            EXPECT_EQ(Process(), 0);
            listFrames.push_back(m_frame);
        }
        return listFrames;
    }

    static bool IsContainer(const File &file) { return file.strName.find(".mkv") != std::string::npos; }
    static bool IsIndex(const File &file) { return file.strName.find(".idx") != std::string::npos; }
};

} // namespace

TEST_F(FileFaultsTest, ReadsThatBringLessOrAreInterruptedChangeNothing)
{
    for (const File &file : m_listFiles) {
        for (const Fault fault : {Fault::OneByte, Fault::Half, Fault::Interrupted})
            for (const int result : ResultsOf(file, fault))
                EXPECT_EQ(result, Shown) << file.strName << ' ' << static_cast<int>(fault);
    }
}

TEST_F(FileFaultsTest, TextShowsWhatWasReadBeforeAnError)
{
    for (const File &file : m_listFiles) {
        if (IsIndex(file) || IsContainer(file))
            continue;
        for (const Fault fault : {Fault::Error, Fault::LastingError}) {
            const std::vector<int> listResults =
                ForEachCall(file, [&](long nCall) { return ResultOfText(file, fault, nCall); });
            EXPECT_EQ(listResults.front(), Nothing) << file.strName;
            EXPECT_GE(std::count(listResults.begin(), listResults.end(), Partly), 1) << file.strName;
            for (std::size_t n = 0; n < listResults.size(); ++n) {
                // Shown: calls that are not needed to read the file may fail.
                EXPECT_TRUE(listResults[n] == Nothing || listResults[n] == Shown || listResults[n] == Partly)
                    << file.strName << ' ' << static_cast<int>(fault) << ' ' << n << ": " << listResults[n];
            }
        }
    }
}

TEST_F(FileFaultsTest, ContainerShowsWhatWasReadBeforeAnError)
{
    const auto file = std::find_if(m_listFiles.begin(), m_listFiles.end(), IsContainer);
    for (const Fault fault : {Fault::Error, Fault::LastingError}) {
        const std::vector<int> listResults = ResultsOf(*file, fault);
        EXPECT_EQ(listResults.front(), Nothing);
        // FFmpeg continues to read after an error that does not last.
        EXPECT_GE(std::count(listResults.begin(), listResults.end(), Partly), fault == Fault::LastingError ? 1 : 0);
        for (const int nResult : listResults)
            EXPECT_TRUE(nResult == Nothing || nResult == Shown || nResult == Partly) << nResult;
    }
}

TEST_F(FileFaultsTest, PictureThatCannotBeReadIsNotShown)
{
    const File &file = m_listFiles.back();
    ASSERT_TRUE(IsIndex(file));
    int nPartly = 0;
    for (const Fault fault : {Fault::Error, Fault::LastingError}) {
        const std::vector<int> listResults = ResultsOf(file, fault);
        EXPECT_EQ(listResults.front(), Refused);
        for (std::size_t n = 0; n < listResults.size(); ++n) {
            EXPECT_TRUE(listResults[n] >= Shown && listResults[n] <= Refused) << n << ": " << listResults[n];
            nPartly += listResults[n] == Partly ? 1 : 0;
        }
    }
    EXPECT_GE(nPartly, 10);
}
