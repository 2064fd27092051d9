#pragma once

#include "render/glyphoutline.h"
#include "render/polygonfiller.h"

#include <vector>

/**
 * A glyph's pixels at some part of a pixel, filled once and good for every place whose rounding (see GlyphOutline) does
 * not change them.
 */
class GlyphShape
{
public:
    /**
     * @param outline  must outlive the shape and stay where it is.
     * @param place    where the glyph is needed first; also tells the part of a pixel.
     */
    GlyphShape(const GlyphOutline &outline, FixedPoint place, PolygonFiller &filler);

    /** Relative to the whole pixel that the glyph's position lies in. */
    const BitMask &Mask() const { return m_mask; }

    /** 1 or -1: the direction of its contours. 0: both, so that it may rub out what it overlaps. */
    int Direction() const { return m_nDirection; }

    /** Whether the pixels are those of Mask() at a pixel and at all places of the outline round it. */
    bool IsSameAround(int x, int y) const;

    /** The pixels at a place, whatever the rounding there, in whole pixels of the frame. */
    BitMask FillAt(int x, int y, int lastRow, PolygonFiller &filler) const;

private:
    /** A curve whose pixels may depend on the rounding, and its corners as in Mask(), with both ends. */
    struct DelicateCurve {
        int nCurve;
        std::vector<FixedPoint> listCorners;
    };

    bool IsSameAround(const DelicateCurve &curve, int x, int y) const;

    QPointF Origin(int x, int y) const;
    void FindDelicateCurves(const GlyphOutline::Polygons &polygons);
    std::vector<FixedPoint> RelativeCorners(int curve, int x, int y) const;

    const GlyphOutline *m_pOutline;
    FixedPoint m_fraction;
    BitMask m_mask;
    int m_nDirection = 1;
    std::vector<DelicateCurve> m_listDelicate;
};
