#pragma once

#include <cstddef>

/**
 * Simulates lack of memory. In a program that links this, its malloc(), operator new and so on replace those of the C
 * and C++ libraries, also for all shared libraries.
 */
namespace faultymemory
{

/** Which allocations count, and may fail. */
struct Selection {
    std::size_t nLeast = 0;      ///< in bytes; smaller allocations do not count
    const void *pCode = nullptr; ///< only those made by code in the segment with this address; null: any
    bool bLasting = false;       ///< all allocations after the chosen one fail too
};

/** Makes counted allocation number @p nAllocation, from 0, fail; none if negative. For processes with one thread. */
void Choose(const Selection &selection, long nAllocation = -1);

/** Starts counting and failing, until Pause() is called. */
void Go();
void Pause();

/** The number of allocations counted since Choose(). */
long Count();

} // namespace faultymemory
