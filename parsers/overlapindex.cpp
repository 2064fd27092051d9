#include "parsers/overlapindex.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace
{

/** Most children of a node. */
constexpr std::size_t Neighbours = 16;

} // namespace

OverlapIndex::OverlapIndex(std::vector<CueIndex::Span> spans)
{
    constexpr CueIndex::Span Never = {std::numeric_limits<std::int64_t>::max(),
                                      std::numeric_limits<std::int64_t>::min()};
    for (CueIndex::Span &span : spans) {
        if (span.nFirst > span.nLast)
            span = Never;
    }
    m_listLevels.push_back(std::move(spans));
    while (m_listLevels.back().size() > 1) {
        const std::vector<CueIndex::Span> &below = m_listLevels.back();
        std::vector<CueIndex::Span> nodes((below.size() + Neighbours - 1) / Neighbours, Never);
        for (std::size_t i = 0; i < below.size(); ++i) {
            CueIndex::Span &node = nodes[i / Neighbours];
            node.nFirst = std::min(node.nFirst, below[i].nFirst);
            node.nLast = std::max(node.nLast, below[i].nLast);
        }
        m_listLevels.push_back(std::move(nodes));
    }
}

CueIndex::Span OverlapIndex::Find(std::int64_t ms, std::size_t limit, std::vector<int> &found) const
{
    found.clear();
    CueIndex::Span same = {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    if (!m_listLevels.empty() && !m_listLevels.back().empty())
        Collect(m_listLevels.size() - 1, 0, ms, limit, found, same);
    return same;
}

// NOLINTNEXTLINE(misc-no-recursion): once per level; MaxCues cues make 7 levels
void OverlapIndex::Collect(std::size_t level, std::size_t at, std::int64_t ms, std::size_t limit,
                           std::vector<int> &found, CueIndex::Span &same) const
{
    if (found.size() >= limit)
        return;
    const CueIndex::Span &span = m_listLevels[level][at];
    if (ms < span.nFirst) {
        same.nLast = std::min(same.nLast, span.nFirst - 1);
        return;
    }
    if (ms > span.nLast) {
        same.nFirst = std::max(same.nFirst, span.nLast + 1);
        return;
    }
    if (level == 0) {
        same = {std::max(same.nFirst, span.nFirst), std::min(same.nLast, span.nLast)};
        found.push_back(static_cast<int>(at));
        return;
    }
    const std::size_t end = std::min((at + 1) * Neighbours, m_listLevels[level - 1].size());
    for (std::size_t child = at * Neighbours; child < end; ++child)
        Collect(level - 1, child, ms, limit, found, same);
}
