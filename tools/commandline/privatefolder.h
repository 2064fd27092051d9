#pragma once

#include <string>

/** A temporary folder that only this user can open. The destructor removes it with its contents. */
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
