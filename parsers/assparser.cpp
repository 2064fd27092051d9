#include "parsers/assparser.h"

#include "parsers/exportedlist.h"
#include "parsers/fieldreader.h"
#include "textio/textreader.h"

#include <algorithm>
#include <utility>

EXPORT_LIST(AssSubtitleItem);

namespace
{

/** 0 for negative numbers and NaN. */
double NonNegative(double value)
{
    return value >= 0.0 ? value : 0.0;
}

/** Converts an SSA alignment, the column plus 4 for the top or 8 for the middle, to that of a numeric keypad. */
int KeypadAlignment(int alignment)
{
    const int column = alignment & 3;
    if ((alignment & 4) != 0)
        return column + 6;
    return (alignment & 8) != 0 ? column + 3 : column;
}

/**
 * Removes the blocks between @p open and @p close, both included, from @p position on. A negative position counts from
 * the end. It is set to where the result has an opening character that is never closed, else to -1.
 */
QString RemoveBlocks(const QString &text, char open, char close, int &position)
{
    int from = position < 0 ? std::max(position + static_cast<int>(text.size()), 0) : position;
    if (text.indexOf(QLatin1Char(open), from) < 0) {
        position = -1;
        return text;
    }
    QString kept = text.left(from);
    for (;;) {
        const int begin = text.indexOf(QLatin1Char(open), from);
        const int end = begin < 0 ? -1 : text.indexOf(QLatin1Char(close), begin);
        if (end < 0) {
            position = begin < 0 ? -1 : kept.size() + begin - from;
            return kept.append(text.constData() + from, text.size() - from);
        }
        kept.append(text.constData() + from, begin - from);
        from = end + 1;
    }
}

/** Turns "\N" into line feeds in one pass; QString::replace() moves the rest of the text once per thousand matches. */
QString WithLineFeeds(QString text)
{
    int kept = text.indexOf(QLatin1String("\\N"));
    if (kept < 0)
        return text;
    QChar *const characters = text.data();
    const int size = text.size();
    for (int i = kept; i < size; ++i) {
        const bool isBreak =
            characters[i] == QLatin1Char('\\') && i + 1 < size && characters[i + 1] == QLatin1Char('N');
        characters[kept++] = isBreak ? QChar(QLatin1Char('\n')) : characters[i];
        i += static_cast<int>(isBreak);
    }
    text.truncate(kept);
    return text;
}

int ScriptVersion(QStringView value, int otherwise)
{
    if (value.endsWith(QLatin1String("4.00")))
        return 4;
    return value.endsWith(QLatin1String("4.00+")) ? 5 : otherwise;
}

/** Reads a field and removes what was consumed from the line. */
template <typename Read>
auto TakeField(QString &line, const Read &read)
{
    const QString whole = line;
    FieldReader fields(whole);
    auto field = read(fields);
    line = fields.Rest().toString();
    return field;
}

} // namespace

QString TrimLeft(const QString &text, QChar character)
{
    int count = 0;
    while (count < text.size() && text.at(count) == character)
        ++count;
    return count == 0 ? text : text.mid(count);
}

int AssParser::Open(const QString &path, int /*track*/)
{
    m_listItems.clear();
    m_index = {};
    m_dueTexts.Clear();
    TextReader reader;
    reader.Open(path);
    Versions versions;
    for (int i = 0; i < reader.GetLineCount() && m_listItems.size() < MaxCues; ++i)
        ParseLine(reader.GetLine(i).trimmed(), versions);
    m_index = IndexTimes(m_listItems);
    return 1;
}

QString AssParser::GetSubtitle(long ms)
{
    return DueText(m_listItems, m_index, ms);
}

QStringList AssParser::AllDueTexts(long ms)
{
    return m_dueTexts.At(m_listItems, ms, [](const auto &, const auto &) { return false; });
}

