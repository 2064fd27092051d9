#pragma once

#include "textio/localecodec.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/*
 * Text functions of the plain parsers, on strings of 16-bit units that they process one at a time: slow, but as plain
 * as possible.
 */

/** Converts unit by unit, so that a byte-order mark is kept. */
inline QString Units(const std::u16string &text)
{
    QString units;
    for (const char16_t unit : text)
        units.append(QChar(unit));
    return units;
}

/** The lines of a file, decoded by its byte-order mark. Does not support big-endian text. */
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

/** Converts with Qt; none if Qt does not accept the number. */
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

/** Wraps a number to 32 bits in two's complement. */
inline int Wrap32Plainly(std::int64_t value)
{
    constexpr std::int64_t Range = std::int64_t{1} << 32;
    value = ((value % Range) + Range) % Range;
    return static_cast<int>(value >= Range / 2 ? value - Range : value);
}

/** The text due at a time; none if no cue is due. */
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
