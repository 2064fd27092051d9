#pragma once

#include "cues.h"

#include <cstddef>
#include <random>
#include <vector>

/** Random times among those of the first cues, the same in every run. */
class RandomTimes
{
public:
    /** Times are at least @p from and less than @p from + @p within milliseconds after the start of a cue. */
    RandomTimes(int cues, long within, long from = 0)
    {
        std::mt19937 random(1); // NOLINT(cert-msc51-cpp): every run measures the same
        for (long &time : m_listTimes)
            time = CueDistance * (1 + static_cast<long>(random() % cues)) + from + static_cast<long>(random() % within);
    }

    long Next() { return m_listTimes[++m_nNext % m_listTimes.size()]; }

private:
    std::vector<long> m_listTimes = std::vector<long>(4096);
    std::size_t m_nNext = 0;
};
