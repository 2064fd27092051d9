// The cost of a bitmap subtitle: decoding a unit, a change of picture (fetch, decode, scale), an unchanged picture, and
// for comparison the memcpy of the rectangle that the picture covers.
#include "host.h"
#include "pictures.h"

#include "vobsub/subtitledecoder.h"

namespace
{

/** A renderer with PictureCount pictures. */
class PictureHost : public Host
{
public:
    explicit PictureHost(const benchmark::State &state) : Host(Argument(state, 0), Argument(state, 1), PictureFile()) {}
};

void DecodeUnit(benchmark::State &state)
{
    const unsigned int palette[16] = {};
    const std::vector<std::uint8_t> unit = TextUnit(0);
    subtitle_init(palette, CanvasWidth, CanvasHeight);
    for ([[maybe_unused]] auto _ : state) {
        subtitle_decode(unit.data(), static_cast<int>(unit.size()));
        benchmark::ClobberMemory();
    }
    subtitle_release();
    state.counters["bytes"] = static_cast<double>(unit.size());
}

void MemcpyOfPicture(benchmark::State &state)
{
    PictureHost host(state);
    MeasureFloor(state, host, PictureDistance + 1);
}

void MemcpyOfFrame(benchmark::State &state)
{
    constexpr std::size_t Frames = 16;
    const std::size_t bytes = static_cast<std::size_t>(Argument(state, 0)) * Argument(state, 1) * 3;
    const std::vector<std::uint8_t> pixels(bytes, 200);
    std::vector<std::uint8_t> frames(Frames * bytes);
    std::size_t n = 0;
    for ([[maybe_unused]] auto _ : state) {
        std::memcpy(frames.data() + n++ % Frames * bytes, pixels.data(), bytes);
        benchmark::ClobberMemory();
    }
}

void SteadyPicture(benchmark::State &state)
{
    PictureHost host(state);
    long ms = 1;
    host.Process(PictureDistance + ms);
    for ([[maybe_unused]] auto _ : state)
        host.Process(PictureDistance + ms++ % PictureDistance);
}

void PictureChange(benchmark::State &state)
{
    PictureHost host(state);
    MeasureChanges(state, [&](int n) { host.Process(PictureDistance * (1 + n % PictureCount) + 1); });
}

void PictureSizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Args({CanvasWidth, CanvasHeight});
    Sizes(benchmark);
}

BENCHMARK(DecodeUnit)->Unit(benchmark::kMicrosecond);
BENCHMARK(MemcpyOfPicture)->Apply(PictureSizes);
BENCHMARK(MemcpyOfFrame)->Args({CanvasWidth, CanvasHeight})->Args({1920, 1080})->Unit(benchmark::kMicrosecond);
BENCHMARK(SteadyPicture)->Apply(PictureSizes);
BENCHMARK(PictureChange)->Apply(PictureSizes)->Iterations(ChangeCount)->UseManualTime();

} // namespace
