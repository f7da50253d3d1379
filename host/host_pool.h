/* A pool for short-lived work memory. Every function may be called from any thread. */
#ifndef HOST_HOST_POOL_H
#define HOST_HOST_POOL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostPool HostPool;

/* Returns the pool of the process. It is always there and needs no release. */
HostPool *HostPool_Get(void);

/* Obtains nBytes bytes of unspecified content, aligned for every fundamental type, that belong to
 * the caller until HostPool_Free. Returns NULL when there is no memory; a size of 0 yields a
 * pointer of its own, never NULL. The two last arguments are the host's: pass 0. */
void *HostPool_Alloc(HostPool *pPool, uint64_t nBytes, int32_t nReserved1, int32_t nReserved2);

/* Gives back memory of this pool. NULL does nothing. The two last arguments are the host's: pass 0.
 */
void HostPool_Free(HostPool *pPool, void *pMemory, int32_t nReserved1, int32_t nReserved2);

#ifdef __cplusplus
}
#endif

#endif
