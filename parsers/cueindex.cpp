#include "parsers/cueindex.h"

#include <algorithm>
#include <queue>

CueIndex::CueIndex(Builder builder)
{
    std::vector<Builder::Cue> byStart = std::move(builder.m_listCues);
    std::vector<std::int64_t> changes;
    changes.reserve(2 * byStart.size());
    for (const Builder::Cue &cue : byStart) {
        changes.push_back(cue.span.nFirst);
        changes.push_back(cue.span.nLast + 1);
    }
    std::sort(byStart.begin(), byStart.end(),
              [](const Builder::Cue &a, const Builder::Cue &b) { return a.span.nFirst < b.span.nFirst; });
    std::sort(changes.begin(), changes.end());
    changes.erase(std::unique(changes.begin(), changes.end()), changes.end());

    // The top is the first in the list of all cues that have begun. Cues that have ended are removed when on top.
    const auto isBehind = [](const Builder::Cue &a, const Builder::Cue &b) { return a.nPlace > b.nPlace; };
    std::priority_queue<Builder::Cue, std::vector<Builder::Cue>, decltype(isBehind)> begun(isBehind);
    auto next = byStart.begin();
    for (const std::int64_t time : changes) {
        for (; next != byStart.end() && next->span.nFirst == time; ++next)
            begun.push(*next);
        while (!begun.empty() && begun.top().span.nLast < time)
            begun.pop();
        const int due = begun.empty() ? -1 : begun.top().nPlace;
        if (!m_listCues.empty() && m_listCues.back() == due)
            continue;
        m_listTimes.push_back(time);
        m_listCues.push_back(due);
    }
}

int CueIndex::Find(std::int64_t ms) const
{
    const auto after = std::upper_bound(m_listTimes.begin(), m_listTimes.end(), ms);
    return after == m_listTimes.begin() ? -1 : m_listCues[after - m_listTimes.begin() - 1];
}
