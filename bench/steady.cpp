// Does work that takes the same number of instructions every time. Valgrind counts those in functions named Counted*.
// usage: steady frame|lookup
#include "cues.h"
#include "libsubtitle.h"
#include "randomtimes.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace
{

constexpr int Width = 854;
constexpr int Height = 480;
constexpr int Repeats = 100;

} // namespace

extern "C" {
__attribute__((noinline)) void CountedFrames(void *subtitle, AVPicture *frame);
__attribute__((noinline)) void CountedLookups(void *subtitle, RandomTimes *times);
}

void CountedFrames(void *subtitle, AVPicture *frame)
{
    for (int n = 0; n < Repeats; ++n)
        ProcessSubtitleFrame(subtitle, frame);
}

void CountedLookups(void *subtitle, RandomTimes *times)
{
    for (int n = 0; n < Repeats; ++n)
        SetSubtitleTimeStamp(subtitle, times->Next());
}

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(Width) * Height * 3, 90);
    AVPicture frame = {{pixels.data()}, {Width * 3}};
    RandomTimes times(FilmCues, CueDistance);
    void *subtitle = CreateVideoSubtitle(Width, Height);
    SetSubtitleFontParam(subtitle, "DejaVu Sans", 0, 0);
    SetSubtitleFile(subtitle, SrtFile(FilmCues).c_str(), 0);
    SetSubtitleTimeStamp(subtitle, CueDistance);
    ProcessSubtitleFrame(subtitle, &frame);
    if (std::strcmp(argv[1], "frame") == 0)
        CountedFrames(subtitle, &frame);
    else
        CountedLookups(subtitle, &times);
    DestroyVideoSubtitle(subtitle);
    return 0;
}
