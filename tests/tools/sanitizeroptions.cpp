#include "../support/sanitizerhooks.h"

// Options of AddressSanitizer and LeakSanitizer in subburn, if they are built in.

// A crash of LeakSanitizer in LLVM 14: it takes the thread-local storage of a library opened at run time for a block with
// a header of glibc 2.19 if its address ends in 010 (hexadecimal), and then scans a range of garbage.
const char *__asan_default_options()
{
    return "intercept_tls_get_addr=0";
}

// Leaks of libx265 encoders are not subburn's.
const char *__lsan_default_suppressions()
{
    return "leak:libx265.so\n";
}
const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
