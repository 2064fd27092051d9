#include "parsers/ffparser.h"

#include "parsers/parsermanager.h"
#include "parsers/wrapint.h"
#include "support/childprocess.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"

#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <sys/stat.h>

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/log.h>
}

namespace
{

/** Collects what the parser writes to FFmpeg's log at error level while this lives. */
class LogCapture
{
public:
    LogCapture()
    {
        Lines().clear();
        // FFmpeg defines the callback's parameters.
        // cppcheck-suppress constParameter
        av_log_set_callback([](void *context, int level, const char *format, va_list arguments) {
            // The parser's messages begin with a number in parentheses, FFmpeg's own do not.
            if (context || level != AV_LOG_ERROR || format[0] != '(')
                return;
            char line[200];
            (void)vsnprintf(line, sizeof(line), format, arguments);
            Lines().emplace_back(line);
        });
    }
    ~LogCapture() { av_log_set_callback(av_log_default_callback); }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    static std::vector<std::string> &Lines()
    {
        static std::vector<std::string> lines;
        return lines;
    }
};

const std::vector<std::string> OpenFailed = {"(105): av_open_input_file x\n"};
const std::vector<std::string> NoStreamInfo = {"(101): av_find_stream_info x\n"};
const std::vector<std::string> ReadToTheEnd = {"(90): av_read_frame x\n"};

const char TwoCues[] = "1\n00:00:01,500 --> 00:00:03,500\nHello\nWorld\n\n2\n00:00:04,000 --> 00:00:05,000\nBye\n";

class FFParserTest : public testing::Test
{
protected:
    std::string File(const std::string &name) const { return (m_folder.Path() / name).string(); }

    /** Opens a file and returns what the parser logged. */
    std::vector<std::string> Open(const std::string &path, int track = 0)
    {
        const LogCapture capture;
        EXPECT_NE(m_parser.Open(QString::fromStdString(path), track), 0);
        return LogCapture::Lines();
    }

    /** Makes a file with the ffmpeg program. */
    std::string Make(const std::string &name, std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"ffmpeg", "-nostdin", "-v", "error", "-y"});
        arguments.push_back(File(name));
        const Outcome outcome = ChildProcess::Run(arguments);
        EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
        return File(name);
    }

    std::string At(long ms) { return m_parser.GetSubtitle(ms).toStdString(); }

    TemporaryFolder m_folder;
    FFParser m_parser;
};

} // namespace

TEST_F(FFParserTest, TakesTheWantedOfTheSubtitleStreams)
{
    const std::string first = m_folder.Write("a.srt", TwoCues);
    const std::string second = m_folder.Write("b.srt", "1\n00:00:01,000 --> 00:00:02,000\nSecond\n");
    const std::string file = Make("movie.mkv", {"-f",   "lavfi", "-i",   "color=s=32x32:r=5:d=6",
                                                "-f",   "lavfi", "-i",   "sine=d=6",
                                                "-i",   first,   "-i",   second,
                                                "-map", "0",     "-map", "1",
                                                "-map", "2",     "-map", "3",
                                                "-c:v", "mpeg4", "-c:a", "pcm_s16le",
                                                "-c:s", "copy"});
    EXPECT_EQ(Open(file, 0), ReadToTheEnd);
    EXPECT_EQ(At(1499), "");
    EXPECT_EQ(At(1500), "Hello\nWorld");
    EXPECT_EQ(At(3500), "Hello\nWorld");
    EXPECT_TRUE(m_parser.GetSubtitle(3501).isNull());
    EXPECT_EQ(At(4500), "Bye");
    EXPECT_EQ(Open(file, 1), ReadToTheEnd);
    EXPECT_EQ(At(1500), "Second");
    EXPECT_EQ(At(4500), "");
}

