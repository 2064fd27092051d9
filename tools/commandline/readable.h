#pragma once

#include <string>

/**
 * Throws a Failure if a file is anything but a regular file (a pipe might never end), or cannot be opened and read.
 * Never waits for a pipe's other end.
 */
void CheckReadable(const std::string &strFile);

/**
 * Throws a Failure if fewer than 16 file descriptors are free: the library silently shows nothing if it cannot open the
 * subtitle file, a font or a fontconfig file.
 * @param strFile  named in the error.
 */
void CheckDescriptors(const std::string &strFile);

/** A file's bytes; throws a Failure if they cannot be read. */
std::string ContentOf(const std::string &strFile);
