// docs/hosting.md: its quotes are in the files that it names, its links lead to files, and the examples' commands work.
#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

namespace
{

using Lines = std::vector<std::string>;

const std::filesystem::path Root = SOURCES;

Lines ReadLines(const std::filesystem::path &path)
{
    std::ifstream stream(path);
    EXPECT_TRUE(stream) << path;
    Lines listLines;
    for (std::string strLine; std::getline(stream, strLine);)
        listLines.push_back(strLine);
    return listLines;
}

/** The same, with the " * " of comment lines replaced by spaces. */
Lines ReadSource(const std::filesystem::path &path)
{
    Lines listLines = ReadLines(path);
    for (std::string &strLine : listLines) {
        if (strLine.compare(0, 3, " * ") == 0)
            strLine[1] = ' ';
    }
    return listLines;
}

/** Removes the indentation that all lines have in common. */
Lines Unindented(Lines listLines)
{
    std::size_t nCommon = std::string::npos;
    for (const std::string &strLine : listLines)
        nCommon = std::min(nCommon, strLine.find_first_not_of(' '));
    for (std::string &strLine : listLines)
        strLine.erase(0, std::min(nCommon, strLine.size()));
    return listLines;
}

/** Whether a file contains these lines in a row, at any indentation. */
bool Stands(const Lines &listQuote, const Lines &listFile)
{
    for (std::size_t n = 0; n + listQuote.size() <= listFile.size(); ++n) {
        const auto from = listFile.begin() + static_cast<std::ptrdiff_t>(n);
        if (Unindented({from, from + static_cast<std::ptrdiff_t>(listQuote.size())}) == listQuote)
            return true;
    }
    return false;
}

struct Quote {
    std::string strFile; ///< target of the last link before it
    int nLine = 0;
    Lines listLines;
};

std::vector<Quote> Quotes()
{
    const std::regex link(R"(\]\(\.\./([^)#]*)\))");
    std::vector<Quote> listQuotes;
    std::string strFile;
    bool bInside = false;
    int nLine = 0;
    for (const std::string &strLine : ReadLines(Root / "docs/hosting.md")) {
        ++nLine;
        const bool bFence = strLine.compare(0, 3, "```") == 0;
        if (bFence && !bInside)
            listQuotes.push_back({strFile, nLine, {}});
        else if (bInside && !bFence)
            listQuotes.back().listLines.push_back(strLine);
        else
            for (std::sregex_iterator found(strLine.begin(), strLine.end(), link), end; found != end; ++found)
                strFile = (*found)[1];
        bInside ^= bFence;
    }
    EXPECT_FALSE(bInside);
    return listQuotes;
}

} // namespace

TEST(Hosting, QuotesStandInTheFilesThatItNames)
{
    std::set<std::string> listFiles;
    for (const Quote &quote : Quotes()) {
        EXPECT_FALSE(quote.listLines.empty()) << quote.nLine;
        EXPECT_TRUE(Stands(Unindented(quote.listLines), ReadSource(Root / quote.strFile)))
            << "docs/hosting.md:" << quote.nLine << ": is not in " << quote.strFile;
        listFiles.insert(quote.strFile);
    }
    // Each example is quoted.
    for (const auto &entry : std::filesystem::directory_iterator(Root / "examples"))
        EXPECT_EQ(listFiles.count("examples/" + entry.path().filename().string()), 1U) << entry.path();
}

TEST(Hosting, HasNoCodeOutsideOfQuotes)
{
    bool bInside = false;
    for (const std::string &strLine : ReadLines(Root / "docs/hosting.md")) {
        bInside ^= strLine.compare(0, 3, "```") == 0;
        EXPECT_TRUE(bInside || strLine.compare(0, 4, "    ") != 0) << strLine;
    }
}

TEST(Hosting, LinksLeadToFiles)
{
    const std::regex link(R"(\]\(([^)#]*)(#[^)]*)?\))");
    int nLinks = 0;
    for (const std::string &strLine : ReadLines(Root / "docs/hosting.md")) {
        for (std::sregex_iterator found(strLine.begin(), strLine.end(), link), end; found != end; ++found, ++nLinks)
            EXPECT_TRUE(std::filesystem::exists(Root / "docs" / (*found)[1].str())) << (*found)[0];
    }
    EXPECT_GT(nLinks, 10);
}

#ifdef WITH_COMPILER
namespace
{

/** The build command in the comment at the beginning of a file, changed to write its output to the folder $1. */
std::string BuildCommand(const std::filesystem::path &path)
{
    std::string strCommand;
    for (const std::string &strLine : ReadLines(path)) {
        if (strLine == " */")
            break;
        const std::string strText = strLine.substr(std::min<std::size_t>(strLine.size(), 3));
        if (std::regex_search(strText, std::regex("^    (cc|c\\+\\+) ")) || (!strCommand.empty() && !strText.empty()))
            strCommand += strText + "\n";
    }
    return std::regex_replace(strCommand, std::regex(" -o "), " -o \"$$1\"/");
}

} // namespace

TEST(Hosting, ExamplesAreBuiltByTheCommandsInThem)
{
    const TemporaryFolder folder;
    // Folders are passed in the environment: the shell would split paths with blanks in pkg-config's output.
    folder.Write("libsubtitle.pc",
                 "Name: libsubtitle\nDescription: the one under test\nVersion: 1\nLibs: -lsubtitle\n");
    folder.Write("libsubtitleframe.pc",
                 "Name: libsubtitleframe\nDescription: the one under test\nVersion: 1\nLibs: -lsubtitleframe\n");
    const ChildProcess::Environment environment = {{"PKG_CONFIG_PATH", folder.Path().string()},
                                                   {"CPATH", SOURCES "/api:" SOURCES "/frames"},
                                                   {"LIBRARY_PATH", LIBRARY_FOLDER}};
    for (const char *pFile : {"rawhost.c", "textbitmap.c", "ffmpeghost.cpp", "qthost.cpp"}) {
        const std::string strCommand = BuildCommand(Root / "examples" / pFile);
        const Outcome outcome = ChildProcess::Run(
            {"sh", "-c", "cd \"$0\" && " + strCommand, SOURCES "/examples", folder.Path().string()}, "", environment);
        EXPECT_EQ(outcome.nExit, 0) << strCommand;
        EXPECT_EQ(outcome.strError, "") << strCommand;
        EXPECT_TRUE(std::filesystem::exists(folder.Path() / std::filesystem::path(pFile).stem())) << strCommand;
    }
}
#endif
