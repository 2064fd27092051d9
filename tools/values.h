#pragma once

#include "options.h"

// Values of options as the user writes them. Each throws a Failure that names the option when the text is wrong.

/** A number of decimal digits, from the least to the most. */
int ParseWhole(const std::string &strOption, const std::string &strText, int nLeast, int nMost);
/** From -1000 to 1000, which is far more than any encoder knows. */
double ParseQuality(const std::string &strOption, const std::string &strText);
/** Microseconds, up to 100000 hours. */
int64_t ParseTime(const std::string &strOption, const std::string &strText);
/** Pixels, 0 to 20. */
double ParseOutlineWidth(const std::string &strOption, const std::string &strText);
Rgb ParseColor(const std::string &strOption, const std::string &strText);
/** Bits per second. */
int64_t ParseBitrate(const std::string &strOption, const std::string &strText);
/** Milliseconds, either way up to 100000 hours. */
int64_t ParseDelay(const std::string &strOption, const std::string &strText);
/** A number from 0.01 to 100, or a quotient of two. */
double ParseFactor(const std::string &strOption, const std::string &strText);
PipeFormat ParsePipeFormat(const std::string &strOption, const std::string &strText);

/** A time as the user reads it: 1:02:03.500. */
std::string TimeText(int64_t nMicroseconds);
