#include "parsers/assparser.h"

#include "parsers/cuelookup.h"
#include "parsers/wrapint.h"
#include "textio/textreader.h"

#include <algorithm>

// The list of events belongs to the library's interface: these stay in it whatever the compiler inlines.
template void QList<AssSubtitleItem>::append(const AssSubtitleItem &);
template QList<AssSubtitleItem>::QList(const QList<AssSubtitleItem> &);
template QList<AssSubtitleItem>::~QList();

namespace
{

/** 0 for negative numbers and NaN. */
double NonNegative(double value)
{
    return value >= 0.0 ? value : 0.0;
}

/** From the numbering of SSA, where 4 stands for the top and 8 for the middle, to that of a keypad. */
int KeypadAlignment(int alignment)
{
    const int column = alignment & 3;
    if ((alignment & 4) != 0)
        return column + 6;
    return (alignment & 8) != 0 ? column + 3 : column;
}

/**
 * Removes the blocks from @p position on, which counts from the end where it is negative. Leaves it at an opening
 * character that is never closed, else at -1.
 */
QString RemoveBlocks(const QString &text, char open, char close, int &position)
{
    int from = position < 0 ? std::max(position + text.size(), 0) : position;
    QString kept = text.left(from);
    for (;;) {
        const int begin = text.indexOf(QLatin1Char(open), from);
        const int end = begin < 0 ? -1 : text.indexOf(QLatin1Char(close), begin);
        if (end < 0) {
            position = begin < 0 ? -1 : kept.size() + begin - from;
            return kept + text.midRef(from);
        }
        kept += text.midRef(from, begin - from);
        from = end + 1;
    }
}

int ScriptVersion(const QString &value, int otherwise)
{
    if (value.endsWith(QLatin1String("4.00")))
        return 4;
    return value.endsWith(QLatin1String("4.00+")) ? 5 : otherwise;
}

} // namespace

QString TrimLeft(QString text, QChar character)
{
    int count = 0;
    while (count < text.size() && text[count] == character)
        ++count;
    return text.mid(count);
}

int AssParser::Open(const QString &path, int /*track*/)
{
    m_listItems.clear();
    TextReader reader;
    reader.Open(path);
    Versions versions;
    for (int i = 0; i < reader.GetLineCount(); ++i)
        ParseLine(reader.GetLine(i).trimmed(), versions);
    return 1;
}

QString AssParser::GetSubtitle(long ms)
{
    return FindDueText(m_listItems, ms);
}

void AssParser::ParseLine(QString line, Versions &versions)
{
    if (line.isEmpty() || line[0] == QLatin1Char(';'))
        return;
    // Sections are not tracked, and the layout of events follows the script type alone: both are meant.
    const QString key = GetStr(line, ':').toLower();
    if (key == QLatin1String("playresx")) {
        m_nPlayResX = GetInt(line, ',');
    } else if (key == QLatin1String("playresy")) {
        m_nPlayResY = GetInt(line, ',');
    } else if (key == QLatin1String("scripttype")) {
        versions.nEvent = ScriptVersion(line, versions.nEvent);
        versions.nStyle = ScriptVersion(line, versions.nStyle);
    } else if (key == QLatin1String("collisions")) {
        // A control character in a string, and no number: this is meant.
        const bool reversed = GetStr(line, ',').toLower().contains(QLatin1String("reverse"));
        m_strCollisions = QString(QChar(reversed ? 1 : 0));
    } else if (key == QLatin1String("[v4 styles]")) {
        versions.nStyle = 4;
    } else if (key == QLatin1String("[v4+ styles]")) {
        versions.nStyle = 5;
    } else if (key == QLatin1String("style")) {
        ParseStyle(line, versions.nStyle);
    } else if (key == QLatin1String("dialogue")) {
        ParseDialogue(line, versions.nEvent);
    }
}

void AssParser::ParseStyle(QString &line, int version)
{
    const int alphaLevel = ReadStyleFields(line, version);
    if (version >= 5) {
        for (std::size_t i = 0; i < m_nColors.size(); ++i) {
            const auto color = static_cast<quint32>(m_nColors[i]);
            m_byAlpha[i] = static_cast<quint8>(color >> 24);
            m_nColors[i] = static_cast<int>(color & 0xFFFFFF);
        }
        m_dScaleX = NonNegative(m_dScaleX);
        m_dScaleY = NonNegative(m_dScaleY);
        m_dSpacing = NonNegative(m_dSpacing);
    } else {
        m_nColors[2] = m_nColors[3];
        const auto alpha = static_cast<quint8>(std::clamp(alphaLevel, 0, 255));
        m_byAlpha = {alpha, alpha, alpha, 0x80};
        m_nAlignment = KeypadAlignment(m_nAlignment);
    }
    m_dAngleX = 0.0;
    m_dAngleY = 0.0;
    m_nBorderStyle = m_nBorderStyle == 3 ? 1 : 0;
    m_dOutline = NonNegative(m_dOutline);
    m_dShadow = NonNegative(m_dShadow);
}

