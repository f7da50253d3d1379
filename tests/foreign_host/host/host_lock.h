/* The foreign host's recursive lock: an owner and a depth, nothing of the platform's threads. */
#ifndef HOST_HOST_LOCK_H
#define HOST_HOST_LOCK_H
#include <stdint.h>
typedef struct HostLock {
    int32_t nDepth;
    char cUnused[100];
    uintptr_t nOwner; /* an address that differs from thread to thread; 0: nobody holds the lock */
} HostLock;
extern "C" {
int32_t HostLock_Init(HostLock *pLock, const char *szFile = __builtin_FILE(),
                      int32_t nLine = __builtin_LINE());
void HostLock_Acquire(HostLock *pLock);
void HostLock_Release(HostLock *pLock);
void HostLock_Destroy(HostLock *pLock);
}
#endif
