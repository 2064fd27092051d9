#pragma once

#include "support/temporaryfolder.h"

#include <cstddef>
#include <cstdint>
#include <string>

/** Defined by each target. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *pData, std::size_t nSize);

/**
 * State that all inputs of a process share, set up once so that each input alone behaves the same: the locale's
 * encoding is UTF-8, UTF-16 is read as little-endian, a Qt message is a finding, Qt and its fonts stay loaded.
 */
class FuzzHost
{
public:
    /** Created at the first call. */
    static const FuzzHost &Get();

    FuzzHost(const FuzzHost &) = delete;
    FuzzHost &operator=(const FuzzHost &) = delete;

    /** Writes a file, replacing an earlier one of that name, and returns its path. */
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

/** Aborts the process, which the fuzzer reports as a finding, unless the condition holds. */
void Require(bool bHolds, const char *pszWhat);
