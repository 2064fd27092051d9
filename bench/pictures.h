#pragma once

#include <cstdint>
#include <string>
#include <vector>

constexpr int CanvasWidth = 720;
constexpr int CanvasHeight = 576;
constexpr int PictureCount = 200;
constexpr long PictureDistance = 2000;

/** A sub-picture unit with two lines that look like text, each variant's letters differing. */
std::vector<std::uint8_t> TextUnit(int variant);

/** The index of a VobSub pair with such pictures; written when first asked for and removed with the process. */
std::string PictureFile();
