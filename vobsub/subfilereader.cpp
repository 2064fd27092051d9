#include "vobsub/subfilereader.h"

#include "textio/regularfile.h"

#include <QFile>

#include <sys/stat.h>

#include <algorithm>
#include <tuple>

bool SubFileReader::Fetch(const QString &path, std::uint32_t start, std::uint32_t length, QByteArray &bytes)
{
    const bool hadOne = m_bFetched;
    m_bFetched = m_bContinued = false;
    QFile file;
    if (!OpenRegularFile(path, file))
        return false;
    FileState state;
    if (!ReadState(file.handle(), state))
        return false;
    bytes.clear();
    // Limited to the file's size, since read() allocates memory for all that is asked for.
    const std::int64_t size = ReadableSize(state.nSize, std::int64_t{start} + MaxLength);
    const std::int64_t wanted =
        std::min(std::int64_t{std::min(length, MaxLength)}, size - static_cast<std::int64_t>(start));
    if (wanted > 0) {
        if (!file.seek(start))
            return false;
        // A short read at the end of the file is fine. One because of an I/O error is refused: a truncated entry would
        // decode to nothing and leave the previous picture up.
        bytes = file.read(wanted);
        if (bytes.size() != wanted && file.error() != QFileDevice::NoError)
            return false;
    }
    m_bContinued = hadOne && start == m_nEnd && state == m_state;
    m_state = state;
    m_nEnd = start + static_cast<std::uint64_t>(bytes.size());
    m_bFetched = true;
    return true;
}

bool SubFileReader::IsContinued() const
{
    return m_bContinued;
}

void SubFileReader::Forget()
{
    m_bFetched = m_bContinued = false;
}

bool SubFileReader::FileState::operator==(const FileState &other) const
{
    const auto fields = [](const FileState &s) {
        return std::tie(s.nDevice, s.nInode, s.nSize, s.nChangedSeconds, s.nChangedNanoseconds);
    };
    return fields(*this) == fields(other);
}

bool SubFileReader::ReadState(int descriptor, FileState &state)
{
    struct stat status = {};
    if (fstat(descriptor, &status) != 0)
        return false;
    state.nDevice = status.st_dev;
    state.nInode = status.st_ino;
    state.nSize = status.st_size;
    state.nChangedSeconds = status.st_mtim.tv_sec;
    state.nChangedNanoseconds = status.st_mtim.tv_nsec;
    return true;
}