TEST_F(FFParserTest, SubtitleStreamBetweenOthersKeepsItsNumber)
{
    MuxSubtitles(File("a.mkv"), {"subrip", "mpeg4", "subrip"},
                 {{0, 1000, 500, "first"}, {1, 1000, 40, "video"}, {2, 1000, 500, "second"}});
    Open(File("a.mkv"), 0);
    EXPECT_EQ(At(1200), "first");
    Open(File("a.mkv"), 1);
    EXPECT_EQ(At(1200), "second");
}

TEST_F(FFParserTest, ReadsWhatMkvmergeWrites)
{
    const std::string movie = Make("movie.mkv", {"-f", "lavfi", "-i", "color=s=32x32:r=5:d=6", "-f", "lavfi", "-i",
                                                 "sine=d=6", "-c:v", "mpeg4", "-c:a", "pcm_s16le"});
    const std::string first = m_folder.Write("a.srt", TwoCues);
    const std::string second = m_folder.Write("b.srt", "1\n00:00:01,000 --> 00:00:02,000\nSecond\n");
    const Outcome outcome = ChildProcess::Run(
        {"mkvmerge", "-q", "-o", File("merged.mkv"), "--track-order", "0:0,1:0,2:0,0:1", movie, first, second});
    ASSERT_EQ(outcome.nExit, 0) << outcome.strOut;
    EXPECT_EQ(Open(File("merged.mkv"), 0), ReadToTheEnd);
    EXPECT_EQ(At(1500), "Hello\r\nWorld");
    EXPECT_EQ(At(3500), "Hello\r\nWorld");
    EXPECT_EQ(At(3501), "");
    EXPECT_EQ(Open(File("merged.mkv"), 1), ReadToTheEnd);
    EXPECT_EQ(At(2000), "Second");
}

TEST_F(FFParserTest, TrackThatIsNotThereHasNoCues)
{
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1000, 500, "text"}});
    for (const int track : {1, 7, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(Open(File("a.mkv"), track), ReadToTheEnd);
        EXPECT_TRUE(m_parser.GetSubtitle(1200).isNull());
    }
}

TEST_F(FFParserTest, TimesInMillisecondsAreExact)
{
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1500, 2000, "text"}});
    Open(File("a.mkv"));
    EXPECT_EQ(At(1499), "");
    EXPECT_EQ(At(1500), "text");
    EXPECT_EQ(At(3500), "text");
    EXPECT_EQ(At(3501), "");
}

TEST_F(FFParserTest, DurationIsNotConverted)
{
    // The muxer fills the gap from 1 ms to 1000 ms with an empty packet of 89910 units. Taken as ms, it ends at 89911.
    const std::string empty(2, '\0');
    const std::string text("\0\4text", 6);
    MuxSubtitles(File("a.mp4"), {"mov_text"}, {{0, 0, 90, empty}, {0, 90000, 180000, text}}, 90000);
    Open(File("a.mp4"));
    EXPECT_EQ(At(89911), empty);
    EXPECT_EQ(At(89912), text);
    EXPECT_EQ(At(181000), text);
    EXPECT_EQ(At(181001), "");
}

TEST_F(FFParserTest, NothingIsDueAtTimeZero)
{
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 0, 2000, "text"}});
    Open(File("a.mkv"));
    EXPECT_TRUE(m_parser.GetSubtitle(0).isNull());
    EXPECT_TRUE(m_parser.GetSubtitle(-1).isNull());
    EXPECT_EQ(At(1), "text");
}

TEST_F(FFParserTest, FirstReadWinsAnOverlap)
{
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1000, 4000, "long"}, {0, 2000, 1000, "short"}});
    Open(File("a.mkv"));
    EXPECT_EQ(At(2500), "long");
    EXPECT_EQ(At(5001), "");
}

