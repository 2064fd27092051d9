#pragma once

#include <functional>
#include <string>

/**
 * Faults of the file system. A program that is linked with this has its own open(), read() and so on before those of the
 * C library, for itself and for all shared libraries. Files outside the watched folder are left alone.
 */
namespace faultyio
{

enum class Fault {
    None,
    Error,        ///< the call fails
    LastingError, ///< it fails, and so do all that follow
    OneByte,      ///< a read brings one byte
    Half,         ///< a read brings half of what was asked for
    Interrupted,  ///< a read is interrupted by a signal
    WouldBlock,   ///< a read and all that follow fail, as from a pseudo file that has nothing yet
};

/** Counts calls for files below @p strFolder from now on, and lets a fault happen in the @p nCall th, from 0. */
void Begin(const std::string &strFolder, Fault fault = Fault::None, long nCall = -1);

/** The same without a fault; before each call for those files, @p act gets its number and may do what it likes to them. */
void Begin(const std::string &strFolder, const std::function<void(long)> &act);

/** What happened since Begin(). */
struct Record {
    long nCalls = 0;
    long nBytesRead = 0;
    long nFurthest = 0;      ///< the end of the furthest read, as a position in its file
    long nCarelessOpens = 0; ///< that could wait, or that leave the descriptor to programs started meanwhile
};

/** Lets no further fault happen. */
Record End();

} // namespace faultyio
