#pragma once

#include "frames/coverkernel.h"
#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/naturalmap.h"

#include <cstdint>
#include <vector>

/** Text of the natural look without a picture, in the format of a frame: weights of samples, and the two colours' code values. */
class CoverInk
{
public:
    void Build(const NaturalMap &map, const FrameLayout &layout, const FrameColors &colors, const InkColors &ofText);
    /** Allocates nothing. @param map  as it was built from, with the same bytes. */
    void Draw(const NaturalMap &map, const FramePlanes &planes) const;

private:
    /** Samples of bytes in a plane that have weights from one list. */
    struct Layer {
        int nPlane;
        bool bMeans;
        CoverCodes codes;
    };
    void BuildLayers();
    void BuildSingles(const NaturalMap &map);
    void BuildMeans(const NaturalMap &map);
    void DrawSamples(const CoveredPixels &pixels, const FramePlanes &planes, int component) const;

    const CoverKernel *m_pKernel = &BestCoverKernel(); ///< chosen ahead: asking the processor takes a while
    FrameLayout m_layout = {};
    InkFrameColors m_colors = {};
    std::vector<Span> m_listPixels;  ///< those that are covered
    CoverList m_means;               ///< of chroma samples that belong to several pixels
    std::vector<Layer> m_listLayers; ///< where elements are bytes
    // While something is built.
    CoverRow m_pixels;
    CoverRow m_halved;
};
