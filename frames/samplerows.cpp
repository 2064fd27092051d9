#include "frames/samplerows.h"

#include <cstring>
#include <type_traits>

namespace
{

/** The step is a template parameter so that compilers vectorise the loop. */
template <typename Element, int Step>
void LoadElements(std::int32_t *samples, const std::uint8_t *from, int count, const Component &component)
{
    constexpr std::ptrdiff_t Bytes = Step * sizeof(Element);
    const int shift = component.nShift;
    const std::uint32_t max = component.Max();
    for (std::ptrdiff_t i = 0; i < count; ++i)
        samples[i] = static_cast<std::int32_t>(Read<Element>(from + i * Bytes) >> shift & max);
}

template <typename Element, int Step>
void StoreElements(const std::int32_t *samples, std::uint8_t *to, int count, const Component &component)
{
    constexpr std::ptrdiff_t Bytes = Step * sizeof(Element);
    const int shift = component.nShift;
    const auto mask = static_cast<Element>(static_cast<std::uint32_t>(component.Max()) << shift);
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        std::uint8_t *at = to + i * Bytes;
        const auto bits = static_cast<Element>(static_cast<std::uint32_t>(samples[i]) << shift);
        const auto element = static_cast<Element>((Read<Element>(at) & ~mask) | bits);
        std::memcpy(at, &element, sizeof element);
    }
}

/** Calls @p call(element, step): a value of the element's type, and the step as a compile-time constant. */
template <typename Call>
void WithElement(int bytes, int step, Call call)
{
    const auto withStep = [&](auto element) {
        if (step == 1)
            call(element, std::integral_constant<int, 1>());
        else if (step == 2)
            call(element, std::integral_constant<int, 2>());
        else if (step == 3)
            call(element, std::integral_constant<int, 3>());
        else
            call(element, std::integral_constant<int, 4>());
    };
    if (bytes == 1)
        withStep(std::uint8_t{});
    else if (bytes == 2)
        withStep(std::uint16_t{});
    else
        call(std::uint32_t{}, std::integral_constant<int, 1>());
}

} // namespace

void SampleRow::Load(std::int32_t *samples, int first, int count) const
{
    WithElement(m_nElementBytes, m_component.nStep, [&](auto element, auto step) {
        LoadElements<decltype(element), decltype(step)::value>(samples, At(first), count, m_component);
    });
}

void SampleRow::Store(const std::int32_t *samples, int first, int count) const
{
    WithElement(m_nElementBytes, m_component.nStep, [&](auto element, auto step) {
        StoreElements<decltype(element), decltype(step)::value>(samples, At(first), count, m_component);
    });
}
