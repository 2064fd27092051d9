#pragma once

#include "render/glyphoutline.h"
#include "render/polygonfiller.h"
#include "render/textink.h"

#include <bitset>
#include <utility>
#include <vector>

/**
 * Pixels that the outline may reach beyond a glyph's mask: one more than its radius, as corners may be rounded
 * differently.
 */
constexpr int OutlineReach = OutlineRadius + 1;

/** Which pixels of a glyph at a position in a frame its cached mask provides. */
struct GlyphFit {
    bool bMaskFits = true; ///< the text's pixels at that position are those of the mask
    /**
     * Which draws do not have the text's pixels, moved by their offset, and must be filled anew: by index in
     * OutlineOffsets. The last bit is the text's own draw, which differs if the frame's first or last row clips it.
     */
    std::bitset<OutlineOffsets.size() + 1> uncacheable;
};

/**
 * Cached bitmap of one glyph at one subpixel position. For a glyph that is filled as a path it is not valid everywhere
 * in a frame, since rounding (see GlyphOutline) may change pixels; FindFit() says where it is.
 */
class GlyphShape
{
public:
    /**
     * @param outline   must outlive the shape and stay where it is.
     * @param fraction  the glyph's subpixel position, 0 to 63.
     */
    GlyphShape(const GlyphOutline &outline, FixedPoint fraction, PolygonFiller &filler);

    /** A glyph that QPainter copies from an image. */
    explicit GlyphShape(BitMask mask) : m_mask(std::move(mask)) {}

    /** Its coordinates are relative to the whole pixel that the glyph's position lies in. */
    const BitMask &Mask() const { return m_mask; }

    /**
     * Winding direction of the contours, 1 or -1; 0 if both occur, so that overlapping glyphs may cancel each other
     * out.
     */
    int Direction() const { return m_nDirection; }

    /** @param x, y  whole pixel of the frame that the glyph's position lies in. */
    GlyphFit FindFit(int x, int y, int frameHeight) const;

    /** Fills the outline anew with the rounding at a position. The result is in coordinates of the frame. */
    BitMask FillAt(int x, int y, PolygonFiller &filler) const;
    /** The same, clipped to the frame's rows as QPainter does. */
    BitMask FillAt(int x, int y, int frameHeight, PolygonFiller &filler) const;

private:
    using Corners = std::vector<GlyphOutline::Corner>;

    /** A curve whose pixels may change with the rounding, and its corners as Mask() was made of them. */
    struct RoundingSensitiveCurve {
        int nCurve;
        Corners listCorners;
    };

    QPointF Origin(int x, int y) const;
    void FindRoundingSensitiveCurves();

    const GlyphOutline *m_pOutline = nullptr; ///< null for an image
    FixedPoint m_fraction = {0, 0};
    BitMask m_mask;
    int m_nDirection = 1;
    std::vector<RoundingSensitiveCurve> m_listRoundingSensitive;
};
