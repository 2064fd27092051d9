// Every kind of host, each in a process of its own. Each must print the same single line, the checksum of its frames.
#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

namespace
{

/** Variables to set; those with an empty value are removed. */
const ChildProcess::Environment Environments[] = {
    {{"QT_QPA_PLATFORM", ""}, {"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}},
    {{"QT_QPA_PLATFORM", "rubbish"}, {"DISPLAY", ""}},
    {{"QT_QPA_PLATFORM", "xcb"}, {"DISPLAY", ":4711"}},
    {{"HOME", ""}, {"LANG", ""}, {"LC_ALL", "C"}},
};

Outcome RunHost(ChildProcess::Environment environment, const std::string &kind, const std::string &task)
{
    // Without this folder a host's application object prints a warning.
    static const TemporaryFolder runtimeFolder;
    environment.emplace_back("XDG_RUNTIME_DIR", runtimeFolder.Path().string());
    return ChildProcess::Run({HOST_PROBE, SUBTITLE_LIBRARY, kind, task}, "", environment);
}

const std::string &Checksum()
{
    static const std::string checksum = RunHost(Environments[0], "none", "render").strOut;
    return checksum;
}

void ExpectWorks(const ChildProcess::Environment &environment, const std::string &kind, const std::string &task)
{
    const Outcome outcome = RunHost(environment, kind, task);
    EXPECT_EQ(outcome.nExit, 0) << kind << " " << task;
    EXPECT_EQ(outcome.strOut, Checksum()) << kind << " " << task;
    EXPECT_EQ(outcome.strOut.substr(0, 9), "checksum ");
    EXPECT_EQ(outcome.strError, "") << kind << " " << task;
}

} // namespace

TEST(Hosts, WithoutAnApplicationObject)
{
    for (const auto &environment : Environments)
        ExpectWorks(environment, "none", "render");
}

TEST(Hosts, WithAQCoreApplication)
{
    for (const auto &environment : Environments)
        ExpectWorks(environment, "core", "render");
}

TEST(Hosts, WithAQGuiApplication)
{
    for (const auto &environment : Environments)
        ExpectWorks(environment, "gui", "render");
}

TEST(Hosts, TwoHundredCreateDestroyCycles)
{
    for (const char *kind : {"none", "core", "gui"})
        ExpectWorks(Environments[0], kind, "cycles");
}

TEST(Hosts, LoadUnloadAndLoadAgain)
{
    for (const char *kind : {"none", "core", "gui"})
        ExpectWorks(Environments[0], kind, "reload");
}

TEST(Hosts, OwnQGuiApplicationAfterTheLastRendererWent)
{
    for (const auto &environment : Environments)
        ExpectWorks(environment, "none", "latergui");
}

TEST(Hosts, RenderersOnOneThreadAfterTheOther)
{
    for (const char *kind : {"none", "core", "gui"})
        ExpectWorks(Environments[0], kind, "threads");
}

TEST(Hosts, ThreadOfTheFirstRendererThatEndsBeforeTheLast)
{
    for (const char *kind : {"none", "core", "gui"})
        ExpectWorks(Environments[0], kind, "threadgoes");
}

#ifndef SANITIZED // sanitizers need descriptors for their own checks
TEST(Hosts, FirstHandleWithoutFileDescriptors)
{
    for (const char *kind : {"none", "core"})
        ExpectWorks(Environments[0], kind, "descriptors");
}
#endif

TEST(Hosts, WritesNoWarningsAboutFonts)
{
    for (const char *kind : {"none", "core"})
        ExpectWorks(Environments[0], kind, "oddscripts");
}

TEST(Hosts, UnmarkedTextAndNamesAreInTheLocalesEncoding)
{
    const TemporaryFolder folder;
    const struct {
        std::string strLanguage;
        std::string strEncoding;
        const char *pTask;
    } listCases[] = {
        {"de_DE", "ISO-8859-1", "latin1"},
        {"ru_RU", "CP1251", "cp1251"},
        {"zh_TW", "BIG5", "big5"},
    };
    for (const auto &[strLanguage, strEncoding, pTask] : listCases) {
        const std::string strLocale = strLanguage + "." + strEncoding;
        const Outcome outcome = ChildProcess::Run(
            {"localedef", "-i", strLanguage, "-f", strEncoding, (folder.Path() / strLocale).string()});
        ASSERT_EQ(outcome.nExit, 0) << outcome.strError;
        // The fallback fonts depend on the language, so the checksums differ.
        const Outcome shown = RunHost({{"LOCPATH", folder.Path().string()}, {"LC_ALL", strLocale}}, "none", pTask);
        EXPECT_EQ(shown.nExit, 0) << strLocale;
        EXPECT_EQ(shown.strOut.substr(0, 9), "checksum ") << strLocale << " " << shown.strOut;
        EXPECT_EQ(shown.strError, "") << strLocale;
    }
}

TEST(Hosts, ApplicationObjectThatIsDestroyedBeforeTheRenderer)
{
    ExpectWorks(Environments[0], "gui", "appgoes");
}

TEST(Hosts, PlainCProgramFromTheHeadersExample)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("a.srt", "00:00:00,040 --> 00:00:00,040\nHello\n");
    const std::string frame(640 * 360 * 3, 'Z');
    const Outcome outcome = ChildProcess::Run({HEADER_EXAMPLE, file}, frame + frame + frame);
    EXPECT_EQ(outcome.nExit, 0);
    ASSERT_EQ(outcome.strOut.size(), 3 * frame.size());
    EXPECT_EQ(outcome.strOut.substr(0, frame.size()), frame);
    EXPECT_NE(outcome.strOut.substr(frame.size(), frame.size()), frame);
    EXPECT_EQ(outcome.strOut.substr(2 * frame.size()), frame);
}
