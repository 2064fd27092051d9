// Files made to exhaust the host's memory or to hang it, opened by a host that has only as much memory as the library
// may use at most. See boundsprobe.cpp.
#include "support/childprocess.h"
#include "support/pictureunit.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"
#include "support/vobsubpair.h"

#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>

namespace
{

const char *const Cue = "00:00:01,000 --> 00:00:02,000\n";
constexpr std::uint64_t Gibibyte = std::uint64_t{1} << 30;
constexpr std::uint64_t GreatestFile = Gibibyte / 8;
/** MiB for a host that shows a frame and must read nothing of the file. */
constexpr int Nothing = 16;

class BoundsTest : public testing::Test
{
protected:
    /** Lets the probe open a file and show frames with at most @p nMebibytes more memory; returns what it prints. */
    static std::string Open(int nMebibytes, const std::string &strFile, const std::vector<long> &listTimes = {1500})
    {
        std::vector<std::string> command = {BOUNDS_PROBE, std::to_string(nMebibytes), strFile};
        for (const long ms : listTimes)
            command.push_back(std::to_string(ms));
        const Outcome outcome = ChildProcess::Run(command);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        return outcome.strOut;
    }

    static std::string Repeated(const std::string &strPart, std::size_t nCount)
    {
        std::string strWhole;
        strWhole.reserve(strPart.size() * nCount);
        for (std::size_t n = 0; n < nCount; ++n)
            strWhole += strPart;
        return strWhole;
    }

    std::string File(const std::string &strName) const { return (m_folder.Path() / strName).string(); }

    std::string Pipe(const std::string &strName) const
    {
        EXPECT_EQ(mkfifo(File(strName).c_str(), 0600), 0);
        return File(strName);
    }

    std::string Link(const std::string &strTarget, const std::string &strName) const
    {
        std::filesystem::create_symlink(strTarget, File(strName));
        return File(strName);
    }

    std::string Zeros(const std::string &strName) const { return Link("/dev/zero", strName); }

    /** A pseudo file that stat() calls a regular file of size 0. Its word per page of memory takes years to read. */
    std::string Endless(const std::string &strName) const { return Link("/proc/self/pagemap", strName); }

    /** A beginning, and zeros up to a size of a gibibyte. */
    std::string Gibibytes(const std::string &strName, const std::string &strBeginning = "") const
    {
        const std::string strFile = m_folder.Write(strName, strBeginning);
        std::filesystem::resize_file(strFile, Gibibyte);
        return strFile;
    }

    /** A transport stream, made by FFmpeg, with one packet in each of the streams. */
    std::string TransportStream(const std::vector<std::string> &listCodecs) const
    {
        std::vector<MuxedPacket> packets;
        for (std::size_t n = 0; n < listCodecs.size(); ++n)
            packets.push_back({static_cast<int>(n), 1000, 40, std::string("\0\0\1\xB6packet", 10)});
        MuxSubtitles(File("part.ts"), listCodecs, packets);
        std::ostringstream bytes;
        bytes << std::ifstream(File("part.ts"), std::ios::binary).rdbuf();
        return bytes.str();
    }

    /** Transport stream packets of zeros for the stream with this PID. */
    static std::string TransportPackets(int nStream, std::size_t nCount)
    {
        std::string strPackets;
        for (std::size_t n = 0; n < nCount; ++n) {
            strPackets += {'G', static_cast<char>(nStream >> 8), static_cast<char>(nStream),
                           static_cast<char>(0x10 | (n + 1) % 16)};
            strPackets.append(184, '\0');
        }
        return strPackets;
    }

    /** An index of two pictures. */
    VobSubPair Pair(int nWidth = 96, int nHeight = 64) const
    {
        VobSubPair pair(nWidth, nHeight, {});
        for (const int nStart : {1000, 3000}) {
            // Large, so that it shows when scaled down; in the middle, as the top left pixel's colour is not drawn.
            const PictureUnit unit = PictureUnit::Filled(nWidth / 4, nHeight / 4, nWidth / 2, nHeight / 2);
            pair.listLanguages[0].push_back({nStart, unit.Encode(), {}});
        }
        return pair;
    }

    TemporaryFolder m_folder;
};

} // namespace

TEST_F(BoundsTest, ManyBlankLinesTakeTheMemoryOfTheCuesThatAreKept)
{
    // Each blank line would be a cue. 4 Mi cues of 48 bytes are kept, and 4 bytes for the beginning of each of 16 Mi
    // lines, in a list that doubles when it grows. With Qt 6 a cue takes 32 bytes, in one array that doubles as well.
    const int nCueSize = QT_GENERATION < 6 ? 48 : 96;
    std::string strText = std::string(Cue) + "first\n";
    strText.resize(strText.size() + 20000000, '\n');
    const std::string strFile = m_folder.Write("a.srt", strText);
    EXPECT_EQ(Open(4 * nCueSize + 2 * 16 * 4 + 2 * 20 + Nothing, strFile), "opened: 0\n1500: shown\n");
}

