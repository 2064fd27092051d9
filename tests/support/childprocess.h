#pragma once

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <sys/wait.h>

struct ChildResult {
    int nStatus;           ///< exit status; -1 when a signal ended it
    std::string strOutput; ///< standard output and standard error
};

/** Runs a shell command. */
inline ChildResult RunChild(const std::string &command)
{
    FILE *pipe = popen(("( " + command + " ) 2>&1").c_str(), "r");
    if (!pipe)
        throw std::runtime_error("no child process");
    ChildResult result = {};
    std::array<char, 4096> buffer;
    while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe))
        result.strOutput.append(buffer.data(), count);
    const int status = pclose(pipe);
    result.nStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}
