#include "hosts/handlegate.h"

#include <pthread.h>

/* A pthread_rwlock may starve writers. `door` makes new readers queue behind a waiting writer. */
static pthread_mutex_t door = PTHREAD_MUTEX_INITIALIZER;
static pthread_rwlock_t library = PTHREAD_RWLOCK_INITIALIZER;

void HandleGateEnterAlone(void)
{
    pthread_mutex_lock(&door);
    pthread_rwlock_wrlock(&library);
    pthread_mutex_unlock(&door);
}

void HandleGateLeaveAlone(void)
{
    pthread_rwlock_unlock(&library);
}

void HandleGateEnter(void)
{
    pthread_mutex_lock(&door);
    pthread_rwlock_rdlock(&library);
    pthread_mutex_unlock(&door);
}

void HandleGateLeave(void)
{
    pthread_rwlock_unlock(&library);
}
