#pragma once

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/** Writes down what ran, where that is counted; null in other builds. */
extern "C" __attribute__((weak)) void __gcov_dump(); // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

/**
 * Runs a task in a fork of this process, which has one thread, so that whatever becomes of it stays there.
 * @return what the task returned, 0 to 255; minus the signal that ended it. An exception counts as SIGABRT.
 */
inline int RunForked(const std::function<int()> &task)
{
    const pid_t nChild = fork();
    if (nChild < 0)
        return -1;
    if (nChild == 0) {
        [&]() noexcept {
            const int nResult = task();
            if (__gcov_dump)
                __gcov_dump();
            _exit(nResult);
        }();
    }
    int nStatus = 0;
    waitpid(nChild, &nStatus, 0);
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -WTERMSIG(nStatus);
}
