#pragma once

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
};

/** Counts calls for files below @p strFolder from now on, and lets a fault happen in the @p nCall th, from 0. */
void Begin(const std::string &strFolder, Fault fault = Fault::None, long nCall = -1);

/** Lets no further fault happen. @return the number of calls. */
long End();

} // namespace faultyio
