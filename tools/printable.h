#pragma once

#include <string>

/** Text of a file without what would not stay in its place on a terminal: control characters and invalid bytes. */
std::string Printable(const std::string &strText);

/** Columns that printable text takes on a terminal. */
int WidthOf(const std::string &strText);
