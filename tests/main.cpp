#include "render/videosubtitle.h"
#include "support/sanitizerhooks.h"

#include <gtest/gtest.h>

// Options for AddressSanitizer, if it is built in: some tests make allocations that must fail.
const char *__asan_default_options()
{
    return "allocator_may_return_null=1";
}

/** Keeps a renderer, so that tests may use Qt's fonts and codecs, and makes every Qt message a failure. */
int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    const VideoSubtitle renderer;
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
        ADD_FAILURE() << "Qt says: " << text.toStdString();
    });
    const int result = RUN_ALL_TESTS();
    qInstallMessageHandler(nullptr);
    return result;
}