int AssParser::ReadStyleFields(QString &line, int version)
{
    GetStr(line, ','); // the style's name, which nothing asks for
    m_strFontName = GetStr(line, ',');
    m_dFontSize = GetFloat(line, ',');
    for (int &color : m_nColors)
        color = GetInt(line, ',');
    m_nBold = GetInt(line, ',');
    m_bItalic = GetInt(line, ',') != 0;
    if (version >= 5) {
        m_bUnderline = GetInt(line, ',') != 0;
        m_bStrikeOut = GetInt(line, ',') != 0;
        m_dScaleX = GetFloat(line, ',');
        m_dScaleY = GetFloat(line, ',');
        m_dSpacing = GetFloat(line, ',');
        m_dAngleZ = GetFloat(line, ',');
    }
    if (version >= 4)
        m_nBorderStyle = GetInt(line, ',');
    m_dOutline = GetFloat(line, ',');
    m_dShadow = GetFloat(line, ',');
    m_nAlignment = GetInt(line, ',');
    const int left = GetInt(line, ',');
    const int right = GetInt(line, ',');
    const int vertical = GetInt(line, ',');
    m_rcMargin.setCoords(left, vertical, right, vertical);
    const int alphaLevel = version <= 4 ? GetInt(line, ',') : 0;
    m_nCharset = GetInt(line, ',');
    return alphaLevel;
}

int AssParser::GetTime(QString &line)
{
    const int hours = GetInt(line, ':');
    const int minutes = GetInt(line, ':');
    const int seconds = GetInt(line, '.');
    // Whatever their number, the digits behind the dot count hundredths: this is meant.
    const int hundredths = GetInt(line, ',');
    const int wholeMinutes = WrapAdd(WrapMultiply(hours, 60), minutes);
    const int wholeSeconds = WrapAdd(WrapMultiply(wholeMinutes, 60), seconds);
    return WrapAdd(WrapMultiply(wholeSeconds, 1000), WrapMultiply(hundredths, 10));
}

void AssParser::ParseDialogue(QString &line, int version)
{
    AssSubtitleItem item;
    if (version <= 4) {
        // "Marked=0", which nothing asks for
        GetStr(line, '=');
        GetInt(line, ',');
    } else {
        item.nLayer = GetInt(line, ',');
    }
    item.nStart = GetTime(line);
    item.nEnd = GetTime(line);
    item.strStyle = TrimLeft(GetStr(line, ','), QLatin1Char('*'));
    if (item.strStyle.toLower() == QLatin1String("default"))
        item.strStyle = QStringLiteral("Default");
    item.strActor = GetStr(line, ',');
    for (int margin = 0; margin < 3; ++margin)
        GetInt(line, ',');
    item.strEffect = GetStr(line, ',');
    // An effect that is also the text was read where no comma was left. Prefixes are caught too: this is meant.
    const int common = std::min(item.strEffect.size(), line.size());
    if (item.strEffect.leftRef(common) == line.leftRef(common))
        item.strEffect = QString();
    item.strText = RemoveSSATags(line);
    m_listItems.append(item);
}

QString AssParser::GetStr(QString &line, char separator)
{
    line = TrimLeft(line, QLatin1Char(' '));
    const int end = line.indexOf(QLatin1Char(separator));
    if (end < 0)
        return line;
    QString field = line.left(end);
    line = line.mid(end + 1);
    return field;
}

int AssParser::GetInt(QString &line, char separator)
{
    QString field = GetStr(line, separator).toLower();
    int base = 10;
    if (field.startsWith(QLatin1String("&h"))) {
        field = field.mid(2);
        base = 16;
    }
    bool isNumber = false;
    const int value = field.toInt(&isNumber, base);
    return isNumber ? value : -1;
}

double AssParser::GetFloat(QString &line, char separator)
{
    bool isNumber = false;
    const double value = GetStr(line, separator).toDouble(&isNumber);
    return isNumber ? value : -1.0;
}

QString AssParser::RemoveSSATags(QString text)
{
    int position = 0;
    text = RemoveBlocks(text, '{', '}', position);
    // The position is not set back: angle blocks go only behind a brace that is never closed. This is meant.
    text = RemoveBlocks(text, '<', '>', position);
    return text.replace(QLatin1String("\\N"), QLatin1String("\n"));
}

int AssParser::ParseLinesToSubtitleItem()
{
    return 1;
}