TEST_F(FFParserTest, PayloadIsTakenAsItStands)
{
    const std::string payloads[] = {"a\r\nb", "<i>x</i>", "{\\an8}y\\Nz", "  spaces  ", "Grüße 世界 😀"};
    for (const std::string &payload : payloads) {
        MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1000, 500, payload}});
        Open(File("a.mkv"));
        EXPECT_EQ(At(1200), payload);
    }
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1000, 500, "bad \xFF utf-8"}});
    Open(File("a.mkv"));
    EXPECT_EQ(m_parser.GetSubtitle(1200), QString::fromUtf16(u"bad \xFFFD utf-8"));
}

TEST_F(FFParserTest, AssPacketShowsItsFieldsAndTags)
{
    const std::string script =
        m_folder.Write("a.ass", "[Script Info]\nScriptType: v4.00+\n[Events]\n"
                                "Dialogue: 2,0:00:01.00,0:00:02.00,Default,Bob,0,0,0,,{\\i1}Hi\n");
    Open(Make("a.mkv", {"-i", script, "-c", "copy"}));
    EXPECT_EQ(At(1500), "0,2,Default,Bob,0,0,0,,{\\i1}Hi");
}

TEST_F(FFParserTest, Mp4PayloadCarriesItsLengthPrefix)
{
    const std::string subtitles = m_folder.Write("a.srt", "1\n00:00:00,000 --> 00:00:03,500\nHello\nWorld\n");
    Open(Make("a.mp4", {"-i", subtitles, "-c:s", "mov_text"}));
    EXPECT_EQ(At(1600), std::string("\0\x0BHello\nWorld", 13));
}

TEST_F(FFParserTest, PlainFilesOfOtherFormats)
{
    const std::string subtitles = m_folder.Write("a.srt", TwoCues);
    Open(Make("a.vtt", {"-i", subtitles}));
    EXPECT_EQ(At(2000), "Hello\nWorld");
    EXPECT_EQ(At(4500), "Bye");

    // The demuxer's time base is a frame, so a duration of 50 frames counts as 50 ms.
    Open(m_folder.Write("a.sub", "{25}{75}Hello|World\n{100}{125}Bye\n{150}{175}Bye\n"));
    const int start = 25 * 1001 * 1000 / 24000;
    EXPECT_EQ(At(start), "Hello|World");
    EXPECT_EQ(At(start + 50), "Hello|World");
    EXPECT_EQ(At(start + 52), "");

    Open(m_folder.Write("a.smi", "<SAMI><BODY><SYNC Start=1500><P Class=ENCC>Hello<SYNC Start=3500><P "
                                 "Class=ENCC>&nbsp;</BODY></SAMI>"));
    EXPECT_NE(At(2000).find("Hello"), std::string::npos);
}

TEST_F(FFParserTest, FileWithoutSubtitlesIsReadToItsEnd)
{
    const std::string file = Make("a.mkv", {"-f", "lavfi", "-i", "color=s=32x32:r=5:d=1", "-c:v", "mpeg4"});
    EXPECT_EQ(Open(file), ReadToTheEnd);
    EXPECT_TRUE(m_parser.GetSubtitle(500).isNull());
}

TEST_F(FFParserTest, FilesThatCannotBeOpened)
{
    EXPECT_EQ(Open(File("missing.mkv")), OpenFailed);
    EXPECT_EQ(Open(m_folder.Path().string()), OpenFailed);
    EXPECT_EQ(Open(m_folder.Write("empty.mkv", "")), OpenFailed);
    EXPECT_EQ(Open(m_folder.Write("noise.mkv", std::string(1000, '\0'))), OpenFailed);
    EXPECT_TRUE(m_parser.GetSubtitle(1000).isNull());
}

