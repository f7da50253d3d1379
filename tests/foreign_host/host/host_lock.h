/* The foreign host's recursive lock lies elsewhere, so that making one needs memory. */
#ifndef HOST_HOST_LOCK_H
#define HOST_HOST_LOCK_H
#include <stdint.h>
typedef struct HostLock {
    void *pMutex;
    char cUnused[100];
    int32_t nDepth;
} HostLock;
#ifdef __cplusplus
extern "C" {
#endif
int32_t HostLock_Init(HostLock *pLock);
void HostLock_Acquire(HostLock *pLock);
void HostLock_Release(HostLock *pLock);
void HostLock_Destroy(HostLock *pLock);
#ifdef __cplusplus
}
#endif
#endif
