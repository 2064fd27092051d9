#pragma once

#include <cstdint>
#include <vector>

/**
 * Reads a program stream in the simplest way, for tests to compare the library with.
 * @return the sub-picture payloads, in order; one that extends past the end of the bytes is cut there.
 */
inline std::vector<std::vector<std::uint8_t>> PlainPayloads(const std::vector<std::uint8_t> &listBytes)
{
    std::vector<std::vector<std::uint8_t>> listPayloads;
    const std::size_t nEnd = listBytes.size();
    std::size_t p = 0;
    while (p + 5 <= nEnd && listBytes[p] == 0 && listBytes[p + 1] == 0 && listBytes[p + 2] == 1) {
        const int nId = listBytes[p + 3];
        if (nId == 0xBA) {
            if (p + 13 >= nEnd)
                break;
            p += 14 + (listBytes[p + 13] & 7);
            continue;
        }
        if ((nId != 0xBD && nId != 0xBE) || p + 5 >= nEnd)
            break;
        const std::size_t nLength = (static_cast<std::size_t>(listBytes[p + 4]) << 8) + listBytes[p + 5];
        if (nId == 0xBD && p + 8 < nEnd) {
            const std::size_t nHeader = listBytes[p + 8];
            const std::size_t nSub = p + 9 + nHeader;
            const bool bPicture = nSub < nEnd && listBytes[nSub] >= 0x20 && listBytes[nSub] <= 0x3F;
            if (bPicture && nLength >= nHeader + 4) {
                std::vector<std::uint8_t> payload;
                for (std::size_t n = 0; n < nLength - nHeader - 4 && nSub + 1 + n < nEnd; ++n)
                    payload.push_back(listBytes[nSub + 1 + n]);
                listPayloads.push_back(payload);
            }
        }
        p += nLength + 6;
    }
    return listPayloads;
}
