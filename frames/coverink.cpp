#include "frames/coverink.h"

#include "frames/samplerows.h"

#include <algorithm>
#include <array>
#include <utility>

namespace
{

std::uint16_t FineCode(const FrameColor &color, int component)
{
    constexpr int MoreBits = 8 - FineBits;
    return static_cast<std::uint16_t>(color.fine[component] << MoreBits);
}

/** The blended sample: both colours with their weights, and the old sample with the remaining weight. */
std::int32_t Blended(std::uint32_t text, std::uint32_t outline, std::uint32_t ofText, std::uint32_t ofOutline,
                     std::uint32_t old)
{
    const std::uint32_t sum =
        ofText * text + ofOutline * outline + (WholeWeight - ofText - ofOutline) * old + WholeWeight / 2;
    // Division by 65,535, exact for samples of up to 16 bits.
    return static_cast<std::int32_t>((sum + (sum >> 16) + 1) >> 16);
}

} // namespace

void CoverInk::Build(const NaturalMap &map, const FrameLayout &layout, const FrameColors &colors,
                     const InkColors &ofText)
{
    m_layout = layout;
    m_colors = {colors.Convert(ofText.text), colors.Convert(ofText.outline)};
    m_listPixels.clear();
    m_means.Clear();
    BuildLayers();
    if (map.Area().IsEmpty())
        return;
    BuildSingles(map);
    if (m_layout.format.IsSubsampled())
        BuildMeans(map);
}

void CoverInk::BuildLayers()
{
    m_listLayers.clear();
    for (int plane = 0; plane < m_layout.format.nPlanes && m_layout.format.nElementBytes == 1; ++plane) {
        for (const bool isOfMeans : {false, true}) {
            Layer layer = {plane, isOfMeans, {}};
            m_layout.format.ForComponents(plane, [&](int i, const Component &component) {
                if ((component.nColumnsLog2 > 0) != isOfMeans)
                    return;
                layer.codes.nStep = component.nStep;
                layer.codes.bUsed[component.nOffset] = true;
                layer.codes.text[component.nOffset] = FineCode(m_colors.text, i);
                layer.codes.outline[component.nOffset] = FineCode(m_colors.outline, i);
            });
            if (layer.codes.nStep > 0)
                m_listLayers.push_back(layer);
        }
    }
}

void CoverInk::BuildSingles(const NaturalMap &map)
{
    const FrameArea &area = map.Area();
    for (int row = area.nTop; row < area.nTop + area.nRows; ++row)
        AddCovered(row, area.nLeft, area.nColumns, map.Text(row), map.Outline(row), map.At(row), m_listPixels);
}

void CoverInk::BuildMeans(const NaturalMap &map)
{
    const FrameArea &area = map.Area();
    const bool isOfRows = m_layout.format.components[1].nRowsLog2 > 0;
    int firstRow = area.nTop;
    int lastRow = area.nTop + area.nRows - 1;
    if (isOfRows)
        m_layout.rows.ToSamples(firstRow, lastRow);
    int first = area.nLeft;
    int last = area.nLeft + area.nColumns - 1;
    m_layout.columns.ToSamples(first, last);
    const std::size_t count = last - first + 1;
    const int pixel = 2 * first - 1;
    const std::array<int, 4> weights = m_layout.columns.Weights();
    m_halved.Reset(count);
    for (int row = firstRow; row <= lastRow; ++row) {
        const Taps taps = isOfRows ? m_layout.rows.At(row) : Taps{1, {row}, {Taps::Whole}};
        m_pixels.Reset(2 * count + 2);
        for (int tap = 0; tap < taps.nCount; ++tap) {
            const int from = taps.positions[tap];
            if (from >= area.nTop && from < area.nTop + area.nRows)
                m_pKernel->Weigh(map.Text(from), map.Outline(from), area.nColumns, map.Opacity(), taps.weights[tap],
                                 m_pixels.text.data() + (area.nLeft - pixel),
                                 m_pixels.outline.data() + (area.nLeft - pixel));
        }
        for (auto [pixels, halved] :
             {std::pair(&m_pixels.text, &m_halved.text), std::pair(&m_pixels.outline, &m_halved.outline)}) {
            ExtendSides(*pixels, pixel, m_layout.nWidth);
            m_pKernel->Halve(pixels->data(), count, weights, halved->data());
        }
        m_means.Add(row, first, m_halved);
    }
}

void CoverInk::Draw(const NaturalMap &map, const FramePlanes &planes) const
{
    const CoveredPixels pixels = {m_listPixels, map.Text(), map.Outline(), map.Opacity()};
    for (const Layer &layer : m_listLayers) {
        if (layer.bMeans)
            m_pKernel->Blend(planes[layer.nPlane], m_means, layer.codes);
        else
            m_pKernel->BlendPixels(planes[layer.nPlane], pixels, layer.codes);
    }
    for (int i = 0; i < m_layout.format.nPlanes && m_layout.format.nElementBytes > 1; ++i)
        m_layout.format.ForComponents(
            i, [&](int component, const Component &) { DrawSamples(pixels, planes, component); });
}

void CoverInk::DrawSamples(const CoveredPixels &pixels, const FramePlanes &planes, int component) const
{
    const Component &format = m_layout.format.components[component];
    const bool isOfMeans = format.nColumnsLog2 > 0;
    const int width = isOfMeans ? m_layout.columns.Samples() : m_layout.nWidth;
    const std::uint32_t text = m_colors.text.codes[component];
    const std::uint32_t outline = m_colors.outline.codes[component];
    std::array<std::int32_t, CoverSamples> values = {};
    for (const Span &span : isOfMeans ? m_means.Spans() : m_listPixels) {
        const SampleRow samples(planes, format, m_layout.format.nElementBytes, span.nRow);
        const int end = std::min(span.nFirst + span.nCount, width);
        for (int first = span.nFirst; first < end; first += CoverSamples) {
            const int count = std::min<int>(CoverSamples, end - first);
            const std::size_t done = first - span.nFirst;
            CoverBlock block = {};
            if (isOfMeans)
                block = m_means.Blocks(span)[done / CoverSamples];
            else
                m_pKernel->Weigh(pixels.pText + span.nAt + done, pixels.pOutline + span.nAt + done, count,
                                 pixels.nOpacity, Taps::Whole, block[0].data(), block[1].data());
            samples.Load(values.data(), first, count);
            for (std::size_t i = 0; i < CoverSamples; ++i)
                values[i] = Blended(text, outline, block[0][i], block[1][i], values[i]);
            samples.Store(values.data(), first, count);
        }
    }
}
