#include "readable.h"

#include "failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

void CheckReadable(const std::string &strFile)
{
    const int nFile = open(strFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (nFile < 0)
        throw Failure(ExitCode::Input, strFile, std::generic_category().message(errno));
    struct stat status = {};
    const bool bFolder = fstat(nFile, &status) == 0 && S_ISDIR(status.st_mode);
    close(nFile);
    if (bFolder)
        throw Failure(ExitCode::Input, strFile, std::generic_category().message(EISDIR));
}
