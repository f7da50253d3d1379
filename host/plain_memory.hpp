// Memory of the C library by the contract of host_memory.h. Internal to the shipped host.
#ifndef HOST_PLAIN_MEMORY_HPP
#define HOST_PLAIN_MEMORY_HPP

#include <cstdint>
#include <cstdlib>

namespace host {

constexpr uint64_t kMaxBytes = PTRDIFF_MAX;

// From this size on resizing rounds up, so that a table grown in small steps is not remapped every
// few kilobytes. Slack pages that are never touched take no memory.
constexpr uint64_t kRoundedFrom = 128 * 1024;

// malloc and realloc may return NULL for a size of 0.
inline uint64_t atLeastOne(uint64_t nBytes) {
    return nBytes == 0 ? 1 : nBytes;
}

// nBytes rounded up to a multiple of an eighth of the power of two below it, unless it is small.
inline uint64_t roundedForGrowth(uint64_t nBytes) {
    if (nBytes < kRoundedFrom || nBytes > kMaxBytes / 2) { return atLeastOne(nBytes); }
    uint64_t nStep = kRoundedFrom / 8;
    while (nStep * 16 <= nBytes) { nStep *= 2; }
    return (nBytes + nStep - 1) / nStep * nStep;
}

inline void *plainAlloc(uint64_t nBytes) {
    return nBytes <= kMaxBytes ? malloc(atLeastOne(nBytes)) : nullptr;
}

inline void *plainRealloc(void *pMemory, uint64_t nBytes) {
    if (nBytes > kMaxBytes) { return nullptr; }
    const uint64_t nRounded = roundedForGrowth(nBytes);
    void *pResized = realloc(pMemory, nRounded);
    if (pResized == nullptr && nRounded > nBytes) {
        pResized = realloc(pMemory, atLeastOne(nBytes));
    }
    return pResized;
}

inline void plainFree(void *pMemory) {
    free(pMemory);
}

}  // namespace host

#endif
