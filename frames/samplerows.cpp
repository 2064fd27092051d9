#include "frames/samplerows.h"

#include <cstring>

namespace
{

/** Hosts' rows need not be aligned. */
template <typename Element>
Element Read(const std::uint8_t *from)
{
    Element element;
    std::memcpy(&element, from, sizeof element);
    return element;
}

template <typename Element>
void LoadElements(std::int32_t *samples, const std::uint8_t *from, int count, const Component &component)
{
    const std::uint32_t max = component.Max();
    for (int i = 0; i < count; ++i, from += component.nStep * sizeof(Element))
        samples[i] = static_cast<std::int32_t>(Read<Element>(from) >> component.nShift & max);
}

template <typename Element>
void StoreElements(const std::int32_t *samples, std::uint8_t *to, int count, const Component &component)
{
    const auto mask = static_cast<Element>(static_cast<std::uint32_t>(component.Max()) << component.nShift);
    for (int i = 0; i < count; ++i, to += component.nStep * sizeof(Element)) {
        const auto bits = static_cast<Element>(static_cast<std::uint32_t>(samples[i]) << component.nShift);
        const auto element = static_cast<Element>((Read<Element>(to) & ~mask) | bits);
        std::memcpy(to, &element, sizeof element);
    }
}

} // namespace

void SampleRow::Load(std::int32_t *samples, int first, int count) const
{
    if (m_nElementBytes == 1)
        LoadElements<std::uint8_t>(samples, At(first), count, m_component);
    else if (m_nElementBytes == 2)
        LoadElements<std::uint16_t>(samples, At(first), count, m_component);
    else
        LoadElements<std::uint32_t>(samples, At(first), count, m_component);
}

void SampleRow::Store(const std::int32_t *samples, int first, int count) const
{
    if (m_nElementBytes == 1)
        StoreElements<std::uint8_t>(samples, At(first), count, m_component);
    else if (m_nElementBytes == 2)
        StoreElements<std::uint16_t>(samples, At(first), count, m_component);
    else
        StoreElements<std::uint32_t>(samples, At(first), count, m_component);
}

void SampleRow::LoadDoubled(std::int32_t *samples, int pixel, int count) const
{
    const int first = pixel / 2;
    Load(samples, first, (pixel + count - 1) / 2 - first + 1);
    // From the end, since the samples lie before what they go to.
    for (int i = count - 1; i >= 0; --i)
        samples[i] = samples[(pixel + i) / 2 - first];
}
