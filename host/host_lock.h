/** @file
 * The recursive lock that is embedded in the records it protects.
 */
#ifndef HOST_HOST_LOCK_H
#define HOST_HOST_LOCK_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

/** Must stay at its address from HostLock_Init() to HostLock_Destroy(). The fields are the host's
 * own. */
typedef struct HostLock {
    uint64_t nBias;   /**< the thread that takes it without an atomic read-modify-write; 0: none
                           yet, 1: none any more */
    uint64_t nOwner;  /**< the thread that holds it as any other may, 0: none */
    int32_t nState;   /**< 0 free, 1 held, 2 held and perhaps waited for; 3 biased, 4 bias ending */
    int32_t nInside;  /**< times that thread nBias has taken it as such */
    int32_t nDepth;   /**< times that thread nOwner has taken it */
    int32_t nPadding; /**< unused */
} HostLock;

/** Makes `*pLock` a lock that nobody holds.
 *
 * Returns 0, or non-zero if the system has no resources for it; `*pLock` is not a lock then. */
int32_t HostLock_Init(HostLock *pLock);

/** Waits until no other thread holds the lock and takes it. The thread that holds it may take it
 * again. */
void HostLock_Acquire(HostLock *pLock);

/** Undoes one HostLock_Acquire() of the calling thread; the lock is free once all are undone. */
void HostLock_Release(HostLock *pLock);

/** Destroys the lock, which no thread may hold or wait for. */
void HostLock_Destroy(HostLock *pLock);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
