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
    /** Of a picture's samples of one resolution. Each span has whole MixSteps, of which those after it are untouched. */
    struct Lists {
        std::vector<Span> listSpans;
        std::array<std::vector<std::uint16_t>, 4> listBases; ///< of the components in turn
        std::vector<std::int16_t> listRests, listKeeps;      ///< keeps of means only

        void Clear();
        void Append(const MixNumbers::Part &part, int components, bool isMean);
        /** Appends what is untouched until the lists hold whole MixSteps. */
        void Fill(int components, bool isMean);
        MixLists At(std::size_t at) const;
    };
    void Start(const FrameLayout &layout, const FrameColors &colors);
    void BuildSamples(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildMeans(const PixelMap &map, const std::vector<FrameColor> &list);
    void BuildMeanRow(const PixelMap &map, const std::vector<FrameColor> &list, int row);
    InkMix MixOf(const MixPass &pass, const InkFrameColors &ofInk, int weight) const;
    /** Of the chroma below a row of pixels. */
    int ChromaRow(int row) const;
    struct Room;
    void DrawTextSamples(const FramePlanes &planes, Room &room) const;
    void DrawTextMeans(const FramePlanes &planes, Room &room) const;
    void DrawSamples(const FramePlanes &planes, const MixChunkPlace &place, const MixLists &lists, Room &room) const;
    void DrawMeans(const FramePlanes &planes, const MixChunkPlace &place, const MixLists &lists, Room &room) const;

    const MixKernel *m_pKernel = &BestMixKernel(); ///< chosen ahead: asking the processor takes a while
    const SampleKernel *m_pSampleKernel = &BestSampleKernel();
    FrameLayout m_layout = {};
    RedBlueExchange m_exchange = {};
    MixNumbers m_numbers;
    MixSettings m_settings = {};
    bool m_bTints = false; ///< single components depend on pairs
    MixPass m_samplePass;
    MixPass m_meanPass; ///< of pairs of subsampled formats
    // Of a picture; empty with text.
    Lists m_sampleLists;
    Lists m_meanLists;
    // Of text; empty with a picture.
    InkMix m_sampleMix = {};
    InkMix m_meanMix = {};
    BlockList<InkSamples> m_samples;
    BlockList<InkMeans> m_means;
    std::vector<Span> m_listSampleSpans, m_listMeanSpans; ///< of neighbours among those
};
