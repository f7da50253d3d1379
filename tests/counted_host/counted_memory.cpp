// The shipped memory service once more, with every call counted in front of it. Stands in for
// host/host_memory.cpp.
#include "tests/counted_host/counted_memory.h"

#include <atomic>

#include "host/plain_memory.hpp"

namespace {

// Plain counters without any order between them: tests set the failure up before the calls that it
// is meant for.
std::atomic<int64_t> g_nCalls{0};
std::atomic<int64_t> g_nLive{0};
std::atomic<int64_t> g_iFirstFailing{INT64_MAX};
std::atomic<int64_t> g_iLastFailing{INT64_MAX};
std::atomic<uint64_t> g_nMostBytes{UINT64_MAX};

// Counts one call that obtains memory; false when the call is to fail.
bool mayObtain(uint64_t nBytes) {
    const int64_t iCall = g_nCalls.fetch_add(1, std::memory_order_relaxed) + 1;
    if (nBytes > g_nMostBytes.load(std::memory_order_relaxed)) { return false; }
    return iCall < g_iFirstFailing.load(std::memory_order_relaxed) ||
           iCall > g_iLastFailing.load(std::memory_order_relaxed);
}

}  // namespace

void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine) {
    return HostMem_Alloc(nBytes, nSourceTag, nLine);
}

void *HostMem_Alloc(uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    void *pMemory = mayObtain(nBytes) ? host::plainAlloc(nBytes) : nullptr;
    if (pMemory != nullptr) { g_nLive.fetch_add(1, std::memory_order_relaxed); }
    return pMemory;
}

void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    void *pResized = mayObtain(nBytes) ? host::plainRealloc(pMemory, nBytes) : nullptr;
    if (pMemory == nullptr && pResized != nullptr) {
        g_nLive.fetch_add(1, std::memory_order_relaxed);
    }
    return pResized;
}

void HostMem_Free(void *pMemory, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    if (pMemory == nullptr) { return; }
    g_nLive.fetch_sub(1, std::memory_order_relaxed);
    host::plainFree(pMemory);
}

void HostMem_FailAt(int64_t nCountdown, int32_t bFromThereOn) {
    g_nCalls.store(0, std::memory_order_relaxed);
    g_iLastFailing.store(bFromThereOn != 0 ? INT64_MAX : nCountdown, std::memory_order_relaxed);
    g_iFirstFailing.store(nCountdown > 0 ? nCountdown : INT64_MAX, std::memory_order_relaxed);
}

void HostMem_FailBeyond(uint64_t nBytes) {
    g_nMostBytes.store(nBytes, std::memory_order_relaxed);
}

int64_t HostMem_GetNumCalls() {
    return g_nCalls.load(std::memory_order_relaxed);
}

int64_t HostMem_GetNumLive() {
    return g_nLive.load(std::memory_order_relaxed);
}
