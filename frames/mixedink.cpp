#include "frames/mixedink.h"

#include "frames/meanbuilder.h"

#include <algorithm>
#include <climits>

namespace
{

constexpr int Step = static_cast<int>(MixStep);
constexpr int Chunk = static_cast<int>(MixChunk);

int FirstOf(const InkSamples &block)
{
    return block.nColumn;
}

int FirstOf(const InkMeans &block)
{
    return block.nFirst;
}

/** Joins neighbouring blocks of @p size samples to spans that fit into a chunk and into rows of @p samples. */
template <typename Block>
void FindNeighbours(const BlockList<Block> &blocks, int size, int samples, std::vector<Span> &spans)
{
    spans.clear();
    const Block *first = blocks.Data();
    const Block *end = first + blocks.Size();
    for (const Block *block = first; block < end;) {
        int count = 1;
        while (count < Chunk / size && block + count < end && block[count].nRow == block->nRow &&
               FirstOf(block[count]) == FirstOf(*block) + count * size)
            ++count;
        const int inRow = std::min(count * size, samples - FirstOf(*block));
        spans.push_back({block->nRow, FirstOf(*block), inRow, static_cast<std::size_t>(block - first)});
        block += count;
    }
}

/** Splits a span into parts that fit into a chunk, and calls @p call(place, at) for each. */
template <typename Call>
void ForChunks(const Span &span, Call call)
{
    for (int done = 0; done < span.nCount; done += Chunk)
        call(MixChunkPlace{span.nRow, span.nFirst + done, std::min(Chunk, span.nCount - done)}, span.nAt + done);
}

} // namespace

void MixedInk::Lists::Clear()
{
    listSpans.clear();
    for (auto &base : listBases)
        base.clear();
    listRests.clear();
    listKeeps.clear();
}

void MixedInk::Lists::Append(const MixNumbers::Part &part, int components, bool isMean)
{
    for (int i = 0; i < components; ++i)
        listBases[i].push_back(part.bases[i]);
    listRests.push_back(part.nRest);
    if (isMean)
        listKeeps.push_back(part.nKeep);
}

void MixedInk::Lists::Fill(int components, bool isMean)
{
    while (listRests.size() % MixStep != 0)
        Append({{}, Untouched, 0}, components, isMean);
}

MixLists MixedInk::Lists::At(std::size_t at) const
{
    MixLists lists = {{}, listRests.data() + at, listKeeps.empty() ? nullptr : listKeeps.data() + at};
    for (std::size_t i = 0; i < listBases.size(); ++i)
        lists.bases[i] = listBases[i].data() + (listBases[i].empty() ? 0 : at);
    return lists;
}

void MixedInk::BuildPicture(const PixelMap &map, const FrameLayout &layout, const FrameColors &colors,
                            const std::vector<FrameColor> &list)
{
    Start(layout, colors);
    BuildSamples(map, list);
    if (layout.format.IsSubsampled())
        BuildMeans(map, list);
}

void MixedInk::BuildText(const InkRows &ink, const FrameLayout &layout, const FrameColors &colors,
                         const InkFrameColors &ofInk, int weight)
{
    Start(layout, colors);
    m_sampleMix = MixOf(m_samplePass, ofInk, weight);
    ink.FindSamples(MixBlock, m_samples);
    FindNeighbours(m_samples, MixBlock, m_layout.nWidth, m_listSampleSpans);
    if (layout.format.IsSubsampled()) {
        m_meanMix = MixOf(m_meanPass, ofInk, weight);
        MeanBuilder(ink, layout, *m_pSampleKernel).Build(m_means);
        FindNeighbours(m_means, MeanSamples, m_layout.columns.Samples(), m_listMeanSpans);
    }
}

InkMix MixedInk::MixOf(const MixPass &pass, const InkFrameColors &ofInk, int weight) const
{
    const auto partOf = [&](const FrameColor &color) {
        MixNumbers::Sum sum;
        m_numbers.Add(sum, pass, color, weight, MixNumbers::AllTaps);
        return m_numbers.PartOf(sum, pass);
    };
    const MixNumbers::Part text = partOf(ofInk.text);
    return {pass.nComponents, text.bases, partOf(ofInk.outline).bases, text.nRest};
}

