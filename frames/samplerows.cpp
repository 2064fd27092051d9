#include "frames/samplerows.h"

#include <cstring>

namespace
{

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

/** Calls with an element of so many bytes. */
template <typename Call>
void WithElement(int bytes, Call call)
{
    if (bytes == 1)
        call(std::uint8_t{});
    else if (bytes == 2)
        call(std::uint16_t{});
    else
        call(std::uint32_t{});
}

} // namespace

void SampleRow::Load(std::int32_t *samples, int first, int count) const
{
    WithElement(m_nElementBytes,
                [&](auto element) { LoadElements<decltype(element)>(samples, At(first), count, m_component); });
}

void SampleRow::Store(const std::int32_t *samples, int first, int count) const
{
    WithElement(m_nElementBytes,
                [&](auto element) { StoreElements<decltype(element)>(samples, At(first), count, m_component); });
}

void SampleRow::LoadDoubled(std::int32_t *samples, int pixel, int count) const
{
    const int first = pixel / 2;
    Load(samples, first, (pixel + count - 1) / 2 - first + 1);
    // From the end, since the samples lie before what they go to.
    for (int i = count - 1; i >= 0; --i)
        samples[i] = samples[(pixel + i) / 2 - first];
}
