#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Enforces the threading rule of libsubtitle.h in plugins whose host calls them on several threads: handles are created
 * and destroyed on one thread at a time, and not while another thread is in the library. Enclose every call of the
 * library in one of these pairs. They must not be nested. Each plugin has a gate of its own.
 */

/**
 * For CreateVideoSubtitle() and DestroyVideoSubtitle(): waits until all other threads have left, and keeps them out.
 */
void HandleGateEnterAlone(void);
void HandleGateLeaveAlone(void);

/** For all other functions: waits while a thread is inside alone, or waits to be. */
void HandleGateEnter(void);
void HandleGateLeave(void);

#ifdef __cplusplus
}
#endif
