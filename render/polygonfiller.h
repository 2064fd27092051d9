#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/** In 1/64 of a pixel. */
struct FixedPoint {
    int nX;
    int nY;
};

inline bool operator==(const FixedPoint &a, const FixedPoint &b)
{
    return a.nX == b.nX && a.nY == b.nY;
}

/** One bit a pixel. Column 0 of a row is bit 0 of its first word. */
struct BitMask {
    int nLeft = 0; ///< of column 0, in the coordinates of whoever uses it
    int nTop = 0;
    int nColumns = 0;
    int nWords = 0; ///< a row
    int nRows = 0;
    std::vector<std::uint64_t> listWords;

    const std::uint64_t *Row(int row) const { return listWords.data() + static_cast<std::size_t>(row) * nWords; }
    std::uint64_t *Row(int row) { return listWords.data() + static_cast<std::size_t>(row) * nWords; }
};

/**
 * A side of a polygon as the pixel rows see it whose centres it crosses. Positions are in 1/65,536 of a pixel and are
 * rounded as QPainter rounds them where it fills a path without antialiasing, so that the pixels are the same.
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
 * @param firstRow, lastRow  rows beyond these are left out.
 * @return false when the side crosses no row.
 */
bool MakeEdge(FixedPoint from, FixedPoint to, int firstRow, int lastRow, PolygonEdge &edge);

/** Which pixels lie inside of polygons, by the nonzero winding rule. */
class PolygonFiller
{
public:
    void Add(const PolygonEdge &edge) { m_listEdges.push_back(edge); }

    /** Fills what was added since the last call. */
    BitMask Fill();

    /** Whether the last fill's windings had one sign: filling polygons one by one gives their common pixels then. */
    bool IsOneSided() const { return m_nLeast >= 0 || m_nGreatest <= 0; }
    bool IsPositive() const { return m_nGreatest > 0; }

private:
    void FillRow(BitMask &mask, int row);

    std::vector<PolygonEdge> m_listEdges;
    std::vector<std::int16_t> m_listWindings; ///< of the edges at each column; 0 between two fills
    std::vector<std::uint64_t> m_listTouched;
    int m_nLeast = 0;
    int m_nGreatest = 0;
};
