// What every part of the module builds on: the record's lock for a scope, index ranges, memory for
// tables, and a buffer for texts that are put together. Internal functions expect the manager's
// lock to be held; public operations take it once. docs/design.md draws the records and lists the
// invariants.
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

// What the sources rely on, whatever the sizes. One step of a table is room for the two records
// that a cut adds; what is merged is a segment like any other; the first default name is put
// together in a local buffer and stored unmeasured.
static_assert(kTableStep >= 2);
static_assert(kMaxMergedNames <= kMaxSegmentNames);
static_assert(sizeof NamesManager::szFirstGeneratedName <= kLocalTextBytes);
static_assert(sizeof NamesManager::szFirstGeneratedName <= kMaxNameBytes);

// Holds a manager's lock for a scope.
struct ScopedLock {
    explicit ScopedLock(NamesManager *mgr) : pLock(&mgr->lock) { HostLock_Acquire(pLock); }
    ~ScopedLock() { HostLock_Release(pLock); }
    ScopedLock(const ScopedLock &) = delete;
    ScopedLock &operator=(const ScopedLock &) = delete;
    HostLock *pLock;
};

// ---- Memory ----

// NULL does nothing.
inline void freeMemory(void *pMemory) {
    HostMem_Free(pMemory, kSourceTag, __LINE__);
}

// A work array of nNumbers lengths or indices, which the caller frees; NULL without memory. nLine
// is the caller's source line.
inline int32_t *allocNumbers(int32_t nNumbers, int32_t nLine) {
    const uint64_t nBytes = static_cast<uint64_t>(nNumbers) * sizeof(int32_t);
    return static_cast<int32_t *>(HostMem_Alloc(nBytes, kSourceTag, nLine));
}

// Resizes a record table to nNewAlloc records and zeroes those beyond nAlloc. Returns the table, or
// NULL without memory: the old table stays valid then.
void *resizeTable(void *pTable, int32_t nAlloc, int64_t nNewAlloc, uint64_t nRecordBytes,
                  int32_t nLine);

// ---- Index ranges ----

// 0-based and inclusive; last == first - 1 is empty.
struct IndexRange {
    int32_t first;
    int32_t last;
};

// Converts a caller's range. False if no operation takes it: its first is below 0 or more than one
// past the last, or its last would make nNames leave the 32-bit range.
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

// True only after a clear that ran out of memory.
inline bool hasNoTables(const NamesManager *mgr) {
    return mgr->pSegments == nullptr && mgr->pPositions == nullptr;
}

inline void dropCursor(NamesManager *mgr) {
    mgr->iCursorName = -1;
    mgr->nCursorMisses = 0;
}

// ---- Texts ----

// Room for a text, or for one after another; allocated only for those longer than kLocalTextBytes.
struct TextBuffer {
    TextBuffer() : pHeap(nullptr), nHeap(0) {}
    ~TextBuffer() {
        if (pHeap != nullptr) { freeMemory(pHeap); }
    }
    TextBuffer(const TextBuffer &) = delete;
    TextBuffer &operator=(const TextBuffer &) = delete;
    char aLocal[kLocalTextBytes];
    char *pHeap;
    uint64_t nHeap;
};

// Room for nBytes, perhaps where the text before lay. NULL without memory.
char *roomFor(TextBuffer *pBuffer, uint64_t nBytes);

// Copies a name and adds a NUL. The two may overlap.
inline void copyText(char *pText, const char *pName, int32_t nLength) {
    std::memmove(pText, pName, static_cast<size_t>(nLength));
    pText[nLength] = 0;
}

// The length of a text without its trailing blanks.
inline uint64_t trimmedLength(const char *pText, uint64_t nLength) {
    while (nLength > 0 && pText[nLength - 1] == ' ') { --nLength; }
    return nLength;
}

}  // namespace names

#endif
