#pragma once

#include <cstdint>

/** The 64 columns of a row from @p column on, the first as bit 0. Reads the word behind the one that has it, too. */
inline std::uint64_t BitsFrom(const std::uint64_t *row, int column)
{
    const unsigned word = static_cast<unsigned>(column) / 64;
    const unsigned shift = static_cast<unsigned>(column) % 64;
    return row[word] >> shift | row[word + 1] << 1 << (63 - shift);
}
