#pragma once

#include <functional>
#include <string>

/**
 * Simulates file system faults. In a program that links this, its open(), read() and so on replace those of the C
 * library, also for all shared libraries. Files outside the watched folder are not affected.
 */
namespace faultyio
{

enum class Fault {
    None,
    Error,        ///< the call fails
    LastingError, ///< the call and all later ones fail
    OneByte,      ///< a read returns one byte
    Half,         ///< a read returns half of what was asked for
    Interrupted,  ///< a read is interrupted by a signal
    WouldBlock,   ///< a read and all later ones fail with EAGAIN, as from a pseudo file that has no data yet
};

/** Counts calls for files in @p strFolder from now on, and makes the fault happen in call number @p nCall, from 0. */
void Begin(const std::string &strFolder, Fault fault = Fault::None, long nCall = -1);

/** The same without a fault. @p act is called before each call, with its number, and may change the files. */
void Begin(const std::string &strFolder, const std::function<void(long)> &act);

/** What happened since Begin(). */
struct Record {
    long nCalls = 0;
    long nBytesRead = 0;
    long nFurthest = 0;      ///< the furthest position in a file that a read reached
    long nCarelessOpens = 0; ///< opens without O_NONBLOCK or O_CLOEXEC
};

/** Stops faults and counting. @return what was counted */
Record End();

} // namespace faultyio
