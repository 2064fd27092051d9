#pragma once

/**
 * Marks what libsubtitle.so exports of its C++ code, which is compiled with -fvisibility=hidden. The linker exports what is
 * marked and is listed in api/libsubtitle.map as well. The installed headers mark their C functions themselves.
 */
#define SUBTITLE_EXPORT __attribute__((visibility("default")))
