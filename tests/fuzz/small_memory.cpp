// The memory service for fuzzing: it refuses what is large, so that no time goes into memory that images only claim.
#include <cstdlib>

#include "host/host_memory.h"

namespace {

constexpr uint64_t kMostBytes = 64 * 1024;
int64_t g_nLive = 0;

}  // namespace

void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    if (nBytes > kMostBytes) return nullptr;
    void *pResized = std::realloc(pMemory, nBytes == 0 ? 1 : nBytes);
    g_nLive += pMemory == nullptr ? 1 : 0;
    return pResized;
}

void *HostMem_Alloc(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine) {
    return HostMem_Realloc(nullptr, nBytes, nSourceTag, nLine);
}

void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine) {
    return HostMem_Realloc(nullptr, nBytes, nSourceTag, nLine);
}

void HostMem_Free(void *pMemory, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    g_nLive -= pMemory == nullptr ? 0 : 1;
    std::free(pMemory);
}

int64_t HostMem_GetNumLive(void) {
    return g_nLive;
}
