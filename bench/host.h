#pragma once

#include "cues.h"
#include "framering.h"
#include "libsubtitle.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/** Part of a frame, in pixels. */
struct Rectangle {
    int nLeft;
    int nTop;
    int nWidth;
    int nHeight;
};

/** A renderer that draws into the frames of a ring in turn. */
class Host
{
public:
    Host(int width, int height, const std::string &subtitleFile) :
        m_nWidth(width),
        m_nHeight(height),
        m_ring(FrameRing::Of(width, height)),
        m_subtitle(CreateVideoSubtitle(width, height))
    {
        SetSubtitleFontParam(m_subtitle, "DejaVu Sans", 0, 0);
        SetSubtitleFile(m_subtitle, subtitleFile.c_str(), 0);
    }
    ~Host() { DestroyVideoSubtitle(m_subtitle); }
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    void Process(long ms) { ProcessInto(m_ring.Next(), ms); }

    void *Handle() const { return m_subtitle; }

    /** Returns a frame of the background colour with what is due at a time. */
    std::vector<std::uint8_t> Draw(long ms)
    {
        std::vector<std::uint8_t> pixels(m_ring.FrameBytes(), FrameRing::Background);
        ProcessInto(pixels.data(), ms);
        return pixels;
    }

    /** The smallest rectangle around all pixels that are drawn at a time. */
    Rectangle InkBox(long ms)
    {
        const std::vector<std::uint8_t> pixels = Draw(ms);
        int left = m_nWidth;
        int top = m_nHeight;
        int right = 0;
        int bottom = 0;
        for (std::size_t n = 0; n < pixels.size(); ++n) {
            if (pixels[n] == FrameRing::Background)
                continue;
            const int column = static_cast<int>(n / 3 % m_nWidth);
            const int row = static_cast<int>(n / 3 / m_nWidth);
            left = std::min(left, column);
            right = std::max(right, column + 1);
            top = std::min(top, row);
            bottom = row + 1;
        }
        return {left, top, right - left, bottom - top};
    }

    /** Copies pixels, stored row by row, into a rectangle of the next frame. */
    void Copy(const std::vector<std::uint8_t> &pixels, const Rectangle &rectangle)
    {
        std::uint8_t *frame = m_ring.Next();
        const std::size_t bytes = static_cast<std::size_t>(rectangle.nWidth) * 3;
        for (int row = 0; row < rectangle.nHeight; ++row) {
            const std::size_t place = static_cast<std::size_t>(rectangle.nTop + row) * m_nWidth + rectangle.nLeft;
            std::memcpy(frame + place * 3, pixels.data() + row * bytes, bytes);
        }
        benchmark::ClobberMemory();
    }

private:
    void ProcessInto(std::uint8_t *pixels, long ms)
    {
        AVPicture frame = {{pixels}, {m_nWidth * 3}};
        SetSubtitleTimeStamp(m_subtitle, ms);
        ProcessSubtitleFrame(m_subtitle, &frame);
        benchmark::ClobberMemory();
    }

    int m_nWidth;
    int m_nHeight;
    FrameRing &m_ring;
    void *m_subtitle;
};

inline int Argument(const benchmark::State &state, std::size_t n)
{
    return static_cast<int>(state.range(n));
}

/** Measures a memcpy of the rectangle around what is drawn at a time. */
inline void MeasureFloor(benchmark::State &state, Host &host, long ms)
{
    const Rectangle box = host.InkBox(ms);
    const std::vector<std::uint8_t> pixels(static_cast<std::size_t>(box.nWidth) * box.nHeight * 3, 200);
    for ([[maybe_unused]] auto _ : state)
        host.Copy(pixels, box);
    state.counters["box_width"] = box.nWidth;
    state.counters["box_height"] = box.nHeight;
}

/** Times @p change(n) for each iteration n, and reports the longest time in addition to the mean. */
template <typename Change>
void MeasureChanges(benchmark::State &state, Change change)
{
    double worst = 0;
    int n = 0;
    for ([[maybe_unused]] auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        change(n++);
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        worst = std::max(worst, seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["worst_us"] = worst * 1e6;
}

/** Frame sizes that are measured. */
constexpr std::array<std::array<int, 2>, 4> FrameSizes = {{{854, 480}, {1280, 720}, {1920, 1080}, {3840, 2160}}};

inline void Sizes(benchmark::internal::Benchmark *benchmark)
{
    for (const auto &[width, height] : FrameSizes)
        benchmark->Args({width, height});
    benchmark->Unit(benchmark::kMicrosecond);
}

constexpr int ChangeCount = 200;

/** Changes of cue, for each script at each size. */
inline void ScriptChanges(benchmark::internal::Benchmark *benchmark)
{
    for (const CueScript script : {CueScript::Latin, CueScript::Cjk, CueScript::Arabic, CueScript::Devanagari}) {
        for (const auto &[width, height] : FrameSizes)
            benchmark->Args({width, height, static_cast<int>(script)});
    }
    benchmark->Unit(benchmark::kMicrosecond)->Iterations(ChangeCount)->UseManualTime();
}

inline CueScript Script(const benchmark::State &state)
{
    return static_cast<CueScript>(Argument(state, 2));
}
