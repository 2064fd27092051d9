#pragma once

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/**
 * Runs a task in a fork, so that a crash or changed state does not affect this process, which must have one thread.
 * @return the task's result, 0 to 255, or minus the signal that ended it. An exception counts as SIGABRT.
 */
inline int RunForked(const std::function<int()> &task)
{
    const pid_t nChild = fork();
    if (nChild < 0)
        return -1;
    if (nChild == 0) {
        [&]() noexcept { _exit(task()); }();
    }
    int nStatus = 0;
    waitpid(nChild, &nStatus, 0);
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -WTERMSIG(nStatus);
}
