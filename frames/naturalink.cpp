#include "frames/naturalink.h"

#include "frames/samplerows.h"

#include <algorithm>
#include <utility>

namespace
{

/** Two runs of covered groups become one span if at most this many groups lie between them. */
constexpr int MaxGap = 1;

float CodeOf(const FrameColor &color, int component)
{
    return static_cast<float>(color.fine[component]) / (1 << FineBits);
}

/**
 * Stores the blend of one byte as integers: new = (base + rounded * old) / 255.
 * @param code  value to add
 * @param rest  weight of the old value, 0 to 1
 * Rounding the weight causes an error that is proportional to the old value; base compensates it for a medium value.
 */
void PutPart(float code, float rest, std::uint16_t &base, std::uint8_t &rounded)
{
    constexpr float Middle = 127.5F; // the medium value; also half of the divisor, for rounding
    constexpr float Half = 0.5F;     // for rounding numbers that are not negative
    const float whole = 255 * rest;
    rounded = static_cast<std::uint8_t>(whole + Half);
    base = static_cast<std::uint16_t>(255 * code + (whole - static_cast<float>(rounded)) * Middle + Middle);
}

/** to[i] += share * row[2 * i + from] */
void AddSeconds(std::vector<float> &to, const std::vector<float> &row, std::size_t from, float share)
{
    for (std::size_t i = 0; i < to.size(); ++i)
        to[i] += share * row[2 * i + from];
}

} // namespace

void NaturalInk::Build(const NaturalMap &map, const FrameLayout &layout, const FrameColors &colors,
                       const InkColors &ofText)
{
    m_layout = layout;
    m_colors = {colors.Convert(ofText.text), colors.Convert(ofText.outline)};
    for (ByteBlend &blend : m_bytes)
        blend.Clear();
    for (SampleBlend &blend : m_samples)
        blend = {};
    std::array<PlaneGroup, 4> groups = {};
    for (int plane = 0; plane < m_layout.format.nPlanes; ++plane) {
        const PlaneGroup of = KindOf(plane);
        auto *group = std::find_if(groups.begin(), groups.end(),
                                   [&](const PlaneGroup &other) { return other.nPlanes == 0 || other.IsAlike(of); });
        const int count = group->nPlanes;
        if (count == 0)
            *group = of;
        group->listPlanes[count] = plane;
        group->nPlanes = count + 1;
    }
    for (const PlaneGroup &group : groups) {
        if (group.nPlanes > 0 && (group.bSingles || group.bMeans))
            BuildPlanes(map, group);
    }
}

NaturalInk::PlaneGroup NaturalInk::KindOf(int plane) const
{
    PlaneGroup kind = {};
    m_layout.format.ForComponents(plane, [&](int, const Component &component) {
        (component.nColumnsLog2 > 0 ? kind.bMeans : kind.bSingles) = true;
        kind.bMeansOfRows |= component.nRowsLog2 > 0;
    });
    return kind;
}

Taps NaturalInk::RowsOf(const PlaneGroup &group, int row) const
{
    return group.bMeansOfRows ? m_layout.rows.At(row) : Taps{1, {row}, {Taps::Whole}};
}

void NaturalInk::BuildPlanes(const NaturalMap &map, const PlaneGroup &group)
{
    int first = map.Area().nTop;
    int last = first + map.Area().nRows - 1;
    if (last < first)
        return;
    if (group.bMeansOfRows)
        m_layout.rows.ToSamples(first, last);
    for (int row = first; row <= last; ++row) {
        m_listGroups.assign(map.GroupCount(), 0);
        const Taps taps = RowsOf(group, row);
        for (int tap = 0; tap < taps.nCount; ++tap) {
            const std::uint8_t *covered = map.Groups(taps.positions[tap]);
            for (std::size_t i = 0; covered && i < m_listGroups.size(); ++i)
                m_listGroups[i] |= covered[i];
        }
        ForRuns(
            map.GroupCount(), MaxGap, [&](int i) { return m_listGroups[i] != 0; },
            [&](int from, int end) {
                const int right = map.Area().nLeft + map.Area().nColumns;
                BuildRun(map, group, row, map.Area().nLeft + from * NaturalMap::GroupPixels,
                         std::min(map.Area().nLeft + end * NaturalMap::GroupPixels, right));
            });
    }
}

