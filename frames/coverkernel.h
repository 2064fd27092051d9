#pragma once

#include "frames/framelayout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/** The weight of a colour that hides what is below it. */
constexpr std::uint32_t WholeWeight = 65535;

/** Samples in a row that have their weights together: first those of the text, then those of the outline. */
constexpr std::size_t CoverSamples = 16;
using CoverBlock = std::array<std::array<std::uint16_t, CoverSamples>, 2>;

/** Weights of a row of samples. What is left of WholeWeight is the weight of what is below. */
struct CoverRow {
    std::vector<std::uint16_t> text, outline;

    /** @param count  samples, all without weight; there is room for whole blocks. */
    void Reset(std::size_t count)
    {
        for (auto *list : {&text, &outline})
            list->assign((count + CoverSamples - 1) / CoverSamples * CoverSamples, 0);
    }
};

/** Samples of a frame that have weight, with their weights, in spans of whole blocks. */
class CoverList
{
public:
    void Clear();
    /** Adds the blocks of a row that have weight. @param first  number of the row's first sample */
    void Add(int row, int first, const CoverRow &weights);

    const std::vector<Span> &Spans() const { return m_listSpans; }
    /** Of a span; it has one for every CoverSamples samples. */
    const CoverBlock *Blocks(const Span &span) const { return m_listBlocks.data() + span.nAt; }

private:
    std::vector<Span> m_listSpans;
    std::vector<CoverBlock> m_listBlocks; ///< does not become smaller
    std::size_t m_nUsed = 0;
};

/** Pixels that are covered: spans of a frame, and how much text and outline cover of each pixel. */
struct CoveredPixels {
    const std::vector<Span> &listSpans; ///< Span::nAt is where they begin in the following
    const std::uint8_t *pText, *pOutline;
    int nOpacity; ///< 0 to 255
};

/** Adds the spans of a row's pixels of which any is covered. @param at  where the row is in the lists of coverage */
void AddCovered(int row, int first, int count, const std::uint8_t *text, const std::uint8_t *outline, std::size_t at,
                std::vector<Span> &spans);

/** What two colours put into samples that lie in one element of a byte each. */
struct CoverCodes {
    int nStep;                                  ///< bytes from a sample to the next: 1 to 4
    std::array<bool, 4> bUsed;                  ///< of these; the others stay as they are
    std::array<std::uint16_t, 4> text, outline; ///< 256 times the code values
};

/** The arithmetic of coverage, in whole numbers: all kernels give the same. */
struct CoverKernel {
    /**
     * Adds the weights of covered pixels, times @p quarters of 4: of the text, and of the outline where it is not below the text.
     * Without other weights, 4 quarters give whole ones.
     * @param opacity  0 to 255
     */
    void (*Weigh)(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, int opacity, int quarters,
                  std::uint16_t *textWeights, std::uint16_t *outlineWeights);
    /** to[i] is the mean of from[2 i] to from[2 i + 3], with weights of 4 in all. */
    void (*Halve)(const std::uint16_t *from, std::size_t count, const std::array<int, 4> &weights, std::uint16_t *to);
    /**
     * Puts the colours into a plane. Bytes of a span that have no weight may be written with what they hold; nothing after a
     * row's end is read or written.
     */
    void (*Blend)(const PlaneTarget &plane, const CoverList &list, const CoverCodes &codes);
    /** The same with the weights of pixels. */
    void (*BlendPixels)(const PlaneTarget &plane, const CoveredPixels &pixels, const CoverCodes &codes);
};

/** For any processor. */
const CoverKernel &PortableCoverKernel();

/** For this processor. */
const CoverKernel &BestCoverKernel();
