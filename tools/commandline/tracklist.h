#pragma once

#include "commandline/console.h"
#include "commandline/options.h"

/**
 * What --list prints: the subtitle tracks of a file, one per line. For a text file that the library reads itself, only
 * the cues that the library shows are counted, with a warning about the others.
 * Throws a Failure if the file cannot be read.
 */
std::string TrackListText(const Options &options, Console &console);
