#pragma once

#include "parsers/cueindex.h"
#include "parsers/duetexts.h"
#include "parsers/iparser.h"
#include "textio/exported.h"

#include <QList>

/** One cue; times in milliseconds. */
struct SUBTITLE_EXPORT SrtSubtitleItem {
    int nStart = 0;
    int nEnd = 0;
    QString strText; ///< lines joined by "\n"
};

/**
 * SubRip files. Text is kept as it is in the file, markup included.
 */
class SrtParser : public IParser
{
public:
    /** Never fails: a file that cannot be read has no cues. */
    int Open(const QString &path, int track) override;
    QString GetSubtitle(long ms) override;
    QStringList AllDueTexts(long ms) override;

private:
    friend class SrtParserPeer; // gives tests access to the members

    QList<SrtSubtitleItem> m_listItems; ///< in file order
    CueIndex m_index;
    DueTexts m_dueTexts;
};

/**
 * Reads a time stamp hh:mm:ss,mmm. A full stop may replace the comma, and the seconds may have any number of decimals.
 * The product with 1000 is truncated, which makes some stamps a millisecond short; hosts depend on that.
 *
 * @return milliseconds; 0 if there are fewer than two colons. A field that is not a number counts as 0. Hours and
 *         minutes wrap around at 32 bits of seconds; a time beyond 32 bits of milliseconds is the smallest int.
 */
int ParseTime(const QString &text);
