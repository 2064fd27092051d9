#pragma once

#include <cxxabi.h>
#include <exception>

/** Calls, and returns @p failed where the call throws: callers of a C function need not be C++. */
template <typename Result, typename Call>
Result Guarded(Result failed, Call call)
{
    try {
        return call();
#ifdef __GLIBCXX__
    } catch (const abi::__forced_unwind &) {
        throw; // the end of a cancelled thread
    } catch (...) {
#else
    } catch (...) {
        // libc++ has no name for the end of a cancelled thread, which is no exception of C++.
        if (!std::current_exception())
            throw;
#endif
        return failed;
    }
}
