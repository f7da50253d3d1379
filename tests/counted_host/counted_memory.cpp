// The memory service of the hosts that tests run on, in place of host/host_memory.cpp: it counts,
// fails on demand and notes misuse. New memory holds no zero bytes, memory given back is
// overwritten, and resizing moves what is not large.
#include "tests/counted_host/counted_memory.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <utility>

#if __has_include(<valgrind/memcheck.h>)
#include <valgrind/memcheck.h>
#else
#define VALGRIND_MAKE_MEM_UNDEFINED(p, n) static_cast<void>(p)
#endif

#include "host/plain_memory.hpp"

namespace {

constexpr uint64_t kMarked = 64 * 1024;  // bytes of an allocation that are overwritten at most
#ifdef MEMORY_IS_WATCHED
constexpr uint64_t kFence = 0;
#else
constexpr uint64_t kFence = 8;
#endif

// Lies before each allocation; a fence that must stay as it is follows it.
struct alignas(16) Header {
    uint64_t nBytes, nTag;
    char *memory() { return reinterpret_cast<char *>(this + 1); }
};

// Tests set the failure up before the calls that it is meant for, so that the order among these
// does not matter.
std::atomic<int64_t> g_nLive{0}, g_nCountdown{INT64_MAX};
std::atomic<bool> g_bFromThereOn{false}, g_bFailed{false};
std::atomic<uint64_t> g_nMostBytes{UINT64_MAX - sizeof(Header) - kFence};
std::string g_refusals;  // for one thread only

void *enclosed(void *pObtained, uint64_t nBytes, uint64_t nSourceTag) {
    if (pObtained == nullptr) { return nullptr; }
    auto *pHeader = static_cast<Header *>(pObtained);
    *pHeader = {nBytes, nSourceTag};
    std::memset(pHeader->memory() + nBytes, '|', kFence);
    return pHeader->memory();
}

Header *checkedHeader(void *pMemory, uint64_t nSourceTag) {
    Header *pHeader = static_cast<Header *>(pMemory) - 1;
    const std::string fence(pHeader->memory() + pHeader->nBytes, kFence);
    HostMem_Refuse(pHeader->nTag != nSourceTag, "Memory of another tag given back");
    HostMem_Refuse(fence != std::string(kFence, '|'), "Bytes written after an allocation");
    return pHeader;
}

}  // namespace

bool HostMem_MayObtain(uint64_t nBytes) {
    const int64_t nLeft = SparedMemory::g_nDepth > 0 ? INT64_MAX : --g_nCountdown;
    const bool bFails = nLeft == 0 || (nLeft < 0 && g_bFromThereOn);
    if (bFails) { g_bFailed = true; }
    return !bFails && nBytes <= g_nMostBytes;
}

void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine) {
    return HostMem_Alloc(nBytes, nSourceTag, nLine);
}

void *HostMem_Alloc(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine) {
    HostMem_Refuse(nLine <= 0, "No source line");
    if (!HostMem_MayObtain(nBytes)) { return nullptr; }
    void *pObtained = host::plainAlloc(sizeof(Header) + nBytes + kFence);
    void *pMemory = enclosed(pObtained, nBytes, nSourceTag);
    if (pMemory == nullptr) { return nullptr; }
    ++g_nLive;
    std::memset(pMemory, 0xa5, std::min(nBytes, kMarked));
    VALGRIND_MAKE_MEM_UNDEFINED(pMemory, nBytes);  // memcheck is to find who relies on it
    return pMemory;
}

void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t nSourceTag, int32_t nLine) {
    if (pMemory == nullptr) { return HostMem_Alloc(nBytes, nSourceTag, nLine); }
    Header *pHeader = checkedHeader(pMemory, nSourceTag);
    const uint64_t nKept = std::min(nBytes, pHeader->nBytes);
    if (nKept > kMarked) {
        if (!HostMem_MayObtain(nBytes)) { return nullptr; }
        const uint64_t nAll = sizeof(Header) + nBytes + kFence;
        return enclosed(host::plainRealloc(pHeader, nAll), nBytes, nSourceTag);
    }
    void *pMoved = HostMem_Alloc(nBytes, nSourceTag, nLine);
    if (pMoved != nullptr) {
        std::memcpy(pMoved, pMemory, nKept);
        HostMem_Free(pMemory, nSourceTag, nLine);
    }
    return pMoved;
}

void HostMem_Free(void *pMemory, uint64_t nSourceTag, int32_t /*nLine*/) {
    if (pMemory == nullptr) { return; }
    Header *pHeader = checkedHeader(pMemory, nSourceTag);
    std::memset(pMemory, 0x5a, std::min(pHeader->nBytes, kMarked));
    --g_nLive;
    host::plainFree(pHeader);
}

void HostMem_FailAt(int64_t nCountdown, int32_t bFromThereOn) {
    g_bFailed = false;
    g_bFromThereOn = nCountdown > 0 && bFromThereOn != 0;
    g_nCountdown = nCountdown > 0 ? nCountdown : INT64_MAX;
}

bool HostMem_HasFailed() {
    return g_bFailed;
}

void HostMem_FailBeyond(uint64_t nBytes) {
    g_nMostBytes = nBytes;
}

int64_t HostMem_GetNumLive() {
    return g_nLive;
}

void HostMem_Refuse(bool bRefused, const char *szWhat) {
    if (bRefused && g_refusals.size() < 1000) { g_refusals.append(szWhat).append(". "); }
}

std::string HostMem_TakeRefusals() {
    return std::exchange(g_refusals, "");
}
