// Opens files of four sizes, each twice as large as the previous one, of every kind of content that might take more
// than linear time, and prints the time per byte. Fails if a byte takes over 4 times as long at the largest size as at
// the smallest, or if a file without subtitles takes over 100 MB of memory.
// usage: growth [--quick] [KIND]
//   --quick  an eighth of the sizes
//   KIND     only the kinds whose names begin with this
#include "libsubtitle.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

namespace
{

constexpr long Items = 125000;
constexpr long Bytes = 12500000;
constexpr double MaxRatio = 4;       ///< of the times per byte; quadratic time gives 8
constexpr double LittleTime = 5e-9;  ///< s per byte; less may come from caches that no longer hold the file
constexpr double MaxSeconds = 10;    ///< after that no larger size is tried, which might take four times as long
constexpr double MostMemory = 100e6; ///< bytes, for files without subtitles, of any size
const char *const SrtTime = "00:00:01,000 --> 00:00:02,000\n";
const char *const Event = "Dialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,,";
const char *const IndexHead = "size: 720x576\nid: en, index: 0\n";

struct Kind {
    std::string strName; ///< ends with the file's extension
    long nSmallest;
    std::function<std::string(long)> make;
    double mostMemory = 1e12; ///< in bytes, at any size
};

/** Formats a time. All times are below 100 hours, so that two digits are enough for the hours. */
std::string Stamp(const char *pFormat, long nTenths)
{
    char text[32];
    (void)std::snprintf(text, sizeof text, pFormat, nTenths / 36000, nTenths / 600 % 60, nTenths / 10 % 60,
                        nTenths % 10);
    return text;
}

std::string SrtStamp(long nTenths)
{
    return Stamp("%02ld:%02ld:%02ld,%ld00", nTenths);
}

std::string Repeated(const std::string &strPart, long nCount)
{
    std::string strWhole;
    strWhole.reserve(strPart.size() * static_cast<std::size_t>(nCount));
    for (long n = 0; n < nCount; ++n)
        strWhole += strPart;
    return strWhole;
}

/** A kind that repeats one part between a head and an end. */
Kind Repeats(const std::string &strName, const std::string &strHead, const std::string &strPart,
             const std::string &strEnd = "\n", long nSmallest = Items)
{
    return {strName, nSmallest, [=](long nCount) { return strHead + Repeated(strPart, nCount) + strEnd; }};
}

Kind OneLine(const std::string &strName, const std::string &strHead, const std::string &strPart)
{
    return Repeats(strName, strHead, strPart, "\n", Bytes / static_cast<long>(strPart.size()));
}

/** A kind with one cue for each number. */
template <typename Cue>
Kind Cues(const std::string &strName, const std::string &strHead, Cue cue)
{
    return {strName, Items, [=](long nCount) {
                std::string text = strHead;
                for (long n = 0; n < nCount; ++n)
                    text += cue(n, nCount);
                return text;
            }};
}

std::string SrtCue(long nFirst, long nLast)
{
    return "1\n" + SrtStamp(nFirst) + " --> " + SrtStamp(nLast) + "\nA line of it\n\n";
}

std::string Utf16(const std::string &strAscii)
{
    std::string strUnits = "\xFF\xFE";
    for (const char c : strAscii) {
        strUnits += c;
        strUnits += '\0';
    }
    return strUnits;
}

std::vector<Kind> CueKinds()
{
    return {
        Cues("cues.srt", "", [](long n, long) { return SrtCue(2 * n, 2 * n + 1); }),
        Cues("cues-backwards.srt", "",
             [](long n, long nCount) { return SrtCue(2 * (nCount - n), 2 * (nCount - n) + 1); }),
        Cues("cues-nested.srt", "", [](long n, long nCount) { return SrtCue(n, 2 * nCount - n); }),
        Cues("cues-nested-inside-first.srt", "", [](long n, long nCount) { return SrtCue(nCount - n, nCount + n); }),
        Cues("cues-all-at-once.srt", "", [](long n, long nCount) { return SrtCue(1, nCount - n); }),
        Cues("cues.ass", "",
             [](long n, long) {
                 return "Dialogue: 0," + Stamp("%ld:%02ld:%02ld.%ld0,", n) + Stamp("%ld:%02ld:%02ld.%ld5,", n) +
                        "Default,,0,0,0,,A line of it\n";
             }),
        Repeats("cues-empty.ass", "", "Dialogue:\n"),
        Repeats("styles.ass", "[V4+ Styles]\n", "Style: a,b,20,&H0,&H0,&H0,&H0,0,0\n"),
        Cues("entries.idx", IndexHead,
             [](long n, long) {
                 return "timestamp: " + Stamp("%02ld:%02ld:%02ld:%ld00", n) + ", filepos: 000001000\n";
             }),
        Repeats("languages.idx", "size: 720x576\n", "id: en, index: 1\n", IndexHead),
        Cues("subrip-by-FFmpeg.txt", "", [](long n, long) { return SrtCue(2 * n, 2 * n + 1); }),
        Cues("webvtt-by-FFmpeg.vtt", "WEBVTT\n\n",
             [](long n, long) {
                 return Stamp("%02ld:%02ld:%02ld.%ld00", 2 * n) + " --> " +
                        Stamp("%02ld:%02ld:%02ld.%ld00", 2 * n + 1) + "\nA line of it\n\n";
             }),
    };
}

std::vector<Kind> LineKinds()
{
    return {
        OneLine("line.srt", SrtTime, "a"),
        OneLine("line-of-digits.srt", "", "1"),
        OneLine("line-of-dashes.srt", "", "-"),
        OneLine("line-of-arrows.srt", "a", "-->"),
        OneLine("line-of-colons.srt", "00:00:01,000 --> ", ":"),
        OneLine("line-of-commas.srt", "00:00:01,000 --> ", ","),
        OneLine("line-of-returns.srt", SrtTime, "\r"),
        OneLine("line.ass", Event, "a"),
        OneLine("line-of-key.ass", "", "a"),
        OneLine("line-of-commas.ass", Event, ","),
        OneLine("line-of-stars.ass", "Dialogue: 0,0:00:01.00,0:00:02.00,", "*"),
        OneLine("line-of-spaces.ass", "Dialogue:", " "),
        OneLine("line.idx", IndexHead, "a"),
        OneLine("line-of-timestamp.idx", std::string(IndexHead) + "timestamp: ", "a"),
        OneLine("line-of-size.idx", "size: ", "x"),
        OneLine("line-of-palette.idx", "palette: ", ", "),
        OneLine("line-of-indexes.idx", "id: ", "index:"),
        {"utf16.srt", Bytes / 2, [](long n) { return Utf16(SrtTime + std::string(static_cast<std::size_t>(n), 'a')); }},
        Repeats("lines-blank.srt", "", "\n"),
        Repeats("lines-of-arrows.srt", "", "a-->\n"),
        Repeats("lines-of-times.srt", "", SrtTime),
        Repeats("lines-of-digits.srt", "", "12345678901\n"),
        Repeats("lines-of-one-cue.srt", SrtTime, "line\n"),
        Repeats("lines-blank.ass", "", "\n"),
        Repeats("lines-blank.idx", IndexHead, "\n"),
        Repeats("tags-closed.ass", Event, "{a}"),
        Repeats("tags-closed-at-the-end.ass", Event, "{", "}\n"),
        Repeats("tags-of-braces.ass", Event, "{"),
        Repeats("tags-of-braces-closing.ass", Event, "}"),
        Repeats("tags-angle.ass", std::string(Event) + "{", "<a>"),
        Repeats("tags-angle-open.ass", std::string(Event) + "{", "<"),
        Repeats("tags-angle-open-alone.ass", Event, "<"),
        Repeats("tags-of-breaks.ass", Event, "\\N"),
    };
}

/** Files without subtitles, which FFmpeg searches for a picture, a frame of sound or the next part of a header. */
std::vector<Kind> MediaKinds()
{
    const std::string strZero(1, '\0');
    const std::string strWave("RIFF\0\0\0@WAVEfmt \20\0\0\0\1\0\1\0@\37\0\0@\37\0\0\1\0\10\0data\4\0\0\0abcd", 48);
    std::vector<Kind> kinds = {OneLine("zeros-after-header.wav", strWave, strZero)};
    for (const char *pExtension : {"aac", "ac3", "bin", "bit", "dts", "h264", "hevc", "ifv", "m4v", "mp3", "ts"})
        kinds.push_back(OneLine(std::string("zeros.") + pExtension, "", strZero));
    for (Kind &kind : kinds)
        kind.mostMemory = MostMemory;
    return kinds;
}

/** Writes a Matroska file with FFmpeg. */
void WriteMatroska(const std::string &strPath, long nCount)
{
    std::vector<MuxedPacket> packets;
    packets.reserve(static_cast<std::size_t>(nCount));
    for (long n = 0; n < nCount; ++n)
        packets.push_back({0, 2000 * n, 1000, "A line of it"});
    MuxSubtitles(strPath, {"subrip"}, packets);
}

/** Peak memory of the process since the last ResetPeak(), in bytes. */
long PeakMemory()
{
    std::ifstream status("/proc/self/status");
    std::string strWord;
    long nKilobytes = 0;
    while (status >> strWord && strWord != "VmHWM:") {
    }
    status >> nKilobytes;
    return nKilobytes << 10;
}

void ResetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

double CpuSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct Cost {
    double seconds;
    double bytes; ///< of memory
};

Cost Open(const std::string &strPath)
{
    void *pHandle = CreateVideoSubtitle(320, 180);
    malloc_trim(0);
    ResetPeak();
    const long nBefore = PeakMemory();
    const double start = CpuSeconds();
    SetSubtitleFile(pHandle, strPath.c_str(), 0);
    const Cost cost = {CpuSeconds() - start, static_cast<double>(PeakMemory() - nBefore)};
    DestroyVideoSubtitle(pHandle);
    return cost;
}

/** Measures a kind and prints its line. Returns false if its time grows too fast or it takes too much memory. */
bool Measure(const Kind &kind, long nDivisor)
{
    std::printf("%-30s", kind.strName.c_str());
    (void)std::fflush(stdout);
    double first = 0;
    double last = 0;
    double memory = 0;
    bool bBounded = true;
    const std::size_t dot = kind.strName.rfind('.');
    for (int nDoublings = 0; nDoublings < 4; ++nDoublings) {
        const TemporaryFolder folder;
        const long nCount = (kind.nSmallest << nDoublings) / nDivisor;
        const std::string strPath = (folder.Path() / ("a" + kind.strName.substr(dot))).string();
        if (kind.make)
            folder.Write("a" + kind.strName.substr(dot), kind.make(nCount));
        else
            WriteMatroska(strPath, nCount);
        const auto size = static_cast<double>(std::filesystem::file_size(strPath));
        Cost cost = Open(strPath);
        for (int n = 0; n < 2 && cost.seconds < 0.3; ++n)
            cost.seconds = std::min(cost.seconds, Open(strPath).seconds);
        last = cost.seconds / size;
        memory = cost.bytes / size;
        bBounded = bBounded && cost.bytes <= kind.mostMemory;
        first = nDoublings == 0 ? last : first;
        std::printf(" %8.2f", last * 1e9);
        (void)std::fflush(stdout);
        if (cost.seconds > MaxSeconds)
            break;
    }
    const bool bGood = last < std::max(first * MaxRatio, LittleTime);
    std::printf("  %5.2f  %5.1f%s%s\n", last / first, memory, bGood ? "" : "  grows too fast",
                bBounded ? "" : "  takes too much memory");
    return bGood && bBounded;
}

} // namespace

int main(int argc, char **argv)
try {
    const bool bQuick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const std::string strOnly = argc > 1 + bQuick ? argv[1 + bQuick] : "";
    av_log_set_level(AV_LOG_QUIET);
    std::vector<Kind> kinds = CueKinds();
    for (const std::vector<Kind> &more : {LineKinds(), MediaKinds()})
        kinds.insert(kinds.end(), more.begin(), more.end());
    kinds.push_back({"matroska-by-FFmpeg.mkv", Items, nullptr});

    std::printf("%-30s %35s  %5s  %5s\n", "", "ns a byte at sizes 1, 2, 4 and 8", "ratio", "bytes of memory a byte");
    void *pHandle = CreateVideoSubtitle(320, 180); // keeps Qt running from file to file
    bool bGood = true;
    for (const Kind &kind : kinds)
        if (kind.strName.rfind(strOnly, 0) == 0)
            bGood = Measure(kind, bQuick ? 8 : 1) && bGood;
    DestroyVideoSubtitle(pHandle);
    return bGood ? 0 : 1;
} catch (const std::exception &failure) {
    (void)std::fprintf(stderr, "growth: %s\n", failure.what());
    return 2;
}
