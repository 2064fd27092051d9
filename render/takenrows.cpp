#include "render/takenrows.h"

#include <algorithm>

namespace
{

bool Overlap(const RowSpan &a, const RowSpan &b)
{
    return std::max(a.nTop, b.nTop) < std::min(a.nEnd, b.nEnd);
}

} // namespace

RowSpan TakenRows::TallestGap(const RowSpan &area) const
{
    if (IsEmpty())
        return area;
    RowSpan tallest;
    RowSpan gap = {area.nTop, area.nTop};
    const auto close = [&](int end) {
        gap.nEnd = std::min(end, area.nEnd);
        if (gap.Count() >= tallest.Count())
            tallest = gap;
    };
    for (const RowSpan &span : *m_pSpans) {
        close(span.nTop);
        gap.nTop = std::max(gap.nTop, span.nEnd);
    }
    close(area.nEnd);
    return tallest;
}

const RowSpan *TakenRows::FirstWithin(const RowSpan &rows) const
{
    const auto found =
        std::find_if(m_pSpans->begin(), m_pSpans->end(), [&](const RowSpan &span) { return Overlap(span, rows); });
    return found == m_pSpans->end() ? nullptr : &*found;
}

int TakenRows::Evasion(const RowSpan &rows, const RowSpan &area) const
{
    if (IsEmpty() || rows.IsEmpty())
        return 0;
    RowSpan moved = rows;
    while (const RowSpan *span = FirstWithin(moved))
        moved = {span->nTop - rows.Count(), span->nTop};
    if (moved.nTop >= area.nTop)
        return moved.nTop - rows.nTop;
    moved = rows;
    for (const RowSpan *span = FirstWithin(moved); span && moved.nEnd <= area.nEnd; span = FirstWithin(moved))
        moved = {span->nEnd, span->nEnd + rows.Count()};
    return moved.nEnd <= area.nEnd ? moved.nTop - rows.nTop : 0;
}
