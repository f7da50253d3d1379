#include "host/host_memory.h"

#include "host/plain_memory.hpp"

void *HostMem_AllocRecord(uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    return host::plainAlloc(nBytes);
}

void *HostMem_Alloc(uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    return host::plainAlloc(nBytes);
}

void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    return host::plainRealloc(pMemory, nBytes);
}

void HostMem_Free(void *pMemory, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    host::plainFree(pMemory);
}
