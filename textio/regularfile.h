#pragma once

#include <cstddef>
#include <cstdint>

class QFile;
class QString;

/**
 * Opens a file for reading, close-on-exec and without blocking; anything but a regular file counts as missing.
 * @return the descriptor, which the caller closes; -1 with errno set.
 */
[[nodiscard]] int OpenRegularFile(const char *name);

/**
 * The same with a QFile, which must have no name and closes the descriptor itself.
 * @param path  converted to the encoding of the locale, see LocaleCodec::Current().
 * @return false if the file cannot be opened.
 */
[[nodiscard]] bool OpenRegularFile(const QString &path, QFile &file);

/** read(2), repeated if a signal interrupts it. Fails instead of blocking on a descriptor of OpenRegularFile(). */
[[nodiscard]] std::int64_t ReadSome(int descriptor, void *bytes, std::size_t count);

/**
 * Most bytes to read of an open file: the size that it had when it was opened, even if it grows. Kernel pseudo files
 * report the size 0 and some never end, so for them it is @p most.
 */
std::int64_t ReadableSize(std::int64_t size, std::int64_t most);
