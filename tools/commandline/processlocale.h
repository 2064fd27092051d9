#pragma once

#include <string>

/**
 * Sets the locale of the process, and so of the library: the user's, but C.UTF-8 instead of C, and always with decimal
 * points. Call before any thread starts: changes the environment.
 */
void SetProcessLocale();

/**
 * Whether a file name still denotes the same file after the library converted it from the locale's encoding and back.
 * Always false for non-ASCII names if the locale's encoding is not UTF-8, since those conversions are not known here.
 */
bool SurvivesLocale(const std::string &strName);
