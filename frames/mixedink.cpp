#include "frames/mixedink.h"

#include "frames/meanbuilder.h"
#include "frames/samplerows.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace
{

/** Weights of all taps of a sample. */
constexpr int AllTaps = Taps::Whole * Taps::Whole;
/** Untouched samples between two runs that are not worth a span of their own. */
constexpr int MaxGap = 8;

std::int32_t ExchangeWeight(double weight)
{
    return static_cast<std::int32_t>(std::lround(std::ldexp(weight, ExchangeBits)));
}

/** Calls @p call(chunk, at) for parts of a span that fit into a chunk. */
template <typename Call>
void ForChunks(const Span &span, Call call)
{
    for (int done = 0; done < span.nCount; done += ChunkSamples)
        call({span.nRow, span.nFirst + done, std::min(ChunkSamples, span.nCount - done)}, span.nAt + done);
}

/** What text of a weight mixes into two components. @param text, outline  code values, with fine bits */
InkMix MixOf(std::array<std::int32_t, 2> text, std::array<std::int32_t, 2> outline, int weight)
{
    for (std::size_t i = 0; i < 2; ++i) {
        text[i] *= weight;
        outline[i] *= weight;
    }
    return {text, outline, Opaque - weight};
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

void MixedInk::BuildPicture(const PixelMap &map, const FrameLayout &layout, const FrameColors &colors,
                            const std::vector<FrameColor> &list)
{
    Start(layout, colors);
    BuildSingles(map, list);
    if (layout.format.nColors == 3)
        BuildPairs(map, list);
}

void MixedInk::BuildText(const InkRows &ink, const FrameLayout &layout, const FrameColors &colors,
                         const InkFrameColors &ofInk, int weight)
{
    Start(layout, colors);
    const auto codesOf = [](const FrameColor &color, int first, int second) {
        return std::array<std::int32_t, 2>{color.fine[first], color.fine[second]};
    };
    const auto mixOf = [&](int first, int second) {
        return MixOf(codesOf(ofInk.text, first, second), codesOf(ofInk.outline, first, second), weight);
    };
    m_singleMix = mixOf(m_exchange.nSingle, 3);
    m_pairMix = mixOf(m_exchange.pair[0], m_exchange.pair[1]);
    ink.FindSamples(MixSamples, m_samples);
    if (layout.format.IsSubsampled())
        MeanBuilder(ink, layout, *m_pKernel).Build(m_means);
}

void MixedInk::Start(const FrameLayout &layout, const FrameColors &colors)
{
    m_layout = layout;
    m_singles.Clear();
    m_pairs.Clear();
    m_samples.Reset(0);
    m_means.Reset(0);
    m_exchange = colors.Exchange();
    const PixelFormat &format = m_layout.format;
    MixSettings settings = {};
    settings.nMiddle = m_exchange.nMiddle;
    settings.nMax = format.components[m_exchange.nSingle].Max();
    for (std::size_t i = 0; i < 2; ++i) {
        settings.single[i] = ExchangeWeight(m_exchange.single[i]);
        for (std::size_t j = 0; j < 2; ++j)
            settings.pair[i][j] = ExchangeWeight(m_exchange.matrix[i][j]);
    }
    const auto divide = [&colors](MixSettings &to, int shift, bool isColor) {
        to.nShift = shift;
        to.nBias = isColor && colors.IsAsRgb24() ? 0 : (Opaque << shift) / 2;
    };
    m_singleSettings = m_alphaSettings = m_pairSettings = settings;
    divide(m_singleSettings, FineBits, true);
    divide(m_pairSettings, format.IsSubsampled() ? FineBits + MeanShift : FineBits, true);
    divide(m_alphaSettings, FineBits, false);
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
    const int scale = m_layout.format.IsSubsampled() ? 1 : AllTaps;
    const std::size_t begin = m_pairs.listRest.size();
    for (int sample = first; sample <= last; ++sample) {
        const Taps columns = m_layout.columns.At(sample);
        std::array<std::int32_t, 2> bases = {0, 0};
        std::int32_t rest = 0;
        std::int32_t keep = 0;
        for (int r = 0; r < rows.nCount; ++r) {
            for (int c = 0; c < columns.nCount; ++c) {
                const std::int32_t share = rows.weights[r] * columns.weights[c] / scale;
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
    const std::int32_t untouched = Opaque * AllTaps / scale;
    const auto isTouched = [&](int i) { return m_pairs.listKeep[begin + i] != untouched; };
    ForRuns(last - first + 1, MaxGap, isTouched, [&](int from, int end) {
        m_pairs.listSpans.push_back({row, first + from, end - from, begin + from});
    });
}

/** Calls @p call(chunk, lists) for text's pixels. */
template <typename Call>
void MixedInk::ForSamples(const InkMix &mix, Call call) const
{
    InkMixLists lists;
    for (const InkSamples *block = m_samples.Data(); block < m_samples.Data() + m_samples.Size(); ++block) {
        m_pKernel->SpreadSamples(*block, mix, lists);
        const int count = std::min(static_cast<int>(MixSamples), m_layout.nWidth - block->nColumn);
        call(Chunk{block->nRow, block->nColumn, count}, lists);
    }
}

/** The same for its means. */
template <typename Call>
void MixedInk::ForMeans(const InkMix &mix, Call call) const
{
    InkMixLists lists;
    for (const InkMeans *block = m_means.Data(); block < m_means.Data() + m_means.Size(); ++block) {
        m_pKernel->SpreadMeans(*block, mix, lists);
        const int count = std::min(static_cast<int>(MeanSamples), m_layout.columns.Samples() - block->nFirst);
        call(Chunk{block->nRow, block->nFirst, count}, lists);
    }
}

void MixedInk::Draw(const FramePlanes &planes) const
{
    const auto drawSingles = [&](const Chunk &chunk, const InkMixLists &lists) {
        DrawSingles(planes, chunk, lists.Of(0));
        if (m_layout.format.bAlpha)
            DrawAlpha(planes, chunk, lists.Of(1));
    };
    const auto drawPairs = [&](const Chunk &chunk, const InkMixLists &lists) {
        DrawPairs(planes, chunk, lists.Of(0), lists.listBases[1].data());
    };
    ForSamples(m_singleMix, drawSingles);
    for (const Span &span : m_singles.listSpans) {
        ForChunks(span, [&](const Chunk &chunk, std::size_t at) {
            DrawSingles(planes, chunk, m_singles.At(at, 0));
            if (m_layout.format.bAlpha)
                DrawAlpha(planes, chunk, m_singles.At(at, 1));
        });
    }
    // The last, since the single components need the pairs as they were.
    if (m_layout.format.nColors < 3)
        return;
    if (m_layout.format.IsSubsampled())
        ForMeans(m_pairMix, drawPairs);
    else
        ForSamples(m_pairMix, drawPairs);
    for (const Span &span : m_pairs.listSpans) {
        ForChunks(span, [&](const Chunk &chunk, std::size_t at) {
            DrawPairs(planes, chunk, m_pairs.At(at, 0), m_pairs.listBases[1].data() + at);
        });
    }
}

void MixedInk::DrawSingles(const FramePlanes &planes, const Chunk &chunk, const MixLists &lists) const
{
    const PixelFormat &format = m_layout.format;
    const SampleRow samples(planes, format.components[m_exchange.nSingle], format.nElementBytes, chunk.nRow);
    const bool needsPair = m_singleSettings.single[0] != 0 || m_singleSettings.single[1] != 0;
    SampleChunk values;
    std::array<SampleChunk, 2> chunks;
    // Where no pair is needed, any numbers do.
    std::array<const std::int32_t *, 2> pair = {values.data(), values.data()};
    samples.Load(values.data(), chunk.nFirst, chunk.nCount);
    for (std::size_t i = 0; needsPair && i < 2; ++i) {
        const Component &component = format.components[m_exchange.pair[i]];
        const int row = component.nRowsLog2 > 0 ? m_layout.rows.SampleOf(chunk.nRow) : chunk.nRow;
        const SampleRow from(planes, component, format.nElementBytes, row);
        pair[i] = chunks[i].data();
        if (component.nColumnsLog2 > 0)
            pair[i] = from.LoadDoubled(chunks[i], chunk.nFirst, chunk.nCount);
        else
            from.Load(chunks[i].data(), chunk.nFirst, chunk.nCount);
    }
    m_pKernel->MixSingle(values.data(), pair[0], pair[1], chunk.nCount, lists, m_singleSettings);
    samples.Store(values.data(), chunk.nFirst, chunk.nCount);
}

void MixedInk::DrawAlpha(const FramePlanes &planes, const Chunk &chunk, const MixLists &lists) const
{
    const PixelFormat &format = m_layout.format;
    const SampleRow samples(planes, format.components[3], format.nElementBytes, chunk.nRow);
    SampleChunk values;
    samples.Load(values.data(), chunk.nFirst, chunk.nCount);
    m_pKernel->MixSingle(values.data(), values.data(), values.data(), chunk.nCount, lists, m_alphaSettings);
    samples.Store(values.data(), chunk.nFirst, chunk.nCount);
}

void MixedInk::DrawPairs(const FramePlanes &planes, const Chunk &chunk, const MixLists &lists,
                         const std::int32_t *secondBase) const
{
    const PixelFormat &format = m_layout.format;
    const SampleRow first(planes, format.components[m_exchange.pair[0]], format.nElementBytes, chunk.nRow);
    const SampleRow second(planes, format.components[m_exchange.pair[1]], format.nElementBytes, chunk.nRow);
    SampleChunk p;
    SampleChunk q;
    first.Load(p.data(), chunk.nFirst, chunk.nCount);
    second.Load(q.data(), chunk.nFirst, chunk.nCount);
    m_pKernel->MixPair(p.data(), q.data(), chunk.nCount, lists, secondBase, m_pairSettings);
    first.Store(p.data(), chunk.nFirst, chunk.nCount);
    second.Store(q.data(), chunk.nFirst, chunk.nCount);
}
