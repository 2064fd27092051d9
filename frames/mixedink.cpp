#include "frames/mixedink.h"

#include "frames/samplerows.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace
{

constexpr int Opaque = 255;
/** Weights of all taps of a sample. */
constexpr int AllTaps = Taps::Whole * Taps::Whole;
/** Samples that are worked on at once. */
constexpr int Chunk = 256;
/** Untouched samples between two runs that are not worth a span of their own. */
constexpr int MaxGap = 8;

std::int32_t ExchangeWeight(double weight)
{
    return static_cast<std::int32_t>(std::lround(std::ldexp(weight, ExchangeBits)));
}

/** Calls @p call(first, count, at) for parts of a span that fit into a chunk. */
template <typename Call>
void ForChunks(const Span &span, Call call)
{
    for (int done = 0; done < span.nCount; done += Chunk)
        call(span.nFirst + done, std::min(Chunk, span.nCount - done), span.nAt + done);
}

} // namespace

void MixedInk::Lists::Clear()
{
    listSpans.clear();
    for (auto &base : listBases)
        base.clear();
    listRest.clear();
    listKeep.clear();
}

void MixedInk::Lists::Append(const std::array<std::int32_t, 2> &bases, std::int32_t rest, std::int32_t keep)
{
    for (std::size_t i = 0; i < 2; ++i)
        listBases[i].push_back(bases[i]);
    listRest.push_back(rest);
    listKeep.push_back(keep);
}

MixLists MixedInk::Lists::At(std::size_t at, int base) const
{
    return {listBases[base].data() + at, listRest.data() + at, listKeep.data() + at};
}

void MixedInk::Build(const PixelMap &map, const FrameLayout &layout, const FrameColors &colors,
                     const std::vector<FrameColor> &list)
{
    m_layout = layout;
    m_singles.Clear();
    m_pairs.Clear();
    BuildSettings(colors);
    BuildSingles(map, list);
    if (layout.format.nColors == 3)
        BuildPairs(map, list);
}

void MixedInk::BuildSettings(const FrameColors &colors)
{
    m_exchange = colors.Exchange();
    const PixelFormat &format = m_layout.format;
    m_nPairScale = format.IsSubsampled() ? 1 : AllTaps;
    MixSettings settings = {};
    settings.nMiddle = m_exchange.nMiddle;
    settings.nMax = format.components[m_exchange.nSingle].Max();
    for (std::size_t i = 0; i < 2; ++i) {
        settings.single[i] = ExchangeWeight(m_exchange.single[i]);
        for (std::size_t j = 0; j < 2; ++j)
            settings.pair[i][j] = ExchangeWeight(m_exchange.matrix[i][j]);
    }
    const auto divideBy = [&colors](MixSettings &to, std::int32_t divisor, bool isColor) {
        to.nDivisor = divisor;
        to.nBias = isColor && colors.IsAsRgb24() ? 0 : divisor / 2;
    };
    m_singleSettings = m_alphaSettings = m_pairSettings = settings;
    divideBy(m_singleSettings, PixelDivisor, true);
    divideBy(m_pairSettings, format.IsSubsampled() ? MeanDivisor : PixelDivisor, true);
    divideBy(m_alphaSettings, PixelDivisor, false);
    m_alphaSettings.nMax = format.components[3].Max();
    m_alphaSettings.single[0] = m_alphaSettings.single[1] = 0;
}

void MixedInk::BuildSingles(const PixelMap &map, const std::vector<FrameColor> &list)
{
    for (int row = map.Top(); !map.IsEmpty() && row <= map.Bottom(); ++row) {
        const PixelMap::Row pixels = map.RowAt(row);
        const auto isCovered = [&](int i) { return map.At(pixels, pixels.nFirst + i).nColor != 0; };
        ForRuns(pixels.nEnd - pixels.nFirst, MaxGap, isCovered, [&](int from, int end) {
            m_singles.listSpans.push_back({row, pixels.nFirst + from, end - from, m_singles.listRest.size()});
            for (int i = from; i < end; ++i) {
                const PixelMap::Pixel pixel = map.At(pixels, pixels.nFirst + i);
                if (pixel.nColor == 0) {
                    m_singles.Append({0, 0}, 0, Opaque);
                    continue;
                }
                const FrameColor &color = list[pixel.nColor - 1];
                const auto weight = static_cast<std::int32_t>(pixel.nWeight);
                m_singles.Append({weight * color.fine[m_exchange.nSingle], weight * color.fine[3]}, Opaque - weight, 0);
            }
        });
    }
}

void MixedInk::BuildPairs(const PixelMap &map, const std::vector<FrameColor> &list)
{
    int first = map.Top();
    int last = map.Bottom();
    m_layout.rows.ToSamples(first, last);
    for (int row = first; !map.IsEmpty() && row <= last; ++row)
        BuildPairRow(map, list, row);
}

