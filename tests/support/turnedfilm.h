#pragma once

#include <array>
#include <cstdint>
#include <string>

/** The matrix of an MP4 file's track: factors in 16.16, in the last column 2.30. */
using FilmMatrix = std::array<std::uint32_t, 9>;

void SetFilmMatrix(const std::string &strFile, const FilmMatrix &listMatrix);

/**
 * Sets the matrix in the header of an MP4 file's first track, so that players rotate it clockwise. Done by hand because
 * FFmpeg's option for this differs between versions.
 *
 * @param nDegrees  45, 90, 180 or 270.
 */
void TurnFilm(const std::string &strFile, int nDegrees);
