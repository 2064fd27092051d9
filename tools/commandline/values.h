#pragma once

#include "commandline/options.h"

// Parsers for option values. Each throws a Failure that names the option if the text is wrong.

/** A whole decimal number from nLeast to nMost. */
int ParseWhole(const std::string &strOption, const std::string &strText, int nLeast, int nMost);
/** From -1000 to 1000, a wider range than any encoder has. */
double ParseQuality(const std::string &strOption, const std::string &strText);
/** Microseconds, up to 100000 hours. */
int64_t ParseTime(const std::string &strOption, const std::string &strText);
/** Pixels, 0 to 20. */
double ParseOutlineWidth(const std::string &strOption, const std::string &strText);
Rgb ParseColor(const std::string &strOption, const std::string &strText);
/** Bits per second. */
int64_t ParseBitrate(const std::string &strOption, const std::string &strText);
/** Milliseconds, up to 100000 hours, positive or negative. */
int64_t ParseDelay(const std::string &strOption, const std::string &strText);
/** A number or a quotient of two, from 0.01 to 100. */
double ParseFactor(const std::string &strOption, const std::string &strText);
PipeFormat ParsePipeFormat(const std::string &strOption, const std::string &strText);

/** A time for messages, such as 1:02:03.500. */
std::string TimeText(int64_t nMicroseconds);
