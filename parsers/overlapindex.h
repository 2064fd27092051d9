#pragma once

#include "parsers/cueindex.h"

#include <cstdint>
#include <vector>

/** Finds all cues that are due at a time, where CueIndex finds the first. */
class OverlapIndex
{
public:
    OverlapIndex() = default;
    /** @param spans  of the cues of a list, in its order. */
    explicit OverlapIndex(std::vector<CueIndex::Span> spans);

    /** The places of the cues due at @p ms, in the order of the list; the first @p limit of them. @p found is emptied first. */
    void Find(std::int64_t ms, std::size_t limit, std::vector<int> &found) const;

private:
    void Collect(std::size_t level, std::size_t at, std::int64_t ms, std::size_t limit, std::vector<int> &found) const;

    /** The cues' spans, then those of as many neighbours as a node has, each from the first start to the last end, up to
     *  the level with a single node. */
    std::vector<std::vector<CueIndex::Span>> m_listLevels;
};
