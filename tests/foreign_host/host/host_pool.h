/* The foreign host's pool learns who asks, as its memory does. */
#ifndef HOST_HOST_POOL_H
#define HOST_HOST_POOL_H
#include <stdint.h>
typedef struct HostPool HostPool;
extern "C" {
HostPool *HostPool_Get(void);
void *HostPool_Alloc(HostPool *pPool, uint64_t nBytes, int32_t nReserved1, int32_t nReserved2,
                     const char *szFile = __builtin_FILE(), int32_t nLine = __builtin_LINE());
void HostPool_Free(HostPool *pPool, void *pMemory, int32_t nReserved1, int32_t nReserved2);
}
#endif
