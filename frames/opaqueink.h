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
    /** What a plane has; the blocks are the same for all planes. */
    struct Plane {
        bool bSamples = false; ///< of components that have a sample for each pixel
        bool bMeans = false;   ///< of subsampled chroma
        int nElementBytes = 1; ///< of the means
        InkPattern samples = {};
        MeanPattern means = {};
    };
    void AddSamples(Plane &plane, const Component &component, int i, const InkFrameColors &colors) const;
    void AddMeans(Plane &plane, const Component &component, int i, const InkFrameColors &colors) const;

    const SampleKernel *m_pKernel = &BestSampleKernel(); ///< chosen ahead: asking the processor takes a while
    int m_nElementBytes = 1;
    std::array<Plane, 4> m_planes;
    BlockList<InkSamples> m_samples;
    BlockList<InkMeans> m_means;
};
