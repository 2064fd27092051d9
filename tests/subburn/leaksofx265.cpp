// Read by LeakSanitizer, where it is built in: what encoders of libx265 leave behind is not subburn's.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libx265.so\n";
}
extern "C" const char *__lsan_default_options()
{
    return "print_suppressions=0";
}
