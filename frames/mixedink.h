#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/inkrows.h"
#include "frames/mixkernel.h"
#include "frames/mixnumbers.h"
#include "frames/mixrows.h"
#include "frames/pixelmap.h"
#include "render/blocklist.h"

#include <array>
#include <cstdint>
#include <vector>

/** Text or a picture, translucent or not, in the format of a frame. */
class MixedInk
{
public:
    /** @param list  the colours of @p map, beginning with number 1 */
    void BuildPicture(const PixelMap &map, const FrameLayout &layout, const FrameColors &colors,
                      const std::vector<FrameColor> &list);
    /** @param weight  of all pixels */
    void BuildText(const InkRows &ink, const FrameLayout &layout, const FrameColors &colors,
                   const InkFrameColors &ofInk, int weight);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /**
     * What a picture mixes into its samples of one resolution. The entries of a span are followed by untouched ones up
     * to a whole MixStep.
     */
    struct Lists {
        std::vector<Span> listSpans;
        std::array<std::vector<std::uint16_t>, 4> listBases; ///< a list for each component of the pass
        std::vector<std::int16_t> listRests, listKeeps;      ///< keeps only in m_meanLists

        void Clear();
        void Append(const MixNumbers::Part &part, int components, bool isMean);
        /** Appends untouched entries until the lists hold whole MixSteps. */
        void Fill(int components, bool isMean);
        MixLists At(std::size_t at) const;
    };
    void Start(const FrameLayout &layout, const FrameColors &colors);
    void BuildSamples(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildMeans(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildMeanRow(const PixelMap &map, const std::vector<FrameColor> &list, int row);
    InkMix MixOf(const MixPass &pass, const InkFrameColors &ofInk, int weight) const;
    /** The row of chroma samples that belongs to a row of pixels. */
    int ChromaRow(int row) const;
    struct Room;
    void DrawTextSamples(const FramePlanes &planes, Room &room) const;
    void DrawTextMeans(const FramePlanes &planes, Room &room) const;
    void DrawSamples(const FramePlanes &planes, const MixChunkPlace &place, const MixLists &lists, Room &room) const;
    void DrawMeans(const FramePlanes &planes, const MixChunkPlace &place, const MixLists &lists, Room &room) const;

    const MixKernel *m_pKernel = &BestMixKernel(); ///< chosen once: detecting the processor is slow
    const SampleKernel *m_pSampleKernel = &BestSampleKernel();
    FrameLayout m_layout = {};
    RedBlueExchange m_exchange = {};
    MixNumbers m_numbers;
    MixSettings m_settings = {};
    bool m_bTints = false; ///< swapping red and blue changes the single component
    MixPass m_samplePass;
    MixPass m_meanPass; ///< the pair, in subsampled formats
    // For a picture; empty for text.
    Lists m_sampleLists;
    Lists m_meanLists;
    // For text; empty for a picture.
    InkMix m_sampleMix = {};
    InkMix m_meanMix = {};
    BlockList<InkSamples> m_samples;
    BlockList<InkMeans> m_means;
    std::vector<Span> m_listSampleSpans, m_listMeanSpans; ///< runs of neighbouring blocks in these
};
