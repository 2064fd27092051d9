#pragma once

#include <atomic>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

/** What functions that stand in for the library's have in common. */
namespace librarycalls
{

inline std::mutex logMutex;
inline std::string strLog;
inline bool bMemory = true; ///< false lets calls fail

/** Threads inside, with those that have to be there alone counted a thousandfold. */
inline std::atomic<int> nInside = 0;
/** Times that the rule on threads was broken. */
inline std::atomic<int> nBroken = 0;

/** One thread's stay in the library. */
class Stay
{
public:
    /** @param nWeight  1000 where the thread has to be alone, else 1 */
    Stay(int nWeight, const std::string &strCall) : m_nWeight(nWeight)
    {
        const int nOthers = nInside.fetch_add(m_nWeight);
        nBroken += m_nWeight == 1 ? nOthers >= 1000 : nOthers != 0;
        for (int n = 0; n < 20; ++n)
            std::this_thread::yield(); // so that others come in, if they can
        const std::lock_guard<std::mutex> lock(logMutex);
        strLog += strCall + "\n";
    }
    ~Stay() { nInside.fetch_sub(m_nWeight); }
    Stay(const Stay &) = delete;
    Stay &operator=(const Stay &) = delete;

private:
    int m_nWeight;
};

/** A function that may run beside others; 0, or -1 without memory. */
template <typename... Values>
int Call(const char *pName, const Values &...values)
{
    std::ostringstream text;
    text << pName;
    ((text << " " << values), ...);
    const Stay stay(1, text.str());
    return bMemory ? 0 : -1;
}

/** The calls since the last time, a line each. */
inline std::string TakeLog()
{
    return std::exchange(strLog, "");
}

} // namespace librarycalls
