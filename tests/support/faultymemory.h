#pragma once

#include <cstddef>

/**
 * Lack of memory. A program that is linked with this has its own malloc(), operator new and so on before those of the C
 * and C++ libraries, for itself and for all shared libraries.
 */
namespace faultymemory
{

/** Which allocations count, and may fail. */
struct Selection {
    std::size_t nLeast = 0;      ///< those of at least so many bytes
    const void *pCode = nullptr; ///< those that the shared library with this address asks for itself; null: any
    bool bLasting = false;       ///< with the chosen one all that follow fail
};

/** Lets the @p nAllocation th allocation fail that counts, from 0. For processes of one thread. */
void Choose(const Selection &selection, long nAllocation = -1);

/** Allocations count until Pause() is called. */
void Go();
void Pause();

/** How many counted since Choose(). */
long Count();

} // namespace faultymemory
