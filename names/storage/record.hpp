// What every part of the module builds on: the record's lock for a scope, index ranges, tables that
// grow, and a buffer for texts that are put together. All functions below names/ expect the
// manager's lock to be held; public operations take it once. docs/design.md draws the records and
// lists the invariants.
#ifndef NAMES_STORAGE_RECORD_HPP
#define NAMES_STORAGE_RECORD_HPP

#include <cstdint>
#include <cstring>

#include "host/host_memory.h"
#include "names/names_manager.h"

// Tests compile the module with other sizes by naming another header here.
#ifndef NAMES_SIZES_HEADER
#define NAMES_SIZES_HEADER "names/names_sizes.hpp"
#endif
#include NAMES_SIZES_HEADER

namespace names {

// Identifies the module in allocations and reports: "names_mg".
constexpr uint64_t kSourceTag = 0x6e616d65735f6d67;

// What the sources rely on, whatever the sizes.
static_assert(kTableStep >= 2);  // one step is room for the two records that a cut adds
static_assert(kMaxMergedNames <= kMaxSegmentNames);  // what is merged is a segment like any other
static_assert(sizeof NamesManager::szFirstGeneratedName <=
              kLocalTextBytes);  // it is put together there
static_assert(sizeof NamesManager::szFirstGeneratedName <= kMaxNameBytes);  // and stored unmeasured

// Holds a manager's lock for a scope.
struct ScopedLock {
    explicit ScopedLock(NamesManager *mgr) : pLock(&mgr->lock) { HostLock_Acquire(pLock); }
    ~ScopedLock() { HostLock_Release(pLock); }
    ScopedLock(const ScopedLock &) = delete;
    ScopedLock &operator=(const ScopedLock &) = delete;
    HostLock *pLock;
};

inline void freeMemory(void *pMemory) {
    HostMem_Free(pMemory, kSourceTag, __LINE__);
}

// A record table resized to nNewAlloc records, those beyond nAlloc zeroed. NULL without memory: the
// old table stays valid.
void *resizeTable(void *pTable, int32_t nAlloc, int64_t nNewAlloc, uint64_t nRecordBytes,
                  int32_t nLine);

// ---- Index ranges ----

// 0-based and inclusive; last == first - 1 is empty.
struct IndexRange {
    int32_t first;
    int32_t last;
};

// Converts a caller's range. False if it lies outside every operation's contract: a first below 0
// or more than one past the last, or a last that would make nNames leave the 32-bit range.
inline bool toIndexRange(int32_t first, int32_t last, int32_t bOneBased, IndexRange *pRange) {
    const int64_t nBase = bOneBased != 0 ? 1 : 0;
    const int64_t iFirst = first - nBase;
    const int64_t iLast = last - nBase;
    if (iFirst < 0 || iFirst > iLast + 1 || iLast >= INT32_MAX) { return false; }
    *pRange = {static_cast<int32_t>(iFirst), static_cast<int32_t>(iLast)};
    return true;
}

inline int32_t countOf(IndexRange range) {
    return range.last - range.first + 1;
}

// ---- The record ----

// Only after a clear that ran out of memory.
inline bool hasNoTables(const NamesManager *mgr) {
    return mgr->pSegments == nullptr && mgr->pPositions == nullptr;
}

inline void dropCursor(NamesManager *mgr) {
    mgr->iCursorName = -1;
    mgr->nCursorMisses = 0;
}

// ---- Texts ----

// Room for one text after another, allocated only for long ones.
struct TextBuffer {
    TextBuffer() : pHeap(nullptr), nHeap(0) {}
    ~TextBuffer() {
        if (pHeap != nullptr) { HostMem_Free(pHeap, kSourceTag, __LINE__); }
    }
    TextBuffer(const TextBuffer &) = delete;
    TextBuffer &operator=(const TextBuffer &) = delete;
    char aLocal[kLocalTextBytes];
    char *pHeap;
    uint64_t nHeap;
};

// Room for nBytes, which may lie where the last text lay; NULL without memory.
char *roomFor(TextBuffer *pBuffer, uint64_t nBytes);

// Copies a name and adds a NUL. The name may lie where it goes to.
inline void copyText(char *pText, const char *pName, int32_t nLength) {
    std::memmove(pText, pName, static_cast<size_t>(nLength));
    pText[nLength] = 0;
}

// Length without trailing blanks.
inline uint64_t trimmedLength(const char *pText, uint64_t nLength) {
    while (nLength > 0 && pText[nLength - 1] == ' ') { --nLength; }
    return nLength;
}

}  // namespace names

#endif
