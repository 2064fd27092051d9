#pragma once

#include "support/plaintext.h"

#include <cmath>
#include <limits>

struct PlainSrtItem {
    int nStart = 0;
    int nEnd = 0;
    std::u16string strText;
};

/** Does the same as ParseTime(); a result that does not fit is the smallest int. */
inline int ParseTimePlainly(const std::u16string &text)
{
    std::vector<std::u16string> parts(1);
    for (const char16_t unit : text) {
        if (unit == u':')
            parts.emplace_back();
        else
            parts.back() += unit == u',' ? u'.' : unit;
    }
    if (parts.size() < 3)
        return 0;
    const std::int64_t hours = IntPlainly(parts[0]).value_or(0);
    const std::int64_t minutes = IntPlainly(parts[1]).value_or(0);
    const double seconds = DoublePlainly(parts[2]).value_or(0.0);
    const double ms = std::trunc((seconds + Wrap32Plainly((hours * 60 + minutes) * 60)) * 1000.0);
    if (ms >= std::numeric_limits<int>::min() && ms <= std::numeric_limits<int>::max())
        return static_cast<int>(ms);
    return std::numeric_limits<int>::min();
}

/** The cues in the lines of an SRT file. */
inline std::vector<PlainSrtItem> ReadSrtPlainly(const std::vector<std::u16string> &lines)
{
    constexpr char16_t Arrow[] = u"-->";
    const auto arrowPosition = [&](const std::u16string &line) {
        for (std::size_t i = 0; i + 3 <= line.size(); ++i) {
            if (line.substr(i, 3) == Arrow)
                return static_cast<int>(i);
        }
        return -1;
    };

    std::vector<PlainSrtItem> items;
    PlainSrtItem working;
    std::size_t i = 0;
    while (i < lines.size()) {
        const std::u16string line = TrimPlainly(lines[i]);
        ++i;
        if (IntPlainly(line))
            continue;
        const int arrow = arrowPosition(line);
        if (arrow > 0) {
            working.nStart = ParseTimePlainly(TrimPlainly(line.substr(0, arrow)));
            working.nEnd = ParseTimePlainly(TrimPlainly(line.substr(arrow + 3)));
            continue;
        }
        working.strText = line;
        while (i < lines.size() && !lines[i].empty() && !IntPlainly(lines[i]) && arrowPosition(lines[i]) <= 0) {
            working.strText += u'\n';
            working.strText += lines[i];
            ++i;
        }
        items.push_back(working);
    }
    return items;
}
