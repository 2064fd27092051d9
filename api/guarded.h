#pragma once

#include <cxxabi.h>

/** Calls, and returns @p failed where the call throws: callers of a C function need not be C++. */
template <typename Result, typename Call>
Result Guarded(Result failed, Call call)
{
    try {
        return call();
    } catch (const abi::__forced_unwind &) {
        throw; // the end of a cancelled thread
    } catch (...) {
        return failed;
    }
}