void MixedInk::Start(const FrameLayout &layout, const FrameColors &colors)
{
    m_layout = layout;
    m_sampleLists.Clear();
    m_meanLists.Clear();
    m_samples.Reset(0);
    m_means.Reset(0);
    m_listSampleSpans.clear();
    m_listMeanSpans.clear();
    m_exchange = colors.Exchange();
    m_numbers.Set(layout.format, colors.IsAsRgb24());
    m_settings = m_numbers.Settings(m_exchange);
    const PixelFormat &format = m_layout.format;
    const bool hasPair = format.nColors == 3;
    m_bTints = hasPair && (m_exchange.single[0] != 0 || m_exchange.single[1] != 0);
    m_samplePass = {};
    m_meanPass = {};
    m_samplePass.Add(format, m_exchange.nSingle);
    for (const int component : m_exchange.pair) {
        if (hasPair)
            (format.IsSubsampled() ? m_meanPass : m_samplePass).Add(format, component);
    }
    if (format.bAlpha)
        m_samplePass.Add(format, 3);
}

void MixedInk::BuildSamples(const PixelMap &map, const std::vector<FrameColor> &list)
{
    const int components = m_samplePass.nComponents;
    for (int row = map.Top(); !map.IsEmpty() && row <= map.Bottom(); ++row) {
        const PixelMap::Row pixels = map.RowAt(row);
        const auto isCovered = [&](int i) { return map.At(pixels, pixels.nFirst + i).nColor != 0; };
        ForRuns(pixels.nEnd - pixels.nFirst, Step, isCovered, [&](int from, int end) {
            // From an even column on: in subsampled formats two pixels share a tint.
            const int first = (pixels.nFirst + from) / 2 * 2;
            const int count = pixels.nFirst + end - first;
            m_sampleLists.listSpans.push_back({row, first, count, m_sampleLists.listRests.size()});
            for (int i = 0; i < count; ++i) {
                const PixelMap::Pixel pixel = map.At(pixels, first + i);
                MixNumbers::Sum sum;
                if (pixel.nColor == 0)
                    sum.Keep(MixNumbers::AllTaps);
                else
                    m_numbers.Add(sum, m_samplePass, list[pixel.nColor - 1], static_cast<int>(pixel.nWeight),
                                  MixNumbers::AllTaps);
                m_sampleLists.Append(m_numbers.PartOf(sum, m_samplePass), components, false);
            }
            m_sampleLists.Fill(components, false);
        });
    }
}

void MixedInk::BuildMeans(const PixelMap &map, const std::vector<FrameColor> &list)
{
    int first = map.Top();
    int last = map.Bottom();
    m_layout.rows.ToSamples(first, last);
    for (int row = first; !map.IsEmpty() && row <= last; ++row)
        BuildMeanRow(map, list, row);
}

void MixedInk::BuildMeanRow(const PixelMap &map, const std::vector<FrameColor> &list, int row)
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
    const std::size_t begin = m_meanLists.listRests.size();
    for (int sample = first; sample <= last; ++sample) {
        const Taps columns = m_layout.columns.At(sample);
        MixNumbers::Sum sum;
        for (int r = 0; r < rows.nCount; ++r) {
            for (int c = 0; c < columns.nCount; ++c) {
                const int taps = rows.weights[r] * columns.weights[c];
                const PixelMap::Pixel pixel = map.At(pixels[r], columns.positions[c]);
                if (pixel.nColor == 0)
                    sum.Keep(taps);
                else
                    m_numbers.Add(sum, m_meanPass, list[pixel.nColor - 1], static_cast<int>(pixel.nWeight), taps);
            }
        }
        m_meanLists.Append(m_numbers.PartOf(sum, m_meanPass), m_meanPass.nComponents, true);
    }
    // Entries between and after spans are untouched, so that a span can be processed in whole steps.
    for (int i = 0; i < Step; ++i)
        m_meanLists.Append({{}, Untouched, 0}, m_meanPass.nComponents, true);
    const auto isTouched = [&](int i) { return m_meanLists.listRests[begin + i] != Untouched; };
    ForRuns(last - first + 1, Step, isTouched, [&](int from, int end) {
        m_meanLists.listSpans.push_back({row, first + from, end - from, begin + from});
    });
}

