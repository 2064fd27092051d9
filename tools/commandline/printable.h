#pragma once

#include <string>

/** Text without control characters and invalid UTF-8, which would disturb a terminal. */
std::string Printable(const std::string &strText);

/**
 * A message with every byte of control characters and of invalid UTF-8 written as \xNN, so that no name in it can send
 * commands to a terminal or break the line.
 */
std::string Escaped(const std::string &strText);

bool IsUtf8(const std::string &strText);

/** Columns that printable text takes on a terminal, by the process's locale. */
int WidthOf(const std::string &strText);
