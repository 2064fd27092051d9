#include "frames/coverkernel.h"

#include <algorithm>

namespace
{

/** The upper half of the product of two 16-bit numbers. */
std::uint32_t MulHigh(std::uint32_t a, std::uint32_t b)
{
    return a * b >> 16;
}

void Weigh(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, int opacity, int quarters,
           std::uint16_t *textWeights, std::uint16_t *outlineWeights)
{
    const std::uint32_t part = opacity * (WholeWeight / 255);
    const auto shift = quarters == 4 ? 0 : 2;
    const std::uint32_t factor = quarters == 4 ? 1 : quarters;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t product = (255 - text[i]) * outline[i];
        const std::uint32_t ofText = MulHigh(text[i] * (WholeWeight / 255), part);
        const std::uint32_t ofOutline = MulHigh(product + (product >> 7), part);
        textWeights[i] = static_cast<std::uint16_t>(textWeights[i] + (ofText >> shift) * factor);
        outlineWeights[i] = static_cast<std::uint16_t>(outlineWeights[i] + (ofOutline >> shift) * factor);
    }
}

void Halve(const std::uint16_t *from, std::size_t count, const std::array<int, 4> &weights, std::uint16_t *to)
{
    for (std::size_t i = 0; i < count; ++i) {
        int sum = 0;
        for (std::size_t n = 0; n < weights.size(); ++n)
            sum += (from[2 * i + n] >> 2) * weights[n];
        to[i] = static_cast<std::uint16_t>(sum);
    }
}

void BlendBlock(std::uint8_t *bytes, std::size_t count, const CoverBlock &block, const CoverCodes &codes)
{
    constexpr std::uint32_t Half = 128;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t rest = WholeWeight - block[0][i] - block[1][i];
        for (int byte = 0; byte < codes.nStep; ++byte) {
            std::uint8_t &old = bytes[i * codes.nStep + byte];
            const std::uint32_t sum = MulHigh(block[0][i], codes.text[byte]) +
                                      MulHigh(block[1][i], codes.outline[byte]) + MulHigh(rest, old * 256U);
            if (codes.bUsed[byte])
                old = static_cast<std::uint8_t>((sum + Half) >> 8);
        }
    }
}

void Blend(const PlaneTarget &plane, const CoverList &list, const CoverCodes &codes)
{
    for (const Span &span : list.Spans()) {
        const CoverBlock *block = list.Blocks(span);
        const auto samples = static_cast<int>(plane.nRowBytes / codes.nStep);
        const int end = std::min(span.nFirst + span.nCount, samples);
        for (int first = span.nFirst; first < end; first += CoverSamples, ++block)
            BlendBlock(plane.Row(span.nRow) + static_cast<std::ptrdiff_t>(first) * codes.nStep,
                       std::min<std::size_t>(CoverSamples, end - first), *block, codes);
    }
}

void BlendPixels(const PlaneTarget &plane, const CoveredPixels &pixels, const CoverCodes &codes)
{
    for (const Span &span : pixels.listSpans) {
        for (int done = 0; done < span.nCount; done += CoverSamples) {
            const auto count = std::min<std::size_t>(CoverSamples, span.nCount - done);
            const std::size_t at = span.nAt + done;
            CoverBlock block = {};
            Weigh(pixels.pText + at, pixels.pOutline + at, count, pixels.nOpacity, 4, block[0].data(), block[1].data());
            BlendBlock(plane.Row(span.nRow) + static_cast<std::ptrdiff_t>(span.nFirst + done) * codes.nStep, count,
                       block, codes);
        }
    }
}

constexpr CoverKernel Portable = {Weigh, Halve, Blend, BlendPixels};

/** Whether any of the pixels in a word is covered. */
template <typename Word>
bool IsCovered(const std::uint8_t *text, const std::uint8_t *outline)
{
    return (Read<Word>(text) | Read<Word>(outline)) != 0;
}

bool HasWeight(const std::uint16_t *text, const std::uint16_t *outline)
{
    unsigned any = 0;
    for (std::size_t i = 0; i < CoverSamples; ++i)
        any |= text[i] | outline[i];
    return any != 0;
}

} // namespace

const CoverKernel &PortableCoverKernel()
{
    return Portable;
}

void CoverList::Clear()
{
    m_listSpans.clear();
    m_nUsed = 0;
}

void CoverList::Add(int row, int first, const CoverRow &weights)
{
    const std::size_t count = weights.text.size();
    if (m_listBlocks.size() < m_nUsed + count / CoverSamples)
        m_listBlocks.resize(2 * (m_nUsed + count / CoverSamples));
    CoverBlock *block = m_listBlocks.data() + m_nUsed;
    bool isInSpan = false;
    for (std::size_t i = 0; i < count; i += CoverSamples) {
        const std::uint16_t *text = weights.text.data() + i;
        const std::uint16_t *outline = weights.outline.data() + i;
        if (!HasWeight(text, outline)) {
            isInSpan = false;
            continue;
        }
        if (!isInSpan)
            m_listSpans.push_back({row, first + static_cast<int>(i), 0, m_nUsed});
        isInSpan = true;
        m_listSpans.back().nCount += CoverSamples;
        std::copy_n(text, CoverSamples, (*block)[0].begin());
        std::copy_n(outline, CoverSamples, (*block)[1].begin());
        ++block;
        ++m_nUsed;
    }
}

void AddCovered(int row, int first, int count, const std::uint8_t *text, const std::uint8_t *outline, std::size_t at,
                std::vector<Span> &spans)
{
    using Word = std::uint64_t;
    constexpr int Pixels = CoverSamples;
    const int whole = count / Pixels * Pixels;
    const auto isBlockCovered = [&](int i) {
        return IsCovered<Word>(text + i, outline + i) ||
               IsCovered<Word>(text + i + sizeof(Word), outline + i + sizeof(Word));
    };
    int begin = 0;
    int end = 0;
    const auto add = [&] {
        if (end > begin)
            spans.push_back({row, first + begin, end - begin, at + begin});
    };
    while (end < whole) {
        begin = end;
        while (begin < whole && !isBlockCovered(begin))
            begin += Pixels;
        end = begin;
        while (end < whole && isBlockCovered(end))
            end += Pixels;
        if (end < whole)
            add();
    }
    bool isRestCovered = false;
    for (int i = whole; i < count; ++i)
        isRestCovered |= IsCovered<std::uint8_t>(text + i, outline + i);
    if (isRestCovered)
        end = count;
    add();
}
