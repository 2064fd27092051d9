#pragma once

#include "render/bytemask.h"

#include <cstdint>
#include <vector>

/**
 * Spreads a text's coverage to that of its outline, which reaches a radius beyond the text's edge. A pixel that is covered
 * in part has the edge inside, so the outline reaches that much further or less far: of a pixel at distance d the outline
 * covers the coverage + radius - d, at least 0 and at most 1.
 */
class CoverageDisc
{
public:
    /**
     * @param radius       in heights of a pixel; 0 or less makes no outline.
     * @param pixelAspect  width of a pixel by its height, above 0: distances are those of the picture as it is shown.
     */
    explicit CoverageDisc(double radius, double pixelAspect = 1);

    /** For each pixel the most that any covered pixel of the text makes of it. */
    ByteMask Spread(const ByteMask &text) const;

private:
    /** A row of the disc, from its middle on. */
    struct Row {
        int nWhole = -1;          ///< the last column that is covered whole by any pixel; -1 when there is none
        std::vector<int> listRim; ///< of the columns after that, radius - distance in 255ths
    };

    int m_nReach = 0;            ///< rows from the centre to the last that is covered
    int m_nReachAcross = 0;      ///< columns
    std::vector<Row> m_listRows; ///< from the middle one on
};