TEST_F(BoundsTest, LongestFileTakesAFewTimesItsSize)
{
    // The file is one line. It is held twice as bytes, and twice as characters of two bytes.
    const std::string strFile = m_folder.Write("a.srt", std::string(Cue) + "first");
    std::filesystem::resize_file(strFile, GreatestFile);
    EXPECT_EQ(Open(2 * 128 + 2 * 2 * 128 + Nothing, strFile), "opened: 0\n1500: shown\n");
}

TEST_F(BoundsTest, TextOfManyTagsTakesAFewTimesItsSize)
{
    const std::string strHead = "Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,a{";
    for (const char c : {'{', '<'}) {
        const std::string strFile = m_folder.Write("a.ass", strHead + std::string(8 << 20, c));
        EXPECT_EQ(Open(8 * 12 + Nothing, strFile), "opened: 0\n1500: shown\n") << c;
    }
}

TEST_F(BoundsTest, LineOfManyPartsTakesAFewTimesItsSize)
{
    // 16 MiB in which every second character is a separator, in fields that may have three, two and sixteen parts.
    constexpr int Enough = 16 * 10 + Nothing;
    const std::string strTime = m_folder.Write("a.srt", "00:00:01,000 --> " + Repeated("1:", 8 << 20) + "\na\n");
    EXPECT_EQ(Open(Enough, strTime), "opened: 0\n1500: shown\n");
    const std::string strIndex = Pair().Write(m_folder);
    m_folder.Write("pair.idx", "size: " + Repeated("1x", 8 << 20) + '\n' + Pair().Index());
    EXPECT_EQ(Open(Enough, strIndex), "opened: 0\n1500: shown\n");
    m_folder.Write("pair.idx", "palette: " + Repeated(", ", 8 << 20) + '\n' + Pair().Index());
    EXPECT_EQ(Open(Enough, strIndex), "opened: 0\n1500: shown\n");
}

TEST_F(BoundsTest, FileBeyondTheBoundCountsAsOneWithoutSubtitles)
{
    for (const std::uint64_t nSize : {GreatestFile + 1, 4 * Gibibyte}) {
        const std::string strSrt = m_folder.Write("a.srt", std::string(Cue) + "first\n");
        std::filesystem::resize_file(strSrt, nSize);
        EXPECT_EQ(Open(Nothing, strSrt), "opened: 0\n1500: nothing\n");
        const std::string strAss = m_folder.Write("a.ass", "Dialogue: 0,0:00:01.00,0:00:02.00,,,,,,,a\n");
        std::filesystem::resize_file(strAss, nSize);
        EXPECT_EQ(Open(Nothing, strAss), "opened: 0\n1500: nothing\n");
        const std::string strIndex = Pair().Write(m_folder);
        std::filesystem::resize_file(strIndex, nSize);
        EXPECT_EQ(Open(Nothing, strIndex), "opened: -1\n1500: nothing\n");
    }
}

TEST_F(BoundsTest, ContainerIsReadUpToTheBound)
{
    // The second packet exceeds the bound. Its text is still kept, that of the third is not.
    constexpr std::size_t PacketSize = 70 << 20;
    const std::string strText = "first\n" + std::string(PacketSize, 'a');
    const std::string strFile = m_folder.Write("a.mkv", "");
    MuxSubtitles(strFile, {"subrip"}, {{0, 1000, 1000, strText}, {0, 3000, 1000, strText}, {0, 5000, 1000, "third"}});
    // Two texts in characters of two bytes, and in FFmpeg a packet and a read buffer of the same size.
    EXPECT_EQ(Open(2 * 2 * 70 + 2 * 70 + Nothing, strFile, {1500, 3500, 5500}),
              "opened: 0\n1500: shown\n3500: shown\n5500: nothing\n");
}

