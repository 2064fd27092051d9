#include "render/polygonfiller.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr int HalfPixel = 32; // in 64ths, as in FixedPoint
constexpr int One = 65536;    // pixel, in 16.16 fixed point

/** Sets the bits of the half-open column range [from, to). */
void SetBits(std::uint64_t *words, int from, int to)
{
    const std::uint64_t head = ~std::uint64_t{0} << (from % 64);
    const std::uint64_t tail = ~(~std::uint64_t{0} << (to % 64));
    const int first = from / 64;
    const int last = to / 64;
    if (first == last) {
        words[first] |= head & tail;
        return;
    }
    words[first] |= head;
    std::fill(words + first + 1, words + last, ~std::uint64_t{0});
    if (tail) // cppcheck-suppress knownConditionTrueFalse; it is 0 if @p to is a multiple of 64
        words[last] |= tail;
}

} // namespace

bool MakeEdge(FixedPoint from, FixedPoint to, int firstRow, int lastRow, PolygonEdge &edge)
{
    edge.nWinding = 1;
    if (from.nY > to.nY) {
        std::swap(from, to);
        edge.nWinding = -1;
    }
    edge.nTop = std::max(firstRow, (from.nY + HalfPixel) >> 6);
    edge.nBottom = std::min(lastRow, (to.nY - HalfPixel) >> 6);
    if (edge.nTop > edge.nBottom)
        return false;
    edge.nX = One / 2 + from.nX * (One / 64);
    edge.nStep = 0;
    if (from.nX != to.nX) {
        const double slope = (to.nX - from.nX) / static_cast<double>(to.nY - from.nY);
        edge.nStep = static_cast<int>(slope * One);
        const std::int64_t rise =
            static_cast<std::int64_t>(edge.nTop) * One + One / 2 - static_cast<std::int64_t>(from.nY) * (One / 64);
        edge.nX += static_cast<int>((edge.nStep * rise) >> 16);
    }
    return true;
}

BitMask PolygonFiller::Fill()
{
    m_nLeast = m_nGreatest = 0;
    BitMask mask;
    if (m_listEdges.empty())
        return mask;
    int left = m_listEdges[0].Column(m_listEdges[0].nTop);
    int right = left;
    mask.nTop = m_listEdges[0].nTop;
    int bottom = mask.nTop;
    for (const PolygonEdge &edge : m_listEdges) {
        mask.nTop = std::min(mask.nTop, edge.nTop);
        bottom = std::max(bottom, edge.nBottom);
        const int first = edge.Column(edge.nTop);
        const int last = edge.Column(edge.nBottom);
        left = std::min({left, first, last});
        right = std::max({right, first, last});
    }
    mask.nLeft = left;
    mask.nColumns = right - left;
    mask.nWords = mask.nColumns / 64 + 1;
    mask.nRows = bottom - mask.nTop + 1;
    mask.listWords.assign(static_cast<std::size_t>(mask.nWords) * mask.nRows, 0);

    const int columns = mask.nWords * 64;
    m_listWindings.resize(std::max(m_listWindings.size(), static_cast<std::size_t>(columns) * mask.nRows));
    m_listTouched.assign(mask.listWords.size(), 0);
    for (const PolygonEdge &edge : m_listEdges) {
        int x = edge.nX - mask.nLeft * One;
        for (int row = edge.nTop - mask.nTop; row <= edge.nBottom - mask.nTop; ++row, x += edge.nStep) {
            const std::size_t place = static_cast<std::size_t>(row) * columns + (x >> 16);
            m_listWindings[place] = static_cast<std::int16_t>(m_listWindings[place] + edge.nWinding);
            m_listTouched[place / 64] |= std::uint64_t{1} << (place % 64);
        }
    }
    for (int row = 0; row < mask.nRows; ++row)
        FillRow(mask, row);
    m_listEdges.clear();
    return mask;
}

void PolygonFiller::FillRow(BitMask &mask, int row)
{
    std::int16_t *windings = m_listWindings.data() + static_cast<std::size_t>(row) * mask.nWords * 64;
    const std::uint64_t *touched = m_listTouched.data() + static_cast<std::size_t>(row) * mask.nWords;
    int winding = 0;
    int from = 0;
    for (int word = 0; word < mask.nWords; ++word) {
        for (std::uint64_t bits = touched[word]; bits; bits &= bits - 1) {
            const int column = word * 64 + __builtin_ctzll(bits);
            if (winding)
                SetBits(mask.Row(row), from, column);
            from = column;
            winding += windings[column];
            windings[column] = 0;
            m_nLeast = std::min(m_nLeast, winding);
            m_nGreatest = std::max(m_nGreatest, winding);
        }
    }
}
