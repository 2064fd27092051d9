// Draws many frames with changing subtitles of all formats, in small and large frames, while files are reopened, fonts
// change, and renderers are destroyed and created. Prints memory in use and open files, and fails if either grows after
// the first quarter, in which caches fill up.
// usage: longrun [FRAMES]
#include "cues.h"
#include "libsubtitle.h"
#include "pictures.h"
#include "support/subtitlemuxer.h"
#include "support/temporaryfolder.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

namespace
{

constexpr long Frames = 1000000;
constexpr long Intervals = 20;
constexpr long WarmUp = Intervals / 4;
constexpr long FrameTime = 500; ///< ms; a cue is due for three of four frames
constexpr long FramesOfFile = 2500;
constexpr long FramesOfFont = 250;
// Without renderers, only what the allocator cannot return to the system may be left.
constexpr double MaxRestGrowth = 0.02;
constexpr long MaxRestGrowthKilobytes = 512;
// With renderers, each one's caches fill up at another time, so the peak may come late.
constexpr double MaxWorkGrowth = 0.25;

struct Size {
    int nWidth;
    int nHeight;
};

constexpr std::array<Size, 6> Sizes = {{{320, 180}, {720, 576}, {1280, 720}, {1920, 1080}, {1920, 1080}, {3840, 2160}}};
constexpr std::array<const char *, 3> Families = {"DejaVu Sans", "DejaVu Serif", "Noto Sans CJK JP"};
constexpr std::array<int, 6> Points = {12, 20, 28, 36, 52, 64};

std::string Utf8(unsigned nCharacter)
{
    return {static_cast<char>(0xE0 | nCharacter >> 12), static_cast<char>(0x80 | (nCharacter >> 6 & 0x3F)),
            static_cast<char>(0x80 | (nCharacter & 0x3F))};
}

/** Two short lines of Chinese characters, chosen from the 20,902 of the first block. */
std::string Ideographs(std::mt19937 &random)
{
    std::string strText;
    for (int n = 0; n < 16; ++n)
        strText += (n == 8 ? "\n" : "") + Utf8(0x4E00 + static_cast<unsigned>(random() % 20902));
    return strText;
}

/** Writes a file of each kind and returns their names. */
std::vector<std::string> WriteFiles(const TemporaryFolder &folder)
{
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): every run shows the same
    std::vector<MuxedPacket> packets;
    std::vector<MuxedPacket> ideographs;
    for (long n = 1; n <= FilmCues; ++n) {
        packets.push_back({0, CueDistance * n, CueDuration, "Line " + std::to_string(n) + " of them\nand another"});
        ideographs.push_back({0, CueDistance * n, CueDuration, Ideographs(random)});
    }
    const std::string strMatroska = (folder.Path() / "a.mkv").string();
    const std::string strIdeographs = (folder.Path() / "b.mkv").string();
    MuxSubtitles(strMatroska, {"subrip"}, packets);
    MuxSubtitles(strIdeographs, {"subrip"}, ideographs);
    return {SrtFile(FilmCues), AssFile(FilmCues), PictureFile(), strMatroska, strIdeographs};
}

class Player
{
public:
    Player(const Size &size, const std::vector<std::string> &listFiles, unsigned seed) :
        m_size(size), m_listFiles(listFiles), m_random(seed), m_nFrame(static_cast<long>(seed) * 100)
    {
        Make();
    }
    ~Player() { Drop(); }
    Player(const Player &) = delete;
    Player &operator=(const Player &) = delete;

    void Make()
    {
        m_pHandle = CreateVideoSubtitle(m_size.nWidth, m_size.nHeight);
        Open();
    }
    void Drop()
    {
        DestroyVideoSubtitle(m_pHandle);
        m_pHandle = nullptr;
    }

    void Show(std::uint8_t *pPixels)
    {
        ++m_nFrame;
        if (m_nFrame % FramesOfFile == 0)
            Open();
        if (m_nFrame % FramesOfFont == 0)
            ChangeLook();
        AVPicture picture = {{pPixels}, {m_size.nWidth * 3}};
        SetSubtitleTimeStamp(m_pHandle, m_nFrame * FrameTime % (CueDistance * FilmCues));
        ProcessSubtitleFrame(m_pHandle, &picture);
    }

private:
    /** Opens the files in turn, so that the first quarter has each of them at each size. */
    void Open() { SetSubtitleFile(m_pHandle, m_listFiles[++m_nOpened % m_listFiles.size()].c_str(), 0); }