void NaturalInk::BuildRun(const NaturalMap &map, const PlaneGroup &group, int row, int first, int end)
{
    if (group.bMeans) {
        int firstSample = first;
        int lastSample = end - 1;
        m_layout.columns.ToSamples(firstSample, lastSample);
        const int count = lastSample - firstSample + 1;
        LoadMeans(map, RowsOf(group, row), firstSample, count);
        // Both kinds of samples cover the same pixels.
        first = 2 * firstSample;
        end = std::min(2 * (lastSample + 1), m_layout.nWidth);
    }
    if (group.bSingles)
        LoadShares(map, row, first, end - first);
    for (int i = 0; i < group.nPlanes; ++i) {
        const int plane = group.listPlanes[i];
        if (m_layout.format.nElementBytes == 1) {
            PutBytes(plane, row, !group.bSingles);
            continue;
        }
        m_layout.format.ForComponents(plane, [&](int component, const Component &of) {
            PutSamples(component, row, of.nColumnsLog2 > 0 ? m_means : m_single);
        });
    }
}

void NaturalInk::AddPictureCodes(const NaturalMap &map, Shares &shares) const
{
    for (int i = 0; i < 4; ++i) {
        if (i < 3 ? i >= m_layout.format.nColors : !m_layout.format.bAlpha)
            continue;
        std::vector<float> &codes = shares.pictureCodes[i];
        codes.resize(shares.nCount);
        for (int pixel = 0; pixel < shares.nCount; ++pixel)
            codes[pixel] = m_weights.picture[pixel] * CodeOf(map.Colors()[m_weights.colors[pixel]], i);
    }
}

void NaturalInk::LoadShares(const NaturalMap &map, int row, int first, int count)
{
    map.Load(row, first, count, m_weights);
    m_single.nFirst = first;
    m_single.nCount = count;
    AddPictureCodes(map, m_single);
    std::swap(m_single.text, m_weights.text);
    std::swap(m_single.outline, m_weights.outline);
    std::swap(m_single.picture, m_weights.picture);
}

void NaturalInk::LoadMeans(const NaturalMap &map, const Taps &rows, int first, int count)
{
    const int pixel = 2 * first - 1;
    const std::size_t pixels = 2 * static_cast<std::size_t>(count) + 2;
    m_means.nFirst = first;
    m_means.nCount = count;
    for (auto *list : {&m_means.text, &m_means.outline, &m_means.picture})
        list->assign(count, 0.0F);
    for (auto &codes : m_means.pictureCodes)
        codes.assign(count, 0.0F);
    const std::array<int, 4> columns = m_layout.columns.Weights();
    for (int tap = 0; tap < rows.nCount; ++tap) {
        map.Load(rows.positions[tap], pixel, static_cast<int>(pixels), m_weights);
        m_row.nCount = static_cast<int>(pixels);
        AddPictureCodes(map, m_row);
        const auto add = [&](std::vector<float> &to, std::vector<float> &row) {
            row.resize(pixels);
            ExtendSides(row, pixel, m_layout.nWidth);
            for (std::size_t i = 0; i < columns.size(); ++i) {
                if (columns[i] != 0)
                    AddSeconds(to, row, i,
                               static_cast<float>(rows.weights[tap] * columns[i]) / (Taps::Whole * Taps::Whole));
            }
        };
        add(m_means.text, m_weights.text);
        add(m_means.outline, m_weights.outline);
        add(m_means.picture, m_weights.picture);
        for (int i = 0; i < m_layout.format.nColors; ++i)
            add(m_means.pictureCodes[i], m_row.pictureCodes[i]);
    }
}

