#include "processlocale.h"

#include "printable.h"

#include <langinfo.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cstring>

void SetProcessLocale()
{
    // No other thread runs yet, so the environment may be changed.
    // NOLINTBEGIN(concurrency-mt-unsafe)
    (void)std::setlocale(LC_ALL, "");
    const char *pCharacters = std::setlocale(LC_CTYPE, nullptr);
    if (std::strcmp(pCharacters, "C") == 0 || std::strcmp(pCharacters, "POSIX") == 0) {
        // Names and unmarked text files are UTF-8 where nobody says otherwise. LC_ALL would overrule LC_CTYPE.
        unsetenv("LC_ALL");
        setenv("LC_CTYPE", "C.UTF-8", 1);
        (void)std::setlocale(LC_CTYPE, "");
    }
    // Options and tags have decimal points everywhere.
    (void)std::setlocale(LC_NUMERIC, "C");
    // NOLINTEND(concurrency-mt-unsafe)
}

bool SurvivesLocale(const std::string &strName)
{
    const bool bAscii =
        std::all_of(strName.begin(), strName.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no locale is set once other threads run
    return bAscii || (std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 && IsUtf8(strName));
}
