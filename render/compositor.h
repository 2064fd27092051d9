#pragma once

#include "render/blendkernel.h"
#include "render/blocklist.h"
#include "render/shownsubtitle.h"
#include "render/textink.h"

#include <QImage>
#include <QRect>

#include <cstddef>
#include <cstdint>
#include <vector>

/** Where an image is drawn in the frame, and its opacity. */
struct Placement {
    int nOffset;         ///< added to an image row to get the frame row; rows outside the frame are dropped
    std::uint8_t nAlpha; ///< opacity, which counts twice
};

/**
 * Blends a subtitle's visible pixels into frames. They are collected once for each subtitle, so that a frame costs time
 * for the visible pixels and not for the whole image.
 */
class Compositor
{
public:
    /**
     * Collects the visible pixels of an image: those that are neither transparent nor of the colour of its top left
     * pixel. Cheap if nothing changed since the last call.
     *
     * @param image          4 bytes a pixel, in memory order blue, green, red, alpha; its rows are taken to be
     *                       @p frameWidth pixels long. If it ends before the last row of @p rect, nothing is visible.
     * @param rect           the part of the image to show; clipped to the frame's size.
     * @param frameWidth, frameHeight  frame size in pixels.
     */
    void SetImage(const QImage &image, const QRect &rect, int frameWidth, int frameHeight);

    /** The same for the image of a text: two colours, 0xFFRRGGBB, on transparent black. */
    void SetText(const TextInk &ink, QRgb textColor, QRgb outlineColor, const QRect &rect, int frameWidth,
                 int frameHeight);

    /**
     * Blends the image or text that was set into a frame of the size given with it. Allocates nothing.
     * @param frame      3 bytes a pixel, red first; points at the top row.
     * @param linesize   bytes from one row to the next.
     */
    void Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement);

    /**
     * What Blend() would draw, without the frame's size. Valid until the next call on this object. Allocates nothing.
     */
    ShownSubtitle Shown(const Placement &placement);

private:
    void Clear(int frameWidth, int frameHeight);
    void FindBlocks(const QImage &image);
    /**
     * Appends the block that starts at a column of a row and ends before column @p end; false if its first pixel is not
     * visible.
     */
    bool AppendBlock(int row, int column, const std::uint8_t *pixels, int end, std::uint32_t key);
    /** Also fetches the pixels below the blocks into the caches. */
    void FindInkBlocks(const BlendTarget &target);
    void PrepareWeights(int opacity);

    const BlendKernel *m_pKernel = &BestKernel(); ///< chosen once: detecting the processor takes a while
    qint64 m_nImageKey = 0;
    QRect m_rect;
    int m_nFrameWidth = 0;
    int m_nFrameHeight = 0;
    InkColors m_inkColors = {};
    InkBits m_ink = {}; ///< of text
    std::vector<std::uint64_t> m_listText, m_listShown;
    BlockList<InkBlock> m_inkBlocks; ///< sorted by row, as m_listPicture is
    bool m_bInkBlocks = false;       ///< m_inkBlocks is made of m_ink; only Blend() needs that
    std::vector<PictureBlock> m_listPicture;
    std::vector<std::uint8_t> m_listAlphas; ///< BlockPixels for each block of m_listPicture; 0 is not shown
    int m_nPreparedOpacity = -1;            ///< opacity that the weights of m_listPicture are for
    std::uint64_t m_nVersion = 0;
    Placement m_shownPlacement = {0, 0}; ///< placement that m_nVersion is for
};
