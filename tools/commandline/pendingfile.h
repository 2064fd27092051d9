#pragma once

#include "commandline/options.h"

/** An output that gets its final name only once complete; otherwise the destructor deletes it. */
class PendingFile
{
public:
    /**
     * Creates an empty hidden file in the final one's folder. Throws a Failure if it cannot, or if the final one exists
     * and is not a writable regular file.
     */
    explicit PendingFile(const std::string &strFinal);
    ~PendingFile();

    PendingFile(const PendingFile &) = delete;
    PendingFile &operator=(const PendingFile &) = delete;

    /** Where to write. */
    const std::string &Path() const { return m_strPending; }

    /** Renames the file to its final name. */
    void Commit();

    /** Throws a Failure if the file exists and is not to be replaced. On a terminal, Replacing::Ask asks the user. */
    static void CheckReplacing(const std::string &strOutput, Replacing replacing);

    /** Throws a Failure if both names denote the same file. */
    static void RefuseSame(const std::string &strOutput, const std::string &strInput);

private:
    std::string m_strGiven;
    std::string m_strFinal;
    std::string m_strPending;
};
