#include "render/coveragedisc.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{

void RaiseToCovered(std::uint8_t *to, const std::uint8_t *from, int count)
{
    for (int i = 0; i < count; ++i)
        to[i] = from[i] > 0 ? 255 : to[i];
}

/** Raises @p to to from + more, clamped to 0 to 255, where @p from is covered. @param more  -254 to 254 */
void RaiseToSum(std::uint8_t *to, const std::uint8_t *from, int count, int more)
{
    // Bytes only, so that vectors hold more pixels.
    const auto change = static_cast<std::uint8_t>(std::abs(more));
    if (more < 0) {
        for (int i = 0; i < count; ++i) {
            const auto sum = static_cast<std::uint8_t>(from[i] - std::min(from[i], change));
            to[i] = std::max(to[i], sum);
        }
        return;
    }
    for (int i = 0; i < count; ++i) {
        const auto room = static_cast<std::uint8_t>(255 - from[i]);
        const auto sum = static_cast<std::uint8_t>(from[i] + std::min(room, change));
        to[i] = std::max(to[i], from[i] > 0 ? sum : std::uint8_t{0});
    }
}

} // namespace

CoverageDisc::CoverageDisc(double radius, double pixelAspect)
{
    if (!(radius > 0))
        return;
    m_nReach = static_cast<int>(std::ceil(radius + 1)) - 1;
    m_nReachAcross = static_cast<int>(std::ceil((radius + 1) / pixelAspect)) - 1;
    for (int dy = 0; dy <= m_nReach; ++dy) {
        Row row;
        for (int dx = 0; dx <= m_nReachAcross; ++dx) {
            const auto more = static_cast<int>(std::lround(255 * (radius - std::hypot(dx * pixelAspect, dy))));
            if (more >= 255)
                row.nWhole = dx;
            else if (more > -255)
                row.listRim.push_back(more);
        }
        m_listRows.push_back(std::move(row));
    }
}

ByteMask CoverageDisc::Spread(const ByteMask &text) const
{
    if (m_listRows.empty() || text.nRows == 0 || text.nColumns == 0)
        return {};
    const int width = PaddedColumns(text.nColumns + 2 * m_nReachAcross);
    ByteMask outline =
        MakeByteMask(text.nLeft - m_nReachAcross, text.nTop - m_nReach, width, text.nRows + 2 * m_nReach);
    const auto padding = static_cast<std::ptrdiff_t>(m_nReachAcross);
    std::vector<std::uint8_t> padded(width + 2 * padding); // a row of the text between columns of zeros
    std::vector<std::uint8_t> line(width);                 // what that row adds to the outline dy rows away
    using Line = std::vector<std::uint8_t>;
    // Of each pixel: the greater of the two pixels dx columns to its left and right.
    std::vector<Line> pairs(m_nReachAcross + 1, line);
    // Of each pixel: 255 if any pixel is covered from dx columns to its left to dx columns to its right.
    std::vector<Line> near(m_listRows.front().nWhole + 1, line);
    for (int y = 0; y < text.nRows; ++y) {
        std::copy_n(text.Row(y), text.nColumns, padded.begin() + 2 * padding);
        const std::uint8_t *middle = padded.data() + padding;
        for (int dx = 0; dx <= m_nReachAcross; ++dx) {
            std::copy_n(middle - dx, width, pairs[dx].data());
            RaiseTo(pairs[dx].data(), middle + dx, width);
        }
        for (std::size_t dx = 0; dx < near.size(); ++dx) {
            if (dx > 0)
                near[dx] = near[dx - 1];
            else
                std::fill(near[dx].begin(), near[dx].end(), 0);
            RaiseToCovered(near[dx].data(), pairs[dx].data(), width);
        }
        for (int dy = 0; dy <= m_nReach; ++dy) {
            const Row &row = m_listRows[dy];
            if (row.nWhole >= 0)
                line = near[row.nWhole];
            else
                std::fill(line.begin(), line.end(), 0);
            int dx = row.nWhole + 1;
            for (const int more : row.listRim)
                RaiseToSum(line.data(), pairs[dx++].data(), width, more);
            RaiseTo(outline.Row(y + m_nReach + dy), line.data(), width);
            if (dy > 0)
                RaiseTo(outline.Row(y + m_nReach - dy), line.data(), width);
        }
    }
    return outline;
}
