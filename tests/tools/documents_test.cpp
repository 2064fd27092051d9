// The man page and the completions have the same options as `subburn --help`.
#include "support/childprocess.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace
{

/** Names of options, with the name of the argument; "" if there is none. */
using Options = std::map<std::string, std::string>;

std::string Output(const std::vector<std::string> &listCommand)
{
    const Outcome outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    EXPECT_EQ(outcome.strError, "");
    return outcome.strOut;
}

std::string Help()
{
    return Output({SUBBURN_PROGRAM, "--help"});
}

/** The source of the man page, with the escapes of hyphens and quotes replaced. */
std::string ManPage()
{
    std::ifstream file(MAN_PAGE);
    std::stringstream text;
    text << file.rdbuf();
    const std::string strHyphens = std::regex_replace(text.str(), std::regex(R"(\\-)"), "-");
    return std::regex_replace(strHyphens, std::regex(R"(\\\(dq)"), "\"");
}

/** The rest of a text from a line on. */
std::string From(const std::string &strText, const std::string &strLine)
{
    const size_t nStart = strText.find("\n" + strLine + "\n");
    EXPECT_NE(nStart, std::string::npos) << strLine;
    return nStart == std::string::npos ? "" : strText.substr(nStart);
}

/** The first group of an expression in each line of a text that matches it at its start. */
std::vector<std::string> Matches(const std::string &strText, const std::string &strExpression)
{
    const std::regex expression(strExpression);
    std::istringstream lines(strText);
    std::vector<std::string> listFound;
    for (std::string strLine; std::getline(lines, strLine);) {
        std::smatch match;
        if (std::regex_search(strLine, match, expression, std::regex_constants::match_continuous))
            listFound.push_back(match[1]);
    }
    return listFound;
}

Options HelpOptions()
{
    Options options;
    for (const std::string &strOption : Matches(Help(), "  (-[^ ].*)")) {
        std::smatch match;
        EXPECT_TRUE(std::regex_search(strOption, match, std::regex(R"(^(-\w)?,?(--[\w-]+)( [^ ]+)?)"))) << strOption;
        if (match[1].matched)
            options[match[1]] = match[3].matched ? match[3].str().substr(1) : "";
        options[match[2]] = match[3].matched ? match[3].str().substr(1) : "";
    }
    return options;
}

std::vector<std::string> Names(const Options &options)
{
    std::vector<std::string> listNames;
    for (const auto &[strName, strValue] : options)
        listNames.push_back(strName);
    return listNames;
}

/** The completions in bash of a hyphen after a word, sorted. */
std::vector<std::string> BashOffers(const std::string &strWord)
{
    std::istringstream lines(Output({"bash", "-c", R"(
        . /usr/share/bash-completion/bash_completion
        . "$1"
        COMP_WORDS=(subburn "$2" -)
        COMP_CWORD=2
        COMP_LINE="subburn $2 -"
        COMP_POINT=${#COMP_LINE}
        _subburn
        printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort)",
                                     "bash", BASH_COMPLETION, strWord}));
    std::vector<std::string> listOffers;
    for (std::string strLine; std::getline(lines, strLine);) {
        if (!strLine.empty())
            listOffers.push_back(strLine);
    }
    return listOffers;
}

} // namespace

TEST(DocumentsTest, HelpIsUnderstood)
{
    const Options options = HelpOptions();
    EXPECT_EQ(options.at("-h"), "");
    EXPECT_EQ(options.at("--help"), "");
    EXPECT_EQ(options.at("--pipe"), "WxH@FPS");
}

TEST(DocumentsTest, ManPageHasEveryOption)
{
    Options options;
    for (const std::string &strItem : Matches(ManPage(), R"(\.It (Fl .*))")) {
        std::smatch match;
        const std::regex expression(R"(^(?:Fl (\w) , )?Fl (-[\w-]+)(?: Ar ([^ ]+))?$)");
        ASSERT_TRUE(std::regex_search(strItem, match, expression)) << strItem;
        if (match[1].matched)
            options["-" + match[1].str()] = match[3];
        options["-" + match[2].str()] = match[3];
    }
    EXPECT_EQ(options, HelpOptions());
}

TEST(DocumentsTest, ManPageSpeaksOfNoOtherOption)
{
    const Options options = HelpOptions();
    const std::string strPage = ManPage();
    const std::regex expression("(?:Fl -| --)([a-z][a-z-]*)");
    for (auto mention = std::sregex_iterator(strPage.begin(), strPage.end(), expression);
         mention != std::sregex_iterator(); ++mention)
        EXPECT_EQ(options.count("--" + (*mention)[1].str()), 1U) << mention->str();
}

TEST(DocumentsTest, ManPageHasTheExamples)
{
    const auto listExamples = Matches(From(Help(), "Examples:"), "  ([^ ].*subburn .*|subburn .*)");
    EXPECT_EQ(listExamples.size(), 8U);
    EXPECT_EQ(Matches(From(ManPage(), ".Sh EXAMPLES"), R"(\.Dl (.*))"), listExamples);
}

TEST(DocumentsTest, ManPageHasTheExitCodes)
{
    const auto listCodes = Matches(From(Help(), "Exit codes:"), " +([0-9]+)  ");
    EXPECT_EQ(listCodes, (std::vector<std::string>{"0", "1", "2", "3", "4", "130"}));
    EXPECT_EQ(Matches(From(ManPage(), ".Sh EXIT STATUS"), R"(\.It (.*))"), listCodes);
}

TEST(DocumentsTest, BashCompletesEveryOption)
{
    EXPECT_EQ(BashOffers("film.mkv"), Names(HelpOptions()));
}

TEST(DocumentsTest, BashOffersNoOptionWhereAValueIsDue)
{
    for (const auto &[strName, strValue] : HelpOptions())
        EXPECT_EQ(BashOffers(strName).empty(), !strValue.empty()) << strName;
}

TEST(DocumentsTest, ZshCompletesEveryOption)
{
    const std::string strArguments = Output({"zsh", "-fc", R"(
        _arguments() { print -rl -- "$@" }
        _subburn() { . $1 }
        _subburn $1)",
                                             "zsh", ZSH_COMPLETION});
    std::map<std::string, bool> mapWithValue;
    for (const std::string &strArgument : Matches(strArguments, R"((?:\([^)]*\))?\*?(-[-\w]+\[.*))")) {
        const size_t nName = strArgument.find('[');
        mapWithValue[strArgument.substr(0, nName)] = strArgument.find("]:") != std::string::npos;
    }
    std::map<std::string, bool> mapExpected;
    for (const auto &[strName, strValue] : HelpOptions())
        mapExpected[strName] = !strValue.empty();
    EXPECT_EQ(mapWithValue, mapExpected);
}
