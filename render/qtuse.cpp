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

/** More than one where uses are nested, or where exit() is called out of one. */
thread_local int usesHere = 0;

void EndUses()
{
    using namespace std::chrono_literals;
    isProcessEnding = true;
    // Bounded: another thread may be waiting for a disk, and after fork() there is no other thread.
    for (int i = 0; i < 1000 && usesEverywhere > usesHere; ++i)
        std::this_thread::sleep_for(1ms);
}

/**
 * Objects of the thread that calls exit() are destroyed before all static objects, and what is registered then comes
 * next. (Where just this thread ends, that is harmless.)
 */
class ThreadEnd
{
public:
    ~ThreadEnd() { (void)std::atexit(EndUses); }
};

/** Has the main thread, on which processes end as a rule, see the end. */
__attribute__((constructor)) void WatchMainThread()
{
    if (gettid() == getpid())
        static thread_local const ThreadEnd threadEnd;
}

/**
 * For other threads that end the process. Qt makes static objects when it first needs them; they are destroyed before
 * whatever was registered before they were made, so that the end is watched for anew after work that may have made some:
 * the first of its kind, and then ever more seldom, as when text of another script is painted.
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
