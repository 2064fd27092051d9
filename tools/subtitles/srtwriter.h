#pragma once

#include "subtitles/subtitletrack.h"

/** The content of a SubRip file that makes the library show these cues. */
std::string SrtOf(std::vector<Cue> listCues);

/** Lines changed, without visible difference, so that the library's SubRip reader takes all of them for text. */
std::string SrtText(const std::string &strText);
