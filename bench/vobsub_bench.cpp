// What a bitmap subtitle costs a host: decoding a unit, a change of picture (fetch, decode, scale), a steady picture and
// beside it the memcpy of the rectangle that the picture covers.
#include "host.h"
#include "pictures.h"

#include "vobsub/subtitledecoder.h"

namespace
{

/** A renderer with pictures for each of PictureCount times. */
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

BENCHMARK(DecodeUnit)->Unit(benchmark::kMicrosecond);
BENCHMARK(MemcpyOfPicture)->Apply(Sizes);
BENCHMARK(SteadyPicture)->Apply(Sizes);
BENCHMARK(PictureChange)->Apply(Changes);

} // namespace
