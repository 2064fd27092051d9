#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/pixelmap.h"
#include "frames/samplekernel.h"

#include <array>
#include <cstdint>
#include <vector>

/** Pixels of whole weight in the format of a frame. */
class OpaqueInk
{
public:
    /** @param colors  of @p map, from number 1 on. */
    void Build(const PixelMap &map, const FrameLayout &layout, const std::vector<FrameColor> &colors);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /** Either bytes to fill, or samples some of which are means of several pixels. */
    struct Plane {
        bool bMeans = false;
        int nElementBytes = 1;
        int nShift = 0;
        std::vector<Span> listSpans;
        std::vector<std::uint8_t> listKeep;
        std::vector<std::uint8_t> listValues;
        std::vector<std::uint16_t> listAdd;
    };
    class Builder;

    const SampleKernel *m_pKernel = &BestSampleKernel(); ///< chosen ahead: asking the processor takes a while
    std::array<Plane, 4> m_planes;
};
