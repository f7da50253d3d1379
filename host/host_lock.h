/* The recursive lock that is embedded in the records it protects. */
#ifndef HOST_HOST_LOCK_H
#define HOST_HOST_LOCK_H

#include <pthread.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Must stay at its address from HostLock_Init to HostLock_Destroy. The field is the host's own. */
typedef struct HostLock {
    pthread_mutex_t mutex;
} HostLock;

/* Makes *pLock an unheld lock. Returns 0, or non-zero when the system has no resources for it; *pLock is then not a lock. */
int32_t HostLock_Init(HostLock *pLock);

/* Waits until no other thread holds the lock and takes it. The thread that holds it may take it again. */
void HostLock_Acquire(HostLock *pLock);

/* Gives back one HostLock_Acquire of the calling thread; the lock is free once all are given back. */
void HostLock_Release(HostLock *pLock);

/* Ends the lock, which no thread may hold or wait for. */
void HostLock_Destroy(HostLock *pLock);

#ifdef __cplusplus
}
#endif

#endif
