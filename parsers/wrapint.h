#pragma once

#include <cstdint>
#include <limits>

/*
 * Arithmetic on 32-bit times. Files may contain any number, so overflow has to be defined: sums and products wrap
 * around in two's complement.
 */

inline int WrapAdd(int a, int b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

inline int WrapMultiply(int a, int b)
{
    return static_cast<int>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

/** Truncates toward zero. NaN and values that do not fit give the smallest int, as the x86 conversion does. */
inline int TruncateToInt(double value)
{
    constexpr double Beyond = 2147483648.0;
    return value > -Beyond - 1.0 && value < Beyond ? static_cast<int>(value) : std::numeric_limits<int>::min();
}
