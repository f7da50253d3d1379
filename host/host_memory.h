/* Memory: the one door through which all memory of the library is obtained and given back.
 *
 * Sizes are in bytes. nSourceTag names the calling module and nLine its source line; both serve
 * diagnosis only. Every function may be called from any thread at any time. Memory is aligned for
 * every fundamental type and belongs to the caller until HostMem_Free.
 */
#ifndef HOST_HOST_MEMORY_H
#define HOST_HOST_MEMORY_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Obtains nBytes of memory of unspecified content for one record. Returns NULL when there is no
 * memory; a size of 0 yields a pointer of its own, never NULL. */
void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/* The same for anything that is not a single record: tables, texts, work arrays. */
void *HostMem_Alloc(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/* Resizes pMemory, which came from this service, to nBytes; a NULL pMemory is allocated anew. The
 * content is kept up to the smaller of the two sizes. Returns the memory, perhaps at another
 * address (the old pointer is then invalid), or NULL on failure: pMemory is then still valid and
 * unchanged. A size of 0 keeps a pointer of its own, never NULL. Growing a table by many small
 * steps costs time in proportion to its final size. */
void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/* Gives pMemory back. NULL does nothing. */
void HostMem_Free(void *pMemory, uint64_t nSourceTag, int32_t nLine);

#ifdef __cplusplus
}
#endif

#endif
