#pragma once

#include "parsers/overlapindex.h"

#include <QStringList>

#include <optional>

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
    void Clear() { m_index.reset(); }

private:
    std::optional<OverlapIndex> m_index;
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
    QStringList texts;
    int last = -1;
    for (const int place : m_index->Find(ms, MaxDueItems)) {
        const QString &text = items[place].strText;
        if (!texts.isEmpty() && last == place - 1 && continues(items[last], items[place])) {
            texts.last() += text;
            last = place;
        } else if (texts.size() < MaxDueCues && !text.trimmed().isEmpty() && !texts.contains(text)) {
            texts.append(text);
            last = place;
        }
    }
    return texts;
}
