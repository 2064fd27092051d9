#pragma once

#include "parsers/overlapindex.h"

#include <QStringList>

#include <optional>
#include <vector>

/** Cues of a file that show at once, at most. */
constexpr int MaxDueCues = 64;
/** Cues that are looked at for that: empty ones, and parts of others, do not count. */
constexpr std::size_t MaxDueItems = 256;

/** All texts of a list of cues that are due at a time. Looks for them only where someone asks. */
class DueTexts
{
public:
    /**
     * The texts due at @p ms in the order of the list, each once, without empty ones; none at 0 and before.
     * @param items       the cues, of which nothing changes between two calls but by Clear().
     * @param continues   whether an item belongs to the one before it in the list: it is added to that one's text.
     */
    template <typename List, typename Continues>
    QStringList At(const List &items, long ms, Continues continues);

    /** The list is another one. */
    void Clear()
    {
        m_index.reset();
        m_listPlaces.clear();
        m_texts.clear();
    }

private:
    std::optional<OverlapIndex> m_index;
    std::vector<int> m_listFound;
    // Of the last time, so that nothing is allocated while the same cues are due.
    std::vector<int> m_listPlaces;
    QStringList m_texts;
};

template <typename List, typename Continues>
QStringList DueTexts::At(const List &items, long ms, Continues continues)
{
    if (ms <= 0)
        return {};
    if (!m_index) {
        std::vector<CueIndex::Span> spans;
        spans.reserve(items.size());
        for (const auto &item : items)
            spans.push_back({item.nStart, item.nEnd});
        m_index.emplace(std::move(spans));
    }
    m_index->Find(ms, MaxDueItems, m_listFound);
    if (m_listFound == m_listPlaces)
        return m_texts;
    m_listPlaces.clear();
    m_texts.clear();
    int last = -1;
    for (const int place : m_listFound) {
        const QString &text = items[place].strText;
        if (!m_texts.isEmpty() && last == place - 1 && continues(items[last], items[place])) {
            m_texts.last() += text;
            last = place;
        } else if (m_texts.size() < MaxDueCues && !text.trimmed().isEmpty() && !m_texts.contains(text)) {
            m_texts.append(text);
            last = place;
        }
    }
    m_listPlaces = m_listFound;
    return m_texts;
}
