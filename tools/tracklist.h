#pragma once

#include "console.h"
#include "options.h"

/**
 * What --list prints: the subtitle tracks of a file, one a line. Of files that the library reads by itself it has the cues
 * that the library shows, and warns of the others.
 * Throws a Failure when the file cannot be read.
 */
std::string TrackListText(const Options &options, Console &console);
