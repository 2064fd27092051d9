#pragma once

#include <atomic>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

/** Common parts of the functions that replace the library's in a test: a log and a check of the threading rules. */
namespace librarycalls
{

inline std::mutex logMutex;
inline std::string strLog;
inline bool bMemory = true; ///< false makes calls fail

/** Threads in a call. One that must be alone there counts 1000. */
inline std::atomic<int> nInside = 0;
/** How often a call met another one that excludes it. */
inline std::atomic<int> nBroken = 0;

/** Records one call of the library, from construction to destruction. */
class Stay
{
public:
    /** @param nWeight  1000 if the thread must be alone, else 1 */
    Stay(int nWeight, const std::string &strCall) : m_nWeight(nWeight)
    {
        const int nOthers = nInside.fetch_add(m_nWeight);
        nBroken += m_nWeight == 1 ? nOthers >= 1000 : nOthers != 0;
        for (int n = 0; n < 20; ++n)
            std::this_thread::yield(); // lets other threads make calls, if they can
        const std::lock_guard<std::mutex> lock(logMutex);
        strLog += strCall + "\n";
    }
    ~Stay() { nInside.fetch_sub(m_nWeight); }
    Stay(const Stay &) = delete;
    Stay &operator=(const Stay &) = delete;

private:
    int m_nWeight;
};

/** A call that others may overlap. @return 0, or -1 if bMemory is false */
template <typename... Values>
int Call(const char *pName, const Values &...values)
{
    std::ostringstream text;
    text << pName;
    ((text << " " << values), ...);
    const Stay stay(1, text.str());
    return bMemory ? 0 : -1;
}

/** Returns the log, one line per call, and clears it. */
inline std::string TakeLog()
{
    return std::exchange(strLog, "");
}

} // namespace librarycalls
