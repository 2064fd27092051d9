#pragma once

// What sanitizers ask a program for, if they are built in. A program may define them.
extern "C" {
const char *__asan_default_options();      // NOLINT(bugprone-reserved-identifier)
const char *__lsan_default_options();      // NOLINT(bugprone-reserved-identifier)
const char *__lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
}
