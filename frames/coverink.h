#pragma once

#include "frames/coverkernel.h"
#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/naturalmap.h"

#include <cstdint>
#include <vector>

/**
 * Text in the natural look, without a picture, in the format of a frame: weights of samples, and the code values of the
 * two colours.
 */
class CoverInk
{
public:
    void Build(const NaturalMap &map, const FrameLayout &layout, const FrameColors &colors, const InkColors &ofText);
    /** Allocates nothing. @param map  the one given to Build(), with the same coverage */
    void Draw(const NaturalMap &map, const FramePlanes &planes) const;

private:
    /** Samples of one byte in a plane that take their weights from the same list. */
    struct Layer {
        int nPlane;
        bool bMeans; ///< weights from m_means, else from the pixels' coverage
        CoverCodes codes;
    };
    void BuildLayers();
    void BuildSingles(const NaturalMap &map);
    void BuildMeans(const NaturalMap &map);
    void DrawSamples(const CoveredPixels &pixels, const FramePlanes &planes, int component) const;

    const CoverKernel *m_pKernel = &BestCoverKernel(); ///< chosen once: detecting the processor is slow
    FrameLayout m_layout = {};
    InkFrameColors m_colors = {};
    std::vector<Span> m_listPixels;  ///< the covered ones
    CoverList m_means;               ///< weights of subsampled chroma
    std::vector<Layer> m_listLayers; ///< only if elements are bytes
    // Scratch space of BuildMeans().
    CoverRow m_pixels;
    CoverRow m_halved;
};
