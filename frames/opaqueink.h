#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/inkrows.h"
#include "frames/samplekernel.h"
#include "render/blocklist.h"

#include <array>
#include <cstdint>

/** Text of whole weight in the format of a frame. */
class OpaqueInk
{
public:
    void Build(const InkRows &ink, const FrameLayout &layout, const InkFrameColors &colors);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /** What planes with a sample for each pixel have; the blocks are the same for all of them. */
    struct Plane {
        bool bSamples = false;
        InkPattern pattern = {};
    };
    /** Subsampled chroma. */
    struct Chroma {
        int nPlane = 0; ///< the first
        int nElementBytes = 1;
        MeanPattern pattern = {}; ///< of no plane where there is none
    };
    void AddSamples(Plane &plane, const Component &component, int i, const InkFrameColors &colors) const;
    void AddMeans(int plane, const Component &component, int i, const InkFrameColors &colors);

    const SampleKernel *m_pKernel = &BestSampleKernel(); ///< chosen ahead: asking the processor takes a while
    int m_nElementBytes = 1;
    std::array<Plane, 4> m_planes;
    Chroma m_chroma;
    BlockList<InkSamples> m_samples;
    BlockList<InkMeans> m_means;
};
