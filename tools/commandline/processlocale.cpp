#include "commandline/processlocale.h"

#include "commandline/printable.h"

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
        // File names and text without a byte-order mark are UTF-8 by default. LC_ALL would override LC_CTYPE.
        unsetenv("LC_ALL");
        setenv("LC_CTYPE", "C.UTF-8", 1);
        (void)std::setlocale(LC_CTYPE, "");
    }
    // Options and tags use decimal points in every language.
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
