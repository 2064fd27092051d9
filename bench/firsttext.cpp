// Measures what happens once per process. text: microseconds of the first frame with text after a file was opened, and
// the median of later frames on which the cue changes. start: microseconds from creating the renderer to the first
// frame with text. memory: bytes that a renderer keeps.
// usage: firsttext text|start|memory library|libass
#include "cues.h"
#include "libsubtitle.h"
#if WITH_LIBASS
#include "asshost.h"
#include "listblender.h"
#endif

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr int Width = 1920;
constexpr int Height = 1080;
constexpr int LaterCues = 100;
constexpr int StartCues = 200;

/** Plays one film. */
class Player
{
public:
    virtual ~Player() = default;
    virtual void Process(std::uint8_t *pixels, long ms) = 0;
};

class LibraryPlayer : public Player
{
public:
    explicit LibraryPlayer(const std::string &file) : m_subtitle(CreateVideoSubtitle(Width, Height))
    {
        SetSubtitleFontParam(m_subtitle, "DejaVu Sans", 0, 0);
        SetSubtitleFile(m_subtitle, file.c_str(), 0);
    }
    ~LibraryPlayer() override { DestroyVideoSubtitle(m_subtitle); }
    LibraryPlayer(const LibraryPlayer &) = delete;
    LibraryPlayer &operator=(const LibraryPlayer &) = delete;

    void Process(std::uint8_t *pixels, long ms) override
    {
        AVPicture frame = {{pixels}, {Width * 3}};
        SetSubtitleTimeStamp(m_subtitle, ms);
        ProcessSubtitleFrame(m_subtitle, &frame);
    }

private:
    void *m_subtitle;
};

#if WITH_LIBASS
class AssPlayer : public Player
{
public:
    explicit AssPlayer(const std::string &file) : m_ass(Width, Height, file) {}
    void Process(std::uint8_t *pixels, long ms) override { BlendList(m_ass.Images(ms), pixels, Width); }

private:
    AssHost m_ass;
};
#endif

bool HasLibass()
{
#if WITH_LIBASS
    return CanBlend();
#else
    return false;
#endif
}

const char *Name(bool libass)
{
    return libass ? "libass" : "library";
}

std::string File(bool libass, int cues = FilmCues)
{
    return libass ? AssFile(cues, Width, Height) : SrtFile(cues);
}

std::unique_ptr<Player> Open([[maybe_unused]] bool libass, const std::string &file)
{
#if WITH_LIBASS
    if (libass)
        return std::make_unique<AssPlayer>(file);
#endif
    return std::make_unique<LibraryPlayer>(file);
}

double Microseconds(Player &player, std::uint8_t *pixels, int cue)
{
    const auto start = std::chrono::steady_clock::now();
    player.Process(pixels, CueDistance * cue);
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

/** Memory of the process in bytes, without mapped files. */
long OwnMemory()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    long kilobytes = 0;
    while (status >> word && word != "RssAnon:") {
    }
    status >> kilobytes;
    return kilobytes * 1024;
}

void PrintText(bool libass, std::vector<std::uint8_t> &pixels)
{
    const std::unique_ptr<Player> player = Open(libass, File(libass));
    std::printf("%s first %.1f\n", Name(libass), Microseconds(*player, pixels.data(), 1));
    std::vector<double> later;
    for (int cue = 2; cue < 2 + LaterCues; ++cue)
        later.push_back(Microseconds(*player, pixels.data(), cue));
    std::nth_element(later.begin(), later.begin() + LaterCues / 2, later.end());
    std::printf("%s later %.1f\n", Name(libass), later[LaterCues / 2]);
}

void PrintStart(bool libass, std::vector<std::uint8_t> &pixels)
{
    const std::string file = File(libass, StartCues);
    const auto start = std::chrono::steady_clock::now();
    const std::unique_ptr<Player> player = Open(libass, file);
    player->Process(pixels.data(), CueDistance);
    const std::chrono::duration<double, std::micro> passed = std::chrono::steady_clock::now() - start;
    std::printf("%s start %.1f\n", Name(libass), passed.count());
}

void PrintMemory(bool libass, std::vector<std::uint8_t> &pixels)
{
    const std::string file = File(libass);
    std::unique_ptr<Player> players[2];
    for (std::unique_ptr<Player> &player : players) {
        const long before = OwnMemory();
        player = Open(libass, file);
        for (int cue = 1; cue <= LaterCues; ++cue)
            player->Process(pixels.data(), CueDistance * cue);
        std::printf("%s memory %s %ld\n", Name(libass), player == players[0] ? "first" : "another",
                    OwnMemory() - before);
    }
    // At least needed: an image of 4 bytes per pixel, and the file's text with two bytes per character.
    std::printf("%s memory needed %ld\n", Name(libass),
                4L * Width * Height + 2L * static_cast<long>(std::filesystem::file_size(file)));
}

} // namespace

int main(int argc, char **argv)
{
    const std::string work = argc == 3 ? argv[1] : "";
    const bool libass = argc == 3 && std::strcmp(argv[2], "libass") == 0;
    if (libass && !HasLibass())
        return 0; // no figures without libass
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(Width) * Height * 3, 90);
    if (work == "text")
        PrintText(libass, pixels);
    else if (work == "start")
        PrintStart(libass, pixels);
    else if (work == "memory")
        PrintMemory(libass, pixels);
    else
        return 2;
    return 0;
}
