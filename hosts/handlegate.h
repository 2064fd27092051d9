#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The rule on threads of libsubtitle.h, for plugins whose host calls them on several: handles are made and destroyed on
 * one thread at a time, and not while another thread is in the library. All calls of the library are between one of these
 * pairs, which must not be nested. Each plugin has a gate of its own.
 */

/** For CreateVideoSubtitle() and DestroyVideoSubtitle(): waits until all others have left, and keeps them out. */
void HandleGateEnterAlone(void);
void HandleGateLeaveAlone(void);

/** For all other functions: waits for a thread that is inside alone, or is about to be. */
void HandleGateEnter(void);
void HandleGateLeave(void);

#ifdef __cplusplus
}
#endif
