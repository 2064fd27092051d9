#include "../support/sanitizerhooks.h"

// For LeakSanitizer, if built in: leaks of libx265 encoders are not subburn's.
const char *__lsan_default_suppressions()
{
    return "leak:libx265.so\n";
}
const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
