#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/**
 * The names of the FFmpeg formats that we open, separated by commas.
 * @param size  of the file, in bytes; 0 if unknown.
 */
std::string ReadableFormats(std::int64_t size);

/** Whether a file of this FFmpeg format may have a subtitle stream, alone or among others. */
bool MayHoldSubtitles(std::string_view format);

/** Most bytes of subtitle text that are read from one file. */
constexpr std::int64_t MaxTextSize = std::int64_t{128} * 1024 * 1024;
