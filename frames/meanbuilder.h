#pragma once

#include "frames/framelayout.h"
#include "frames/inkrows.h"
#include "frames/samplekernel.h"
#include "render/blocklist.h"

#include <array>
#include <cstdint>

/** Computes how much of each subsampled chroma sample is text, and how much outline. */
class MeanBuilder
{
public:
    MeanBuilder(const InkRows &ink, const FrameLayout &layout, const SampleKernel &kernel);

    void Build(BlockList<InkMeans> &blocks) const;

private:
    InkMeans *FindRow(int row, InkMeans *next) const;
    std::uint64_t BitsAtEnd(int column, const std::uint64_t *row) const;

    const InkRows &m_ink;
    const FrameLayout &m_layout;
    const SampleKernel &m_kernel;
    bool m_bLower; ///< chroma has fewer rows than the frame
    std::array<int, 4> m_columnWeights;
};
