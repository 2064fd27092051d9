// The built files have the protections that cmake/hardening.cmake asks compiler and linker for.
#include "support/childprocess.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>

namespace
{

std::string Readelf(const std::vector<std::string> &listArguments)
{
    std::vector<std::string> listCommand = {"readelf", "--wide"};
    listCommand.insert(listCommand.end(), listArguments.begin(), listArguments.end());
    const Outcome outcome = ChildProcess::Run(listCommand);
    EXPECT_EQ(outcome.nExit, 0) << outcome.strError;
    return outcome.strOut;
}

/** The lines of @p strText that contain @p strPart. */
std::vector<std::string> LinesWith(const std::string &strText, const std::string &strPart)
{
    std::istringstream lines(strText);
    std::vector<std::string> listLines;
    for (std::string strLine; std::getline(lines, strLine);) {
        if (strLine.find(strPart) != std::string::npos)
            listLines.push_back(strLine);
    }
    return listLines;
}

bool Holds(const std::string &strText, const std::string &strPart)
{
    return strText.find(strPart) != std::string::npos;
}

std::vector<std::string> Objects()
{
    std::ifstream names(OBJECTS_LIST);
    std::vector<std::string> listNames;
    for (std::string strName; std::getline(names, strName);)
        listNames.push_back(strName);
    EXPECT_GT(listNames.size(), 60U);
    return listNames;
}

const char *const Files[] = {SUBTITLE_LIBRARY, SUBBURN_PROGRAM, FRAME_LIBRARY,
#ifdef FREI0R_PLUGIN
                             FREI0R_PLUGIN
#endif
};
const char *const FileNames[] = {"Library", "Subburn", "FrameLibrary", "Frei0rPlugin"};

/** The shared libraries, the frei0r plugin, and subburn. */
class HardeningTest : public testing::TestWithParam<const char *>
{
protected:
    std::string Read(const std::string &strWhat) const { return Readelf({strWhat, GetParam()}); }
};

} // namespace

TEST_P(HardeningTest, AddressesOfFunctionsAreReadOnlyFromTheStart)
{
    EXPECT_EQ(LinesWith(Read("--program-headers"), "  GNU_RELRO  ").size(), 1U);
    EXPECT_EQ(LinesWith(Read("--dynamic"), "BIND_NOW").size(), 1U);
    const auto listFlags = LinesWith(Read("--dynamic"), "(FLAGS_1)");
    ASSERT_EQ(listFlags.size(), 1U);
    EXPECT_TRUE(Holds(listFlags[0], " NOW")) << listFlags[0];
}

TEST_P(HardeningTest, StackIsNotExecutable)
{
    const auto listStack = LinesWith(Read("--program-headers"), "  GNU_STACK  ");
    ASSERT_EQ(listStack.size(), 1U);
    EXPECT_TRUE(Holds(listStack[0], " RW ")) << listStack[0];
}

TEST_P(HardeningTest, LoadsAtAnyAddress)
{
    EXPECT_EQ(LinesWith(Read("--file-header"), " DYN (").size(), 1U);
}

#ifdef WITH_FORTIFY
/** Not for the frame library: the compiler knows the size of all that it copies, so it makes no checked call. */
class FortifyTest : public HardeningTest
{
};

TEST_P(FortifyTest, CallsOfTheCLibraryAreChecked)
{
#ifdef __clang__
    if (GetParam() == std::string(SUBBURN_PROGRAM))
        GTEST_SKIP() << "formatting, all that there is in it to be checked, clang does not check in C++";
#endif
    // Functions like __memcpy_chk. The compiler chooses which.
    EXPECT_FALSE(LinesWith(Read("--dyn-syms"), "_chk@").empty());
}

INSTANTIATE_TEST_SUITE_P(Files, FortifyTest, testing::Values(SUBTITLE_LIBRARY, SUBBURN_PROGRAM),
                         [](const auto &info) { return info.index == 0 ? "Library" : "Subburn"; });
#endif

INSTANTIATE_TEST_SUITE_P(Files, HardeningTest, testing::ValuesIn(Files),
                         [](const auto &info) { return std::string(FileNames[info.index]); });

// Checks the objects, since the library always has guards: those of the part of Qt that is linked into it.
TEST(HardeningOfObjects, StackIsGuarded)
{
    std::set<std::string> setGuarded;
    for (const std::string &strName : Objects()) {
        if (!LinesWith(Readelf({"--syms", strName}), " __stack_chk_fail").empty())
            setGuarded.insert(Holds(strName, "/subburn.dir/")                 ? "subburn"
                              : Holds(strName, "/subtitleframe_objects.dir/") ? "frame library"
                                                                              : "library");
    }
    EXPECT_EQ(setGuarded, std::set<std::string>({"frame library", "library", "subburn"}));
}

#ifdef __x86_64__
// Checks the objects: if the C library's start-up files lack the mark, everything that is linked with them does.
TEST(HardeningOfObjects, JumpsAndReturnsAreMarked)
{
    for (const std::string &strName : Objects())
        EXPECT_TRUE(Holds(Readelf({"--notes", strName}), "x86 feature: IBT, SHSTK")) << strName;
}
#endif

TEST(HardeningOfObjects, EveryOneIsCompiledWithIt)
{
    std::ifstream file(COMPILE_COMMANDS);
    const std::string strCommands{std::istreambuf_iterator<char>(file), {}};
    std::size_t nObjects = 0;
    for (const char *pTarget :
         {"/subtitle_objects.dir/", "/subtitleframe_objects.dir/", "/subburn.dir/", "/frei0rsubtitleburn.dir/"}) {
        for (const std::string &strLine : LinesWith(strCommands, pTarget)) {
            if (!Holds(strLine, "\"command\": "))
                continue;
            ++nObjects;
            EXPECT_TRUE(Holds(strLine, " -fstack-protector-strong ")) << strLine;
#ifdef __x86_64__ // elsewhere not every compiler has the option
            EXPECT_TRUE(Holds(strLine, " -fstack-clash-protection ")) << strLine;
#endif
#ifdef WITH_FORTIFY
            EXPECT_TRUE(Holds(strLine, " -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 ")) << strLine;
#endif
        }
    }
    EXPECT_GT(nObjects, 60U);
}
