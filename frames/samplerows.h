#pragma once

#include "frames/framelayout.h"

#include <array>
#include <cstdint>

/** Samples that are worked on at once. */
constexpr int ChunkSamples = 256;
/** Code values. */
using SampleChunk = std::array<std::int32_t, ChunkSamples>;

/** Reads and writes samples of a component, as code values, a chunk or less at a time. */
class SampleRow
{
public:
    SampleRow(const FramePlanes &planes, const Component &component, int elementBytes, int row) :
        m_component(component), m_nElementBytes(elementBytes), m_pRow(planes[component.nPlane].Row(row))
    {
    }

    /** @param first  number of the first sample */
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
