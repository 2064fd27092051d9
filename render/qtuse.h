#pragma once

#include "render/defaultfloats.h"

#include <pthread.h>

/**
 * Work that needs Qt, for as long as the object lives. Objects may be nested and on any thread.
 *
 * Qt's static objects are destroyed while the process ends, in an order that nobody can know; from then on nothing of Qt
 * may be touched. The end of the process waits, a second at most, for work that is under way on other threads; work that
 * is to begin later is refused.
 *
 * The work is done with the default floating-point environment, whatever the host's rounds to or traps. A thread that is
 * cancelled meanwhile ends later, since the locks of the libraries below would stay locked.
 */
class QtUse
{
public:
    enum class Work { Plain, Loading, Painting };
    explicit QtUse(Work work = Work::Plain);
    ~QtUse();
    QtUse(const QtUse &) = delete;
    QtUse &operator=(const QtUse &) = delete;

    /** False where the process ends: do without Qt. */
    explicit operator bool() const { return m_bAllowed; }

private:
    Work m_work;
    bool m_bAllowed;
    DefaultFloats m_floats;
    int m_nCancelState = PTHREAD_CANCEL_ENABLE;
};
