#pragma once

#include "parsers/overlapindex.h"

#include <QStringList>

#include <optional>
#include <vector>

/** Most texts shown at once. */
constexpr int MaxDueCues = 64;
/** Most due cues examined to find them: empty and repeated ones, and continuations of others, add no text. */
constexpr std::size_t MaxDueItems = 256;

/** Finds all texts of a list of cues that are due at a time. The index is built at the first call of At(). */
class DueTexts
{
public:
    /**
     * The texts due at @p ms in list order, each once, without empty ones; none for times up to 0.
     * @param items      the cues; after any change to them call Clear() first.
     * @param continues  called with two neighbours in the list; true if the second continues the first, so that its
     *                   text is appended to the first one's.
     */
    template <typename List, typename Continues>
    QStringList At(const List &items, long ms, Continues continues);

    /** Call this when the list of cues has changed. */
    void Clear()
    {
        m_index.reset();
        m_same = {0, -1};
        m_texts.clear();
    }

private:
    std::optional<OverlapIndex> m_index;
    std::vector<int> m_listFound;
    // When the last result stays the same, so that nothing is searched or allocated until it changes.
    CueIndex::Span m_same = {0, -1};
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
    if (m_same.nFirst <= ms && ms <= m_same.nLast)
        return m_texts;
    m_same = {0, -1};
    m_texts.clear();
    const CueIndex::Span same = m_index->Find(ms, MaxDueItems, m_listFound);
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
    m_same = same;
    return m_texts;
}
