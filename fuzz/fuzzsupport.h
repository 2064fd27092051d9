#pragma once

#include "support/temporaryfolder.h"

#include <cstddef>
#include <cstdint>
#include <string>

/** What each target defines. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize);

/**
 * What all inputs of a process have in common, so that one of them alone gives the same again: the locale's encoding is
 * UTF-8, UTF-16 is taken as little-endian, a message of Qt's is a finding, Qt and its fonts stay.
 */
class FuzzHost
{
public:
    /** Made with the first input. */
    static const FuzzHost &Get();

    FuzzHost(const FuzzHost &) = delete;
    FuzzHost &operator=(const FuzzHost &) = delete;

    /** Writes a file, in the place of an earlier one of that name, and returns its full name. */
    std::string Write(const std::string &strName, const std::string &bytes) const;
    void Remove(const std::string &strName) const;

private:
    FuzzHost();
    ~FuzzHost();

    TemporaryFolder m_folder;
    void *m_pHandle;
};

inline std::string ToString(const std::uint8_t *pData, std::size_t nSize)
{
    return {pData, pData + nSize};
}

/** Ends the process, which is a finding, unless the condition holds. */
void Require(bool bHolds, const char *pszWhat);
