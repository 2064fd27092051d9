#pragma once

#include <charconv>
#include <optional>
#include <string_view>

/** Text without the white space at its beginning and end. */
inline std::string_view Trimmed(std::string_view strText)
{
    const char *const pBlanks = " \t\n\v\f\r";
    const size_t nFirst = strText.find_first_not_of(pBlanks);
    if (nFirst == std::string_view::npos)
        return {};
    return strText.substr(nFirst, strText.find_last_not_of(pBlanks) - nFirst + 1);
}

/** Reads a number as the library does: with a sign and white space around it, but nothing else. */
template <typename Type>
std::optional<Type> Number(std::string_view strText)
{
    strText = Trimmed(strText);
    if (strText.size() > 1 && strText[0] == '+' && strText[1] != '-')
        strText.remove_prefix(1);
    Type number = 0;
    const auto [pEnd, error] = std::from_chars(strText.data(), strText.data() + strText.size(), number);
    return error == std::errc() && pEnd == strText.data() + strText.size() ? std::optional(number) : std::nullopt;
}
