#pragma once

#include <QMutex>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define SUBTITLE_TSAN
#endif
#elif defined(__SANITIZE_THREAD__)
#define SUBTITLE_TSAN
#endif
#ifdef SUBTITLE_TSAN
#include <sanitizer/tsan_interface.h>
#endif

/** Holds a mutex while it lives, and reports that to ThreadSanitizer, which does not see into the Qt libraries. */
class ScopedLock
{
public:
    explicit ScopedLock(QMutex &mutex) : m_mutex(mutex)
    {
        m_mutex.lock();
#ifdef SUBTITLE_TSAN
        __tsan_acquire(&m_mutex);
#endif
    }
    ~ScopedLock()
    {
#ifdef SUBTITLE_TSAN
        __tsan_release(&m_mutex);
#endif
        m_mutex.unlock();
    }
    ScopedLock(const ScopedLock &) = delete;
    ScopedLock &operator=(const ScopedLock &) = delete;

private:
    QMutex &m_mutex;
};
