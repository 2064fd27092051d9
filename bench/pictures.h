#pragma once

#include <cstdint>
#include <string>
#include <vector>

constexpr int CanvasWidth = 720;
constexpr int CanvasHeight = 576;
constexpr int PictureCount = 200;
constexpr long PictureDistance = 2000;

/** A sub-picture unit with two lines that look like text. Each variant has other letters. */
std::vector<std::uint8_t> TextUnit(int variant);

/** Name of the index of a VobSub pair with such pictures, which is written at the first call and removed at exit. */
std::string PictureFile();
