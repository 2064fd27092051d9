#pragma once

#include <QString>

#include <cstdint>
#include <utility>
#include <vector>

/** The most cues that are kept of a file: far beyond what any film has, and no more than memory bears. */
constexpr int MaxCues = 4 * 1024 * 1024;

/** Tells which of many cues is due at a time, in about as many steps as their number has binary digits. */
class CueIndex
{
public:
    /** The time that a cue is due, both ends included, in milliseconds; a last before the first is never. */
    struct Span {
        std::int64_t nFirst;
        std::int64_t nLast;
    };

    /** Collects the cues of a list in their order. */
    class Builder
    {
    public:
        void Add(const Span &span)
        {
            // The same time again is never due, and files of blank lines consist of nothing else.
            const bool repeats = !m_listCues.empty() && m_listCues.back().span.nFirst == span.nFirst &&
                                 m_listCues.back().span.nLast == span.nLast;
            if (span.nFirst <= span.nLast && !repeats)
                m_listCues.push_back({span, m_nCount});
            ++m_nCount;
        }

    private:
        friend class CueIndex;
        struct Cue {
            Span span;
            int nPlace;
        };
        std::vector<Cue> m_listCues;
        int m_nCount = 0;
    };

    CueIndex() = default;
    explicit CueIndex(Builder builder);

    /** Of the cues due at @p ms the one that came first in the list, by its place in it; -1 when there is none. */
    int Find(std::int64_t ms) const;

private:
    std::vector<std::int64_t>
        m_listTimes; ///< ascending; from each on, up to the next, the cue at the same place is due
    std::vector<int> m_listCues;
};

/** Of items with nStart and nEnd. */
template <typename List>
CueIndex IndexTimes(const List &items)
{
    CueIndex::Builder builder;
    for (const auto &item : items)
        builder.Add({item.nStart, item.nEnd});
    return CueIndex(std::move(builder));
}

/** The text due at a time, none at 0 and before: a null string. Cues that overlap are not merged. */
template <typename List>
QString DueText(const List &items, const CueIndex &index, long ms)
{
    const int due = ms > 0 ? index.Find(ms) : -1;
    return due < 0 ? QString() : items[due].strText;
}
