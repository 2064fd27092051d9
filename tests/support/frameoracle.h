#pragma once

#include "support/blendoracle.h"
#include "support/planeframe.h"

#include <cstdint>
#include <utility>
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
        FrameOracle(frame, description, subtitle.Width(), subtitle.Height(), &subtitle)
    {
    }
    virtual ~FrameOracle() = default;

    PlainSample Sample(int component, int x, int y) const;

protected:
    struct Rgb {
        double red, green, blue;
    };
    /** @param width, height  of the picture as shown @param subtitle  for this class's own definitions; else null */
    FrameOracle(const PlaneFrame &frame, const SubtitleFrame &description, int width, int height,
                const PlainSubtitle *subtitle) :
        m_frame(frame), m_description(description), m_nWidth(width), m_nHeight(height), m_pSubtitle(subtitle)
    {
    }

    /** Whether the subtitle touches a pixel of the frame. */
    virtual bool Touches(int x, int y) const { return Covering(x, y).bDrawn; }
    /** A component of a pixel with the subtitle on it, where the chroma of what is below is that of one sample. */
    virtual double Drawn(int component, int x, int y, int chromaX, int chromaY) const;
    virtual double DrawnAlpha(int component, int x, int y) const;

    /** Where a place of the frame as it is stored is in the picture as shown: column and row. */
    std::pair<int, int> Place(int x, int y) const;
    double CodeOf(const Rgb &rgb, int component) const;
    const PlaneFrame &Frame() const { return m_frame; }

private:
    struct Yuv {
        double y, u, v;
    };
    PlainSubtitle::Pixel Covering(int x, int y) const
    {
        const auto [column, row] = Place(x, y);
        return m_pSubtitle->At(column, row);
    }
    bool IsRgb() const { return m_frame.Description().flags & AV_PIX_FMT_FLAG_RGB; }
    bool IsGrey() const { return m_frame.Description().nb_components < 3; }
    Yuv ToYuv(const Rgb &rgb) const;
    Rgb ToRgb(const Yuv &yuv) const;
    double ToCode(double value, int component) const;
    double FromCode(double code, int component) const;
    int ChromaRowOf(int y) const;
    PlainSample Chroma(int component, int x, int y) const;

    const PlaneFrame &m_frame;
    SubtitleFrame m_description;
    int m_nWidth, m_nHeight;
    const PlainSubtitle *m_pSubtitle;
};
