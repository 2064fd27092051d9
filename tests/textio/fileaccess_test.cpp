// How the shared library opens and reads files that change meanwhile, that are not regular files, or that never end.
#include "support/faultstest.h"
#include "support/faultyio.h"
#include "vobsub/psstream.h"

#include <algorithm>
#include <sys/stat.h>

using faultyio::Fault;

namespace
{

constexpr unsigned MaxSeconds = 30; ///< then SIGALRM ends a use that hangs; without load all take less than a second

class FileAccessTest : public FaultsTest
{
protected:
    FileAccessTest() : FaultsTest(96, 64, 900) {} // 900 cues are more than one read fetches

    void SetUp() override
    {
        FaultsTest::SetUp();
        // The container once more, as a file: URL.
        File address = *std::find_if(m_listFiles.begin(), m_listFiles.end(), [](const File &file) {
            return std::filesystem::path(file.strName).extension() == ".mkv";
        });
        address.strName = "file:" + address.strName;
        m_listFiles.push_back(address);
    }

    /** The files that a use reads: the file itself, and for an index its .sub file. */
    static std::vector<std::filesystem::path> PathsOf(const File &file)
    {
        const bool bAddress = file.strName.rfind("file:", 0) == 0;
        const std::filesystem::path path = file.strName.substr(bAddress ? 5 : 0);
        if (path.extension() == ".idx")
            return {path, std::filesystem::path(path).replace_extension(".sub")};
        return {path};
    }

    long CallsOf(const File &file)
    {
        faultyio::Begin(m_folder.Path().string());
        EXPECT_EQ(Use(file), Shown);
        return faultyio::End().nCalls;
    }

    /** Uses a file in a fork, with @p act done before each call for it. Returns the Result, negative if it hung. */
    template <typename Act>
    int UseWhile(const File &file, const Act &act)
    {
        return RunForked([&]() -> int {
            alarm(MaxSeconds);
            faultyio::Begin(m_folder.Path().string(), act);
            const int nResult = Use(file);
            faultyio::End();
            return nResult;
        });
    }

    /** A sparse file of zeros. */
    std::string Zeros(const std::string &strName, std::uintmax_t nSize) const
    {
        const std::string strPath = m_folder.Write(strName, "");
        std::filesystem::resize_file(strPath, nSize);
        return strPath;
    }
};

} // namespace

TEST_F(FileAccessTest, OpensNeitherWaitNorLeakIntoChildren)
{
    for (const File &file : m_listFiles) {
        faultyio::Begin(m_folder.Path().string());
        EXPECT_EQ(Use(file), Shown);
        EXPECT_EQ(faultyio::End().nCarelessOpens, 0) << file.strName;
    }
}

TEST_F(FileAccessTest, NameExchangedForAPipeIsNotWaitedFor)
{
    const auto pipe = m_folder.Path() / "pipe";
    for (const File &file : m_listFiles) {
        const long nCalls = CallsOf(file);
        for (const std::filesystem::path &path : PathsOf(file)) {
            for (long nCall = 0; nCall < nCalls; ++nCall) {
                ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
                const auto away = m_folder.Path() / "away";
                std::filesystem::copy_file(path, away);
                const int nResult = UseWhile(file, [&](long nNow) {
                    if (nNow == nCall)
                        std::filesystem::rename(pipe, path);
                });
                EXPECT_TRUE(nResult >= Shown && nResult <= Refused) << path << ' ' << nCall << ": " << nResult;
                std::filesystem::remove(pipe);
                std::filesystem::rename(away, path);
            }
        }
    }
}

TEST_F(FileAccessTest, PseudoFileThatHasNothingYetIsNotWaitedFor)
{
    for (const File &file : m_listFiles) {
        const long nCalls = CallsOf(file);
        for (long nCall = 0; nCall < nCalls; ++nCall) {
            const int nResult = RunForked([&]() -> int {
                alarm(MaxSeconds);
                faultyio::Begin(m_folder.Path().string(), Fault::WouldBlock, nCall);
                Use(file);
                faultyio::End();
                return Use(file);
            });
            EXPECT_EQ(nResult, Shown) << file.strName << ' ' << nCall;
        }
    }
}

TEST_F(FileAccessTest, FileThatGrowsKeepsWhatWasThere)
{
    const std::string strLater = "\n\n901\n00:20:00,000 --> 00:20:01,000\nLater\n";
    for (const File &file : m_listFiles) {
        for (const std::filesystem::path &path : PathsOf(file)) {
            const bool bWide = path.filename() == "utf16.srt";
            const auto append = [&](long /*nCall*/) {
                std::ofstream stream(path, std::ios::app | std::ios::binary);
                for (const char c : strLater)
                    stream << c << std::string(bWide ? 1 : 0, '\0');
            };
            EXPECT_EQ(UseWhile(file, append), Shown) << path;
        }
    }
}

TEST_F(FileAccessTest, FileWithoutATrackIsReadOnlyAsFarAsTheSearchForStreams)
{
    constexpr std::uintmax_t Size = std::uintmax_t{256} << 20;
    for (const char *pName : {"a.m4v", "a.h264", "a.hevc", "a.mp3", "a.ac3", "a.bit", "a.ifv", "a.bin", "a"}) {
        const std::string strPath = Zeros(pName, Size);
        faultyio::Begin(m_folder.Path().string());
        EXPECT_EQ(SetSubtitleFile(m_pHandle, strPath.c_str(), 0), 0);
        const long nBytes = faultyio::End().nBytesRead;
        EXPECT_LE(nBytes, 16 << 20) << pName;
        EXPECT_GE(nBytes, 1 << 10) << pName;
        std::filesystem::remove(strPath);
    }
}

TEST_F(FileAccessTest, SelfTestDoesNotWaitForAPipe)
{
    ASSERT_EQ(mkfifo((m_folder.Path() / "vobsubtest.sub").c_str(), 0600), 0);
    EXPECT_EQ(RunForked([&] {
                  alarm(MaxSeconds);
                  std::filesystem::current_path(m_folder.Path());
                  TestVobSub();
                  return 0;
              }),
              0);
}
