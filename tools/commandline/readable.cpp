#include "commandline/readable.h"

#include "commandline/failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

namespace
{

// fontconfig has two open at once while it reads its files. The rest is for the output, fonts, the .sub file of a
// VobSub pair, and library versions that need more.
const size_t NeededDescriptors = 16;

class Descriptor
{
public:
    explicit Descriptor(int nDescriptor) : m_nDescriptor(nDescriptor) {}
    ~Descriptor()
    {
        if (m_nDescriptor >= 0)
            close(m_nDescriptor);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor(Descriptor &&other) noexcept : m_nDescriptor(other.m_nDescriptor) { other.m_nDescriptor = -1; }
    Descriptor &operator=(Descriptor &&) = delete;

    int Number() const { return m_nDescriptor; }

private:
    int m_nDescriptor;
};

[[noreturn]] void Refuse(const std::string &strFile, int nError)
{
    throw Failure(ExitCode::Input, strFile, std::generic_category().message(nError));
}

/** Uses stat() only: opening a pipe or a device may block and has effects on its other end. */
void CheckRegular(const std::string &strFile)
{
    struct stat status = {};
    if (stat(strFile.c_str(), &status) != 0)
        Refuse(strFile, errno);
    if (S_ISREG(status.st_mode))
        return;
    if (S_ISDIR(status.st_mode))
        Refuse(strFile, EISDIR);
    const char *const pKind = S_ISFIFO(status.st_mode) ? "pipe" : S_ISSOCK(status.st_mode) ? "socket" : "device";
    throw Failure(ExitCode::Input, strFile, std::string("is a ") + pKind + " and not a regular file");
}

} // namespace

void CheckReadable(const std::string &strFile)
{
    CheckRegular(strFile);
    const Descriptor file(open(strFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    char cFirst = 0;
    if (file.Number() < 0 || read(file.Number(), &cFirst, 1) < 0)
        Refuse(strFile, errno);
}

void CheckDescriptors(const std::string &strFile)
{
    std::vector<Descriptor> listDescriptors;
    while (listDescriptors.size() < NeededDescriptors) {
        listDescriptors.emplace_back(open("/", O_PATH | O_CLOEXEC));
        if (listDescriptors.back().Number() < 0)
            Refuse(strFile, errno);
    }
}

std::string ContentOf(const std::string &strFile)
{
    std::ifstream stream(strFile, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    if (!stream)
        Refuse(strFile, errno);
    return content.str();
}
