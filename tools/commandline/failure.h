#pragma once

#include <stdexcept>
#include <string>

enum class ExitCode { Done = 0, Usage = 1, Input = 2, Output = 3, Library = 4, Stopped = 130 };

/** An error that ends the program: a one-line reason for the user, and the exit code. */
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode code, const std::string &strReason) : std::runtime_error(strReason), m_code(code) {}
    Failure(ExitCode code, const std::string &strFile, const std::string &strReason) :
        Failure(code, strFile + ": " + strReason)
    {
    }

    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};
