#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/inkrows.h"
#include "frames/pixelmap.h"
#include "frames/samplekernel.h"
#include "render/blocklist.h"

#include <array>
#include <cstdint>
#include <vector>

/** Pixels of any weight in the format of a frame: pictures, or text. */
class MixedInk
{
public:
    /** @param list  of @p map, from number 1 on. */
    void BuildPicture(const PixelMap &map, const FrameLayout &layout, const FrameColors &colors,
                      const std::vector<FrameColor> &list);
    /** @param weight  of all pixels */
    void BuildText(const InkRows &ink, const FrameLayout &layout, const FrameColors &colors,
                   const InkFrameColors &ofInk, int weight);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /** Of a picture's samples of one resolution. The bases are of two components: the single one and alpha, or the pair. */
    struct Lists {
        std::vector<Span> listSpans;
        std::array<std::vector<std::int32_t>, 2> listBases;
        std::vector<std::int32_t> listRest;
        std::vector<std::int32_t> listKeep;

        void Clear();
        void Append(const std::array<std::int32_t, 2> &bases, std::int32_t rest, std::int32_t keep);
        MixLists At(std::size_t at, int base) const;
    };
    /** Neighbours in a row that are worked on at once. */
    struct Chunk {
        int nRow;
        int nFirst; ///< sample
        int nCount;
    };
    void Start(const FrameLayout &layout, const FrameColors &colors);
    void BuildSingles(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildPairs(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildPairRow(const PixelMap &map, const std::vector<FrameColor> &list, int row);
    template <typename Call>
    void ForSamples(const InkMix &mix, Call call) const;
    template <typename Call>
    void ForMeans(const InkMix &mix, Call call) const;
    void DrawSingles(const FramePlanes &planes, const Chunk &chunk, const MixLists &lists) const;
    void DrawAlpha(const FramePlanes &planes, const Chunk &chunk, const MixLists &lists) const;
    void DrawPairs(const FramePlanes &planes, const Chunk &chunk, const MixLists &lists,
                   const std::int32_t *secondBase) const;

    const SampleKernel *m_pKernel = &BestSampleKernel(); ///< chosen ahead: asking the processor takes a while
    FrameLayout m_layout = {};
    RedBlueExchange m_exchange = {};
    MixSettings m_singleSettings = {};
    MixSettings m_alphaSettings = {};
    MixSettings m_pairSettings = {};
    // Of a picture; empty with text.
    Lists m_singles;
    Lists m_pairs;
    // Of text; empty with a picture.
    InkMix m_singleMix = {}; ///< of the single component and alpha
    InkMix m_pairMix = {};
    BlockList<InkSamples> m_samples;
    BlockList<InkMeans> m_means;
};
