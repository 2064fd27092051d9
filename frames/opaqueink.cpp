#include "frames/opaqueink.h"

#include <algorithm>
#include <climits>

namespace
{

/** Bytes between two runs that are not worth a span of their own. */
constexpr int MaxGap = 16;

constexpr int MeanHalf = MeanWhole / 2;

/** Does for components of a plane: @p call(i, component). */
template <typename Call>
void ForComponents(const PixelFormat &format, int plane, Call call)
{
    for (int i = 0; i < 4; ++i) {
        if ((i < 3 ? i < format.nColors : format.bAlpha) && format.components[i].nPlane == plane)
            call(i, format.components[i]);
    }
}

} // namespace

class OpaqueInk::Builder
{
public:
    Builder(const PixelMap &map, const FrameLayout &layout, const std::vector<FrameColor> &colors) :
        m_map(map), m_layout(layout), m_colors(colors)
    {
        for (int sample = 0; layout.format.IsSubsampled() && sample < layout.columns.Samples(); ++sample)
            m_listTaps.push_back(layout.columns.At(sample));
    }

    void Build(Plane &plane, int number);

private:
    /** Of the pixels in a column that a chroma sample may have. */
    struct Column {
        int nCovered; ///< their weights
        int nSum;     ///< code values by weight
    };
    void MakePatterns(const Plane &plane, int number);
    void FillRow(Plane &plane, int row);
    void MeanRow(Plane &plane, int number, int row);
    void SumColumns(const Taps &rows, int first, int last);
    void AddMeans(int number, const Taps &rows, int first, int last);
    void AddSingles(int number, int row, int first, int last);

    const PixelMap &m_map;
    const FrameLayout &m_layout;
    const std::vector<FrameColor> &m_colors;
    std::vector<Taps> m_listTaps; ///< of the chroma samples of a row
    /** Elements of a pixel, or of a chroma sample and its pixels; 0 where the format has no such plane. */
    int m_nUnit = 0;
    std::vector<std::uint8_t> m_listPatterns;    ///< bytes of a pixel in each colour
    std::vector<std::uint8_t> m_listKeepPattern; ///< bits of a pixel's bytes that are not a component's
    std::vector<std::uint16_t> m_listAdd;
    std::vector<std::uint8_t> m_listKeep;
    std::vector<Column> m_listColumns;
    std::vector<int> m_listCodes; ///< by color, of one component; 0 without
};

void OpaqueInk::Builder::Build(Plane &plane, int number)
{
    plane.listSpans.clear();
    plane.listKeep.clear();
    plane.listValues.clear();
    plane.listAdd.clear();
    plane.bMeans = false;
    plane.nElementBytes = m_layout.format.nElementBytes;
    bool isLower = false;
    m_nUnit = 0;
    ForComponents(m_layout.format, number, [&](int, const Component &component) {
        plane.bMeans |= component.nColumnsLog2 > 0;
        isLower |= component.nRowsLog2 > 0;
        plane.nShift = component.nShift;
        m_nUnit = std::max(m_nUnit, component.nStep);
    });
    if (m_map.IsEmpty() || m_nUnit == 0)
        return;
    if (!plane.bMeans)
        MakePatterns(plane, number);
    int first = m_map.Top();
    int last = m_map.Bottom();
    if (isLower)
        m_layout.rows.ToSamples(first, last);
    for (int row = first; row <= last; ++row) {
        if (plane.bMeans)
            MeanRow(plane, number, row);
        else
            FillRow(plane, row);
    }
}