TEST_F(BoundsTest, PicturesFarApartAreFetchedInPart)
{
    VobSubPair pair = Pair();
    const std::string strStream = pair.Stream();
    const std::uint64_t nSecond = 4 * Gibibyte - strStream.size() / 2;
    pair.listLanguages[0][1].nFilePos = nSecond;
    const std::string strIndex = pair.Write(m_folder);
    std::filesystem::resize_file(File("pair.sub"), 4 * Gibibyte);
    std::fstream stream(File("pair.sub"), std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(static_cast<std::streamoff>(nSecond));
    stream << strStream.substr(strStream.size() / 2);
    stream.close();
    EXPECT_EQ(Open(4 + Nothing, strIndex, {1500, 3500, 1500}), "opened: 0\n1500: shown\n3500: shown\n1500: shown\n");
}

TEST_F(BoundsTest, GreatestCanvasIsShown)
{
    // Seven planes of one byte per pixel. The scaler needs little more.
    EXPECT_EQ(Open(7 * 16 + Nothing, Pair(4096, 4096).Write(m_folder)), "opened: 0\n1500: shown\n");
    EXPECT_EQ(Open(7 * 16 + Nothing, Pair(4097, 1).Write(m_folder)), "opened: -1\n1500: nothing\n");
    EXPECT_EQ(Open(7 * 16 + Nothing, Pair(1, 4097).Write(m_folder)), "opened: -1\n1500: nothing\n");
}

TEST_F(BoundsTest, DeviceWithoutAnEndCountsAsNoFile)
{
    EXPECT_EQ(Open(Nothing, Zeros("a.srt")), "opened: 0\n1500: nothing\n");
    EXPECT_EQ(Open(Nothing, Zeros("a.ass")), "opened: 0\n1500: nothing\n");
    EXPECT_EQ(Open(Nothing, Zeros("a.idx")), "opened: -1\n1500: nothing\n");
    EXPECT_EQ(Open(Nothing, Zeros("a.mkv")), "opened: 0\n1500: nothing\n");
    const std::string strIndex = Pair().Write(m_folder);
    std::filesystem::remove(File("pair.sub"));
    Zeros("pair.sub");
    EXPECT_EQ(Open(Nothing, strIndex), "opened: 0\n1500: nothing\n");
}

TEST_F(BoundsTest, PipeKeepsNobodyWaiting)
{
    EXPECT_EQ(Open(Nothing, Pipe("a.srt")), "opened: 0\n1500: nothing\n");
    EXPECT_EQ(Open(Nothing, Pipe("a.ass")), "opened: 0\n1500: nothing\n");
    EXPECT_EQ(Open(Nothing, Pipe("a.idx")), "opened: -1\n1500: nothing\n");
    const std::string strIndex = Pair().Write(m_folder);
    std::filesystem::remove(File("pair.sub"));
    Pipe("pair.sub");
    EXPECT_EQ(Open(Nothing, strIndex), "opened: 0\n1500: nothing\n");
}

TEST_F(BoundsTest, PseudoFileWithoutAnEndCountsAsOneBeyondTheBound)
{
    // 128 MiB are read, into a buffer that doubles when it grows.
    constexpr int Enough = 3 * 128 + Nothing;
    EXPECT_EQ(Open(Enough, Endless("a.srt")), "opened: 0\n1500: nothing\n");
    EXPECT_EQ(Open(Enough, Endless("a.ass")), "opened: 0\n1500: nothing\n");
    EXPECT_EQ(Open(Enough, Endless("a.idx")), "opened: -1\n1500: nothing\n");
    EXPECT_EQ(Open(-64, Endless("a.m4v")), "opened: 0\n1500: nothing\nmemory: enough\n");
    EXPECT_EQ(Open(-64, "file:" + Endless("b.m4v")), "opened: 0\n1500: nothing\nmemory: enough\n");
    const std::string strIndex = Pair().Write(m_folder);
    std::filesystem::remove(File("pair.sub"));
    Endless("pair.sub");
    EXPECT_EQ(Open(Nothing, strIndex), "opened: 0\n1500: nothing\n");
}

TEST_F(BoundsTest, FileOfOtherMediaIsNotHeldInMemory)
{
    for (const char *pExtension : {"m4v",  "h264", "hevc", "mp3", "ac3", "mp2", "dts", "aac", "vc1", "ipu",
                                   "avs2", "idf",  "mlp",  "png", "jpg", "bin", "mkv", "ts",  "mpg", "vob"})
        EXPECT_EQ(Open(-64, Gibibytes(std::string("a.") + pExtension)), "opened: 0\n1500: nothing\nmemory: enough\n")
            << pExtension;
    EXPECT_EQ(Open(-64, Gibibytes("a")), "opened: 0\n1500: nothing\nmemory: enough\n");
}

TEST_F(BoundsTest, HeaderOfASoundFileIsNotSearchedForToItsEnd)
{
    // Every eight zeros are a chunk. Skipping them all once took a minute and a half.
    const std::string strHead("RIFF\0\0\0@WAVEfmt \20\0\0\0\1\0\1\0@\37\0\0@\37\0\0\1\0\10\0data\4\0\0\0abcd", 48);
    EXPECT_EQ(Open(-64, Gibibytes("a.wav", strHead)), "opened: 0\n1500: nothing\nmemory: enough\n");
}

TEST_F(BoundsTest, StreamThatTurnsUpLaterIsNotHeldInMemory)
{
    // The video has no start of a picture, so FFmpeg's parser would collect all of it in memory.
    constexpr std::size_t PacketsOfMebibyte = (1 << 20) / 188;
    const std::string strFile = m_folder.Write(
        "a.ts", TransportStream({"dvb_subtitle"}) + TransportPackets(0x1FFF, 17 * PacketsOfMebibyte) +
                    TransportStream({"dvb_subtitle", "mpeg4"}) + TransportPackets(0x101, 100 * PacketsOfMebibyte));
    EXPECT_EQ(Open(-64, strFile), "opened: 0\n1500: nothing\nmemory: enough\n");
}
