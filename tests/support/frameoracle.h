#pragma once

#include "support/blendoracle.h"
#include "support/planeframe.h"

#include <cstdint>
#include <vector>

/** A picture's pixels, each drawn or not, with its colour and weight. */
class PlainSubtitle
{
public:
    struct Pixel {
        bool bDrawn = false;
        int red = 0, green = 0, blue = 0;
        int k = 0;
    };

    explicit PlainSubtitle(const BlendInput &in);

    const Pixel &At(int x, int y) const { return m_listPixels[static_cast<std::size_t>(y) * m_nWidth + x]; }
    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    /** Some pixel is drawn. */
    bool Shows() const { return m_bShows; }
    /** No pixel has less than the whole weight. */
    bool IsOpaque() const { return m_bOpaque; }

private:
    int m_nWidth, m_nHeight;
    bool m_bShows = false;
    bool m_bOpaque = true;
    std::vector<Pixel> m_listPixels;
};

/** What a sample of a frame becomes. */
struct PlainSample {
    bool bTouched;
    double value;
};

/**
 * Computes single samples of a frame with a subtitle, in doubles and as the definitions stand: for standard dynamic
 * range, and every matrix that frames may have.
 */
class FrameOracle
{
public:
    /** @param frame  with random samples, as it was @param description  without anything left open */
    FrameOracle(const PlaneFrame &frame, const SubtitleFrame &description, const PlainSubtitle &subtitle) :
        m_frame(frame), m_description(description), m_subtitle(subtitle)
    {
    }

    PlainSample Sample(int component, int x, int y) const;

private:
    struct Rgb {
        double red, green, blue;
    };
    struct Yuv {
        double y, u, v;
    };
    PlainSubtitle::Pixel Covering(int x, int y) const;
    bool IsRgb() const { return m_frame.Description().flags & AV_PIX_FMT_FLAG_RGB; }
    bool IsGrey() const { return m_frame.Description().nb_components < 3; }
    Yuv ToYuv(const Rgb &rgb) const;
    Rgb ToRgb(const Yuv &yuv) const;
    double ToCode(double value, int component) const;
    double FromCode(double code, int component) const;
    int ChromaRowOf(int y) const;
    double Drawn(const PlainSubtitle::Pixel &pixel, int component, int x, int y, int chromaX, int chromaY) const;
    PlainSample Chroma(int component, int x, int y) const;

    const PlaneFrame &m_frame;
    SubtitleFrame m_description;
    const PlainSubtitle &m_subtitle;
};
