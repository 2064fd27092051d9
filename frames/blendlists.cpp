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

void Put(const float *text, const float *outline, std::size_t count, const ByteCodes &codes, std::uint16_t *bases,
         std::uint8_t *rests)
{
    for (std::size_t i = 0; i < count; ++i) {
        const float rest = 1 - text[i] - outline[i];
        for (int byte = 0; byte < codes.nStep; ++byte) {
            const float code = text[i] * codes.text[byte] + outline[i] * codes.outline[byte];
            PutPart(codes.bUsed[byte] ? code : 0, codes.bUsed[byte] ? rest : 1, bases[i * codes.nStep + byte],
                    rests[i * codes.nStep + byte]);
        }
    }
}

template <bool IsAdded>
void Share(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, float weight, float *textShares,
           float *outlineShares)
{
    const float ofText = weight / 255;
    const float ofOutline = weight / (255 * 255);
    for (std::size_t i = 0; i < count; ++i) {
        const float shareOfText = static_cast<float>(text[i]) * ofText;
        const float shareOfOutline = static_cast<float>((255 - text[i]) * outline[i]) * ofOutline;
        textShares[i] = IsAdded ? textShares[i] + shareOfText : shareOfText;
        outlineShares[i] = IsAdded ? outlineShares[i] + shareOfOutline : shareOfOutline;
    }
}

void Halve(const float *from, std::size_t count, const std::array<float, 4> &weights, float *to)
{
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = from[2 * i] * weights[0] + from[2 * i + 1] * weights[1] + from[2 * i + 2] * weights[2] +
                from[2 * i + 3] * weights[3];
    }
}

constexpr BlendBytesKernel Portable = {Blend, Put, Share<false>, Share<true>, Halve};

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

std::size_t ByteBlend::Add(int row, int first, int count, bool isFilledIn)
{
    constexpr std::uint16_t Half = 127;
    const std::size_t at = m_nUsed;
    m_nUsed += (count + BlendBytes - 1) / BlendBytes * BlendBytes;
    listSpans.push_back({row, first, count, at});
    if (listBases.size() < m_nUsed) {
        listBases.resize(2 * m_nUsed);
        listRests.resize(2 * m_nUsed);
    }
    const auto from = static_cast<std::ptrdiff_t>(at + (isFilledIn ? count : 0));
    const auto end = static_cast<std::ptrdiff_t>(m_nUsed);
    std::fill(listBases.begin() + from, listBases.begin() + end, Half);
    std::fill(listRests.begin() + from, listRests.begin() + end, std::uint8_t{255});
    return at;
}
