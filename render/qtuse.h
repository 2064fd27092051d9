#pragma once

#include "render/defaultfloats.h"

#include <pthread.h>

/**
 * Marks work that needs Qt while it lives. Uses may be nested, on any thread.
 *
 * Qt's static objects are destroyed in an unknown order when the process ends, and nothing of Qt may be used from then
 * on. The end of the process waits, for a second at most, for uses on other threads; later ones are refused.
 *
 * A thread that ends after a use counts as one until Qt has freed what it keeps for that thread. If the process is ending
 * by then, nothing is freed.
 *
 * The work is done in the default floating-point environment, whatever rounding and traps the host has set. A thread
 * cannot be cancelled during a use, since locks of the libraries below would stay locked; it ends after it.
 */
class QtUse
{
public:
    enum class Work { Plain, Loading, Painting };
    explicit QtUse(Work work = Work::Plain);
    ~QtUse();
    QtUse(const QtUse &) = delete;
    QtUse &operator=(const QtUse &) = delete;

    /** Says under which key Qt keeps a thread's data, and frees them when the thread ends. */
    static void SetThreadDataKey(pthread_key_t key);

    /** False if the process is ending and Qt must not be used. */
    explicit operator bool() const { return m_bAllowed; }

private:
    Work m_work;
    bool m_bAllowed;
    DefaultFloats m_floats;
    int m_nCancelState = PTHREAD_CANCEL_ENABLE;
};
