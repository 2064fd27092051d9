#pragma once

#include <cstdint>

/**
 * The next column at or behind @p from whose bit is @p bit, in a row of @p words words; behind the last one when there is
 * none.
 */
inline int FindBit(const std::uint64_t *row, int words, int from, bool bit)
{
    int word = from / 64;
    if (word >= words)
        return 64 * words;
    const std::uint64_t flip = bit ? 0 : ~std::uint64_t{0};
    std::uint64_t bits = (row[word] ^ flip) & (~std::uint64_t{0} << (from % 64));
    while (!bits) {
        if (++word == words)
            return 64 * words;
        bits = row[word] ^ flip;
    }
    return 64 * word + __builtin_ctzll(bits);
}
