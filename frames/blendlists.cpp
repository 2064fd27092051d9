#include "frames/blendlists.h"

#include <algorithm>

namespace
{

void Blend(const PlaneTarget &plane, const ByteBlend &blend)
{
    for (const Span &span : blend.listSpans) {
        std::uint8_t *bytes = plane.Row(span.nRow) + span.nFirst;
        for (int i = 0; i < span.nCount; ++i) {
            const int sum = blend.listBases[span.nAt + i] + blend.listRests[span.nAt + i] * bytes[i];
            bytes[i] = static_cast<std::uint8_t>(sum / 255);
        }
    }
}

constexpr BlendBytesKernel Portable = {Blend};

} // namespace

const BlendBytesKernel &PortableBlendBytes()
{
    return Portable;
}

void ByteBlend::Clear()
{
    listSpans.clear();
    m_nUsed = 0;
}

std::size_t ByteBlend::Add(int row, int first, int count)
{
    constexpr std::uint16_t Half = 127;
    const std::size_t at = m_nUsed;
    m_nUsed += (count + BlendBytes - 1) / BlendBytes * BlendBytes;
    listSpans.push_back({row, first, count, at});
    if (listBases.size() < m_nUsed) {
        listBases.resize(2 * m_nUsed);
        listRests.resize(2 * m_nUsed);
    }
    const auto from = static_cast<std::ptrdiff_t>(at);
    const auto end = static_cast<std::ptrdiff_t>(m_nUsed);
    std::fill(listBases.begin() + from, listBases.begin() + end, Half);
    std::fill(listRests.begin() + from, listRests.begin() + end, std::uint8_t{255});
    return at;
}
