#pragma once

#include "fuzzsupport.h"
#include "parsers/parsermanager.h"
#include "support/plaintext.h"

#include <algorithm>
#include <climits>

/** The lines of a file as this process reads them: UTF-16 is little-endian, whichever byte order mark it has. */
inline std::vector<std::u16string> FileLines(std::string bytes)
{
    if (bytes.substr(0, 2) == "\xFE\xFF")
        bytes.replace(0, 2, "\xFF\xFE");
    return LinesPlainly(bytes);
}

/** Opens a text file, and compares what is due around the starts and ends of cues with the cues of the plain parser. */
template <typename Item>
void OpenAsPlain(const std::string &strFile, const std::vector<Item> &listItems)
{
    constexpr std::size_t MostItems = 50;
    ParserManager manager;
    Require(manager.Open(QString::fromStdString(strFile), 0) != 0, "a text file opens");
    manager.SetVideoSize(32, 16);
    const auto expectDue = [&](long ms) {
        const QString due = manager.GetSubtitle(ms);
        Require(due.toStdU16String() == FindDuePlainly(listItems, ms).value_or(u""), "the same text is due");
        QRect rect(1, 2, 3, 4);
        Require(manager.TextToImage(due, rect).isNull() && rect == QRect(1, 2, 3, 4), "text is no picture");
    };
    for (const long ms : {-1L, 0L, 1L, 1000L, 0x7FFFFFFFL, LONG_MAX})
        expectDue(ms);
    for (std::size_t n = 0; n < std::min(MostItems, listItems.size()); ++n) {
        for (const long ms : {-1L, 0L, 1L}) {
            expectDue(ms + listItems[n].nStart);
            expectDue(ms + listItems[n].nEnd);
        }
    }
}
