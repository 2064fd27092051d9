#pragma once

#include "options.h"

/** An output that gets its final name only when it is complete, and leaves nothing behind otherwise. */
class PendingFile
{
public:
    /** Makes an empty hidden file in the folder of the final one. */
    explicit PendingFile(const std::string &strFinal);
    ~PendingFile();

    PendingFile(const PendingFile &) = delete;
    PendingFile &operator=(const PendingFile &) = delete;

    /** Where to write. */
    const std::string &Path() const { return m_strPending; }

    void Commit();

    /** Throws a Failure when a file is there already and is not to be replaced; on a terminal the user is asked. */
    static void CheckReplacing(const std::string &strOutput, Replacing replacing);

    /** Throws a Failure when both names mean the same file. */
    static void RefuseSame(const std::string &strOutput, const std::string &strInput);

private:
    std::string m_strGiven;
    std::string m_strFinal;
    std::string m_strPending;
};
