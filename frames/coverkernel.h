#pragma once

#include "frames/framelayout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/** Weight of an opaque colour. */
constexpr std::uint32_t WholeWeight = 65535;

/** Number of neighbouring samples whose weights are stored together: first the text's, then the outline's. */
constexpr std::size_t CoverSamples = 16;
using CoverBlock = std::array<std::array<std::uint16_t, CoverSamples>, 2>;

/** Weights of a row of samples. The remainder up to WholeWeight is the weight of the old sample. */
struct CoverRow {
    std::vector<std::uint16_t> text, outline;

    /** Sets the weights of @p count samples to 0, padded to whole blocks. */
    void Reset(std::size_t count)
    {
        for (auto *list : {&text, &outline})
            list->assign((count + CoverSamples - 1) / CoverSamples * CoverSamples, 0);
    }
};

/** Weights of those samples of a plane that have any, in spans of whole blocks. */
class CoverList
{
public:
    void Clear();
    /**
     * Adds those blocks of a row in which any weight is not 0.
     * @param first  number of the first sample of @p weights
     */
    void Add(int row, int first, const CoverRow &weights);

    const std::vector<Span> &Spans() const { return m_listSpans; }
    /** The blocks of a span, one for every CoverSamples samples. */
    const CoverBlock *Blocks(const Span &span) const { return m_listBlocks.data() + span.nAt; }

private:
    std::vector<Span> m_listSpans;
    std::vector<CoverBlock> m_listBlocks; ///< never shrinks
    std::size_t m_nUsed = 0;
};

/** Covered pixels of a frame, and how much of each pixel the text and its outline cover (0 to 255). */
struct CoveredPixels {
    const std::vector<Span> &listSpans; ///< Span::nAt is an index into pText and pOutline
    const std::uint8_t *pText, *pOutline;
    int nOpacity; ///< 0 to 255
};

/**
 * Adds the covered spans of a row, in whole blocks of CoverSamples except at the end of the row.
 * @param at  index of the row's first pixel in the lists of coverage
 */
void AddCovered(int row, int first, int count, const std::uint8_t *text, const std::uint8_t *outline, std::size_t at,
                std::vector<Span> &spans);

/** The two colours' code values, for samples of one byte. */
struct CoverCodes {
    int nStep;                                  ///< bytes from a sample to the next: 1 to 4
    std::array<bool, 4> bUsed;                  ///< which of these are drawn; the others stay
    std::array<std::uint16_t, 4> text, outline; ///< 256 times the code values
};

/** Blends by coverage, in integers. All kernels give the same result. */
struct CoverKernel {
    /**
     * Adds the weights of pixels, times @p quarters / 4: those of the text, and those of the outline where no text
     * covers it.
     * @param opacity  0 to 255
     * @param quarters  1 to 4; 4 adds the weights unscaled
     */
    void (*Weigh)(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, int opacity, int quarters,
                  std::uint16_t *textWeights, std::uint16_t *outlineWeights);
    /** to[i] becomes the weighted mean of from[2 i] to from[2 i + 3]. The weights add up to 4. */
    void (*Halve)(const std::uint16_t *from, std::size_t count, const std::array<int, 4> &weights, std::uint16_t *to);
    /**
     * Blends the colours into a plane. Bytes of a span that have no weight may be rewritten with their own value;
     * nothing past the end of a row is read or written.
     */
    void (*Blend)(const PlaneTarget &plane, const CoverList &list, const CoverCodes &codes);
    /** The same with weights computed from the coverage of pixels. */
    void (*BlendPixels)(const PlaneTarget &plane, const CoveredPixels &pixels, const CoverCodes &codes);
};

/** Runs on any processor. */
const CoverKernel &PortableCoverKernel();

/** The fastest one that this processor supports. */
const CoverKernel &BestCoverKernel();