void OpaqueInk::Builder::MakePatterns(const Plane &plane, int number)
{
    const std::size_t unit = static_cast<std::size_t>(m_nUnit) * plane.nElementBytes;
    m_listPatterns.assign(m_colors.size() * unit, 0);
    m_listKeepPattern.assign(unit, 0xFF);
    ForComponents(m_layout.format, number, [&](int i, const Component &component) {
        // Samples that lie high in their element have nothing below them.
        const std::uint32_t below = plane.nElementBytes == 2 ? (1U << component.nShift) - 1 : 0;
        const std::uint32_t mask = static_cast<std::uint32_t>(component.Max()) << component.nShift | below;
        for (int byte = 0; byte < plane.nElementBytes; ++byte) {
            const std::size_t at = static_cast<std::size_t>(component.nOffset) * plane.nElementBytes + byte;
            m_listKeepPattern[at] &= static_cast<std::uint8_t>(~(mask >> 8 * byte));
            for (std::size_t color = 0; color < m_colors.size(); ++color) {
                const std::uint32_t value = static_cast<std::uint32_t>(m_colors[color].codes[i]) << component.nShift;
                m_listPatterns[color * unit + at] |= static_cast<std::uint8_t>(value >> 8 * byte);
            }
        }
    });
}

void OpaqueInk::Builder::FillRow(Plane &plane, int row)
{
    const PixelMap::Row pixels = m_map.RowAt(row);
    const int unit = m_nUnit * plane.nElementBytes;
    const PixelMap::Pixel *list = m_map.Pixels(pixels);
    const auto isCovered = [list](int i) { return list[i].nColor != 0; };
    ForRuns(pixels.nEnd - pixels.nFirst, MaxGap / unit, isCovered, [&](int from, int end) {
        const std::size_t at = plane.listKeep.size();
        const std::size_t bytes = static_cast<std::size_t>(end - from) * unit;
        plane.listKeep.resize(at + bytes, 0xFF);
        plane.listValues.resize(at + bytes, 0);
        std::uint8_t *keep = plane.listKeep.data() + at;
        std::uint8_t *values = plane.listValues.data() + at;
        for (int i = from; i < end; ++i, keep += unit, values += unit) {
            if (list[i].nColor == 0)
                continue;
            const std::uint8_t *pattern = &m_listPatterns[static_cast<std::size_t>(list[i].nColor - 1) * unit];
            for (int byte = 0; byte < unit; ++byte) { // too few for a call
                keep[byte] = m_listKeepPattern[byte];
                values[byte] = pattern[byte];
            }
        }
        plane.listSpans.push_back({row, (pixels.nFirst + from) * unit, static_cast<int>(bytes), at});
    });
}

void OpaqueInk::Builder::MeanRow(Plane &plane, int number, int row)
{
    const bool isLower = m_layout.format.components[1].nRowsLog2 > 0;
    const Taps rows = isLower ? m_layout.rows.At(row) : Taps{1, {row}, {Taps::Whole}};
    int first = INT_MAX;
    int last = -1;
    for (int r = 0; r < rows.nCount; ++r) {
        const PixelMap::Row pixels = m_map.RowAt(rows.positions[r]);
        if (pixels.nFirst < pixels.nEnd) {
            first = std::min(first, pixels.nFirst);
            last = std::max(last, pixels.nEnd - 1);
        }
    }
    if (last < 0)
        return;
    m_layout.columns.ToSamples(first, last);
    const std::size_t count = static_cast<std::size_t>(last - first + 1) * m_nUnit;
    m_listAdd.assign(count, MeanHalf);
    m_listKeep.assign(count, MeanWhole);
    AddMeans(number, rows, first, last);
    if (!isLower)
        AddSingles(number, row, first, last);

    const auto isTouched = [&](int unit) {
        const auto at = m_listKeep.begin() + static_cast<std::ptrdiff_t>(unit) * m_nUnit;
        return std::any_of(at, at + m_nUnit, [](std::uint8_t keep) { return keep != MeanWhole; });
    };
    const int gap = MaxGap / (m_nUnit * plane.nElementBytes);
    ForRuns(last - first + 1, gap, isTouched, [&](int from, int end) {
        const std::size_t at = plane.listKeep.size();
        const std::ptrdiff_t begin = static_cast<std::ptrdiff_t>(from) * m_nUnit;
        const int samples = (end - from) * m_nUnit;
        plane.listKeep.insert(plane.listKeep.end(), &m_listKeep[begin], &m_listKeep[begin] + samples);
        plane.listAdd.insert(plane.listAdd.end(), &m_listAdd[begin], &m_listAdd[begin] + samples);
        plane.listSpans.push_back({row, (first + from) * m_nUnit, samples, at});
    });
}

