#pragma once

#include <string>

/**
 * Throws a Failure when a file is anything but a regular file (a pipe might never end), or cannot be opened and read.
 * Never waits for the other side of a pipe.
 */
void CheckReadable(const std::string &strFile);

/**
 * Throws a Failure when so few descriptors are free that a subtitle file could not be shown: the library shows nothing
 * where it cannot open the file, a font or a file of fontconfig's.
 */
void CheckDescriptors(const std::string &strFile);
