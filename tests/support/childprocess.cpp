#include "support/childprocess.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

ChildProcess::ChildProcess(const std::vector<std::string> &listCommand, const std::string &strInput,
                           const Environment &listExtra) :
    m_pInput(std::tmpfile()), m_pOutput(std::tmpfile()), m_pError(std::tmpfile())
{
    if (!m_pInput || !m_pOutput || !m_pError)
        throw std::runtime_error("no temporary files");
    if (std::fwrite(strInput.data(), 1, strInput.size(), m_pInput.get()) != strInput.size())
        throw std::runtime_error("no room for the input");
    std::rewind(m_pInput.get());
    std::vector<char *> listArguments;
    listArguments.reserve(listCommand.size() + 1);
    for (const std::string &strArgument : listCommand)
        listArguments.push_back(const_cast<char *>(strArgument.c_str()));
    listArguments.push_back(nullptr);
    m_nProcess = fork();
    if (m_nProcess != 0)
        return;
    dup2(fileno(m_pInput.get()), STDIN_FILENO);
    dup2(fileno(m_pOutput.get()), STDOUT_FILENO);
    dup2(fileno(m_pError.get()), STDERR_FILENO);
    for (const auto &[strName, strValue] : listExtra) {
        if (strValue.empty())
            unsetenv(strName.c_str());
        else
            setenv(strName.c_str(), strValue.c_str(), 1);
    }
    execvp(listArguments[0], listArguments.data());
    _exit(127);
}

ChildProcess::~ChildProcess()
{
    if (m_nProcess > 0) {
        kill(m_nProcess, SIGKILL);
        waitpid(m_nProcess, nullptr, 0);
    }
}

void ChildProcess::Signal(int nSignal) const
{
    if (m_nProcess > 0)
        kill(m_nProcess, nSignal);
}

Outcome ChildProcess::Wait()
{
    int nStatus = 0;
    waitpid(m_nProcess, &nStatus, 0);
    m_nProcess = -1;
    Outcome outcome;
    outcome.nExit = WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : -WTERMSIG(nStatus);
    outcome.strOut = Content(m_pOutput.get());
    outcome.strError = Content(m_pError.get());
    return outcome;
}

Outcome ChildProcess::Run(const std::vector<std::string> &listCommand, const std::string &strInput,
                          const Environment &listExtra)
{
    return ChildProcess(listCommand, strInput, listExtra).Wait();
}

std::string ChildProcess::Content(std::FILE *pFile)
{
    (void)std::fseek(pFile, 0, SEEK_END);
    std::string strContent(static_cast<size_t>(std::ftell(pFile)), '\0');
    std::rewind(pFile);
    strContent.resize(std::fread(strContent.data(), 1, strContent.size(), pFile));
    return strContent;
}
