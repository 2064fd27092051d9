#pragma once

#include <string>

/** What --list prints: the subtitle tracks of a file, one a line; throws a Failure when the file cannot be read. */
std::string TrackListText(const std::string &strFile);
