#include "commandline/privatefolder.h"

#include "commandline/failure.h"
#include "commandline/processlocale.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

PrivateFolder::PrivateFolder()
{
    std::error_code error;
    std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    // The library must be able to open files in it.
    if (error || !SurvivesLocale(folder.string()))
        folder = "/tmp";
    m_strPath = (folder / "subburn-XXXXXX").string();
    if (!mkdtemp(m_strPath.data()))
        throw Failure(ExitCode::Output, folder.string(), std::generic_category().message(errno));
}

PrivateFolder::~PrivateFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_strPath, ignored);
}