void OpaqueInk::Builder::SumColumns(const Taps &rows, int first, int last)
{
    m_listColumns.assign(last - first + 1, {0, 0});
    for (int r = 0; r < rows.nCount; ++r) {
        const PixelMap::Row pixels = m_map.RowAt(rows.positions[r]);
        const PixelMap::Pixel *list = m_map.Pixels(pixels);
        const int weight = rows.weights[r];
        const int end = std::min(pixels.nEnd, last + 1);
        for (int column = std::max(pixels.nFirst, first); column < end; ++column) {
            const std::uint32_t color = list[column - pixels.nFirst].nColor;
            Column &to = m_listColumns[column - first];
            to.nCovered += color != 0 ? weight : 0;
            to.nSum += weight * m_listCodes[color];
        }
    }
}

void OpaqueInk::Builder::AddMeans(int number, const Taps &rows, int first, int last)
{
    const int firstPixel = std::max(0, 2 * first - 1);
    const int lastPixel = std::min(m_layout.nWidth - 1, 2 * last + 2);
    m_listCodes.assign(m_colors.size() + 1, 0);
    ForComponents(m_layout.format, number, [&](int i, const Component &component) {
        if (component.nColumnsLog2 == 0)
            return;
        for (std::size_t color = 0; color < m_colors.size(); ++color)
            m_listCodes[color + 1] = m_colors[color].codes[i];
        SumColumns(rows, firstPixel, lastPixel);
        for (int sample = first; sample <= last; ++sample) {
            const Taps &columns = m_listTaps[sample];
            int covered = 0;
            int sum = 0;
            for (int c = 0; c < columns.nCount; ++c) {
                const Column &column = m_listColumns[columns.positions[c] - firstPixel];
                covered += columns.weights[c] * column.nCovered;
                sum += columns.weights[c] * column.nSum;
            }
            const std::size_t at = static_cast<std::size_t>(sample - first) * m_nUnit + component.nOffset;
            m_listAdd[at] = static_cast<std::uint16_t>(sum + MeanHalf);
            m_listKeep[at] = static_cast<std::uint8_t>(MeanWhole - covered);
        }
    });
}

/** Those of packed formats, whose rows have all components. */
void OpaqueInk::Builder::AddSingles(int number, int row, int first, int last)
{
    const PixelMap::Row pixels = m_map.RowAt(row);
    ForComponents(m_layout.format, number, [&](int i, const Component &component) {
        if (component.nColumnsLog2 > 0)
            return;
        const int end = std::min(2 * last + 2, m_layout.nWidth);
        for (int column = 2 * first; column < end; ++column) {
            const PixelMap::Pixel pixel = m_map.At(pixels, column);
            if (pixel.nColor == 0)
                continue;
            const std::size_t at = static_cast<std::size_t>(column) * component.nStep + component.nOffset -
                                   static_cast<std::size_t>(first) * m_nUnit;
            m_listAdd[at] = static_cast<std::uint16_t>(m_colors[pixel.nColor - 1].codes[i] * MeanWhole);
            m_listKeep[at] = 0;
        }
    });
}

void OpaqueInk::Build(const PixelMap &map, const FrameLayout &layout, const std::vector<FrameColor> &colors)
{
    Builder builder(map, layout, colors);
    for (int i = 0; i < 4; ++i)
        builder.Build(m_planes[i], i);
}

void OpaqueInk::Draw(const FramePlanes &planes) const
{
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const Plane &plane = m_planes[i];
        const Span *spans = plane.listSpans.data();
        const std::size_t count = plane.listSpans.size();
        if (!plane.bMeans)
            m_pKernel->Fill(planes[i], spans, count, plane.listValues.data(), plane.listKeep.data());
        else if (plane.nElementBytes == 1)
            m_pKernel->Mean8(planes[i], spans, count, plane.listAdd.data(), plane.listKeep.data());
        else
            m_pKernel->Mean16(planes[i], spans, count, plane.listAdd.data(), plane.listKeep.data(), plane.nShift);
    }
}