TEST_F(FFParserTest, StreamThatCannotBeMadeOutLeavesNoCues)
{
    // The video packets have neither H.264 headers nor a start code.
    MuxSubtitles(File("a.nut"), {"text", "h264"}, {{0, 1000, 500, "text"}, {1, 1000, 40, "nonsense"}});
    EXPECT_EQ(Open(File("a.nut")), NoStreamInfo);
    EXPECT_TRUE(m_parser.GetSubtitle(1000).isNull());
    // With a start code the same file is read. The container stores no durations.
    const std::string marked("\0\0\1nonsense", 11);
    MuxSubtitles(File("a.nut"), {"text", "h264"}, {{0, 1000, 500, "text"}, {1, 1000, 40, marked}});
    EXPECT_EQ(Open(File("a.nut")), ReadToTheEnd);
    EXPECT_EQ(At(1000), "text");
}

TEST_F(FFParserTest, TruncatedFileKeepsTheCuesReadSoFar)
{
    std::vector<MuxedPacket> packets;
    for (int i = 1; i <= 1000; ++i)
        packets.push_back({0, i * 1000, 900, "cue " + std::to_string(i) + std::string(200, '.')});
    MuxSubtitles(File("a.mkv"), {"subrip"}, packets);
    std::filesystem::resize_file(File("a.mkv"), std::filesystem::file_size(File("a.mkv")) / 2);
    EXPECT_EQ(Open(File("a.mkv")), ReadToTheEnd);
    EXPECT_EQ(At(1500).substr(0, 6), "cue 1.");
    EXPECT_EQ(At(100500).substr(0, 8), "cue 100.");
    EXPECT_EQ(At(999500), "");
}

TEST_F(FFParserTest, SecondOpenReplacesTheCues)
{
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1000, 500, "text"}});
    Open(File("a.mkv"));
    EXPECT_EQ(Open(File("missing.mkv")), OpenFailed);
    EXPECT_TRUE(m_parser.GetSubtitle(1200).isNull());
}

TEST_F(FFParserTest, BaseClassOperationsAreInherited)
{
    QRect rect(1, 2, 3, 4);
    EXPECT_TRUE(m_parser.IsTextSub());
    m_parser.SetVideoSize(1, 1);
    EXPECT_TRUE(m_parser.TextToImage(QStringLiteral("0"), rect).isNull());
    EXPECT_EQ(rect, QRect(1, 2, 3, 4));
}

TEST_F(FFParserTest, ManagerChoosesItForAnyOtherExtension)
{
    const LogCapture capture;
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1000, 500, "text"}});
    const auto folder = m_folder.Path() / "clips.2010";
    std::filesystem::create_directory(folder);
    for (const std::string &name : {std::string("b.MKV"), std::string("b.sub"), (folder / "movie").string()}) {
        const auto path = m_folder.Path() / name;
        std::filesystem::copy_file(File("a.mkv"), path);
        ParserManager manager;
        EXPECT_NE(manager.Open(QString::fromStdString(path.string()), 0), 0);
        EXPECT_EQ(manager.GetSubtitle(1200), QStringLiteral("text")) << path;
    }
    ParserManager manager;
    EXPECT_NE(manager.Open(QStringLiteral("/missing/file"), 0), 0);
    EXPECT_EQ(LogCapture::Lines().back(), OpenFailed[0]);
}

TEST(FFParserTimes, ConversionSaturates)
{
    EXPECT_EQ(TruncateToInt(1.0 / 90000 * static_cast<double>(AV_NOPTS_VALUE) * 1000.0), INT_MIN);
    EXPECT_EQ(TruncateToInt(static_cast<double>(INT64_MAX)), INT_MIN);
    EXPECT_EQ(TruncateToInt(std::nan("")), INT_MIN);
    EXPECT_EQ(TruncateToInt(2147483647.9), INT_MAX);
    EXPECT_EQ(TruncateToInt(-2147483648.9), INT_MIN);
    EXPECT_EQ(TruncateToInt(-1.9), -1);
    EXPECT_EQ(WrapAdd(INT_MAX, 1), INT_MIN);
    EXPECT_EQ(WrapMultiply(1 << 30, 4), 0);
}

