#pragma once

#include "frames/framelayout.h"

#include <array>
#include <cstdint>

/** Number of samples that are processed at once. */
constexpr int ChunkSamples = 256;
/** Code values of a chunk. */
using SampleChunk = std::array<std::int32_t, ChunkSamples>;

/** Reads and writes the code values of one component in a row. */
class SampleRow
{
public:
    SampleRow(const FramePlanes &planes, const Component &component, int elementBytes, int row) :
        m_component(component), m_nElementBytes(elementBytes), m_pRow(planes[component.nPlane].Row(row))
    {
    }

    /** @param first  number of the first sample in the row */
    void Load(std::int32_t *samples, int first, int count) const;
    void Store(const std::int32_t *samples, int first, int count) const;

private:
    std::uint8_t *At(int sample) const
    {
        return m_pRow +
               (static_cast<std::ptrdiff_t>(sample) * m_component.nStep + m_component.nOffset) * m_nElementBytes;
    }

    const Component &m_component;
    int m_nElementBytes;
    std::uint8_t *m_pRow;
};
