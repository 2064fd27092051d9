#include "support/faultyio.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace
{

using faultyio::Fault;

struct {
    std::string folder;
    Fault fault = Fault::None;
    long faultyCall = -1;
    std::function<void(long)> act;
    faultyio::Record record;
    std::array<bool, 1024> isWatched = {}; // by descriptor
} state;

template <typename Function>
Function *Next(Function * /*own*/, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

bool IsBelow(const char *path)
{
    return path && !state.folder.empty() && std::string(path).rfind(state.folder + '/', 0) == 0;
}

bool IsWatched(int descriptor)
{
    return descriptor >= 0 && descriptor < static_cast<int>(state.isWatched.size()) && state.isWatched[descriptor];
}

/** Counts a call. @return the fault that is to happen in it */
Fault NextFault()
{
    const long call = state.record.nCalls++;
    if (state.act) {
        const auto act = std::exchange(state.act, nullptr); // it may make such calls itself
        act(call);
        state.act = act;
    }
    const bool lasts = state.fault == Fault::LastingError || state.fault == Fault::WouldBlock;
    const bool happens = lasts ? call >= state.faultyCall : call == state.faultyCall;
    return happens ? state.fault : Fault::None;
}

/** Counts a call other than read(). @return whether it is to fail */
bool Fails(int error)
{
    const Fault fault = NextFault();
    if (fault != Fault::Error && fault != Fault::LastingError)
        return false;
    errno = error;
    return true;
}

template <typename Function>
int Open(Function *open, const char *path, int flags, mode_t mode)
{
    const bool isBelow = IsBelow(path);
    if (isBelow && Fails(ENFILE))
        return -1;
    if (isBelow && (flags & (O_NONBLOCK | O_CLOEXEC)) != (O_NONBLOCK | O_CLOEXEC))
        ++state.record.nCarelessOpens;
    const int descriptor = open(path, flags, mode);
    if (descriptor >= 0 && descriptor < static_cast<int>(state.isWatched.size()))
        state.isWatched[descriptor] = isBelow;
    return descriptor;
}

/** Calls the function unless the call is to fail. */
template <typename Function, typename... Arguments>
auto Call(Function *function, bool isWatched, Arguments... arguments) -> decltype(function(arguments...))
{
    if (isWatched && Fails(EIO))
        return -1;
    return function(arguments...);
}

} // namespace

namespace faultyio
{

void Begin(const std::string &strFolder, Fault fault, long nCall)
{
    state = {};
    state.folder = strFolder;
    state.fault = fault;
    state.faultyCall = nCall;
}

void Begin(const std::string &strFolder, const std::function<void(long)> &act)
{
    state = {};
    state.folder = strFolder;
    state.act = act;
}

Record End()
{
    const Record record = state.record;
    state = {};
    return record;
}

} // namespace faultyio

// The declarations in the C library differ in attributes and in noexcept.
// NOLINTBEGIN(cert-dcl50-cpp, clang-analyzer-valist.Uninitialized)
extern "C" {

int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static auto *const next = Next(&open, "open");
    return Open(next, path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static auto *const next = Next(&open64, "open64");
    return Open(next, path, flags, mode);
}

int close(int descriptor)
{
    static auto *const next = Next(&close, "close");
    if (IsWatched(descriptor))
        state.isWatched[descriptor] = false;
    return next(descriptor);
}

ssize_t read(int descriptor, void *bytes, size_t count)
{
    static auto *const next = Next(&read, "read");
    if (!IsWatched(descriptor))
        return next(descriptor, bytes, count);
    const auto read = [&](size_t some) {
        static auto *const seek = Next(&lseek, "lseek");
        const ssize_t got = next(descriptor, bytes, some);
        state.record.nBytesRead += std::max<ssize_t>(got, 0);
        state.record.nFurthest = std::max<long>(state.record.nFurthest, seek(descriptor, 0, SEEK_CUR));
        return got;
    };
    switch (NextFault()) {
    case Fault::Error:
    case Fault::LastingError:
        errno = EIO;
        return -1;
    case Fault::Interrupted:
        errno = EINTR;
        return -1;
    case Fault::WouldBlock:
        errno = EAGAIN;
        return -1;
    case Fault::OneByte:
        return read(std::min<size_t>(count, 1));
    case Fault::Half:
        return read((count + 1) / 2);
    default:
        return read(count);
    }
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept
{
    static auto *const next = Next(&lseek, "lseek");
    return Call(next, IsWatched(descriptor), descriptor, offset, whence);
}

off64_t lseek64(int descriptor, off64_t offset, int whence) noexcept
{
    static auto *const next = Next(&lseek64, "lseek64");
    return Call(next, IsWatched(descriptor), descriptor, offset, whence);
}

int fstat(int descriptor, struct stat *status) noexcept
{
    static auto *const next = Next(&fstat, "fstat");
    return Call(next, IsWatched(descriptor), descriptor, status);
}

int fstat64(int descriptor, struct stat64 *status) noexcept
{
    static auto *const next = Next(&fstat64, "fstat64");
    return Call(next, IsWatched(descriptor), descriptor, status);
}

int stat(const char *path, struct stat *status) noexcept
{
    static auto *const next = Next<int(const char *, struct stat *)>(nullptr, "stat");
    return Call(next, IsBelow(path), path, status);
}

int stat64(const char *path, struct stat64 *status) noexcept
{
    static auto *const next = Next<int(const char *, struct stat64 *)>(nullptr, "stat64");
    return Call(next, IsBelow(path), path, status);
}

int statx(int folder, const char *path, int flags, unsigned mask, struct statx *status) noexcept
{
    static auto *const next = Next<int(int, const char *, int, unsigned, struct statx *)>(nullptr, "statx");
    return Call(next, IsBelow(path) || IsWatched(folder), folder, path, flags, mask, status);
}
}
// NOLINTEND(cert-dcl50-cpp, clang-analyzer-valist.Uninitialized)
