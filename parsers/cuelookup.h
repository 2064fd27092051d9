#pragma once

#include <QList>
#include <QString>

/**
 * The text due at a time: that of the first item in list order whose nStart to nEnd, both included, hold the time.
 * Overlapping items are not merged. A null string when there is none, and at 0 or before.
 */
template <typename Item>
QString FindDueText(const QList<Item> &items, long ms)
{
    if (ms <= 0)
        return {};
    for (const Item &item : items) {
        if (item.nStart <= ms && ms <= item.nEnd)
            return item.strText;
    }
    return {};
}
