#pragma once

#include <cstdint>
#include <string>

/** A time in milliseconds as the library reads it from a text file. */
struct CueTime {
    int64_t nMilliseconds = 0;
    // False: a field is missing or is not a number, for which the library takes another.
    bool bWhole = false;
};

/** Reads a time of SubRip such as 00:01:02,345. A field that is not a number counts as 0. */
CueTime SubRipTime(const std::string &strText);

/**
 * Reads a time of ASS such as 0:01:02.34. A field that is not a number counts as -1. So does the whole time if a
 * separator is missing: the library then reads the fields that follow as parts of the time.
 */
CueTime ScriptTime(const std::string &strText);
