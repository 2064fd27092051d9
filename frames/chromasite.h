#pragma once

#include <array>

/** Pixels along an axis whose mean a chroma sample is. Their weights add up to Taps::Whole. */
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
     * @param pixels  of the frame along the axis.
     * @param log2  0 where each pixel has a sample of its own, else 1.
     * @param isByField  the axis goes down the lines of two fields.
     */
    ChromaAxis(int pixels, int log2, Site site, bool isByField) :
        m_nPixels(pixels), m_nLog2(log2), m_site(site), m_bByField(isByField && log2 > 0)
    {
    }

    int Samples() const { return (m_nPixels + (1 << m_nLog2) - 1) >> m_nLog2; }
    Taps At(int sample) const;
    /** Of pixels 2 n - 1 to 2 n + 2 in sample n, away from the axis' ends; not for fields. */
    std::array<int, 4> Weights() const;
    /** The sample that a pixel's own colour is in. */
    int SampleOf(int pixel) const;

    /** The range of samples, @p first to @p last, whose taps may be among pixels @p first to @p last. */
    void ToSamples(int &first, int &last) const;

private:
    int m_nPixels = 0;
    int m_nLog2 = 0;
    Site m_site = Site::Between;
    bool m_bByField = false;
};
