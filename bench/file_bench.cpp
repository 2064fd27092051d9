// What a subtitle file costs: opening it, and finding what is due at times in no order.
#include "cues.h"
#include "host.h"
#include "randomtimes.h"

namespace
{

void OpenFile(benchmark::State &state, const std::string &file)
{
    void *subtitle = CreateVideoSubtitle(1920, 1080);
    for ([[maybe_unused]] auto _ : state)
        SetSubtitleFile(subtitle, file.c_str(), 0);
    DestroyVideoSubtitle(subtitle);
}

void OpenSrt(benchmark::State &state)
{
    OpenFile(state, SrtFile(Argument(state, 0)));
}

void OpenAss(benchmark::State &state)
{
    OpenFile(state, AssFile(Argument(state, 0)));
}

void Lookup(benchmark::State &state)
{
    void *subtitle = CreateVideoSubtitle(1920, 1080);
    SetSubtitleFile(subtitle, SrtFile(Argument(state, 0)).c_str(), 0);
    RandomTimes times(Argument(state, 0), CueDistance);
    for ([[maybe_unused]] auto _ : state)
        SetSubtitleTimeStamp(subtitle, times.Next());
    DestroyVideoSubtitle(subtitle);
}

BENCHMARK(OpenSrt)->Arg(FilmCues)->Arg(ManyCues)->Unit(benchmark::kMicrosecond);
BENCHMARK(OpenAss)->Arg(FilmCues)->Arg(ManyCues)->Unit(benchmark::kMicrosecond);
BENCHMARK(Lookup)->Arg(FilmCues)->Arg(ManyCues)->Unit(benchmark::kMicrosecond);

} // namespace
