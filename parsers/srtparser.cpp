#include "parsers/srtparser.h"

#include "parsers/cuelookup.h"
#include "parsers/wrapint.h"
#include "textio/textreader.h"

#include <QStringList>

// The list of cues belongs to the library's interface: these stay in it whatever the compiler inlines.
template void QList<SrtSubtitleItem>::append(const SrtSubtitleItem &);
template QList<SrtSubtitleItem>::QList(const QList<SrtSubtitleItem> &);
template QList<SrtSubtitleItem>::~QList();

namespace
{

const QLatin1String Arrow("-->");

bool IsIndexLine(const QString &line)
{
    bool isNumber = false;
    line.toInt(&isNumber);
    return isNumber;
}

bool IsTimeLine(const QString &line)
{
    return line.indexOf(Arrow) > 0;
}

/** Joins a text block's lines, from line @p i; leaves @p i at the line that ended it. */
QString TakeTextBlock(const TextReader &reader, int &i)
{
    // Only the first line is trimmed, and it may be empty: a blank line behind a cue makes a cue of its own, which
    // never shows because it stands behind the real one. Both are meant.
    QString text = reader.GetLine(i).trimmed();
    for (++i; i < reader.GetLineCount(); ++i) {
        const QString line = reader.GetLine(i);
        if (line.isEmpty() || IsIndexLine(line) || IsTimeLine(line))
            break;
        text += QLatin1Char('\n') + line;
    }
    return text;
}

} // namespace

int SrtParser::Open(const QString &path, int /*track*/)
{
    m_listItems.clear();
    TextReader reader;
    reader.Open(path);

    // The times of the last time line hold for every text block up to the next one.
    SrtSubtitleItem item;
    int i = 0;
    while (i < reader.GetLineCount()) {
        const QString line = reader.GetLine(i).trimmed();
        if (IsIndexLine(line)) {
            ++i;
        } else if (IsTimeLine(line)) {
            const int arrow = line.indexOf(Arrow);
            item.nStart = ParseTime(line.left(arrow).trimmed());
            // All that follows the arrow counts, so position coordinates spoil the end time: this is meant.
            item.nEnd = ParseTime(line.mid(arrow + Arrow.size()).trimmed());
            ++i;
        } else {
            item.strText = TakeTextBlock(reader, i);
            m_listItems.append(item);
        }
    }
    return 1;
}

QString SrtParser::GetSubtitle(long ms)
{
    return FindDueText(m_listItems, ms);
}

int ParseTime(const QString &text)
{
    QString stamp = text;
    stamp.replace(QLatin1Char(','), QLatin1Char('.'));
    const QStringList parts = stamp.split(QLatin1Char(':'));
    if (parts.size() < 3)
        return 0;
    const int minutes = WrapAdd(WrapMultiply(parts[0].toInt(), 60), parts[1].toInt());
    const int wholeSeconds = WrapMultiply(minutes, 60);
    bool isNumber = false;
    const double seconds = parts[2].toDouble(&isNumber);
    // "00:00:01,001" is 1000: the truncation of the binary product is meant.
    return TruncateToInt(((isNumber ? seconds : 0.0) + wholeSeconds) * 1000.0);
}
