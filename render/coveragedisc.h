#pragma once

#include "render/bytemask.h"

#include <cstdint>
#include <vector>

/**
 * Computes the coverage of a text's outline, which reaches a radius beyond the text's edge. The edge runs through the
 * partly covered pixels: around one of coverage c, the outline covers a pixel at distance d by c + radius - d, clamped
 * to 0 to 1.
 */
class CoverageDisc
{
public:
    /**
     * @param radius       in pixel heights; 0 or less makes no outline.
     * @param pixelAspect  pixel width divided by pixel height, above 0: distances are measured in the picture as shown.
     */
    explicit CoverageDisc(double radius, double pixelAspect = 1);

    /** The outline of @p text: for each pixel, the greatest coverage that any covered pixel of the text gives it. */
    ByteMask Spread(const ByteMask &text) const;

private:
    /** The right half of a row of the disc. */
    struct Row {
        int nWhole = -1;          ///< last column in which any covered pixel of the text gives 255; -1 if there is none
        std::vector<int> listRim; ///< for the columns after that: 255 * (radius - distance)
    };

    int m_nReach = 0;            ///< rows from the centre to the last that is reached
    int m_nReachAcross = 0;      ///< the same in columns
    std::vector<Row> m_listRows; ///< the middle row and those below
};
