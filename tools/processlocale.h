#pragma once

#include <string>

/** Gives the process, and the library through it, a locale whose text encoding users expect. */
void SetProcessLocale();

/**
 * Whether a file name means the same file after the library converted it from the locale's encoding and back. False also
 * for other than ASCII names in encodings other than UTF-8, whose conversions are not known here.
 */
bool SurvivesLocale(const std::string &strName);
