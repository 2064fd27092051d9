// The same work done with libass. Its images are blended here in two ways: one by one as it lists them, and merged into
// one picture that is reused while libass reports no change, which is the fastest that its interface allows.
#include "asshost.h"
#include "cues.h"
#include "host.h"
#include "listblender.h"
#include "mergedyuv.h"
#include "randomtimes.h"

#include <fstream>
#include <iterator>

namespace
{

class AssTextHost
{
public:
    explicit AssTextHost(const benchmark::State &state, CueScript script = CueScript::Latin) :
        m_nWidth(Argument(state, 0)),
        m_nHeight(Argument(state, 1)),
        m_ring(FrameRing::Of(m_nWidth, m_nHeight)),
        m_ass(m_nWidth, m_nHeight, AssFile(FilmCues, m_nWidth, m_nHeight, script))
    {
    }

    void ProcessList(long ms)
    {
        BlendList(m_ass.Images(ms), m_ring.Next(), m_nWidth);
        benchmark::ClobberMemory();
    }

    void ProcessMerged(long ms)
    {
        int change = 0;
        const ASS_Image *list = m_ass.Images(ms, &change);
        if (change != 0)
            m_merged.Merge(list, m_nWidth, m_nHeight);
        m_merged.Blend(m_ring.Next());
        benchmark::ClobberMemory();
    }

private:
    int m_nWidth;
    int m_nHeight;
    FrameRing &m_ring;
    AssHost m_ass;
    MergedList m_merged;
};

/** Draws into frames in a decoder's format, in the memory of a ring of RGB frames. */
class AssFrameHost
{
public:
    explicit AssFrameHost(const benchmark::State &state) :
        m_nWidth(Argument(state, 0)),
        m_nHeight(Argument(state, 1)),
        m_format(static_cast<YuvFormat>(Argument(state, 2))),
        m_ring(FrameRing::Of(m_nWidth, m_nHeight)),
        m_ass(m_nWidth, m_nHeight, AssFile(FilmCues, m_nWidth, m_nHeight)),
        m_merged(m_format, m_nWidth, m_nHeight)
    {
        // One round, to get memory for the rest: the ring has it only where RGB frames have subtitles.
        for (std::size_t n = 0; n < m_ring.Frames(); ++n)
            Process(CueDistance);
    }

    void Process(long ms)
    {
        int change = 0;
        const ASS_Image *list = m_ass.Images(ms, &change);
        if (change != 0)
            m_merged.Merge(list);
        m_merged.Blend(Planes(m_ring.Next()));
        benchmark::ClobberMemory();
    }

private:
    YuvPlanes Planes(std::uint8_t *frame) const
    {
        const std::ptrdiff_t row = m_format == YuvFormat::P010 ? std::ptrdiff_t{2} * m_nWidth : m_nWidth;
        std::uint8_t *const chroma = frame + row * m_nHeight;
        if (m_format == YuvFormat::Yuv420p)
            return {{frame, chroma, chroma + row / 2 * (m_nHeight / 2)}, {row, row / 2, row / 2}};
        return {{frame, chroma, nullptr}, {row, row, 0}};
    }

    int m_nWidth;
    int m_nHeight;
    YuvFormat m_format;
    FrameRing &m_ring;
    AssHost m_ass;
    MergedYuv m_merged;
};

/** Returns whether a benchmark cannot run, and reports that. */
bool CannotRun(benchmark::State &state)
{
    if (!CanBlend())
        state.SkipWithError("the processor has no AVX2");
    return !CanBlend();
}

void AssSteadyList(benchmark::State &state)
{
    if (CannotRun(state))
        return;
    AssTextHost host(state);
    long ms = 0;
    for ([[maybe_unused]] auto _ : state)
        host.ProcessList(CueDistance + ms++ % CueDuration);
}

void AssSteadyMerged(benchmark::State &state)
{
    if (CannotRun(state))
        return;
    AssTextHost host(state);
    host.ProcessMerged(CueDistance);
    long ms = 0;
    for ([[maybe_unused]] auto _ : state)
        host.ProcessMerged(CueDistance + ms++ % CueDuration);
}

void AssChange(benchmark::State &state)
{
    if (CannotRun(state))
        return;
    AssTextHost host(state, Script(state));
    host.ProcessList(CueDistance);
    MeasureChanges(state, [&](int n) { host.ProcessList(CueDistance * (2 + n)); });
}

void AssSteadyFrame(benchmark::State &state)
{
    if (CannotRun(state))
        return;
    AssFrameHost host(state);
    long ms = 0;
    for ([[maybe_unused]] auto _ : state)
        host.Process(CueDistance + ms++ % CueDuration);
}

void AssFrameChange(benchmark::State &state)
{
    if (CannotRun(state))
        return;
    AssFrameHost host(state);
    MeasureChanges(state, [&](int n) { host.Process(CueDistance * (2 + n)); });
}

/** Each size with each YuvFormat. Their numbers are those of the formats in frame_bench.cpp. */
void FormatSizes(benchmark::internal::Benchmark *benchmark)
{
    for (const YuvFormat format : {YuvFormat::Yuv420p, YuvFormat::Nv12, YuvFormat::P010}) {
        for (const auto &[width, height] : {FrameSizes[2], FrameSizes[3]})
            benchmark->Args({width, height, static_cast<int>(format)});
    }
    benchmark->Unit(benchmark::kMicrosecond);
}

void FormatChanges(benchmark::internal::Benchmark *benchmark)
{
    FormatSizes(benchmark);
    benchmark->Iterations(ChangeCount)->UseManualTime();
}

void AssNothingDue(benchmark::State &state)
{
    if (CannotRun(state))
        return;
    AssTextHost host(state);
    for ([[maybe_unused]] auto _ : state)
        host.ProcessList(PauseAfter(1));
}

/** At times when nothing is due: at others libass would draw as well. */
void AssLookup(benchmark::State &state)
{
    AssHost ass(1920, 1080, AssFile(Argument(state, 0)));
    RandomTimes times(Argument(state, 0), CueDistance - CueDuration - 1, CueDuration + 1);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(ass.Images(times.Next()));
}

void AssOpen(benchmark::State &state)
{
    const std::string file = AssFile(Argument(state, 0));
    AssHost ass(1920, 1080, file);
    for ([[maybe_unused]] auto _ : state)
        ass.Open(file);
}

/** Parses a script in memory. */
void AssRead(benchmark::State &state)
{
    std::ifstream file(AssFile(Argument(state, 0)), std::ios::binary);
    const std::string script((std::istreambuf_iterator<char>(file)), {});
    AssHost ass(1920, 1080, AssFile(1));
    for ([[maybe_unused]] auto _ : state)
        ass.Read(script);
}

BENCHMARK(AssSteadyList)->Apply(Sizes);
BENCHMARK(AssSteadyMerged)->Apply(Sizes);
BENCHMARK(AssChange)->Apply(ScriptChanges);
BENCHMARK(AssSteadyFrame)->Apply(FormatSizes);
BENCHMARK(AssFrameChange)->Apply(FormatChanges);
BENCHMARK(AssNothingDue)->Args({1920, 1080})->Unit(benchmark::kMicrosecond);
BENCHMARK(AssLookup)->Arg(FilmCues)->Arg(ManyCues)->Unit(benchmark::kMicrosecond);
BENCHMARK(AssRead)->Arg(FilmCues)->Unit(benchmark::kMicrosecond);
BENCHMARK(AssOpen)->Arg(FilmCues)->Arg(ManyCues)->Unit(benchmark::kMicrosecond);

} // namespace
