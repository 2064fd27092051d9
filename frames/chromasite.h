#pragma once

#include <array>

/** The pixels along an axis whose weighted mean is a chroma sample. Their weights add up to Taps::Whole. */
struct Taps {
    static constexpr int Whole = 4;
    int nCount;
    std::array<int, 3> positions;
    std::array<int, 3> weights;
};

/** Where chroma samples lie along one axis of a frame. */
class ChromaAxis
{
public:
    enum class Site { First, Between, Second }; ///< on the first of its two pixels, midway, on the second

    ChromaAxis() = default;
    /**
     * @param pixels  number of pixels along the axis
     * @param log2  0 if each pixel has a sample of its own, 1 if two pixels share one
     * @param isByField  true for the rows of an interlaced frame, whose two fields are subsampled separately
     */
    ChromaAxis(int pixels, int log2, Site site, bool isByField) :
        m_nPixels(pixels), m_nLog2(log2), m_site(site), m_bByField(isByField && log2 > 0)
    {
    }

    int Samples() const { return (m_nPixels + (1 << m_nLog2) - 1) >> m_nLog2; }
    Taps At(int sample) const;
    /** Weights of pixels 2 n - 1 to 2 n + 2 in sample n, away from the ends of the axis. Not for interlaced rows. */
    std::array<int, 4> Weights() const;
    /** The sample that gives a pixel its chroma. */
    int SampleOf(int pixel) const;

    /** Turns a range of pixels, @p first to @p last, into the range of samples that may have taps in it. */
    void ToSamples(int &first, int &last) const;

private:
    int m_nPixels = 0;
    int m_nLog2 = 0;
    Site m_site = Site::Between;
    bool m_bByField = false;
};
