// Hosts that exit while they have handles, each in its own process. They must exit normally, and nothing is printed.
#include "support/childprocess.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

namespace
{

void ExpectEnds(const std::string &strMode, const std::string &strOut)
{
    const TemporaryFolder folder;
    const std::string strFile =
        folder.Write("a.srt", "\xEF\xBB\xBF"
                              "00:00:01,000 --> 00:00:02,000\nHello\n\n00:00:03,000 --> 00:00:04,000\nمرحبا 世界 😀\n");
    for (const char *pKind : {"none", "core"}) {
        const Outcome outcome = ChildProcess::Run({EXIT_PROBE, strMode, pKind, strFile});
        EXPECT_EQ(outcome.nExit, 0) << strMode << ", " << pKind;
        EXPECT_EQ(outcome.strOut, strOut) << strMode << ", " << pKind;
        EXPECT_EQ(outcome.strError, "") << strMode << ", " << pKind;
    }
}

} // namespace

TEST(Exit, WithHandlesThatAreLeft)
{
    ExpectEnds("left", "");
    ExpectEnds("left by a thread", "");
}

TEST(Exit, WithHandlesThatStaticObjectsDestroy)
{
    ExpectEnds("static object", "destroyed\n");
    ExpectEnds("static object that goes on", "destroyed\n");
    ExpectEnds("thread of a static object", "destroyed\n");
    ExpectEnds("object of the thread", "destroyed\n");
}

TEST(Exit, WithHandlesThatRegisteredFunctionsDestroy)
{
    ExpectEnds("registered before", "destroyed\n");
    ExpectEnds("thread registered before", "destroyed\n");
    ExpectEnds("registered after the handle was made", "destroyed\n");
    ExpectEnds("registered last", "destroyed\n");
    ExpectEnds("by a thread, after many handles", "destroyed\n");
}

TEST(Exit, WithThreadsThatEndLater)
{
    ExpectEnds("thread that a static object ends", "");
}

TEST(Exit, WithHandlesInUse)
{
    for (int n = 0; n < 5; ++n) {
        ExpectEnds("while frames are shown", "");
        ExpectEnds("while fonts are set", "");
        ExpectEnds("while handles are made", "");
        ExpectEnds("while threads end", "");
        ExpectEnds("by a thread while frames are shown", "");
    }
}
