#pragma once

#include "console.h"

// What every way of running says at its end.

void WarnOfDamage(Console &console, const std::string &strInput, int64_t nDamaged);
/** Of an input that ends well before the time that it names itself; both in microseconds. */
void WarnOfEarlyEnd(Console &console, const std::string &strInput, int64_t nEnd, int64_t nMissing);
void WarnOfNone(Console &console, const std::string &strSubtitles, int64_t nCarrying);
void ReportFrames(Console &console, const std::string &strOutput, const std::string &strSubtitles, int64_t nFrames,
                  int64_t nCarrying);
