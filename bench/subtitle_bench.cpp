// What a frame costs a host: a steady subtitle, a change of subtitle, nothing due; beside each the memcpy of the
// rectangle that the subtitle covers, so that the ratio says something whatever the machine.
#include "libsubtitle.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

extern "C" {
#include <libavutil/mem.h>
}

namespace
{

constexpr int CueCount = 200;
constexpr long CueDistance = 2000;
constexpr long CueDuration = 1000;

const char *CueText()
{
    return "The quick brown fox jumps over\nthe lazy dog, and again";
}

/** A file of two-line cues, each from CueDistance * n on, no two with the same text. */
class CueFile
{
public:
    CueFile() : m_path(std::filesystem::temp_directory_path() / ("subtitle_bench-" + std::to_string(getpid()) + ".srt"))
    {
        std::ofstream file(m_path);
        for (int i = 1; i <= CueCount; ++i)
            file << i << '\n'
                 << Stamp(CueDistance * i) << " --> " << Stamp(CueDistance * i + CueDuration) << '\n'
                 << CueText() << ' ' << i << "\n\n";
    }
    ~CueFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    CueFile(const CueFile &) = delete;
    CueFile &operator=(const CueFile &) = delete;

    std::string Name() const { return m_path.string(); }

private:
    static std::string Stamp(long ms)
    {
        char text[32];
        std::snprintf(text, sizeof(text), "%02ld:%02ld:%02ld,%03ld", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60,
                      ms % 1000);
        return text;
    }

    std::filesystem::path m_path;
};

struct Rectangle {
    int nLeft;
    int nTop;
    int nWidth;
    int nHeight;
};

class Host
{
public:
    explicit Host(const benchmark::State &state) :
        m_nWidth(static_cast<int>(state.range(0))),
        m_nHeight(static_cast<int>(state.range(1))),
        m_subtitle(CreateVideoSubtitle(m_nWidth, m_nHeight)),
        m_pixels(static_cast<std::size_t>(m_nWidth) * m_nHeight * 3, 90),
        m_frame{{m_pixels.data()}, {m_nWidth * 3}}
    {
        SetSubtitleFile(m_subtitle, m_file.Name().c_str(), 0);
        SetSubtitleFontParam(m_subtitle, "DejaVu Sans", 0, 0);
    }
    ~Host() { DestroyVideoSubtitle(m_subtitle); }
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    void Process(long ms)
    {
        SetSubtitleTimeStamp(m_subtitle, ms);
        ProcessSubtitleFrame(m_subtitle, &m_frame);
        benchmark::ClobberMemory();
    }

    void *Handle() const { return m_subtitle; }

    /** What the text covers. */
    Rectangle TextRectangle() const
    {
        AVPicture out = {};
        int rect[4] = {};
        TextToBmp(m_subtitle, CueText(), &out, rect);
        av_freep(&out.data[0]);
        av_freep(&out.data[1]);
        return {rect[0], rect[1], rect[2], rect[3]};
    }

    /** Copies a rectangle of the frame from a picture of the same size. */
    void Copy(const std::vector<uint8_t> &picture, const Rectangle &rectangle)
    {
        for (int row = rectangle.nTop; row < rectangle.nTop + rectangle.nHeight; ++row) {
            const std::size_t place = (static_cast<std::size_t>(row) * m_nWidth + rectangle.nLeft) * 3;
            std::memcpy(m_pixels.data() + place, picture.data() + place,
                        static_cast<std::size_t>(rectangle.nWidth) * 3);
        }
        benchmark::ClobberMemory();
    }

    std::size_t PixelBytes() const { return m_pixels.size(); }

private:
    CueFile m_file;
    int m_nWidth;
    int m_nHeight;
    void *m_subtitle;
    std::vector<uint8_t> m_pixels;
    AVPicture m_frame;
};

void Memcpy(benchmark::State &state)
{
    Host host(state);
    const Rectangle rectangle = host.TextRectangle();
    const std::vector<uint8_t> picture(host.PixelBytes(), 200);
    for ([[maybe_unused]] auto _ : state)
        host.Copy(picture, rectangle);
}

void SteadySubtitle(benchmark::State &state)
{
    Host host(state);
    SetSubtitleAlpah(host.Handle(), static_cast<int>(state.range(2)));
    host.Process(CueDistance);
    long ms = 0;
    for ([[maybe_unused]] auto _ : state)
        host.Process(CueDistance + ms++ % CueDuration);
}

void CueChange(benchmark::State &state)
{
    Host host(state);
    long cue = 0;
    for ([[maybe_unused]] auto _ : state)
        host.Process(CueDistance * (1 + cue++ % CueCount));
}

void NothingDue(benchmark::State &state)
{
    Host host(state);
    for ([[maybe_unused]] auto _ : state)
        host.Process(CueDistance + CueDuration + 1);
}

void Sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"width", "height"})->Args({854, 480})->Args({1920, 1080})->Args({3840, 2160});
    benchmark->Unit(benchmark::kMicrosecond);
}

void SizesAndOpacities(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"width", "height", "opacity"});
    for (const int opacity : {255, 128})
        benchmark->Args({854, 480, opacity})->Args({1920, 1080, opacity})->Args({3840, 2160, opacity});
    benchmark->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Memcpy)->Apply(Sizes);
BENCHMARK(SteadySubtitle)->Apply(SizesAndOpacities);
BENCHMARK(CueChange)->Apply(Sizes);
BENCHMARK(NothingDue)->Apply(Sizes);

} // namespace

BENCHMARK_MAIN();
