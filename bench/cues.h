#pragma once

#include <string>

/**
 * Cues are numbered from 1. Each has two lines, no two are alike, and a pause follows each. Times are in milliseconds.
 */
constexpr long CueDistance = 2000;
constexpr long CueDuration = 1000;
constexpr int FilmCues = 1500;
constexpr int ManyCues = 100000;

/** A time in the pause after a cue. */
constexpr long PauseAfter(int cue)
{
    return CueDistance * cue + CueDuration + 1;
}

/** The script of cues. Latin ones have two short lines, the others two long ones. */
enum class CueScript { Latin, Cjk, Arabic, Devanagari };

/** Return names of files with the first @p count cues, which are written at the first call and removed at exit. */
std::string SrtFile(int count, CueScript script = CueScript::Latin);
/**
 * White text with an outline of 2 pixels, of the size and at the place that the library uses in frames of that size.
 */
std::string AssFile(int count, int width = 1920, int height = 1080, CueScript script = CueScript::Latin);