/** Calls @p put(sample, code, rest) with the value to add and the weight of the old value. */
template <typename Put>
void NaturalInk::ForParts(int component, const Shares &shares, Put put) const
{
    const float text = CodeOf(m_colors.text, component);
    const float outline = CodeOf(m_colors.outline, component);
    const std::size_t count = shares.nCount;
    const std::vector<float> &codes = shares.pictureCodes[component];
    for (std::size_t i = 0; i < count; ++i) {
        put(i, shares.text[i] * text + shares.outline[i] * outline + codes[i],
            1 - shares.text[i] - shares.outline[i] - shares.picture[i]);
    }
}

void NaturalInk::PutBytes(int plane, int row, bool isSubsampled)
{
    ByteBlend &blend = m_bytes[plane];
    int first = 0;
    int count = 0;
    m_layout.format.ForComponents(plane, [&](int, const Component &component) {
        const Shares &shares = component.nColumnsLog2 > 0 ? m_means : m_single;
        if (component.nColumnsLog2 == 0 || isSubsampled)
            first = shares.nFirst * component.nStep;
        count = std::max(count, shares.nCount * component.nStep);
    });
    const std::size_t at = blend.Add(row, first, count);
    std::uint16_t *bases = blend.listBases.data() + at;
    std::uint8_t *rests = blend.listRests.data() + at;
    m_layout.format.ForComponents(plane, [&](int i, const Component &component) {
        ForParts(i, component.nColumnsLog2 > 0 ? m_means : m_single, [&](std::size_t sample, float code, float rest) {
            const std::size_t byte = sample * component.nStep + component.nOffset;
            PutPart(code, rest, bases[byte], rests[byte]);
        });
    });
}

void NaturalInk::PutSamples(int component, int row, const Shares &shares)
{
    SampleBlend &blend = m_samples[component];
    blend.listSpans.push_back({row, shares.nFirst, shares.nCount, blend.listBases.size()});
    ForParts(component, shares, [&](std::size_t, float code, float rest) {
        constexpr float Whole = 65536;
        blend.listBases.push_back(static_cast<std::uint32_t>(Whole * code + Whole / 2));
        blend.listRests.push_back(static_cast<std::uint32_t>(std::clamp(Whole * rest + 0.5F, 0.0F, Whole)));
    });
}

void NaturalInk::Draw(const FramePlanes &planes) const
{
    if (m_layout.format.nElementBytes == 1) {
        for (std::size_t plane = 0; plane < planes.size(); ++plane)
            m_pKernel->Blend(planes[plane], m_bytes[plane]);
        return;
    }
    for (int component = 0; component < 4; ++component)
        DrawSamples(planes, component);
}

void NaturalInk::DrawSamples(const FramePlanes &planes, int component) const
{
    const SampleBlend &blend = m_samples[component];
    const Component &format = m_layout.format.components[component];
    const auto max = static_cast<std::uint64_t>(format.Max());
    SampleChunk values;
    for (const Span &span : blend.listSpans) {
        const SampleRow samples(planes, format, m_layout.format.nElementBytes, span.nRow);
        for (int done = 0; done < span.nCount; done += ChunkSamples) {
            const int count = std::min(ChunkSamples, span.nCount - done);
            const std::uint32_t *bases = blend.listBases.data() + span.nAt + done;
            const std::uint32_t *rests = blend.listRests.data() + span.nAt + done;
            samples.Load(values.data(), span.nFirst + done, count);
            for (int i = 0; i < count; ++i) {
                const std::uint64_t sum =
                    bases[i] + static_cast<std::uint64_t>(rests[i]) * static_cast<std::uint32_t>(values[i]);
                values[i] = static_cast<std::int32_t>(std::min(sum >> 16, max));
            }
            samples.Store(values.data(), span.nFirst + done, count);
        }
    }
}
