#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

/** A range of rows of a frame. */
struct RowSpan {
    int nTop = 0;
    int nEnd = 0; ///< row after the last

    int Count() const { return nEnd - nTop; }
    bool IsEmpty() const { return nEnd <= nTop; }
    /** Extends the range so that it includes other rows. */
    void Add(const RowSpan &other)
    {
        if (other.IsEmpty())
            return;
        nTop = IsEmpty() ? other.nTop : std::min(nTop, other.nTop);
        nEnd = std::max(nEnd, other.nEnd);
    }
    bool operator==(const RowSpan &other) const { return nTop == other.nTop && nEnd == other.nEnd; }
};

/** Rows of a frame that are in use by something else. Copies share their data and allocate nothing. */
class TakenRows
{
public:
    TakenRows() = default;
    explicit TakenRows(std::vector<RowSpan> spans)
    {
        const auto isEmpty = [](const RowSpan &span) { return span.IsEmpty(); };
        spans.erase(std::remove_if(spans.begin(), spans.end(), isEmpty), spans.end());
        std::sort(spans.begin(), spans.end(), [](const RowSpan &a, const RowSpan &b) { return a.nTop < b.nTop; });
        if (!spans.empty())
            m_pSpans = std::make_shared<const std::vector<RowSpan>>(std::move(spans));
    }

    bool IsEmpty() const { return !m_pSpans; }
    bool operator==(const TakenRows &other) const
    {
        return m_pSpans == other.m_pSpans || (m_pSpans && other.m_pSpans && *m_pSpans == *other.m_pSpans);
    }

    /** The tallest free part of an area; the lowest one of several. */
    [[nodiscard]] RowSpan TallestGap(const RowSpan &area) const;

    /**
     * How far down to move rows so that they lie in free rows of an area. 0 if they are free; negative, as far up as
     * needed, if there is room above; otherwise positive, or 0 if there is no room below.
     */
    [[nodiscard]] int Evasion(const RowSpan &rows, const RowSpan &area) const;

private:
    const RowSpan *FirstWithin(const RowSpan &rows) const;

    std::shared_ptr<const std::vector<RowSpan>> m_pSpans; ///< sorted by nTop; null if there are none
};
