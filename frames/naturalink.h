#pragma once

#include "frames/blendlists.h"
#include "frames/framecolors.h"
#include "frames/framelayout.h"
#include "frames/naturalmap.h"

#include <array>
#include <cstdint>
#include <vector>

/** A picture of the natural look, with text, in the format of a frame: what stays of each sample, and what is added. */
class NaturalInk
{
public:
    void Build(const NaturalMap &map, const FrameLayout &layout, const FrameColors &colors, const InkColors &ofText);
    /** Allocates nothing. */
    void Draw(const FramePlanes &planes) const;

private:
    /** Shares of neighbours in a row of samples, and what the picture adds to each component. */
    struct Shares {
        int nFirst, nCount; ///< samples
        std::vector<float> text, outline, picture;
        std::array<std::vector<float>, 4> pictureCodes;
    };
    /** Planes with the same kinds of samples. */
    struct PlaneGroup {
        bool bSingles;     ///< samples that belong to one pixel
        bool bMeans;       ///< samples that belong to several
        bool bMeansOfRows; ///< these in more than one row
        int nPlanes;
        std::array<int, 4> listPlanes;

        bool IsAlike(const PlaneGroup &other) const
        {
            return bSingles == other.bSingles && bMeans == other.bMeans && bMeansOfRows == other.bMeansOfRows;
        }
    };
    PlaneGroup KindOf(int plane) const;
    /** The rows of pixels that a row of samples belongs to. */
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

    const BlendBytesKernel *m_pKernel = &BestBlendBytes(); ///< chosen ahead: asking the processor takes a while
    FrameLayout m_layout = {};
    InkFrameColors m_colors = {};
    std::array<ByteBlend, 4> m_bytes;     ///< of the planes, where elements are bytes
    std::array<SampleBlend, 4> m_samples; ///< of the components, where they are not
    // While something is built.
    NaturalMap::Weights m_weights;
    Shares m_single = {}; ///< of samples that belong to one pixel
    Shares m_means = {};  ///< of chroma samples that belong to several
    Shares m_row = {};    ///< of the pixels that such samples are of
    std::vector<std::uint8_t> m_listGroups;
};
