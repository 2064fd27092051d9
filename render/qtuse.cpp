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

/** 1 once this thread ends as a use. Apart from usesHere, which would allow other uses during exit(). */
thread_local int endsHere = 0;

void EndUses()
{
    using namespace std::chrono_literals;
    isProcessEnding = true;
    // Wait a second at most: another thread may be waiting for a disk, and after fork() the other threads are missing.
    for (int i = 0; i < 1000 && usesEverywhere > usesHere + endsHere; ++i)
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

/** Qt's, under which it keeps a thread's data; -1 if there is none. */
std::atomic<int> threadDataKey = -1;

/** Has a value while the end of this thread counts as a use. */
pthread_key_t endKey;
bool haveEndKey = false;

void EndEnd()
{
    --endsHere;
    --usesEverywhere;
}

/**
 * Called by the C library in rounds over all keys that have values, until none is left. After the first round Qt's
 * destructor has been called.
 */
void EndAfterFirstRound(void *round) // cppcheck-suppress constParameter; a callback of the C library
{
    static int second;
    if (round == &second || pthread_setspecific(endKey, &second) != 0)
        EndEnd();
}

/**
 * Makes the end of a thread a use. Qt 5 frees what it keeps for the thread in the destructor of a key, which comes after
 * those of thread-local objects; newer versions of Qt 6 in that of a thread-local object, which is older than this.
 */
class ThreadUse
{
public:
    ~ThreadUse()
    {
        static int first;
        ++usesEverywhere;
        ++endsHere;
        if (!isProcessEnding && haveEndKey && pthread_setspecific(endKey, &first) == 0)
            return;
        if (threadDataKey >= 0)
            (void)pthread_setspecific(threadDataKey, nullptr);
        EndEnd();
    }
};

__attribute__((constructor)) void CreateEndKey()
{
    haveEndKey = pthread_key_create(&endKey, EndAfterFirstRound) == 0;
}

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
    if (m_bAllowed) {
        WatchAllThreads(m_work);
        static thread_local const ThreadUse threadUse;
    }
    --usesHere;
    --usesEverywhere;
    (void)pthread_setcancelstate(m_nCancelState, nullptr);
}

void QtUse::SetThreadDataKey(pthread_key_t key)
{
    threadDataKey = static_cast<int>(key);
}
