// For LeakSanitizer, if built in: leaks of libx265 encoders are not subburn's.
extern "C" {
const char *__lsan_default_suppressions();
const char *__lsan_default_options();
}

const char *__lsan_default_suppressions()
{
    return "leak:libx265.so\n";
}

const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
