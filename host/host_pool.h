/** @file
 * A pool for short-lived work memory. Every function may be called from any thread.
 */
#ifndef HOST_HOST_POOL_H
#define HOST_HOST_POOL_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostPool HostPool;

/** Returns the pool of the process. It is always there and needs no release. */
HostPool *HostPool_Get(void);

/** Allocates nBytes bytes of unspecified content, aligned for every fundamental type, that belong
 * to the caller until HostPool_Free(). Returns NULL if there is no memory; a size of 0 returns a
 * unique pointer, never NULL. The last two arguments are the host's: pass 0. */
void *HostPool_Alloc(HostPool *pPool, uint64_t nBytes, int32_t nReserved1, int32_t nReserved2);

/** Frees memory of this pool; NULL is ignored. The last two arguments are the host's: pass 0. */
void HostPool_Free(HostPool *pPool, void *pMemory, int32_t nReserved1, int32_t nReserved2);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