void MixedInk::BuildPairRow(const PixelMap &map, const std::vector<FrameColor> &list, int row)
{
    const Taps rows = m_layout.rows.At(row);
    std::array<PixelMap::Row, 3> pixels;
    int first = INT_MAX;
    int last = -1;
    for (int r = 0; r < rows.nCount; ++r) {
        pixels[r] = map.RowAt(rows.positions[r]);
        if (pixels[r].nFirst < pixels[r].nEnd) {
            first = std::min(first, pixels[r].nFirst);
            last = std::max(last, pixels[r].nEnd - 1);
        }
    }
    if (last < 0)
        return;
    m_layout.columns.ToSamples(first, last);
    const std::size_t begin = m_pairs.listRest.size();
    for (int sample = first; sample <= last; ++sample) {
        const Taps columns = m_layout.columns.At(sample);
        std::array<std::int32_t, 2> bases = {0, 0};
        std::int32_t rest = 0;
        std::int32_t keep = 0;
        for (int r = 0; r < rows.nCount; ++r) {
            for (int c = 0; c < columns.nCount; ++c) {
                const std::int32_t share = rows.weights[r] * columns.weights[c] / m_nPairScale;
                const PixelMap::Pixel pixel = map.At(pixels[r], columns.positions[c]);
                if (pixel.nColor == 0) {
                    keep += share * Opaque;
                    continue;
                }
                const auto weight = static_cast<std::int32_t>(pixel.nWeight);
                for (std::size_t i = 0; i < 2; ++i)
                    bases[i] += share * weight * list[pixel.nColor - 1].fine[m_exchange.pair[i]];
                rest += share * (Opaque - weight);
            }
        }
        m_pairs.Append(bases, rest, keep);
    }
    const std::int32_t untouched = Opaque * AllTaps / m_nPairScale;
    const auto isTouched = [&](int i) { return m_pairs.listKeep[begin + i] != untouched; };
    ForRuns(last - first + 1, MaxGap, isTouched, [&](int from, int end) {
        m_pairs.listSpans.push_back({row, first + from, end - from, begin + from});
    });
}

void MixedInk::Draw(const FramePlanes &planes) const
{
    for (const Span &span : m_singles.listSpans)
        DrawSingles(planes, span);
    if (m_layout.format.bAlpha) {
        for (const Span &span : m_singles.listSpans)
            DrawAlpha(planes, span);
    }
    // The last, since the single components need the pairs as they were.
    for (const Span &span : m_pairs.listSpans)
        DrawPairs(planes, span);
}

void MixedInk::DrawSingles(const FramePlanes &planes, const Span &span) const
{
    const PixelFormat &format = m_layout.format;
    const SampleRow samples(planes, format.components[m_exchange.nSingle], format.nElementBytes, span.nRow);
    const bool needsPair = m_singleSettings.single[0] != 0 || m_singleSettings.single[1] != 0;
    ForChunks(span, [&](int first, int count, std::size_t at) {
        std::array<std::int32_t, Chunk> values;
        std::array<std::array<std::int32_t, Chunk>, 2> pair = {};
        samples.Load(values.data(), first, count);
        for (std::size_t i = 0; needsPair && i < 2; ++i) {
            const Component &component = format.components[m_exchange.pair[i]];
            const int row = component.nRowsLog2 > 0 ? m_layout.rows.SampleOf(span.nRow) : span.nRow;
            const SampleRow from(planes, component, format.nElementBytes, row);
            if (component.nColumnsLog2 > 0)
                from.LoadDoubled(pair[i].data(), first, count);
            else
                from.Load(pair[i].data(), first, count);
        }
        m_pKernel->MixSingle(values.data(), pair[0].data(), pair[1].data(), count, m_singles.At(at, 0),
                             m_singleSettings);
        samples.Store(values.data(), first, count);
    });
}

void MixedInk::DrawAlpha(const FramePlanes &planes, const Span &span) const
{
    const PixelFormat &format = m_layout.format;
    const SampleRow samples(planes, format.components[3], format.nElementBytes, span.nRow);
    ForChunks(span, [&](int first, int count, std::size_t at) {
        std::array<std::int32_t, Chunk> values;
        const std::array<std::int32_t, Chunk> none = {};
        samples.Load(values.data(), first, count);
        m_pKernel->MixSingle(values.data(), none.data(), none.data(), count, m_singles.At(at, 1), m_alphaSettings);
        samples.Store(values.data(), first, count);
    });
}

void MixedInk::DrawPairs(const FramePlanes &planes, const Span &span) const
{
    const PixelFormat &format = m_layout.format;
    const SampleRow first(planes, format.components[m_exchange.pair[0]], format.nElementBytes, span.nRow);
    const SampleRow second(planes, format.components[m_exchange.pair[1]], format.nElementBytes, span.nRow);
    ForChunks(span, [&](int from, int count, std::size_t at) {
        std::array<std::int32_t, Chunk> p;
        std::array<std::int32_t, Chunk> q;
        first.Load(p.data(), from, count);
        second.Load(q.data(), from, count);
        m_pKernel->MixPair(p.data(), q.data(), count, m_pairs.At(at, 0), m_pairs.listBases[1].data() + at,
                           m_pairSettings);
        first.Store(p.data(), from, count);
        second.Store(q.data(), from, count);
    });
}
