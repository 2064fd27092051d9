#pragma once

#include "subtitletrack.h"

/** A file of SubRip that the library shows as the cues say. */
std::string SrtOf(std::vector<Cue> listCues);

/** Lines of text as the library's reader of SubRip files takes them for text, looking the same. */
std::string SrtText(const std::string &strText);
