#pragma once

#include "support/blendoracle.h"
#include "support/planeframe.h"

#include <cstdint>
#include <utility>
#include <vector>

/** The pixels of a picture: whether each is drawn, its colour and its weight. */
class PlainSubtitle
{
public:
    struct Pixel {
        bool bDrawn = false;
        int red = 0, green = 0, blue = 0;
        int k = 0; ///< weight, 0 to 255
    };

    explicit PlainSubtitle(const BlendInput &in);

    const Pixel &At(int x, int y) const { return m_listPixels[static_cast<std::size_t>(y) * m_nWidth + x]; }
    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    /** Whether any pixel is drawn. */
    bool Shows() const { return m_bShows; }
    /** Whether all drawn pixels have the weight 255. */
    bool IsOpaque() const { return m_bOpaque; }

private:
    int m_nWidth, m_nHeight;
    bool m_bShows = false;
    bool m_bOpaque = true;
    std::vector<Pixel> m_listPixels;
};

/** The expected value of a sample of a frame. */
struct PlainSample {
    bool bTouched;
    double value;
};

/**
 * Computes single samples of a frame with a subtitle, in doubles and literally by the definitions: for standard dynamic
 * range and every matrix that frames may have.
 */
class FrameOracle
{
public:
    /** @param frame  before the subtitle is burnt in @param description  with no member left unspecified */
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
    /** @param width, height  of the picture as shown @param subtitle  null if a derived class overrides its uses */
    FrameOracle(const PlaneFrame &frame, const SubtitleFrame &description, int width, int height,
                const PlainSubtitle *subtitle) :
        m_frame(frame), m_description(description), m_nWidth(width), m_nHeight(height), m_pSubtitle(subtitle)
    {
    }

    /** Whether the subtitle touches a pixel of the frame. */
    virtual bool Touches(int x, int y) const { return Covering(x, y).bDrawn; }
    /** A component of a pixel under the subtitle; the frame's chroma there is that of the sample chromaX, chromaY. */
    virtual double Drawn(int component, int x, int y, int chromaX, int chromaY) const;
    virtual double DrawnAlpha(int component, int x, int y) const;

    /** Converts a position in the frame as stored to column and row of the picture as shown. */
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
