#include "host/host_lock.h"

int32_t HostLock_Init(HostLock *pLock) {
    pthread_mutexattr_t attributes;
    int nError = pthread_mutexattr_init(&attributes);
    if (nError != 0) return nError;
    nError = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    if (nError == 0) nError = pthread_mutex_init(&pLock->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return nError;
}

void HostLock_Acquire(HostLock *pLock) {
    pthread_mutex_lock(&pLock->mutex);
}

void HostLock_Release(HostLock *pLock) {
    pthread_mutex_unlock(&pLock->mutex);
}

void HostLock_Destroy(HostLock *pLock) {
    pthread_mutex_destroy(&pLock->mutex);
}
