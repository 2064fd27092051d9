#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/** A point in 1/64 of a pixel. */
struct FixedPoint {
    int nX;
    int nY;
};

inline bool operator==(const FixedPoint &a, const FixedPoint &b)
{
    return a.nX == b.nX && a.nY == b.nY;
}

/** One bit a pixel; column 0 of a row is bit 0 of its first word. */
struct BitMask {
    int nLeft = 0; ///< of column 0, in the user's coordinates
    int nTop = 0;
    int nColumns = 0;
    int nWords = 0; ///< words a row
    int nRows = 0;
    std::vector<std::uint64_t> listWords;

    const std::uint64_t *Row(int row) const { return listWords.data() + static_cast<std::size_t>(row) * nWords; }
    std::uint64_t *Row(int row) { return listWords.data() + static_cast<std::size_t>(row) * nWords; }
};

/**
 * Scan-conversion state of one polygon edge: the rows whose pixel centres it crosses, and its x position in 16.16 fixed
 * point. Positions are rounded as QPainter rounds them when it fills a path without antialiasing, so that the pixels
 * are the same.
 */
struct PolygonEdge {
    int nTop;
    int nBottom; ///< the last row
    int nX;      ///< in the top row
    int nStep;   ///< from row to row
    int nWinding;

    /** The first column whose centre is not left of the edge. */
    int Column(int row) const { return (nX + (row - nTop) * nStep) >> 16; }
};

/**
 * @param firstRow, lastRow  the rows that the edge is clipped to, both included.
 * @return false if the edge crosses none of their centres.
 */
[[nodiscard]] bool MakeEdge(FixedPoint from, FixedPoint to, int firstRow, int lastRow, PolygonEdge &edge);

/** Fills polygons by the nonzero winding rule. */
class PolygonFiller
{
public:
    void Add(const PolygonEdge &edge) { m_listEdges.push_back(edge); }

    /** Fills the polygons of all edges added since the last call. */
    BitMask Fill();

    /**
     * Whether all winding numbers of the last fill had one sign. Filling its polygons one by one then sets the same
     * pixels.
     */
    bool IsOneSided() const { return m_nLeast >= 0 || m_nGreatest <= 0; }
    /** Whether the last fill had a positive winding number. */
    bool IsPositive() const { return m_nGreatest > 0; }

private:
    void FillRow(BitMask &mask, int row);

    std::vector<PolygonEdge> m_listEdges;
    std::vector<std::int16_t> m_listWindings; ///< change of the winding number at each pixel; all 0 between two fills
    std::vector<std::uint64_t> m_listTouched; ///< bit mask of the pixels where m_listWindings was changed
    int m_nLeast = 0;
    int m_nGreatest = 0;
};
