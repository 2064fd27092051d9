#pragma once

#include <string>

/** A temporary folder that nobody else can look into, removed with all that is in it. */
class PrivateFolder
{
public:
    PrivateFolder();
    ~PrivateFolder();

    PrivateFolder(const PrivateFolder &) = delete;
    PrivateFolder &operator=(const PrivateFolder &) = delete;

    const std::string &Path() const { return m_strPath; }

private:
    std::string m_strPath;
};
