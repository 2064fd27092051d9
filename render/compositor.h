#pragma once

#include "render/textink.h"

#include <QImage>
#include <QRect>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/** Where the rows of an image go, and how strongly. */
struct Placement {
    int nOffset;         ///< added to an image row to get the frame row; rows outside the frame are dropped
    std::uint8_t nAlpha; ///< opacity, which weighs in twice
};

/**
 * Blends the visible pixels of a subtitle into frames. They are looked up once a subtitle, so that a frame costs what is
 * seen and not what the image measures.
 */
class Compositor
{
public:
    /**
     * Looks up the visible pixels of an image: neither transparent nor of the colour of its top left pixel. Cheap when
     * nothing changed since the last call.
     *
     * @param image          4 bytes a pixel, in memory order blue, green, red, alpha; its rows are taken to be
     *                       @p frameWidth pixels long. Without the rows that @p rect needs it has no visible pixel.
     * @param rect           the part of the image to show; clipped to the frame's size.
     * @param frameWidth, frameHeight  frame size in pixels.
     */
    void SetImage(const QImage &image, const QRect &rect, int frameWidth, int frameHeight);

    /** The same for the image that text makes: of two colours, 0xFFRRGGBB, on transparent black. */
    void SetText(const TextInk &ink, QRgb textColor, QRgb outlineColor, const QRect &rect, int frameWidth,
                 int frameHeight);

    /**
     * Blends what was set into a frame of the size that came with it. Allocates for a new subtitle or opacity only.
     * @param frame      3 bytes a pixel, red first; points at the top row.
     * @param linesize   bytes from one row to the next.
     */
    void Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement);

private:
    /** Neighbouring visible pixels of one row. */
    struct Run {
        int nRow;
        int nColumn;
        int nLength;
        bool bOpaque;
        std::size_t nFirstColor; ///< in m_listColors
        std::size_t nFirstAlpha; ///< in m_listAlphas, for runs that are not opaque
    };
    /** Neighbours of a run that is not opaque, as far as they show at some opacity. */
    struct MixedRun {
        int nRow;
        int nColumn;
        int nLength;
        std::size_t nFirstColor;
        std::size_t nFirstWeight; ///< in m_listWeights
    };

    void Clear(int frameWidth, int frameHeight);
    void FindRuns(const QImage &image);
    void AppendPixel(int row, int column, const std::uint8_t *pixel);
    void AppendTextRow(int row, const BitMask &text, const std::vector<std::uint64_t> &shown,
                       const std::array<std::uint32_t, 2> &colors);
    void PrepareMixedRuns(int opacity);
    void AppendMixedRuns(const Run &run, const std::array<int, 256> &weights);

    qint64 m_nImageKey = 0;
    QRect m_rect;
    int m_nFrameWidth = 0;
    int m_nFrameHeight = 0;
    std::vector<Run> m_listRuns;
    std::vector<std::uint8_t> m_listColors; ///< 3 bytes a pixel, in the frame's order
    std::vector<std::uint8_t> m_listAlphas;

    int m_nPreparedOpacity = -1;
    std::vector<MixedRun> m_listMixedRuns;
    std::vector<std::uint8_t> m_listWeights; ///< 3 bytes a pixel
};
