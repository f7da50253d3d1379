#include "host/host_pool.h"

#include "host/host_memory.h"

namespace {

constexpr uint64_t kSourceTag = 0x686f7374706f6f6c;  // "hostpool"

}  // namespace

// The pool keeps nothing of its own: the platform's allocator serves short-lived work memory well.
struct HostPool {};

HostPool *HostPool_Get(void) {
    static HostPool pool;
    return &pool;
}

void *HostPool_Alloc(HostPool * /*pPool*/, uint64_t nBytes, int32_t /*nReserved1*/,
                     int32_t /*nReserved2*/) {
    return HostMem_Alloc(nBytes, kSourceTag, __LINE__);
}

void HostPool_Free(HostPool * /*pPool*/, void *pMemory, int32_t /*nReserved1*/,
                   int32_t /*nReserved2*/) {
    HostMem_Free(pMemory, kSourceTag, __LINE__);
}
