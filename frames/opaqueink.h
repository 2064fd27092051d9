#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/inkrows.h"
#include "frames/samplekernel.h"
#include "render/blocklist.h"

#include <array>
#include <cstdint>

/** Opaque text in the format of a frame. */
class OpaqueInk
{
public:
    void Build(const InkRows &ink, const FrameLayout &layout, const InkFrameColors &colors);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /** A plane with a sample for each pixel. All such planes share the blocks in m_samples. */
    struct Plane {
        bool bSamples = false;
        InkPattern pattern = {};
    };
    /** Subsampled chroma. */
    struct Chroma {
        int nPlane = 0; ///< the first, if there are two
        int nElementBytes = 1;
        MeanPattern pattern = {}; ///< nPlanes is 0 if the format has no such chroma
    };
    void AddSamples(Plane &plane, const Component &component, int i, const InkFrameColors &colors) const;
    void AddMeans(int plane, const Component &component, int i, const InkFrameColors &colors);

    const SampleKernel *m_pKernel = &BestSampleKernel(); ///< chosen once: detecting the processor is slow
    int m_nElementBytes = 1;
    std::array<Plane, 4> m_planes;
    Chroma m_chroma;
    BlockList<InkSamples> m_samples;
    BlockList<InkMeans> m_means;
};
