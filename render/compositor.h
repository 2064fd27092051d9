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
     * Blends what was set into a frame of the size that came with it. Allocates nothing.
     * @param frame      3 bytes a pixel, red first; points at the top row.
     * @param linesize   bytes from one row to the next.
     */
    void Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement);

    /** What was set, as a frame gets it, without the frame's size; valid until anything is set or shown anew. Allocates
     *  nothing. */
    ShownSubtitle Shown(const Placement &placement);

private:
    void Clear(int frameWidth, int frameHeight);
    void FindBlocks(const QImage &image);
    /** Appends the block that starts at a column of a row up to @p end; false where that pixel does not show. */
    bool AppendBlock(int row, int column, const std::uint8_t *pixels, int end, std::uint32_t key);
    void FindInkBlocks();
    void PrepareWeights(int opacity);

    const BlendKernel *m_pKernel = &BestKernel(); ///< chosen ahead: asking the processor takes a while
    qint64 m_nImageKey = 0;
    QRect m_rect;
    int m_nFrameWidth = 0;
    int m_nFrameHeight = 0;
    InkColors m_inkColors = {};
    InkBits m_ink = {}; ///< of text
    std::vector<std::uint64_t> m_listText, m_listShown;
    BlockList<InkBlock> m_inkBlocks; ///< from the top to the bottom, as the picture's are
    bool m_bInkBlocks = false;       ///< they are those of m_ink; only frames of 3 bytes a pixel need them
    std::vector<PictureBlock> m_listPicture;
    std::vector<std::uint8_t> m_listAlphas; ///< of the picture's blocks, BlockPixels each; 0 for what does not show
    int m_nPreparedOpacity = -1;            ///< that the picture's weights are for
    std::uint64_t m_nVersion = 0;
    Placement m_shownPlacement = {0, 0}; ///< that m_nVersion is for
};
