// Faults of the file system below the shared library: never a wrong frame.
#include "support/faultstest.h"
#include "support/faultyio.h"

using faultyio::Fault;

namespace
{

class FileFaultsTest : public FaultsTest
{
protected:
    FileFaultsTest() : FaultsTest(96, 64, 900) {} // more than is read at once

    /** What becomes of the uses of a file with a fault in each of the calls. */
    std::vector<int> ResultsOf(const File &file, Fault fault)
    {
        faultyio::Begin(m_folder.Path().string());
        EXPECT_EQ(Use(file), Shown);
        const long nCalls = faultyio::End();
        EXPECT_GE(nCalls, 5) << file.strName;
        std::vector<int> listResults;
        for (long nCall = 0; nCall < nCalls; ++nCall) {
            listResults.push_back(UseWithFault(
                file, [&] { faultyio::Begin(m_folder.Path().string(), fault, nCall); }, [] { faultyio::End(); }));
        }
        return listResults;
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

TEST_F(FileFaultsTest, TextThatCannotBeReadCountsAsNoneAndNotAsHalf)
{
    for (const File &file : m_listFiles) {
        if (IsIndex(file))
            continue;
        for (const Fault fault : {Fault::Error, Fault::LastingError}) {
            const std::vector<int> listResults = ResultsOf(file, fault);
            EXPECT_EQ(listResults.front(), Nothing) << file.strName;
            for (std::size_t n = 0; n < listResults.size(); ++n) {
                // What is not needed to read the file may fail, and of a container what was read before is kept.
                EXPECT_TRUE(listResults[n] == Nothing || listResults[n] == Shown ||
                            (IsContainer(file) && listResults[n] == Partly))
                    << file.strName << ' ' << static_cast<int>(fault) << ' ' << n << ": " << listResults[n];
            }
        }
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