void AssParser::ParseLine(const QString &line, Versions &versions)
{
    if (line.isEmpty() || line[0] == QLatin1Char(';'))
        return;
    // Intentional: sections are not tracked, and the layout of events depends on the script type alone.
    FieldReader fields(line);
    const QStringView name = fields.Str(':');
    if (name == QLatin1String("Dialogue")) { // nearly all lines, so without the copy below
        ParseDialogue(fields, versions.nEventVersion);
        return;
    }
    const QString key = name.toString().toLower();
    if (key == QLatin1String("playresx")) {
        m_nPlayResX = fields.Int(',');
    } else if (key == QLatin1String("playresy")) {
        m_nPlayResY = fields.Int(',');
    } else if (key == QLatin1String("scripttype")) {
        versions.nEventVersion = ScriptVersion(fields.Rest(), versions.nEventVersion);
        versions.nStyleVersion = ScriptVersion(fields.Rest(), versions.nStyleVersion);
    } else if (key == QLatin1String("collisions")) {
        // Intentional: a string of one control character, not a number.
        const bool reversed = fields.Str(',').toString().toLower().contains(QLatin1String("reverse"));
        m_strCollisions = QString(QChar(reversed ? 1 : 0));
    } else if (key == QLatin1String("[v4 styles]")) {
        versions.nStyleVersion = 4;
    } else if (key == QLatin1String("[v4+ styles]")) {
        versions.nStyleVersion = 5;
    } else if (key == QLatin1String("style")) {
        ParseStyle(fields, versions.nStyleVersion);
    } else if (key == QLatin1String("dialogue")) {
        ParseDialogue(fields, versions.nEventVersion);
    }
}

void AssParser::ParseStyle(FieldReader &fields, int version)
{
    const int alphaLevel = ReadStyleFields(fields, version);
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

int AssParser::ReadStyleFields(FieldReader &fields, int version)
{
    fields.Str(','); // the style's name is not used
    m_strFontName = fields.Str(',').toString();
    m_dFontSize = fields.Float(',');
    for (int &color : m_nColors)
        color = fields.Int(',');
    m_nBold = fields.Int(',');
    m_bItalic = fields.Int(',') != 0;
    if (version >= 5) {
        m_bUnderline = fields.Int(',') != 0;
        m_bStrikeOut = fields.Int(',') != 0;
        m_dScaleX = fields.Float(',');
        m_dScaleY = fields.Float(',');
        m_dSpacing = fields.Float(',');
        m_dAngleZ = fields.Float(',');
    }
    if (version >= 4)
        m_nBorderStyle = fields.Int(',');
    m_dOutline = fields.Float(',');
    m_dShadow = fields.Float(',');
    m_nAlignment = fields.Int(',');
    const int left = fields.Int(',');
    const int right = fields.Int(',');
    const int vertical = fields.Int(',');
    m_rcMargin.setCoords(left, vertical, right, vertical);
    const int alphaLevel = version <= 4 ? fields.Int(',') : 0;
    m_nCharset = fields.Int(',');
    return alphaLevel;
}

void AssParser::ParseDialogue(FieldReader &fields, int version)
{
    AssSubtitleItem item;
    if (version <= 4) {
        // "Marked=0" is not used
        fields.Str('=');
        fields.Int(',');
    } else {
        item.nLayer = fields.Int(',');
    }
    item.nStart = fields.Time();
    item.nEnd = fields.Time();
    item.strStyle = StyleName(fields.Str(','));
    item.strActor = fields.Str(',').toString();
    for (int margin = 0; margin < 3; ++margin)
        fields.Int(',');
    const QStringView effect = fields.Str(',');
    const QStringView text = fields.Rest();
    // If no comma was left, the effect is the text again; drop it. Intentional: also if one is a prefix of the other.
    const auto common = std::min(effect.size(), text.size());
    if (effect.left(common) != text.left(common))
        item.strEffect = effect.toString();
    item.strText = RemoveSSATags(text.toString());
    m_listItems.append(item);
}

QString AssParser::StyleName(QStringView name) const
{
    // Most events have the style of the one before; share its string.
    if (!m_listItems.isEmpty() && m_listItems.constLast().strStyle == name)
        return m_listItems.constLast().strStyle;
    QString style = TrimLeft(name.toString(), QLatin1Char('*'));
    if (style.toLower() == QLatin1String("default"))
        return QStringLiteral("Default");
    return style;
}

QString AssParser::GetStr(QString &line, char separator)
{
    return TakeField(line, [&](FieldReader &fields) { return fields.Str(separator).toString(); });
}

int AssParser::GetInt(QString &line, char separator)
{
    return TakeField(line, [&](FieldReader &fields) { return fields.Int(separator); });
}

double AssParser::GetFloat(QString &line, char separator)
{
    return TakeField(line, [&](FieldReader &fields) { return fields.Float(separator); });
}

QString AssParser::RemoveSSATags(QString text)
{
    int position = 0;
    text = RemoveBlocks(text, '{', '}', position);
    // Intentional: the position is not reset, so <...> is removed only after a '{' that is never closed.
    text = RemoveBlocks(text, '<', '>', position);
    return WithLineFeeds(std::move(text));
}

int AssParser::ParseLinesToSubtitleItem()
{
    return 1;
}
