#include "textio/regularfile.h"

#include "textio/localecodec.h"

#include <QFile>
#include <QString>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

bool IsRegular(const struct stat &status)
{
    return S_ISREG(status.st_mode);
}

} // namespace

int OpenRegularFile(const char *name)
{
    // Opening a pipe would wake its writer, and opening a device may do anything, so check first. Another file may take
    // the name between the two calls, so check again.
    struct stat status = {};
    if (stat(name, &status) != 0)
        return -1;
    if (IsRegular(status)) {
        const int descriptor = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        if (descriptor < 0)
            return -1;
        if (fstat(descriptor, &status) == 0 && IsRegular(status))
            return descriptor;
        close(descriptor);
    }
    errno = EINVAL;
    return -1;
}

bool OpenRegularFile(const QString &path, QFile &file)
{
    const QByteArray name = LocaleCodec::Current()->Encode(path);
    // For the kernel the name would end at the first NUL, and it would open another file.
    if (name.contains('\0'))
        return false;
    const int descriptor = OpenRegularFile(name.constData());
    if (descriptor < 0)
        return false;
    if (file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return true;
    close(descriptor);
    return false;
}

std::int64_t ReadSome(int descriptor, void *bytes, std::size_t count)
{
    ssize_t got = 0;
    do {
        got = read(descriptor, bytes, count);
    } while (got < 0 && errno == EINTR);
    return got;
}

std::int64_t ReadableSize(std::int64_t size, std::int64_t most)
{
    return size > 0 ? size : most;
}
