/* The foreign host's memory also learns the source file that asks, so that a test can tell the
 * callers apart. */
#ifndef HOST_HOST_MEMORY_H
#define HOST_HOST_MEMORY_H
#include <stdint.h>
extern "C" {
void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine,
                          const char *szFile = __builtin_FILE());
void *HostMem_Alloc(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine,
                    const char *szFile = __builtin_FILE());
void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t nSourceTag, int32_t nLine,
                      const char *szFile = __builtin_FILE());
void HostMem_Free(void *pMemory, uint64_t nSourceTag, int32_t nLine);
}
#endif
