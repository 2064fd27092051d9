#include "commandline/pendingfile.h"

#include "commandline/failure.h"
#include "commandline/interrupt.h"
#include "commandline/printable.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace
{

std::string Reason(int nError)
{
    return std::generic_category().message(nError);
}

/** Permissions of the file to be replaced, else those that any new file gets. */
mode_t ModeFor(const std::string &strFile)
{
    struct stat status = {};
    if (stat(strFile.c_str(), &status) == 0)
        return status.st_mode & 0777;
    const mode_t nMask = umask(0);
    umask(nMask);
    return 0666 & ~nMask;
}

} // namespace

PendingFile::PendingFile(const std::string &strFinal) : m_strGiven(strFinal), m_strFinal(strFinal)
{
    std::error_code error;
    // Replace the target of a link, not the link.
    const std::filesystem::path target = std::filesystem::canonical(strFinal, error);
    if (!error)
        m_strFinal = target.string();
    if (!error && !std::filesystem::is_regular_file(target, error))
        throw Failure(ExitCode::Output, strFinal, "exists and is not a regular file");
    if (!error && access(m_strFinal.c_str(), W_OK) != 0)
        throw Failure(ExitCode::Output, strFinal, Reason(errno));
    m_strPending = (std::filesystem::path(m_strFinal).parent_path() / ".subburn-XXXXXX").string();
    const int nFile = mkostemp(m_strPending.data(), O_CLOEXEC);
    if (nFile < 0)
        throw Failure(ExitCode::Output, strFinal, Reason(errno));
    fchmod(nFile, ModeFor(m_strFinal));
    close(nFile);
}

PendingFile::~PendingFile()
{
    if (!m_strPending.empty())
        unlink(m_strPending.c_str());
}

void PendingFile::Commit()
{
    if (std::rename(m_strPending.c_str(), m_strFinal.c_str()) != 0)
        throw Failure(ExitCode::Output, m_strGiven, Reason(errno));
    m_strPending.clear();
}

void PendingFile::CheckReplacing(const std::string &strOutput, Replacing replacing)
{
    std::error_code error;
    if (replacing == Replacing::Yes || !std::filesystem::exists(strOutput, error))
        return;
    if (replacing == Replacing::No || isatty(STDIN_FILENO) != 1 || isatty(STDERR_FILENO) != 1)
        throw Failure(ExitCode::Output, strOutput, "exists; --overwrite replaces it");
    (void)std::fprintf(stderr, "subburn: %s exists. Replace it? [y/N] ", Escaped(strOutput).c_str());
    const int nAnswer = std::getchar();
    Interrupt::Check();
    if (nAnswer != 'y' && nAnswer != 'Y')
        throw Failure(ExitCode::Output, strOutput, "exists and is kept");
}

void PendingFile::RefuseSame(const std::string &strOutput, const std::string &strInput)
{
    std::error_code error;
    if (std::filesystem::equivalent(strOutput, strInput, error))
        throw Failure(ExitCode::Usage, strOutput, "would overwrite an input");
}
