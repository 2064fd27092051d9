#pragma once

#include <cstdint>
#include <limits>

/*
 * Arithmetic of 32-bit times. Files may hold any number, so that every result is defined: sums and products wrap round
 * in two's complement.
 */

inline int WrapAdd(int a, int b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

inline int WrapMultiply(int a, int b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

/** Truncates toward zero; what does not fit, and NaN, is the smallest int, as x86 converts it. */
inline int TruncateToInt(double value)
{
    constexpr double Beyond = 2147483648.0;
    return value > -Beyond - 1.0 && value < Beyond ? static_cast<int>(value) : std::numeric_limits<int>::min();
}
