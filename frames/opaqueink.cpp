#include "frames/opaqueink.h"

#include "frames/meanbuilder.h"

namespace
{

/** The bits of an element that drawing a component's sample overwrites. */
std::uint32_t SampleBits(const Component &component, int elementBytes)
{
    // In 16-bit elements, padding bits below the sample are cleared as well.
    const std::uint32_t below = elementBytes == 2 ? (1U << component.nShift) - 1 : 0;
    return static_cast<std::uint32_t>(component.Max()) << component.nShift | below;
}

/** ORs a number into a little-endian element of @p elementBytes bytes. */
void OrElement(std::uint8_t *to, std::uint32_t value, int elementBytes)
{
    for (int byte = 0; byte < elementBytes; ++byte)
        to[byte] |= static_cast<std::uint8_t>(value >> 8 * byte);
}

} // namespace

void OpaqueInk::AddSamples(Plane &plane, const Component &component, int i, const InkFrameColors &colors) const
{
    plane.bSamples = true;
    plane.pattern.nPixelBytes = component.nStep * m_nElementBytes;
    const int pixels = static_cast<int>(InkBytes) / plane.pattern.nPixelBytes;
    const auto text = static_cast<std::uint32_t>(colors.text.codes[i]);
    const auto outline = static_cast<std::uint32_t>(colors.outline.codes[i]);
    for (int pixel = 0; pixel < pixels; ++pixel) {
        const int at = (pixel * component.nStep + component.nOffset) * m_nElementBytes;
        OrElement(&plane.pattern.text[at], text << component.nShift, m_nElementBytes);
        OrElement(&plane.pattern.outline[at], outline << component.nShift, m_nElementBytes);
        OrElement(&plane.pattern.bits[at], SampleBits(component, m_nElementBytes), m_nElementBytes);
    }
}

void OpaqueInk::AddMeans(int plane, const Component &component, int i, const InkFrameColors &colors)
{
    MeanPattern &pattern = m_chroma.pattern;
    if (pattern.nPlanes == 0)
        m_chroma.nPlane = plane;
    pattern.nPlanes = plane - m_chroma.nPlane + 1;
    // Packed rows have luma between the chroma samples: one of each is treated as an element of 2 bytes.
    const bool isPacked = m_planes[plane].bSamples;
    m_chroma.nElementBytes = isPacked ? 2 : m_nElementBytes;
    pattern.nShift = isPacked ? 8 * (component.nOffset % 2) : component.nShift;
    pattern.nMax = static_cast<std::uint16_t>(component.Max());
    pattern.nOthers = isPacked ? static_cast<std::uint16_t>(0xFF00 >> pattern.nShift) : 0;
    const int place = isPacked ? component.nOffset / 2 : component.nOffset;
    const int number = place + plane - m_chroma.nPlane;
    pattern.text[number] = static_cast<std::uint16_t>(colors.text.codes[i]);
    pattern.outline[number] = static_cast<std::uint16_t>(colors.outline.codes[i]);
}

void OpaqueInk::Build(const InkRows &ink, const FrameLayout &layout, const InkFrameColors &colors)
{
    m_nElementBytes = layout.format.nElementBytes;
    m_planes = {};
    m_chroma = {};
    for (int plane = 0; plane < 4; ++plane) {
        layout.format.ForComponents(plane, [&](int i, const Component &component) {
            if (component.nColumnsLog2 > 0)
                AddMeans(plane, component, i, colors);
            else
                AddSamples(m_planes[plane], component, i, colors);
        });
    }
    // In all formats the first plane has a sample for each pixel.
    ink.FindSamples(static_cast<int>(InkBytes) / m_planes[0].pattern.nPixelBytes, m_samples);
    if (layout.format.IsSubsampled())
        MeanBuilder(ink, layout, *m_pKernel).Build(m_means);
}

void OpaqueInk::Draw(const FramePlanes &planes) const
{
    for (std::size_t i = 0; i < planes.size(); ++i) {
        if (m_planes[i].bSamples)
            m_pKernel->Fill(planes[i], m_samples.Data(), m_samples.Size(), m_planes[i].pattern);
    }
    const auto drawMeans = m_chroma.nElementBytes == 1 ? m_pKernel->Mean8 : m_pKernel->Mean16;
    if (m_chroma.pattern.nPlanes > 0)
        drawMeans(&planes[m_chroma.nPlane], m_means.Data(), m_means.Size(), m_chroma.pattern);
}
