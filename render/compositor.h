#pragma once

#include <QImage>
#include <QRect>
#include <cstddef>
#include <cstdint>
#include <vector>

/** Where the rows of an image go, and how strongly. */
struct Placement {
    int nOffset;         ///< added to an image row to get the frame row; rows outside the frame are dropped
    std::uint8_t nAlpha; ///< opacity, which weighs in twice
};

/**
 * Blends the visible pixels of a subtitle image into frames. They are looked up once an image, so that a frame costs
 * what is seen and not what the image measures.
 */
class Compositor
{
public:
    /**
     * Looks up the visible pixels: neither transparent nor of the colour of the image's top left pixel. Cheap when
     * nothing changed since the last call.
     *
     * @param image          4 bytes a pixel, in memory order blue, green, red, alpha; its rows are taken to be
     *                       @p frameWidth pixels long. Without the rows that @p rect needs it has no visible pixel.
     * @param rect           the part of the image to show; clipped to the frame's size.
     * @param frameWidth, frameHeight  frame size in pixels.
     */
    void SetImage(const QImage &image, const QRect &rect, int frameWidth, int frameHeight);

    /**
     * Blends the image into a frame of the size given to SetImage(). Does not allocate.
     * @param frame      3 bytes a pixel, red first; points at the top row.
     * @param linesize   bytes from one row to the next.
     */
    void Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement) const;

private:
    /** Neighbouring visible pixels of one row. */
    struct Run {
        int nRow;
        int nColumn;
        int nLength;
        bool bOpaque;
        std::size_t nFirst; ///< place of its first pixel in m_listColor and m_listAlpha
    };

    void FindRuns(const QImage &image);
    void AppendPixel(int row, int column, const std::uint8_t *pixel);

    qint64 m_nImageKey = 0;
    QRect m_rect;
    int m_nFrameWidth = 0;
    int m_nFrameHeight = 0;
    std::vector<Run> m_listRuns;
    std::vector<std::uint8_t> m_listColor; ///< 3 bytes a pixel, in the frame's order
    std::vector<std::uint8_t> m_listAlpha;
};
