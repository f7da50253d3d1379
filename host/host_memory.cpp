#include "host/host_memory.h"

#include <atomic>
#include <cstdlib>
#include <limits>

namespace {

constexpr int64_t kNever = std::numeric_limits<int64_t>::max();
constexpr uint64_t kMaxBytes = static_cast<uint64_t>(std::numeric_limits<ptrdiff_t>::max());

// From this size on a resizing is rounded up, so that a table grown in small steps does not pay for a remapping every few kilobytes. Pages
// of the slack that nobody touches take no memory.
constexpr uint64_t kRoundedFrom = 128 * 1024;

// Plain counters without any order between them: tests set the failure up before the calls that it is meant for.
std::atomic<int64_t> g_nCalls{0};
std::atomic<int64_t> g_nLive{0};
std::atomic<int64_t> g_iFirstFailing{kNever};
std::atomic<int64_t> g_iLastFailing{kNever};

// Counts one call that obtains memory; false when the call is to fail.
bool mayObtain(uint64_t nBytes) {
    const int64_t iCall = g_nCalls.fetch_add(1, std::memory_order_relaxed) + 1;
    if (iCall >= g_iFirstFailing.load(std::memory_order_relaxed) && iCall <= g_iLastFailing.load(std::memory_order_relaxed)) return false;
    return nBytes <= kMaxBytes;
}

void *countedLive(void *pMemory) {
    if (pMemory != nullptr) g_nLive.fetch_add(1, std::memory_order_relaxed);
    return pMemory;
}

// malloc and realloc may answer NULL to a size of 0.
uint64_t atLeastOne(uint64_t nBytes) {
    return nBytes == 0 ? 1 : nBytes;
}

// nBytes rounded up to a multiple of an eighth of the power of two below it; small sizes as they are.
uint64_t roundedForGrowth(uint64_t nBytes) {
    if (nBytes < kRoundedFrom || nBytes > kMaxBytes / 2) return atLeastOne(nBytes);
    uint64_t nStep = kRoundedFrom / 8;
    while (nStep * 16 <= nBytes)
        nStep *= 2;
    return (nBytes + nStep - 1) / nStep * nStep;
}

void *resize(void *pMemory, uint64_t nBytes) {
    const uint64_t nRounded = roundedForGrowth(nBytes);
    void *pResized = std::realloc(pMemory, nRounded);
    if (pResized == nullptr && nRounded > nBytes) pResized = std::realloc(pMemory, atLeastOne(nBytes));
    return pResized;
}

}  // namespace

void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine) {
    return HostMem_Alloc(nBytes, nSourceTag, nLine);
}

void *HostMem_Alloc(uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    if (!mayObtain(nBytes)) return nullptr;
    return countedLive(std::malloc(atLeastOne(nBytes)));
}

void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    if (!mayObtain(nBytes)) return nullptr;
    return pMemory == nullptr ? countedLive(resize(nullptr, nBytes)) : resize(pMemory, nBytes);
}

void HostMem_Free(void *pMemory, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    if (pMemory == nullptr) return;
    g_nLive.fetch_sub(1, std::memory_order_relaxed);
    std::free(pMemory);
}

void HostMem_FailAt(int64_t nCountdown, int32_t bFromThereOn) {
    g_nCalls.store(0, std::memory_order_relaxed);
    g_iLastFailing.store(bFromThereOn != 0 ? kNever : nCountdown, std::memory_order_relaxed);
    g_iFirstFailing.store(nCountdown > 0 ? nCountdown : kNever, std::memory_order_relaxed);
}

int64_t HostMem_GetNumCalls(void) {
    return g_nCalls.load(std::memory_order_relaxed);
}

int64_t HostMem_GetNumLive(void) {
    return g_nLive.load(std::memory_order_relaxed);
}
