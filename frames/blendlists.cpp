#include "frames/blendlists.h"

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
            if (codes.bUsed[byte])
                PutPart(text[i] * codes.text[byte] + outline[i] * codes.outline[byte], rest,
                        bases[i * codes.nStep + byte], rests[i * codes.nStep + byte]);
        }
    }
}

constexpr BlendBytesKernel Portable = {Blend, Put};

} // namespace

const BlendBytesKernel &PortableBlendBytes()
{
    return Portable;
}

void ByteBlend::Clear()
{
    listSpans.clear();
    listBases.clear();
    listRests.clear();
}

std::size_t ByteBlend::Add(int row, int first, int count)
{
    constexpr std::uint16_t Half = 127;
    const std::size_t at = listBases.size();
    const std::size_t size = (count + BlendBytes - 1) / BlendBytes * BlendBytes;
    listSpans.push_back({row, first, count, at});
    listBases.resize(at + size, Half);
    listRests.resize(at + size, 255);
    return at;
}
