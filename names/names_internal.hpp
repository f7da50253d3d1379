// What the module's sources share. Everything here expects the manager's lock to be held by the
// caller; public operations take it once and call these. The invariants that all of it keeps are
// drawn in docs/design.md and checked in audit.cpp.
#ifndef NAMES_NAMES_INTERNAL_HPP
#define NAMES_NAMES_INTERNAL_HPP

#include <cstdint>
#include <cstring>

// Another host's headers take the place of these where its folder comes first in the include path.
#include "host/host_memory.h"
#include "names/names_manager.h"

// The tests name a header with tiny sizes instead.
#ifndef NAMES_SIZES_HEADER
#define NAMES_SIZES_HEADER "names/names_sizes.hpp"
#endif
#include NAMES_SIZES_HEADER

// Stores names[k], lengths[k] bytes long, at index first + k; the bytes need no NUL there. Callers
// have trimmed the names: none may end in a blank, which no lookup would find (a debug build
// asserts it). Fills a gap before the range with default names, replaces what exists, appends the
// rest. 0, or 1: what was stored before the failure stays. A name given alone may lie in mgr
// itself; of several that replace others, none may.
int32_t NamesManager_StoreNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                const char *const *names, const int32_t *lengths);

// Generates the default names nNames to iLastIndex, none if that is below nNames. 0, or 1 after a
// report: one could not be stored.
int32_t NamesManager_GenerateNamesUpTo(NamesManager *mgr, int32_t iLastIndex);

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

// ---- Storage: names_manager.cpp ----

// Only after a clear that ran out of memory.
inline bool hasNoTables(const NamesManager *mgr) {
    return mgr->pSegments == nullptr && mgr->pPositions == nullptr;
}

inline const char *textAt(const NamesManager *mgr, int32_t iBlock, int32_t nOffset) {
    return mgr->pBlocks[iBlock].pData + nOffset;
}

inline const char *textLimit(const NamesManager *mgr, int32_t iBlock) {
    return textAt(mgr, iBlock, mgr->pBlocks[iBlock].nSize);
}

inline int32_t namesIn(const NameSegment &segment) {
    return segment.iLast - segment.iFirst + 1;
}

inline void dropCursor(NamesManager *mgr) {
    mgr->iCursorName = -1;
    mgr->nCursorMisses = 0;
}

inline int64_t roomIn(const NameStorageBlock &block) {
    return int64_t{block.nSize} - block.nUsed;
}

// The block that new text of nNeed bytes, NULs included, goes to: the last one with room, else a
// new one; -1 if that could not be made. May move the block table.
int32_t searchBlock(NamesManager *mgr, int64_t nNeed);
inline int32_t chooseBlock(NamesManager *mgr, int64_t nNeed) {
    const int32_t iLast = mgr->nBlocks - 1;
    return roomIn(mgr->pBlocks[iLast]) >= nNeed ? iLast : searchBlock(mgr, nNeed);
}

// Takes nNames names off a block, whose text lay at nOffset and took nBytes. Text at the end of the
// used bytes is given back, other text goes dead; a block without names is wholly free again.
inline void giveBackText(NameStorageBlock *pBlock, int32_t nOffset, int32_t nBytes,
                         int32_t nNames) {
    pBlock->nNamesInBlock -= nNames;
    if (pBlock->nNamesInBlock == 0) {
        pBlock->nUsed = 0;
    } else if (nOffset + nBytes == pBlock->nUsed) {
        pBlock->nUsed = nOffset;
    }
}

// Table growth. False without memory: nothing has changed. New records are zeroed.
bool growSegmentTable(NamesManager *mgr);
bool resizeSegmentTable(NamesManager *mgr, int64_t nNewAlloc);
bool growPositionTable(NamesManager *mgr, int32_t nPositions);

void freeSegmentTable(NamesManager *mgr);  // leaves NULL, 0 and 0

// Replaces the segment records iBegin to iEnd-1 by the nRecords given, with one move of those
// behind. The table must have the room.
void spliceSegments(NamesManager *mgr, int32_t iBegin, int32_t iEnd, const NameSegment *pRecords,
                    int32_t nRecords);

// Copies a name and adds a NUL. The name may lie where it goes to.
inline void copyText(char *pText, const char *pName, int32_t nLength) {
    std::memmove(pText, pName, static_cast<size_t>(nLength));
    pText[nLength] = 0;
}

// Names to be stored.
struct GivenNames {
    const char *const
        *names;  // where each begins; NULL: back to back from pText on, each followed by its NUL
    const char *pText;
    const int32_t *lengths;
};

// Bytes that names of these lengths take, NULs included.
inline int64_t bytesFor(const int32_t *lengths, int32_t nNames) {
    int64_t nBytes = nNames;
    for (int32_t k = 0; k < nNames; ++k) { nBytes += lengths[k]; }
    return nBytes;
}

inline const char *firstGiven(const GivenNames &given) {
    return given.names != nullptr ? given.names[0] : given.pText;
}

inline GivenNames skipGiven(const GivenNames &given, int32_t nNames) {
    if (given.names != nullptr) { return {given.names + nNames, nullptr, given.lengths + nNames}; }
    return {nullptr, given.pText + bytesFor(given.lengths, nNames), given.lengths + nNames};
}

