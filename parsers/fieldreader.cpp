#include "parsers/fieldreader.h"

#include "parsers/wrapint.h"

namespace
{

/** Fast path for the usual field of 1 to 9 digits; -1 for anything else. */
int ReadDigits(QStringView field)
{
    constexpr int MaxDigits = 9;
    if (field.isEmpty() || field.size() > MaxDigits)
        return -1;
    int value = 0;
    for (const QChar character : field) {
        const int digit = character.unicode() - '0';
        if (digit < 0 || digit > 9)
            return -1;
        value = value * 10 + digit;
    }
    return value;
}

} // namespace

QStringView FieldReader::Str(char separator)
{
    const QChar *const line = m_line.constData();
    const auto size = static_cast<int>(m_line.size());
    while (m_nPosition < size && line[m_nPosition] == QLatin1Char(' '))
        ++m_nPosition;
    const int begin = m_nPosition;
    int end = begin;
    while (end < size && line[end] != QLatin1Char(separator))
        ++end;
    if (end < size)
        m_nPosition = end + 1;
    return {line + begin, end - begin};
}

int FieldReader::Int(char separator)
{
    QStringView field = Str(separator);
    const int digits = ReadDigits(field);
    if (digits >= 0)
        return digits;
    int base = 10;
    if (field.startsWith(QLatin1String("&h"), Qt::CaseInsensitive)) {
        field = field.mid(2);
        base = 16;
    }
    bool isNumber = false;
    const int value = field.toInt(&isNumber, base);
    return isNumber ? value : -1;
}

double FieldReader::Float(char separator)
{
    bool isNumber = false;
    const double value = Str(separator).toDouble(&isNumber);
    return isNumber ? value : -1.0;
}

int FieldReader::Time()
{
    const int hours = Int(':');
    const int minutes = Int(':');
    const int seconds = Int('.');
    // Intentional: the digits after the dot are hundredths however many there are, so ".5" is 50 ms.
    const int hundredths = Int(',');
    const int wholeMinutes = WrapAdd(WrapMultiply(hours, 60), minutes);
    const int wholeSeconds = WrapAdd(WrapMultiply(wholeMinutes, 60), seconds);
    return WrapAdd(WrapMultiply(wholeSeconds, 1000), WrapMultiply(hundredths, 10));
}
