#include "../support/sanitizerhooks.h"

// For LeakSanitizer, if built in: leaks of Qt's offscreen platform are not the examples'.
const char *__lsan_default_suppressions()
{
    return "leak:libqoffscreen\nleak:QScreen::QScreen\nleak:QPlatformScreen::QPlatformScreen\n"
           "leak:QWindowSystemInterface::handleScreenAdded\n";
}
const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
