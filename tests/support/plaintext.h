#pragma once

#include "textio/localecodec.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/*
 * Text files as the plain parsers take them: strings of 16-bit units, handled one at a time. Slow, and as plain as can
 * be.
 */

/** Unit for unit, with no byte-order mark dropped. */
inline QString Units(const std::u16string &text)
{
    QString units;
    for (const char16_t unit : text)
        units.append(QChar(unit));
    return units;
}

/** The lines of a file's bytes, decoded by its mark. Big-endian text is not understood. */
inline std::vector<std::u16string> LinesPlainly(const std::string &bytes)
{
    std::vector<std::u16string> lines;
    if (bytes.substr(0, 2) == "\xFF\xFE") {
        std::u16string line;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
            const auto low = static_cast<std::uint8_t>(bytes[i]);
            const auto high = static_cast<std::uint8_t>(bytes[i + 1]);
            const auto unit = static_cast<char16_t>(high * 256 + low);
            if (unit == u'\n') {
                lines.push_back(line);
                line.clear();
            } else if (unit != u'\r') {
                line += unit;
            }
        }
        if (!line.empty())
            lines.push_back(line);
        return lines;
    }

    const bool marked = bytes.substr(0, 3) == "\xEF\xBB\xBF";
    std::string line;
    const auto decode = [&] {
        const int size = static_cast<int>(line.size());
        const QString text =
            marked ? QString::fromUtf8(line.data(), size) : LocaleCodec::Current()->Decode(line.data(), size);
        lines.push_back(text.toStdU16String());
        line.clear();
    };
    for (std::size_t i = marked ? 3 : 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\n')
            decode();
        else if (bytes[i] != '\r')
            line += bytes[i];
    }
    if (!line.empty())
        decode();
    return lines;
}

inline std::u16string TrimPlainly(std::u16string text)
{
    while (!text.empty() && QChar(text.front()).isSpace())
        text.erase(0, 1);
    while (!text.empty() && QChar(text.back()).isSpace())
        text.pop_back();
    return text;
}

inline std::u16string LowerPlainly(const std::u16string &text)
{
    return Units(text).toLower().toStdU16String();
}

/** None where Qt says that it is no number. */
inline std::optional<int> IntPlainly(const std::u16string &text, int base = 10)
{
    bool isNumber = false;
    const int value = Units(text).toInt(&isNumber, base);
    return isNumber ? std::optional<int>(value) : std::nullopt;
}

inline std::optional<double> DoublePlainly(const std::u16string &text)
{
    bool isNumber = false;
    const double value = Units(text).toDouble(&isNumber);
    return isNumber ? std::optional<double>(value) : std::nullopt;
}

/** What two's complement makes of a number in 32 bits. */
inline int Wrap32Plainly(std::int64_t value)
{
    constexpr std::int64_t Range = std::int64_t{1} << 32;
    value = ((value % Range) + Range) % Range;
    return static_cast<int>(value >= Range / 2 ? value - Range : value);
}

/** The text due; none when nothing is. */
template <typename Item>
std::optional<std::u16string> FindDuePlainly(const std::vector<Item> &items, long ms)
{
    if (ms <= 0)
        return std::nullopt;
    for (const Item &item : items) {
        if (item.nStart <= ms && ms <= item.nEnd)
            return item.strText;
    }
    return std::nullopt;
}
