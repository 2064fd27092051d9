#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/pixelmap.h"
#include "frames/samplekernel.h"

#include <array>
#include <cstdint>
#include <vector>

/** Pixels of any weight in the format of a frame. */
class MixedInk
{
public:
    /** @param list  of @p map, from number 1 on. */
    void Build(const PixelMap &map, const FrameLayout &layout, const FrameColors &colors,
               const std::vector<FrameColor> &list);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /** Of samples of one resolution. The bases are of two components: the single one and alpha, or the pair. */
    struct Lists {
        std::vector<Span> listSpans;
        std::array<std::vector<std::int32_t>, 2> listBases;
        std::vector<std::int32_t> listRest;
        std::vector<std::int32_t> listKeep;

        void Clear();
        void Append(const std::array<std::int32_t, 2> &bases, std::int32_t rest, std::int32_t keep);
        MixLists At(std::size_t at, int base) const;
    };
    void BuildSettings(const FrameColors &colors);
    void BuildSingles(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildPairs(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildPairRow(const PixelMap &map, const std::vector<FrameColor> &list, int row);
    void DrawSingles(const FramePlanes &planes, const Span &span) const;
    void DrawAlpha(const FramePlanes &planes, const Span &span) const;
    void DrawPairs(const FramePlanes &planes, const Span &span) const;

    const SampleKernel *m_pKernel = &BestSampleKernel(); ///< chosen ahead: asking the processor takes a while
    FrameLayout m_layout = {};
    RedBlueExchange m_exchange = {};
    MixSettings m_singleSettings = {};
    MixSettings m_alphaSettings = {};
    MixSettings m_pairSettings = {};
    int m_nPairScale = 1; ///< the weights of taps are divided by
    Lists m_singles;
    Lists m_pairs;
};
