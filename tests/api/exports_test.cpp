// A shared library exports exactly the dynamic symbols of its list.
#include "support/childprocess.h"

#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>

#ifndef EXPORTS_OF_QT
#define EXPORTS_OF_QT "" // no list of symbols that exist with this generation of Qt only
#endif

namespace
{

std::set<std::string> ListedSymbols()
{
    std::set<std::string> symbols;
    for (const char *pList : {EXPORTS_LIST, EXPORTS_OF_QT}) {
        std::ifstream file(pList);
        for (std::string line; std::getline(file, line);)
            symbols.insert(line);
    }
    return symbols;
}

/** Names without the version node, which all must have if the library has one. The several symbols of a constructor or
    destructor count once. */
std::set<std::string> ExportedSymbols()
{
    std::istringstream output(
        ChildProcess::Run({"nm", "-D", "-C", "--defined-only", "--format=posix", SUBTITLE_LIBRARY}).strOut);
    const std::string suffix = sizeof VERSION_NODE == 1 ? "" : "@@" VERSION_NODE;
    const std::regex versionAndValue(suffix + " [A-Za-z] [0-9a-f]+( [0-9a-f]+)?$");
    std::set<std::string> symbols;
    for (std::string line; std::getline(output, line);) {
        const std::string symbol = std::regex_replace(line, versionAndValue, "");
        if (symbol.rfind("__odr_asan", 0) != 0 && symbol.rfind(VERSION_NODE " A", 0) != 0)
            symbols.insert(symbol);
    }
    return symbols;
}

} // namespace

TEST(Exports, AreThoseListed)
{
    EXPECT_GE(ListedSymbols().size(), std::size_t{EXPORTED_FUNCTIONS});
    EXPECT_EQ(ExportedSymbols(), ListedSymbols());
}
