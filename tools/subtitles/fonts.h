#pragma once

#include <string>

/** The family that fontconfig uses instead of a missing one; empty if it exists or is generic, such as "sans". */
std::string SubstituteFor(const std::string &strFamily);
