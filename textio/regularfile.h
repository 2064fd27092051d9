#pragma once

#include <cstddef>
#include <cstdint>

class QFile;
class QString;

/**
 * Opens a file for reading, close-on-exec and without ever waiting; anything but a regular file counts as missing.
 * @return the descriptor, which the caller closes; -1 with errno set.
 */
int OpenRegularFile(const char *name);

/**
 * The same for a QFile without a name, which closes the descriptor itself.
 * @param path  its name is in the encoding of the locale.
 */
bool OpenRegularFile(const QString &path, QFile &file);

/** read(2), repeated when a signal interrupts it. Never waits on what OpenRegularFile() opened: there it fails instead. */
std::int64_t ReadSome(int descriptor, void *bytes, std::size_t count);

/**
 * How many bytes of an open file may be read. A file that grows is read up to the size that it had when it was opened.
 * The pseudo files of the kernel say that they are empty, and some never end: of an empty file @p most bytes may be read.
 */
std::int64_t ReadableSize(std::int64_t size, std::int64_t most);