int MixedInk::ChromaRow(int row) const
{
    return m_layout.format.components[1].nRowsLog2 > 0 ? m_layout.rows.SampleOf(row) : row;
}

/** Scratch buffers of one Draw(), too large to be set up for each chunk. */
struct MixedInk::Room {
    explicit Room(const MixedInk &ink) :
        samples(*ink.m_pKernel, ink.m_samplePass), pairs(*ink.m_pKernel, ink.m_meanPass)
    {
    }

    MixRows samples, pairs;
    MixSamples tints;
    InkMixLists lists;
};

void MixedInk::DrawTextSamples(const FramePlanes &planes, Room &room) const
{
    for (const Span &span : m_listSampleSpans) {
        const MixChunkPlace place = {span.nRow, span.nFirst, span.nCount};
        m_pKernel->SpreadSamples(m_samples.Data() + span.nAt, place.Steps() / MixBlock, m_sampleMix, room.lists);
        DrawSamples(planes, place, room.lists.Of(false), room);
    }
}

void MixedInk::DrawTextMeans(const FramePlanes &planes, Room &room) const
{
    InkMixLists &lists = room.lists;
    for (const Span &span : m_listMeanSpans) {
        const MixChunkPlace place = {span.nRow, span.nFirst, span.nCount};
        const std::size_t blocks = (span.nCount + MeanSamples - 1) / MeanSamples;
        m_pKernel->SpreadMeans(m_means.Data() + span.nAt, blocks, m_meanMix, lists);
        // A block is half a step. An odd number of them is padded with untouched samples.
        if (blocks * MeanSamples < place.Steps())
            std::fill_n(lists.listRest.begin() + blocks * MeanSamples, MeanSamples, Untouched);
        DrawMeans(planes, place, lists.Of(true), room);
    }
}

void MixedInk::Draw(const FramePlanes &planes) const
{
    Room room(*this);
    DrawTextSamples(planes, room);
    for (const Span &span : m_sampleLists.listSpans) {
        ForChunks(span, [&](const MixChunkPlace &place, std::size_t at) {
            DrawSamples(planes, place, m_sampleLists.At(at), room);
        });
    }
    // Pairs come last, since mixing the single components needs their old values.
    DrawTextMeans(planes, room);
    for (const Span &span : m_meanLists.listSpans) {
        ForChunks(span, [&](const MixChunkPlace &place, std::size_t at) {
            DrawMeans(planes, place, m_meanLists.At(at), room);
        });
    }
}

void MixedInk::DrawSamples(const FramePlanes &planes, const MixChunkPlace &place, const MixLists &lists,
                           Room &room) const
{
    const auto [first, second] = m_exchange.pair;
    const std::size_t count = place.Steps();
    MixRows &rows = room.samples;
    rows.Read(planes, place);
    const MixSamples *tints = m_bTints ? &room.tints : nullptr;
    if (m_bTints && m_layout.format.IsSubsampled()) {
        const MixChunkPlace below = {ChromaRow(place.nRow), place.nFirst / 2, (place.nCount + 1) / 2};
        room.pairs.Read(planes, below);
        m_pKernel->Tint(room.pairs.Of(first), room.pairs.Of(second), below.Steps(), true, m_settings, room.tints);
    } else if (m_bTints) {
        m_pKernel->Tint(rows.Of(first), rows.Of(second), count, false, m_settings, room.tints);
    }
    m_pKernel->MixSingle(rows.Of(m_exchange.nSingle), tints, count, lists.bases[0], lists.pRest, m_settings);
    if (m_samplePass.nComponents >= 3)
        m_pKernel->MixPair(rows.Of(first), rows.Of(second), count, lists, 1, m_settings);
    if (m_layout.format.bAlpha)
        m_pKernel->MixSingle(rows.Of(3), nullptr, count, lists.bases[m_samplePass.nComponents - 1], lists.pRest,
                             m_settings);
    rows.Write();
}

void MixedInk::DrawMeans(const FramePlanes &planes, const MixChunkPlace &place, const MixLists &lists, Room &room) const
{
    MixRows &rows = room.pairs;
    rows.Read(planes, place);
    m_pKernel->MixPair(rows.Of(m_exchange.pair[0]), rows.Of(m_exchange.pair[1]), place.Steps(), lists, 0, m_settings);
    rows.Write();
}