TEST_F(FFParserTest, FilesThatNameOthersAreNotFollowed)
{
    // The first two name themselves: FFmpeg would follow them until the stack overflows, or for ever. It would wait for
    // the third, a live playlist, to grow, and for the last it would listen to the network.
    for (const char *text : {"ffconcat version 1.0\nfile own\n", "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\nown\n",
                             "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nnone.ts\n",
                             "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP 96\n"
                             "a=rtpmap:96 H264/90000\n"})
        EXPECT_EQ(Open(m_folder.Write("own", text)), OpenFailed) << text;
}

TEST_F(FFParserTest, TextBeyondTheLimitIsNotOpened)
{
    const std::string path = m_folder.Write("big.vtt", "WEBVTT\n\n00:01.000 --> 00:02.000\nHello\n\n");
    std::filesystem::resize_file(path, 128 << 20);
    EXPECT_EQ(Open(path), ReadToTheEnd);
    EXPECT_EQ(m_parser.GetSubtitle(1500), QStringLiteral("Hello"));
    std::filesystem::resize_file(path, (128 << 20) + 1);
    EXPECT_EQ(Open(path), OpenFailed);
}

TEST_F(FFParserTest, PipeIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo(File("pipe.mkv").c_str(), 0600), 0);
    EXPECT_EQ(Open(File("pipe.mkv")), OpenFailed);
}

TEST_F(FFParserTest, ReadsNoMoreThanTheTextOfRealFiles)
{
    // The fourth packet exceeds the limit of 128 MiB.
    std::vector<MuxedPacket> packets;
    for (int i = 1; i <= 6; ++i)
        packets.push_back({0, i * 1000, 500, std::string(33 << 20, 'x')});
    MuxSubtitles(File("big.mkv"), {"subrip"}, packets);
    EXPECT_EQ(Open(File("big.mkv")), ReadToTheEnd);
    EXPECT_EQ(m_parser.GetSubtitle(4000).size(), 33 << 20);
    EXPECT_EQ(m_parser.GetSubtitle(5000), QString());
}

TEST_F(FFParserTest, AddressOfALocalFileFollowsItsRules)
{
    MuxSubtitles(File("a.mkv"), {"subrip"}, {{0, 1000, 500, "text"}});
    EXPECT_EQ(Open("file:" + File("a.mkv")), ReadToTheEnd);
    EXPECT_EQ(At(1200), "text");
    EXPECT_EQ(Open("file://" + File("a.mkv")), ReadToTheEnd);
    EXPECT_EQ(At(1200), "text");
    EXPECT_EQ(Open("file:" + File("missing.mkv")), OpenFailed);
    ASSERT_EQ(mkfifo(File("pipe.mkv").c_str(), 0600), 0);
    EXPECT_EQ(Open("file:" + File("pipe.mkv")), OpenFailed);
}

TEST_F(FFParserTest, TrackIsReadBeyondTheSearchForStreams)
{
    std::vector<MuxedPacket> packets = {{0, 1000, 500, "first"}};
    for (int i = 0; i < 8192; ++i)
        packets.push_back({1, 1000 + i, 1, std::string(4096, 'x')});
    packets.push_back({0, 10000, 500, "last"});
    MuxSubtitles(File("a.mkv"), {"subrip", "mpeg4"}, packets);
    EXPECT_EQ(Open(File("a.mkv")), ReadToTheEnd);
    EXPECT_EQ(At(1200), "first");
    EXPECT_EQ(At(10200), "last");
}

TEST_F(FFParserTest, NoOtherFileIsOpenedForOne)
{
    // FFmpeg's VobSub demuxer would open the .sub file beside the index, here a pipe.
    const std::string path = m_folder.Write(
        "a.txt", "# VobSub index file, v7\nsize: 720x576\nid: en, index: 0\ntimestamp: 00:00:01:000, filepos: 0\n");
    ASSERT_EQ(mkfifo(File("a.sub").c_str(), 0600), 0);
    EXPECT_EQ(Open(path), OpenFailed);
}
