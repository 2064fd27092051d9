#pragma once

#include <string>

/** The family that shows where there is none of a name; empty where there is one, or the name stands for any. */
std::string SubstituteFor(const std::string &strFamily);
