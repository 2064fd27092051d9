#include "parsers/srtparser.h"

#include "parsers/exportedlist.h"
#include "parsers/wrapint.h"
#include "textio/textreader.h"

#include <algorithm>
#include <array>

EXPORT_LIST(SrtSubtitleItem);

namespace
{

const QLatin1String Arrow("-->");
constexpr int ArrowSize = 3;

bool IsIndexLine(const QString &line)
{
    // Fast paths: most lines are decided without a conversion.
    if (line.isEmpty())
        return false;
    const ushort first = line[0].unicode();
    if ((first >= 'A' && first <= 'Z') || (first >= 'a' && first <= 'z'))
        return false;
    constexpr int SafeDigits = 9;
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    if (line.size() <= SafeDigits && std::all_of(line.begin(), line.end(), isDigit))
        return true;
    bool isNumber = false;
    (void)line.toInt(&isNumber);
    return isNumber;
}

/** Position of the arrow; -1 if there is none. */
int ArrowIn(const QString &line)
{
    int dash = line.indexOf(QLatin1Char('-'));
    while (dash >= 0 && !QStringView(line).mid(dash).startsWith(Arrow))
        dash = line.indexOf(QLatin1Char('-'), dash + 1);
    return dash;
}

bool IsTimeLine(const QString &line)
{
    return ArrowIn(line) > 0;
}

/** Fast path for "hh:mm:ss,mmm" and "hh:mm:ss.mmm", the usual forms; false for any other. */
bool ReadUsualTime(QStringView text, int &wholeSeconds, double &seconds)
{
    static const char Form[] = "00:00:00,000";
    constexpr int Length = sizeof Form - 1;
    if (text.size() != Length)
        return false;
    std::array<int, Length> digits = {};
    for (int i = 0; i < Length; ++i) {
        const ushort unit = text.at(i).unicode();
        digits[i] = unit - '0';
        const bool fits = Form[i] == '0' ? digits[i] >= 0 && digits[i] <= 9 : unit == Form[i];
        if (!fits && !(Form[i] == ',' && unit == '.'))
            return false;
    }
    const auto two = [&](int at) { return digits[at] * 10 + digits[at + 1]; };
    wholeSeconds = (two(0) * 60 + two(3)) * 60;
    // The division gives the double nearest to the decimal number, as QString::toDouble() would.
    seconds = (two(6) * 1000 + digits[9] * 100 + two(10)) / 1000.0;
    return true;
}

int ReadTime(QStringView text)
{
    double seconds = 0;
    int wholeSeconds = 0;
    if (!ReadUsualTime(text, wholeSeconds, seconds)) {
        QString stamp = text.toString();
        stamp.replace(QLatin1Char(','), QLatin1Char('.'));
        const QStringView time(stamp);
        const auto first = stamp.indexOf(QLatin1Char(':'));
        const auto second = first < 0 ? -1 : stamp.indexOf(QLatin1Char(':'), first + 1);
        if (second < 0)
            return 0;
        const auto third = stamp.indexOf(QLatin1Char(':'), second + 1);
        const int hours = time.left(first).toInt();
        const int minutes = time.mid(first + 1, second - first - 1).toInt();
        wholeSeconds = WrapMultiply(WrapAdd(WrapMultiply(hours, 60), minutes), 60);
        bool isNumber = false;
        const qsizetype end = third < 0 ? time.size() : third;
        seconds = time.mid(second + 1, end - second - 1).toDouble(&isNumber);
        if (!isNumber)
            seconds = 0;
    }
    // Intentional: the binary product is truncated, so "00:00:01,001" is 1000.
    return TruncateToInt((seconds + wholeSeconds) * 1000.0);
}

/** Iterates over the lines of a file and decodes each once. */
class LineCursor
{
public:
    explicit LineCursor(const TextReader &reader) : m_reader(reader), m_nCount(reader.GetLineCount()) { Load(); }

    bool IsAtEnd() const { return m_nIndex >= m_nCount; }
    const QString &Line() const { return m_strLine; }
    void Next()
    {
        ++m_nIndex;
        Load();
    }

private:
    void Load()
    {
        if (!IsAtEnd())
            m_strLine = m_reader.GetLine(m_nIndex);
    }

    const TextReader &m_reader;
    int m_nCount;
    int m_nIndex = 0;
    QString m_strLine;
};

/**
 * Joins the lines of a text block and leaves the cursor at the line that ends it.
 * @param text  the block's first line, which is the cursor's line.
 */
QString TakeTextBlock(LineCursor &cursor, QString text)
{
    // Intentional: only the first line is trimmed, and it may be empty. A blank line after a cue makes a cue of its own
    // with the same times, which GetSubtitle() never returns because the real one comes first.
    for (cursor.Next(); !cursor.IsAtEnd(); cursor.Next()) {
        const QString &line = cursor.Line();
        if (line.isEmpty() || IsIndexLine(line) || IsTimeLine(line))
            break;
        text += QLatin1Char('\n');
        text += line;
    }
    return text;
}

} // namespace

int SrtParser::Open(const QString &path, int /*track*/)
{
    m_listItems.clear();
    m_index = {};
    m_dueTexts.Clear();
    TextReader reader;
    reader.Open(path);

    // Every text block has the times of the last time line before it.
    SrtSubtitleItem item;
    for (LineCursor cursor(reader); !cursor.IsAtEnd() && m_listItems.size() < MaxCues;) {
        const QString line = cursor.Line().trimmed();
        if (IsIndexLine(line)) {
            cursor.Next();
        } else if (IsTimeLine(line)) {
            const int arrow = ArrowIn(line);
            item.nStart = ReadTime(QStringView(line).left(arrow).trimmed());
            // Intentional: everything after the arrow is the end time, so coordinates after the time spoil it.
            item.nEnd = ReadTime(QStringView(line).mid(arrow + ArrowSize).trimmed());
            cursor.Next();
        } else {
            item.strText = TakeTextBlock(cursor, line);
            m_listItems.append(item);
        }
    }
    m_index = IndexTimes(m_listItems);
    return 1;
}

QString SrtParser::GetSubtitle(long ms)
{
    return DueText(m_listItems, m_index, ms);
}

QStringList SrtParser::AllDueTexts(long ms)
{
    // A blank line inside a cue and the lines after it are an item of their own, see TakeTextBlock().
    return m_dueTexts.At(m_listItems, ms, [](const SrtSubtitleItem &before, const SrtSubtitleItem &item) {
        return item.nStart == before.nStart && item.nEnd == before.nEnd &&
               (item.strText.isEmpty() || item.strText.startsWith(QLatin1Char('\n')));
    });
}

int ParseTime(const QString &text)
{
    return ReadTime(text);
}
