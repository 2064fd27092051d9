#pragma once

#include <string>

/**
 * Makes the first track of an MP4 file one that players turn clockwise, by the matrix of its header. FFmpeg's option for
 * it differs from version to version.
 *
 * @param nDegrees  90, 180 or 270.
 */
void TurnFilm(const std::string &strFile, int nDegrees);
