#pragma once

#include <string>

/** Cues number 1 and on: two lines each, no two alike, with a pause behind each. */
constexpr long CueDistance = 2000;
constexpr long CueDuration = 1000;
constexpr int FilmCues = 1500;
constexpr int ManyCues = 100000;

/** A time at which nothing is due behind a cue. */
constexpr long PauseAfter(int cue)
{
    return CueDistance * cue + CueDuration + 1;
}

/** What cues are written in: Latin ones have two short lines, the others two long ones. */
enum class CueScript { Latin, Cjk, Arabic, Devanagari };

/** Names of files with the first @p count cues, written when first asked for and removed with the process. */
std::string SrtFile(int count, CueScript script = CueScript::Latin);
/** White text with an outline of 2, as big and in the same place as the library draws it in frames of that size. */
std::string AssFile(int count, int width = 1920, int height = 1080, CueScript script = CueScript::Latin);
