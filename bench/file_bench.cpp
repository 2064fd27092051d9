// The cost of a subtitle file: opening it, and finding what is due at random times.
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

/** On a handle that has not opened a file before. Creating the handle is not timed. */
void OpenOnNewHandle(benchmark::State &state)
{
    const std::string file = SrtFile(Argument(state, 0));
    void *another = CreateVideoSubtitle(1920, 1080); // keeps Qt's application object alive
    for ([[maybe_unused]] auto _ : state) {
        void *subtitle = CreateVideoSubtitle(1920, 1080);
        const auto start = std::chrono::steady_clock::now();
        SetSubtitleFile(subtitle, file.c_str(), 0);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        DestroyVideoSubtitle(subtitle);
    }
    DestroyVideoSubtitle(another);
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
BENCHMARK(OpenOnNewHandle)->Arg(FilmCues)->Unit(benchmark::kMicrosecond)->UseManualTime();
BENCHMARK(Lookup)->Arg(FilmCues)->Arg(ManyCues)->Unit(benchmark::kMicrosecond);

} // namespace
