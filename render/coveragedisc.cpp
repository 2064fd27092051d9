#include "render/coveragedisc.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{

void RaiseTo(std::uint8_t *to, const std::uint8_t *from, int count)
{
    for (int i = 0; i < count; ++i)
        to[i] = std::max(to[i], from[i]);
}

/** @param covered  255 where @p from is above 0 @param more  -254 to 254 */
void RaiseToSum(std::uint8_t *to, const std::uint8_t *from, const std::uint8_t *covered, int count, int more)
{
    // Bytes alone, so that vectors hold more.
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
        const auto sum = static_cast<std::uint8_t>((from[i] + std::min(room, change)) & covered[i]);
        to[i] = std::max(to[i], sum);
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
    const int width = text.nColumns + 2 * m_nReachAcross;
    ByteMask outline =
        MakeByteMask(text.nLeft - m_nReachAcross, text.nTop - m_nReach, width, text.nRows + 2 * m_nReach);
    // A row with nothing round it, where it is covered, and what has a covered pixel up to each distance.
    const std::size_t padding = 2 * static_cast<std::size_t>(m_nReachAcross);
    std::vector<std::uint8_t> padded(width + padding);
    std::vector<std::uint8_t> covered(width + padding);
    std::vector<std::vector<std::uint8_t>> near(m_listRows.front().nWhole + 1, std::vector<std::uint8_t>(width));
    for (int y = 0; y < text.nRows; ++y) {
        std::copy_n(text.Row(y), text.nColumns, padded.begin() + static_cast<std::ptrdiff_t>(padding));
        std::transform(padded.begin(), padded.end(), covered.begin(), [](std::uint8_t c) { return c > 0 ? 255 : 0; });
        const std::uint8_t *middle = padded.data() + m_nReachAcross;
        const std::uint8_t *coveredMiddle = covered.data() + m_nReachAcross;
        for (std::size_t dx = 0; dx < near.size(); ++dx) {
            std::copy_n(dx == 0 ? coveredMiddle : near[dx - 1].data(), width, near[dx].data());
            RaiseTo(near[dx].data(), coveredMiddle - dx, width);
            RaiseTo(near[dx].data(), coveredMiddle + dx, width);
        }
        for (int dy = -m_nReach; dy <= m_nReach; ++dy) {
            const Row &row = m_listRows[std::abs(dy)];
            std::uint8_t *to = outline.Row(y + dy + m_nReach);
            if (row.nWhole >= 0)
                RaiseTo(to, near[row.nWhole].data(), width);
            int dx = row.nWhole + 1;
            for (const int more : row.listRim) {
                RaiseToSum(to, middle - dx, coveredMiddle - dx, width, more);
                RaiseToSum(to, middle + dx, coveredMiddle + dx, width, more);
                ++dx;
            }
        }
    }
    return outline;
}
