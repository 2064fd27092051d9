#pragma once

#include <string>

/** Throws a Failure when a file cannot be opened for reading or is a folder. */
void CheckReadable(const std::string &strFile);
