#pragma once

#include <cxxabi.h>
#include <exception>

/** Returns the result of @p call, or @p failed if it throws: no exception may leave a C function. */
template <typename Result, typename Call>
Result Guarded(Result failed, Call call)
{
    try {
        return call();
#ifdef __GLIBCXX__
    } catch (const abi::__forced_unwind &) {
        throw; // the thread was cancelled
    } catch (...) {
#else
    } catch (...) {
        // libc++ has no type for the unwinding of a cancelled thread, which is not a C++ exception.
        if (!std::current_exception())
            throw;
#endif
        return failed;
    }
}