// Copies names back to back to pText, each followed by a NUL, nBytes in all.
void copyTexts(char *pText, const GivenNames &given, int32_t nNames, int32_t nBytes);

// Length without trailing blanks.
inline uint64_t trimmedLength(const char *pText, uint64_t nLength) {
    while (nLength > 0 && pText[nLength - 1] == ' ') { --nLength; }
    return nLength;
}

int32_t clearNames(NamesManager *mgr);
int32_t storeIndividualPositions(NamesManager *mgr);
void switchIfFragmented(
    NamesManager *mgr);  // once segments outnumber half the names; a failed switch changes nothing
void releaseEmptyBlocks(NamesManager *mgr);

// ---- Locating and reading: retrieval.cpp ----

// Where a name's text begins, in segment mode.
struct Place {
    int32_t iSegment;
    int32_t nOffset;
    bool bSearched;  // it was neither name 0 nor the cursor's
};

Place locateName(const NamesManager *mgr, int32_t index);
int32_t findSegment(const NamesManager *mgr, int32_t index);

// findNameStarts for all names of a segment.
void findStartsIn(const NamesManager *mgr, const NameSegment &segment, int32_t *aStarts);

// Reads the names of a range in ascending order, in either storage mode. In segment mode, place
// always is where the next name begins or, behind the last name of a segment, where that segment's
// text ends.
struct NameReader {
    const NamesManager *mgr;
    int32_t iNext;
    int32_t iLast;
    Place place;
};

NameReader startReading(const NamesManager *mgr,
                        IndexRange range);  // the range lies below nNames and may be empty

// Reads on: pointers, lengths or both (NULL for one not wanted) of as many names as can be had at
// once, at most kMaxSegmentNames; the number read, 0 at the end of the range.
int32_t readNames(NameReader *pReader, const char **ppNames, int32_t *pLengths);

void readLengths(const NamesManager *mgr, IndexRange range, int32_t *lengths);

// The lengths of a range that is about to change, for the upkeep of a known maximum; the caller
// frees them. NULL while the maximum is not known, and without memory, when it becomes unknown.
int32_t *lengthsForMaximum(NamesManager *mgr, IndexRange range);

int32_t getPointers(NamesManager *mgr, IndexRange range,
                    const char **ppNames);             // as NamesManager_GetNamePointers
const char *getOne(NamesManager *mgr, int32_t index);  // as NamesManager_GetName, 0-based

// ---- Storing: storing.cpp, replacing.cpp, generating.cpp ----

int32_t addNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                 const char *const *names);  // NamesManager_AddNames

// Stores one name at a 0-based index as NamesManager_AddNames does; it needs no trimming and is not
// too long. 0 or 1.
int32_t addOneName(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength);

// NamesManager_StoreNames for a range that has been checked.
int32_t storeRange(NamesManager *mgr, IndexRange range, const GivenNames &given);

// Replaces the names of a range that exists. 0 or 1.
int32_t replaceNames(NamesManager *mgr, IndexRange range, GivenNames given);

// Tells whether szFormat is an acceptable format of default names. Looks no further than the
// record's field is wide.
bool isNameFormat(const char *szFormat);

// ---- Lookup: lookup.cpp ----

// The index, built if need be; NULL when there are no names or it could not be built.
NameLookupIndex *currentIndex(NamesManager *mgr);

// False also when a host's map does not count equal keys and there are some: each lookup then
// builds the index anew.
inline bool isIndexCurrent(const NamesManager *mgr) {
    return mgr->pLookupIndex != nullptr && mgr->pLookupIndex->nEntries == mgr->nNames;
}

// Looks names without trailing blanks up, each as if alone: their 0-based indices, -1 for none and
// for NULL. How many were looked up: only the first where the next one may find another index, for
// want of memory or on a host that makes it stale.
int32_t findTexts(NamesManager *mgr, const char *const *ppTexts, int32_t nTexts, int32_t *pFound);

void dropIndex(NamesManager *mgr);

// HostHashMap_Find for each of the keys, -1 for NULL: at once where the host offers lists, else key
// by key (storage/key_lists.cpp, like insertKeys).
void findKeys(HostHashMap *pMap, const char *const *ppKeys, int32_t nKeys, int32_t *pnValues);

// HostHashMap_Insert for each of the keys but NULL, with the values from nFirstValue on. pnExisting
// may be NULL. How many keys are done: all, or those before the first that could not be inserted.
int32_t insertKeys(HostHashMap *pMap, const char *const *ppKeys, int32_t nKeys, int32_t nFirstValue,
                   int32_t *pnExisting);

// Enters nNames names that lie back to back at pText, the first one at index iFirst. Does nothing
// without an index, drops it on failure.
void indexTexts(NamesManager *mgr, const char *pText, const int32_t *lengths, int32_t nNames,
                int32_t iFirst);

// ---- Audit: audit.cpp ----

// NamesManager_AssertConsistency; the number of its reports.
int32_t countViolations(const NamesManager *mgr);

}  // namespace names

#endif