    void ChangeLook()
    {
        SetSubtitleFontParam(m_pHandle, Families[m_random() % Families.size()], Points[m_random() % Points.size()],
                             static_cast<int>(m_random() % 4));
        SetSubtitleFontColor(m_pHandle, static_cast<int>(m_random() % 256), 255, 255);
        SetSubtitleOutlineColor(m_pHandle, 1, 1, static_cast<int>(m_random() % 256));
        SetSubtitleAlpah(m_pHandle, m_random() % 2 ? 255 : 128);
        SetSubtitlePos(m_pHandle, static_cast<int>(m_random() % 100));
    }

    const Size m_size;
    const std::vector<std::string> &m_listFiles;
    std::mt19937 m_random;
    long m_nFrame;
    std::size_t m_nOpened = 0;
    void *m_pHandle = nullptr;
};

/** A value from /proc/self/status, in kilobytes. */
long Status(const char *pName)
{
    std::ifstream status("/proc/self/status");
    std::string strWord;
    long nKilobytes = 0;
    while (status >> strWord && strWord != pName) {
    }
    status >> nKilobytes;
    return nKilobytes;
}

long OpenFiles()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

/** Memory in use, in kilobytes. */
struct Memory {
    long nWork = 0; ///< the most at the end of any interval; peaks within one, of a single large picture, do not count
    long nRest = 0; ///< after all renderers were destroyed
};

/** Draws the frames of some intervals with new renderers, and prints a line for each interval. */
Memory Run(const std::vector<std::string> &files, long nFirst, long nLast, long nFrames)
{
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(3840) * 2160 * 3, 90);
    std::vector<std::unique_ptr<Player>> players;
    for (std::size_t n = 0; n < Sizes.size(); ++n)
        players.push_back(std::make_unique<Player>(Sizes[n], files, static_cast<unsigned>(n)));
    Memory memory;
    for (long nInterval = nFirst; nInterval < nLast; ++nInterval) {
        std::ofstream("/proc/self/clear_refs") << 5; // resets the peak
        const long nEnd = nFrames * (nInterval + 1) / Intervals;
        for (long n = nFrames * nInterval / Intervals; n < nEnd; ++n)
            players[static_cast<std::size_t>(n) % players.size()]->Show(pixels.data());
        // Replace one renderer; half of them are never replaced.
        Player &going = *players[static_cast<std::size_t>(nInterval * 2) % players.size()];
        going.Drop();
        going.Make();
        memory.nWork = std::max(memory.nWork, Status("VmRSS:"));
        std::printf("%10ld frames: %8ld KiB, at most %8ld; %ld open files\n", nEnd, Status("VmRSS:"), Status("VmHWM:"),
                    OpenFiles());
        (void)std::fflush(stdout);
    }
    players.clear();
    pixels = {}; // cppcheck-suppress unreadVariable; frees the memory
    malloc_trim(0);
    memory.nRest = Status("VmRSS:");
    std::printf("without renderers: %ld KiB, %ld open files\n", memory.nRest, OpenFiles());
    return memory;
}

} // namespace

int main(int argc, char **argv)
try {
    const long nFrames = argc > 1 ? std::strtol(argv[1], nullptr, 10) : Frames;
    av_log_set_level(AV_LOG_QUIET);
    const TemporaryFolder folder;
    const std::vector<std::string> files = WriteFiles(folder);
    // GLib, which Qt uses, opens a file with the first renderer and keeps it open.
    DestroyVideoSubtitle(CreateVideoSubtitle(320, 180));
    const long nFilesBefore = OpenFiles();
    const auto start = std::chrono::steady_clock::now();
    const Memory warm = Run(files, 0, WarmUp, nFrames);
    const Memory end = Run(files, WarmUp, Intervals, nFrames);

    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const long nFilesLeft = OpenFiles() - nFilesBefore;
    const auto rest = static_cast<double>(end.nRest - warm.nRest);
    const auto work = static_cast<double>(end.nWork - warm.nWork);
    const double restAllowed = MaxRestGrowth * static_cast<double>(warm.nRest) + MaxRestGrowthKilobytes;
    const double workAllowed = MaxWorkGrowth * static_cast<double>(warm.nWork);
    std::printf("%ld frames in %.0f s. Growth from the first quarter on: %.0f KiB without renderers, %.0f allowed; "
                "%.0f KiB with them, %.0f allowed; files left open: %ld\n",
                nFrames, seconds, rest, restAllowed, work, workAllowed, nFilesLeft);
    return rest <= restAllowed && work <= workAllowed && nFilesLeft == 0 ? 0 : 1;
} catch (const std::exception &failure) {
    (void)std::fprintf(stderr, "longrun: %s\n", failure.what());
    return 2;
}
