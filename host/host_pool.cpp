#include "host/host_pool.h"

#include "host/host_memory.h"

namespace host {
constexpr uint64_t kPoolSourceTag = 0x686f7374706f6f6c;  // "hostpool"
}  // namespace host

// The pool holds nothing: the memory service is fast enough for short-lived memory.
struct HostPool {};

HostPool *HostPool_Get(void) {
    static HostPool pool;
    return &pool;
}

void *HostPool_Alloc(HostPool * /*pPool*/, uint64_t nBytes, int32_t /*nReserved1*/,
                     int32_t /*nReserved2*/) {
    return HostMem_Alloc(nBytes, host::kPoolSourceTag, __LINE__);
}

void HostPool_Free(HostPool * /*pPool*/, void *pMemory, int32_t /*nReserved1*/,
                   int32_t /*nReserved2*/) {
    HostMem_Free(pMemory, host::kPoolSourceTag, __LINE__);
}
