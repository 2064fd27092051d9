#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** The names of FFmpeg's formats that are opened, separated by commas. @param size  of the file, in bytes. */
std::string ReadableFormats(std::int64_t size);

/** Whether a file of that format of FFmpeg's may have a subtitle stream, alone or among others. */
bool MayHoldSubtitles(std::string_view format);

/** Bytes of text after which no more is read of a file. */
constexpr std::int64_t MaxTextSize = std::int64_t{128} * 1024 * 1024;
