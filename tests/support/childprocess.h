#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/** How a program ended and what it wrote. */
struct Outcome {
    int nExit = -1; ///< exit code; minus the signal if one ended the program
    std::string strOut;
    std::string strError;
};

/** A program that runs in parallel with the test. */
class ChildProcess
{
public:
    using Environment = std::vector<std::pair<std::string, std::string>>;

    /**
     * @param listCommand  the program, looked up in PATH, and its arguments.
     * @param listExtra    variables to set; those with an empty value are removed.
     */
    explicit ChildProcess(const std::vector<std::string> &listCommand, const std::string &strInput = "",
                          const Environment &listExtra = {});
    ~ChildProcess();

    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    void Signal(int nSignal) const;
    Outcome Wait();

    static Outcome Run(const std::vector<std::string> &listCommand, const std::string &strInput = "",
                       const Environment &listExtra = {});

private:
    struct CloseFile {
        void operator()(std::FILE *pFile) const { (void)std::fclose(pFile); }
    };
    using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

    static std::string Content(std::FILE *pFile);

    // Files instead of pipes, so that neither process ever blocks on the other.
    FilePtr m_pInput;
    FilePtr m_pOutput;
    FilePtr m_pError;
    int m_nProcess = -1;
};
