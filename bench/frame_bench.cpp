// The cost of a frame in a decoder's format: with an unchanged subtitle, and with a change of subtitle.
#include "cues.h"
#include "host.h"
#include "libsubtitleframe.h"
#include "pictures.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace
{

const std::array<const char *, 4> Formats = {"yuv420p", "nv12", "p010le", "rgb24"};

/** A renderer with a film's cues or a given file, and a burner. Draws into the frames of a ring in turn. */
class FrameHost
{
public:
    explicit FrameHost(const benchmark::State &state, int look = SUBTITLE_LOOK_EXACT,
                       const std::string &file = SrtFile(FilmCues)) :
        m_ring(FrameRing::Of(Argument(state, 0), Argument(state, 1))),
        m_subtitle(CreateVideoSubtitle(Argument(state, 0), Argument(state, 1))),
        m_burner(CreateSubtitleBurner(m_subtitle))
    {
        SetSubtitleBurnerLook(m_burner, look);
        SetSubtitleFontParam(m_subtitle, "DejaVu Sans", 0, 0);
        SetSubtitleFile(m_subtitle, file.c_str(), 0);
        m_frame.width = Argument(state, 0);
        m_frame.height = Argument(state, 1);
        m_frame.format = SubtitlePixelFormat(Formats[Argument(state, 2)]);
        // One round, to get memory for the rest: the ring has it only where RGB frames have subtitles.
        for (std::size_t n = 0; n < m_ring.Frames(); ++n)
            Process(CueDistance);
    }
    ~FrameHost()
    {
        DestroySubtitleBurner(m_burner);
        DestroyVideoSubtitle(m_subtitle);
    }
    FrameHost(const FrameHost &) = delete;
    FrameHost &operator=(const FrameHost &) = delete;

    void Process(long ms)
    {
        av_image_fill_arrays(m_frame.data, m_frame.linesize, m_ring.Next(), static_cast<AVPixelFormat>(m_frame.format),
                             m_frame.width, m_frame.height, 1);
        SetSubtitleTimeStamp(m_subtitle, ms);
        BurnSubtitle(m_burner, &m_frame);
        benchmark::ClobberMemory();
    }

    void *Handle() const { return m_subtitle; }
    void *Burner() const { return m_burner; }

private:
    FrameRing &m_ring;
    void *m_subtitle;
    void *m_burner;
    SubtitleFrame m_frame = {};
};

void SteadyFrame(benchmark::State &state)
{
    FrameHost host(state);
    SetSubtitleAlpah(host.Handle(), static_cast<unsigned char>(Argument(state, 3)));
    host.Process(CueDistance);
    long ms = 0;
    for ([[maybe_unused]] auto _ : state)
        host.Process(CueDistance + ms++ % CueDuration);
}

void SteadyFramePicture(benchmark::State &state)
{
    FrameHost host(state, SUBTITLE_LOOK_EXACT, PictureFile());
    long ms = 1;
    host.Process(PictureDistance + ms);
    for ([[maybe_unused]] auto _ : state)
        host.Process(PictureDistance + ms++ % PictureDistance);
}

void FrameChange(benchmark::State &state)
{
    FrameHost host(state);
    MeasureChanges(state, [&](int n) { host.Process(CueDistance * (2 + n)); });
}

void NaturalSteady(benchmark::State &state)
{
    FrameHost host(state, SUBTITLE_LOOK_NATURAL);
    host.Process(CueDistance);
    long ms = 0;
    for ([[maybe_unused]] auto _ : state)
        host.Process(CueDistance + ms++ % CueDuration);
}

void NaturalChange(benchmark::State &state)
{
    FrameHost host(state, SUBTITLE_LOOK_NATURAL);
    MeasureChanges(state, [&](int n) { host.Process(CueDistance * (2 + n)); });
}

/** Cues with the same size in pixels, and the same outline, at every frame size. */
void NaturalSameText(benchmark::State &state)
{
    constexpr int PointSize = 32;
    FrameHost host(state, SUBTITLE_LOOK_NATURAL);
    SetSubtitleFontParam(host.Handle(), "DejaVu Sans", PointSize, 0);
    SetSubtitleBurnerOutline(host.Burner(), 2.0 * 720 / Argument(state, 1));
    MeasureChanges(state, [&](int n) { host.Process(CueDistance * (2 + n)); });
}

void NaturalSizes(benchmark::internal::Benchmark *benchmark)
{
    constexpr int Yuv420p = 0;
    constexpr int Rgb24 = 3;
    for (const int format : {Rgb24, Yuv420p}) {
        for (const auto &[width, height] : FrameSizes)
            benchmark->Args({width, height, format});
    }
    benchmark->Unit(benchmark::kMicrosecond);
}

void NaturalChanges(benchmark::internal::Benchmark *benchmark)
{
    NaturalSizes(benchmark);
    benchmark->Iterations(ChangeCount)->UseManualTime();
}

void SmallAndLarge(benchmark::internal::Benchmark *benchmark)
{
    constexpr int Yuv420p = 0;
    constexpr int Rgb24 = 3;
    for (const int format : {Rgb24, Yuv420p})
        benchmark->Args({1280, 720, format})->Args({3840, 2160, format});
    benchmark->Unit(benchmark::kMicrosecond)->Iterations(ChangeCount)->UseManualTime();
}

void FormatsAndOpacities(benchmark::internal::Benchmark *benchmark)
{
    for (int format = 0; format < static_cast<int>(Formats.size()); ++format) {
        for (const int opacity : {255, 128})
            benchmark->Args({1920, 1080, format, opacity})->Args({3840, 2160, format, opacity});
    }
    benchmark->Unit(benchmark::kMicrosecond);
}

void FormatsAndSizes(benchmark::internal::Benchmark *benchmark)
{
    for (int format = 0; format < static_cast<int>(Formats.size()); ++format)
        benchmark->Args({1920, 1080, format})->Args({3840, 2160, format});
    benchmark->Unit(benchmark::kMicrosecond);
}

void FormatChanges(benchmark::internal::Benchmark *benchmark)
{
    FormatsAndSizes(benchmark);
    benchmark->Iterations(ChangeCount)->UseManualTime();
}

BENCHMARK(SteadyFrame)->Apply(FormatsAndOpacities);
BENCHMARK(SteadyFramePicture)->Apply(FormatsAndSizes);
BENCHMARK(FrameChange)->Apply(FormatChanges);
BENCHMARK(NaturalSteady)->Apply(NaturalSizes);
BENCHMARK(NaturalChange)->Apply(NaturalChanges);
BENCHMARK(NaturalSameText)->Apply(SmallAndLarge);

} // namespace
