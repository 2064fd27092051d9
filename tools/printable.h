#pragma once

#include <string>

/** Text of a file without what would not stay in its place on a terminal: control characters and invalid bytes. */
std::string Printable(const std::string &strText);

/**
 * A message with every byte of control characters and of invalid UTF-8 written as \xNN, so that no name in it reaches a
 * terminal as a command or breaks the line.
 */
std::string Escaped(const std::string &strText);

bool IsUtf8(const std::string &strText);

/** Columns that printable text takes on a terminal. */
int WidthOf(const std::string &strText);
