#include "render/videosubtitle.h"

#include <gtest/gtest.h>

// Read by AddressSanitizer, where it is built in: allocations that cannot be had are part of the tests.
extern "C" const char *__asan_default_options()
{
    return "allocator_may_return_null=1";
}

/** Keeps a renderer, so that tests may use Qt's fonts and codecs; and every message of Qt's is a failure. */
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
