// The environment that CTest starts the tests in is the same on every machine and for every user.
#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>

namespace
{

const std::string Folder = ENVIRONMENT_FOLDER;
const std::string RunProgram = Folder + "/run";

std::vector<std::string> SortedLines(const std::string &strText)
{
    std::vector<std::string> listLines;
    std::istringstream text(strText);
    for (std::string strLine; std::getline(text, strLine);)
        listLines.push_back(strLine);
    std::sort(listLines.begin(), listLines.end());
    return listLines;
}

} // namespace

TEST(Environment, TestsRunInIt)
{
    const char *const pFontConfig =
        std::getenv("FONTCONFIG_FILE"); // NOLINT(concurrency-mt-unsafe): there is one thread
    ASSERT_NE(pFontConfig, nullptr);
    EXPECT_EQ(pFontConfig, Folder + "/fonts.conf");
}

TEST(Environment, FontsAreThoseThatTestsName)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path() / "fonts");
    std::filesystem::create_symlink(Folder + "/fonts/DejaVuSans.ttf", folder.Path() / "fonts" / "Other.ttf");
    const std::string strConfiguration =
        folder.Write("fonts.conf", "<fontconfig><dir prefix=\"relative\">fonts</dir></fontconfig>");
    const ChildProcess::Environment environment = {{"FONTCONFIG_FILE", strConfiguration}};
    const std::vector<std::string> listFonts = {"fc-list", "-f", "%{file|basename}\n"};
    EXPECT_EQ(ChildProcess::Run(listFonts, "", environment).strOut, "Other.ttf\n");

    const Outcome outcome = ChildProcess::Run({RunProgram, listFonts[0], listFonts[1], listFonts[2]}, "", environment);
    EXPECT_EQ(outcome.strError, "");
    std::vector<std::string> listFiles = SortedLines(outcome.strOut);
    listFiles.erase(std::unique(listFiles.begin(), listFiles.end()), listFiles.end()); // a collection has several fonts
    const std::vector<std::string> listExpected = {
        "DejaVuSans-Bold.ttf",  "DejaVuSans.ttf",          "DejaVuSansMono-Bold.ttf", "DejaVuSansMono.ttf",
        "DejaVuSerif-Bold.ttf", "DejaVuSerif.ttf",         "Lohit-Devanagari.ttf",    "NotoColorEmoji.ttf",
        "NotoSansCJK-Bold.ttc", "NotoSansCJK-Regular.ttc", "NotoSerifCJK-Bold.ttc",   "NotoSerifCJK-Regular.ttc",
    };
    EXPECT_EQ(listFiles, listExpected);
}

TEST(Environment, OfTheCallersOnlyWhatTestsTakeOptionsFrom)
{
    const Outcome outcome = ChildProcess::Run({RunProgram, "env"}, "",
                                              {{"PATH", "/usr/bin:/bin"},
                                               {"TMPDIR", "/a b"},
                                               {"TERM", ""},
                                               {"ASAN_OPTIONS", ""},
                                               {"LSAN_OPTIONS", ""},
                                               {"TSAN_OPTIONS", ""},
                                               {"UBSAN_OPTIONS", ""},
                                               {"QT_HASH_SEED", ""},
                                               {"QT_SCALE_FACTOR", "3"},
                                               {"SUBTITLE_SOAK_SECONDS", "60"},
                                               {"LC_ALL", "tr_TR.UTF-8"},
                                               {"GST_DEBUG", "5"},
                                               {"LANGUAGE", "de"},
                                               {"TZ", "Pacific/Chatham"}});
    EXPECT_EQ(outcome.strError, "");
    std::vector<std::string> listVariables = SortedLines(outcome.strOut);
    // Set by the shell that "run" starts the program with.
    const auto isOfTheShell = [](const std::string &strLine) { return strLine.rfind("PWD=", 0) == 0; };
    listVariables.erase(std::remove_if(listVariables.begin(), listVariables.end(), isOfTheShell), listVariables.end());
    const std::vector<std::string> listExpected = {
        "FONTCONFIG_FILE=" + Folder + "/fonts.conf",
        "HOME=" + Folder + "/home",
        "LANG=C.UTF-8",
        "PATH=/usr/bin:/bin",
        "SUBTITLE_SOAK_SECONDS=60",
        "TMPDIR=/a b",
        "TZ=UTC",
        "XDG_CACHE_HOME=" + Folder + "/cache",
    };
    EXPECT_EQ(listVariables, listExpected);
}

TEST(Environment, AnyProgramWithAnyArgumentsAndItsStatus)
{
    const TemporaryFolder folder;
    const std::string strProgram = folder.Write("a=b 'c", "#!/bin/sh\nprintf '%s\\n' \"$@\"\nexit 7\n");
    ASSERT_EQ(chmod(strProgram.c_str(), 0700), 0);
    const Outcome outcome = ChildProcess::Run({RunProgram, strProgram, "", "A=B", "two words", "\xC3\xBC'$x\""});
    EXPECT_EQ(outcome.nExit, 7);
    EXPECT_EQ(outcome.strOut, "\nA=B\ntwo words\n\xC3\xBC'$x\"\n");
}

TEST(Environment, NewFilesAreReadableByAll)
{
    const Outcome outcome =
        ChildProcess::Run({"sh", "-c", "umask 077; exec \"$@\"", "sh", RunProgram, "sh", "-c", "umask"});
    EXPECT_EQ(outcome.strOut, "0022\n");
}
