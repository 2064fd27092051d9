// Every kind of host, each in a process of its own; what it prints must be one line, the same for all.
#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

namespace
{

const char *const Environments[] = {
    "env -u QT_QPA_PLATFORM -u DISPLAY -u WAYLAND_DISPLAY",
    "env -u DISPLAY QT_QPA_PLATFORM=rubbish",
    "env QT_QPA_PLATFORM=xcb DISPLAY=:4711",
    "env -u HOME -u LANG LC_ALL=C",
};

ChildResult RunHost(const std::string &environment, const std::string &kind, const std::string &task)
{
    // Without a folder of its own, an application object of the host's warns.
    static const TemporaryFolder runtimeFolder;
    return RunChild(environment + " XDG_RUNTIME_DIR=" + runtimeFolder.Path().string() +
                    " " HOST_PROBE " " SUBTITLE_LIBRARY " " + kind + " " + task);
}

const std::string &Checksum()
{
    static const std::string checksum = RunHost(Environments[0], "none", "render").strOutput;
    return checksum;
}

void ExpectWorks(const std::string &environment, const std::string &kind, const std::string &task)
{
    const ChildResult result = RunHost(environment, kind, task);
    EXPECT_EQ(result.nStatus, 0) << environment << " " << kind << " " << task << ": " << result.strOutput;
    EXPECT_EQ(result.strOutput, Checksum()) << environment << " " << kind << " " << task;
    EXPECT_EQ(result.strOutput.substr(0, 9), "checksum ");
}

} // namespace

TEST(Hosts, WithoutAnApplicationObject)
{
    for (const char *environment : Environments)
        ExpectWorks(environment, "none", "render");
}

TEST(Hosts, WithAQCoreApplication)
{
    for (const char *environment : Environments)
        ExpectWorks(environment, "core", "render");
}

TEST(Hosts, WithAQGuiApplication)
{
    for (const char *environment : Environments)
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
    for (const char *environment : Environments)
        ExpectWorks(environment, "none", "latergui");
}

TEST(Hosts, RenderersOnOneThreadAfterTheOther)
{
    for (const char *kind : {"none", "core", "gui"})
        ExpectWorks(Environments[0], kind, "threads");
}

TEST(Hosts, QGuiApplicationThatGoesBeforeTheRenderer)
{
    ExpectWorks(Environments[0], "gui", "guigoes");
}

TEST(Hosts, PlainCProgramFromTheHeadersExample)
{
    const ChildResult result = RunChild("head -c 1382400 /dev/zero | " HEADER_EXAMPLE
                                        " /missing.srt | cmp -n 1382400 - /dev/zero && echo same");
    EXPECT_EQ(result.strOutput, "same\n");
}
