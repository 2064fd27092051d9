#pragma once

#include "frames/blendlists.h"
#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/naturalmap.h"

#include <array>
#include <cstdint>
#include <vector>

/**
 * Pictures in the natural look, with or without text, in the format of a frame: for each sample the weight of the old
 * value, and the value to add. CoverInk is the faster way for text alone.
 */
class NaturalInk
{
public:
    void Build(const NaturalMap &map, const FrameLayout &layout, const FrameColors &colors, const InkColors &ofText);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /** Weights (0 to 1) of adjacent samples of a row, and what the picture adds to each component. */
    struct Shares {
        int nFirst, nCount; ///< first sample, and number of samples
        std::vector<float> text, outline, picture;
        std::array<std::vector<float>, 4> pictureCodes;
    };
    /** Planes with the same subsampling, for which weights are computed once. */
    struct PlaneGroup {
        bool bSingles;     ///< has components that are not subsampled
        bool bMeans;       ///< has components that are subsampled horizontally
        bool bMeansOfRows; ///< has components that are subsampled vertically as well
        int nPlanes;
        std::array<int, 4> listPlanes;

        bool IsAlike(const PlaneGroup &other) const
        {
            return bSingles == other.bSingles && bMeans == other.bMeans && bMeansOfRows == other.bMeansOfRows;
        }
    };
    PlaneGroup KindOf(int plane) const;
    /** The rows of pixels that a row of samples is computed from. */
    Taps RowsOf(const PlaneGroup &group, int row) const;
    void BuildPlanes(const NaturalMap &map, const PlaneGroup &group);
    void BuildRun(const NaturalMap &map, const PlaneGroup &group, int row, int first, int end);
    void LoadShares(const NaturalMap &map, int row, int first, int count);
    void LoadMeans(const NaturalMap &map, const Taps &rows, int first, int count);
    void AddPictureCodes(const NaturalMap &map, Shares &shares) const;
    void PutBytes(int plane, int row, bool isSubsampled);
    void PutSamples(int component, int row, const Shares &shares);
    template <typename Put>
    void ForParts(int component, const Shares &shares, Put put) const;
    void DrawSamples(const FramePlanes &planes, int component) const;

    const BlendBytesKernel *m_pKernel = &BestBlendBytes(); ///< chosen once: detecting the processor is slow
    FrameLayout m_layout = {};
    InkFrameColors m_colors = {};
    std::array<ByteBlend, 4> m_bytes;     ///< one for each plane, if elements are bytes
    std::array<SampleBlend, 4> m_samples; ///< one for each component, if elements are wider
    // Scratch space of Build().
    NaturalMap::Weights m_weights;
    Shares m_single = {}; ///< of components that are not subsampled
    Shares m_means = {};  ///< of subsampled chroma
    Shares m_row = {};    ///< of one of the rows of pixels that m_means is computed from
    std::vector<std::uint8_t> m_listGroups;
};
