#pragma once

#include "parsers/cueindex.h"

#include <cstdint>
#include <vector>

/** Finds all cues that are due at a time; CueIndex finds only the first. */
class OverlapIndex
{
public:
    OverlapIndex() = default;
    /** @param spans  when the cues of a list are due, in list order. */
    explicit OverlapIndex(std::vector<CueIndex::Span> spans);

    /**
     * Sets @p found to the positions of the first @p limit cues that are due at @p ms, in list order.
     * @return a span around @p ms in which the same cues are due.
     */
    CueIndex::Span Find(std::int64_t ms, std::size_t limit, std::vector<int> &found) const;

private:
    void Collect(std::size_t level, std::size_t at, std::int64_t ms, std::size_t limit, std::vector<int> &found,
                 CueIndex::Span &same) const;

    /**
     * A tree. Level 0 has the spans of the cues; each node of a higher level spans a group of neighbours of the level
     * below, from their first start to their last end. The last level has one node.
     */
    std::vector<std::vector<CueIndex::Span>> m_listLevels;
};
