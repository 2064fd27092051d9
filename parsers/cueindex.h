#pragma once

#include <QString>

#include <cstdint>
#include <utility>
#include <vector>

/** Most cues kept of one file: far more than any film has, and few enough to fit in memory. */
constexpr int MaxCues = 4 * 1024 * 1024;

/** Finds the cue that is due at a time, by binary search. */
class CueIndex
{
public:
    /** When a cue is due, in milliseconds, both ends included; never if nLast is before nFirst. */
    struct Span {
        std::int64_t nFirst;
        std::int64_t nLast;
    };

    /** Collects the cues, in list order. */
    class Builder
    {
    public:
        void Add(const Span &span)
        {
            // Find() never returns a cue with the times of the cue before it. A file of blank lines has only such cues.
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

    /** @return the position in the list of the first cue that is due at @p ms; -1 if there is none. */
    [[nodiscard]] int Find(std::int64_t ms) const;

private:
    std::vector<std::int64_t> m_listTimes; ///< ascending; m_listCues[i] is due from m_listTimes[i] until the next time
    std::vector<int> m_listCues;           ///< positions in the list, -1 where no cue is due
};

/** An index of items that have nStart and nEnd. */
template <typename List>
CueIndex IndexTimes(const List &items)
{
    CueIndex::Builder builder;
    for (const auto &item : items)
        builder.Add({item.nStart, item.nEnd});
    return CueIndex(std::move(builder));
}

/** The text due at a time; a null string if there is none, and for times up to 0. Overlapping cues are not merged. */
template <typename List>
QString DueText(const List &items, const CueIndex &index, long ms)
{
    const int due = ms > 0 ? index.Find(ms) : -1;
    return due < 0 ? QString() : items[due].strText;
}
