#pragma once

#include "render/glyphoutline.h"
#include "render/polygonfiller.h"
#include "render/textink.h"

#include <bitset>
#include <utility>
#include <vector>

/** Pixels beyond a mask that its outline may reach: a corner that is rounded otherwise adds one. */
constexpr int OutlineReach = OutlineRadius + 1;

/** How a glyph's pixels at a place and at those of the outline round it compare with each other and with a mask. */
struct GlyphFit {
    bool bMask = true; ///< at the place itself they are the mask's
    /** Where they are not those of the place itself: by the number of the outline's offset, and last where rows of the
     *  place itself are cut off by the frame. */
    std::bitset<OutlineOffsets.size() + 1> odd;
};

/**
 * Cached bitmap of one glyph at one subpixel position. Of a filled outline it is not valid at all positions of a frame:
 * rounding (see GlyphOutline) may change pixels.
 */
class GlyphShape
{
public:
    /**
     * @param outline   must outlive the shape and stay where it is.
     * @param fraction  the part of a pixel that the glyph is moved by, 0 to 63.
     */
    GlyphShape(const GlyphOutline &outline, FixedPoint fraction, PolygonFiller &filler);

    /** A glyph that QPainter copies from an image. */
    explicit GlyphShape(BitMask mask) : m_mask(std::move(mask)) {}

    /** Relative to the whole pixel that the glyph's position lies in. */
    const BitMask &Mask() const { return m_mask; }

    /** 1 or -1: the direction of its contours. 0: both, so that it may rub out what it overlaps. */
    int Direction() const { return m_nDirection; }

    /** @param x, y  a whole pixel of the frame. */
    GlyphFit FindFit(int x, int y, int frameHeight) const;

    /** The pixels of a filled outline at a place, whatever the rounding there, in whole pixels of the frame. */
    BitMask FillAt(int x, int y, PolygonFiller &filler) const;
    /** Those in the frame's rows. */
    BitMask FillAt(int x, int y, int frameHeight, PolygonFiller &filler) const;

private:
    using Corners = std::vector<GlyphOutline::Corner>;

    /** A curve whose pixels may depend on the rounding, and its corners as in Mask(). */
    struct DelicateCurve {
        int nCurve;
        Corners listCorners;
    };

    QPointF Origin(int x, int y) const;
    void FindDelicateCurves();

    const GlyphOutline *m_pOutline = nullptr; ///< null for an image
    FixedPoint m_fraction = {0, 0};
    BitMask m_mask;
    int m_nDirection = 1;
    std::vector<DelicateCurve> m_listDelicate;
};
