/** @file
 * The service through which the library allocates and frees all its memory.
 *
 * Sizes are in bytes. nSourceTag names the calling module and nLine its source line; both serve
 * diagnosis only. Every function may be called from any thread at any time. Memory is aligned for
 * every fundamental type and belongs to the caller until HostMem_Free().
 */
#ifndef HOST_HOST_MEMORY_H
#define HOST_HOST_MEMORY_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

/** Allocates nBytes of unspecified content for one record. Returns NULL if there is no memory; a
 * size of 0 returns a unique pointer, never NULL. */
void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/** HostMem_AllocRecord() for everything that is not a single record: tables, texts, work arrays. */
void *HostMem_Alloc(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/** Resizes pMemory, which came from this service, to nBytes; NULL is allocated anew. The content is
 * kept up to the smaller of the two sizes. A size of 0 returns a unique pointer, never NULL.
 * Growing a table by many small steps costs time in proportion to its final size.
 *
 * Returns the memory, perhaps at another address (the old pointer is then invalid), or NULL on
 * failure; pMemory is then still valid and unchanged. */
void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/** Frees pMemory; NULL is ignored. */
void HostMem_Free(void *pMemory, uint64_t nSourceTag, int32_t nLine);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
