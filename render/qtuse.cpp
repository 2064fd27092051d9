#include "render/qtuse.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace
{

std::atomic<int> usesEverywhere = 0;
std::atomic<bool> isProcessEnding = false;

/** Above 1 if uses are nested; destructors that run when exit() is called within a use may nest one, too. */
thread_local int usesHere = 0;

void EndUses()
{
    using namespace std::chrono_literals;
    isProcessEnding = true;
    // Wait a second at most: another thread may be waiting for a disk, and after fork() the other threads are missing.
    for (int i = 0; i < 1000 && usesEverywhere > usesHere; ++i)
        std::this_thread::sleep_for(1ms);
}

/**
 * exit() destroys the thread-local objects of its thread before all static objects. What such a destructor registers
 * with atexit() runs next. (If only this thread ends, registering is harmless.)
 */
class ThreadEnd
{
public:
    ~ThreadEnd() { (void)std::atexit(EndUses); }
};

/** Watches for an exit() on the main thread, where processes usually end. */
__attribute__((constructor)) void WatchMainThread()
{
    if (gettid() == getpid())
        static thread_local const ThreadEnd threadEnd;
}

/**
 * Watches for an exit() on other threads. Qt creates static objects when it first needs them, and exit() destroys those
 * before it calls functions that were registered earlier. So register again after work that may have created some:
 * after each of the first 16 works of a kind, then after powers of two, since text of another script may still create
 * some.
 */
void WatchAllThreads(QtUse::Work work)
{
    constexpr int FirstWorks = 16;
    static std::atomic<int> works[3] = {0, 0, 0};
    const int before = works[static_cast<int>(work)]++;
    if (before >= 0 && (before < FirstWorks || (before & (before - 1)) == 0))
        (void)std::atexit(EndUses);
}

} // namespace

QtUse::QtUse(Work work) : m_work(work), m_bAllowed(true)
{
    (void)pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_nCancelState);
    ++usesEverywhere;
    ++usesHere;
    if (isProcessEnding && usesHere == 1)
        m_bAllowed = false;
}

QtUse::~QtUse()
{
    if (m_bAllowed)
        WatchAllThreads(m_work);
    --usesHere;
    --usesEverywhere;
    (void)pthread_setcancelstate(m_nCancelState, nullptr);
}
