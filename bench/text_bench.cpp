// The cost of a frame with text: with an unchanged subtitle, with a change of subtitle, and with nothing due. The
// memcpy of the rectangle around the text is measured too: the ratio to it depends less on the machine.
#include "cues.h"
#include "host.h"

namespace
{

constexpr int SteadyCue = 1;

/** A renderer with a film's cues. */
class TextHost : public Host
{
public:
    explicit TextHost(const benchmark::State &state, CueScript script = CueScript::Latin) :
        Host(Argument(state, 0), Argument(state, 1), SrtFile(FilmCues, script))
    {
    }
};

void MemcpyOfText(benchmark::State &state)
{
    TextHost host(state);
    MeasureFloor(state, host, CueDistance * SteadyCue);
}

void SteadyText(benchmark::State &state)
{
    TextHost host(state);
    SetSubtitleAlpah(host.Handle(), Argument(state, 2));
    host.Process(CueDistance * SteadyCue);
    long ms = 0;
    for ([[maybe_unused]] auto _ : state)
        host.Process(CueDistance * SteadyCue + ms++ % CueDuration);
}

void TextChange(benchmark::State &state)
{
    TextHost host(state, Script(state));
    host.Process(CueDistance);
    MeasureChanges(state, [&](int n) { host.Process(CueDistance * (2 + n)); });
}

void NothingDue(benchmark::State &state)
{
    TextHost host(state);
    for ([[maybe_unused]] auto _ : state)
        host.Process(PauseAfter(SteadyCue));
}

void SizesAndOpacities(benchmark::internal::Benchmark *benchmark)
{
    for (const int opacity : {255, 128}) {
        for (const auto &[width, height] : FrameSizes)
            benchmark->Args({width, height, opacity});
    }
    benchmark->Unit(benchmark::kMicrosecond);
}

BENCHMARK(MemcpyOfText)->Apply(Sizes);
BENCHMARK(SteadyText)->Apply(SizesAndOpacities);
BENCHMARK(TextChange)->Apply(ScriptChanges);
BENCHMARK(NothingDue)->Args({1920, 1080})->Unit(benchmark::kMicrosecond);

} // namespace
