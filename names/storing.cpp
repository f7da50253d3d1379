// Storing names: the public entries, the way from a range to its replaced and appended parts, and
// appending.
#include <cassert>
#include <cstring>

#include <algorithm>

#include "host/host_memory.h"
#include "names/names_internal.hpp"

namespace names {

namespace {

// Names that go to one block in one piece.
struct Batch {
    int32_t iBlock;
    int32_t nNames;
    int32_t nBytes;  // NULs included
};

// Chooses the block for the first of the names, and how many of those behind it go along. False
// without memory.
bool chooseBatch(NamesManager *mgr, const int32_t *lengths, int32_t nNames, Batch *pBatch) {
    pBatch->iBlock = chooseBlock(mgr, int64_t{lengths[0]} + 1);
    if (pBatch->iBlock < 0) { return false; }
    const int64_t nRoom = roomIn(mgr->pBlocks[pBatch->iBlock]);
    int32_t nTaken = std::min(nNames, kMaxSegmentNames);
    int64_t nBytes = bytesFor(lengths, nTaken);
    while (nBytes > nRoom) { nBytes -= int64_t{lengths[--nTaken]} + 1; }
    pBatch->nNames = nTaken;
    pBatch->nBytes = static_cast<int32_t>(nBytes);
    return true;
}

// Lets the last segment go on with the batch if the texts touch, else adds a segment. False without
// memory.
[[gnu::always_inline]] inline bool recordSegment(NamesManager *mgr, const Batch &batch) {
    const int32_t nUsed = mgr->pBlocks[batch.iBlock].nUsed;
    if (mgr->nSegments > 0) {
        NameSegment *pLast = &mgr->pSegments[mgr->nSegments - 1];
        if (pLast->iBlock == batch.iBlock && pLast->nOffset + pLast->nBytes == nUsed &&
            namesIn(*pLast) + batch.nNames <= kMaxSegmentNames) {
            pLast->iLast += batch.nNames;
            pLast->nBytes += batch.nBytes;
            return true;
        }
    }
    if (mgr->nSegments == mgr->nSegmentsAlloc && !growSegmentTable(mgr)) { return false; }
    mgr->pSegments[mgr->nSegments++] = {mgr->nNames, mgr->nNames + batch.nNames - 1, batch.iBlock,
                                        nUsed, batch.nBytes};
    return true;
}

void recordPositions(NamesManager *mgr, const Batch &batch, const int32_t *lengths) {
    int32_t nOffset = mgr->pBlocks[batch.iBlock].nUsed;
    for (int32_t k = 0; k < batch.nNames; ++k) {
        mgr->pPositions[mgr->nNames + k] = {batch.iBlock, nOffset};
        nOffset += lengths[k] + 1;
    }
}

void countMaxLengths(NamesManager *mgr, const int32_t *lengths, int32_t nNames) {
    for (int32_t k = 0; mgr->nMaxNameLength >= 0 && k < nNames; ++k) {
        if (lengths[k] > mgr->nMaxNameLength) {
            mgr->nMaxNameLength = lengths[k];
            mgr->nMaxNameLengthCount = 1;
        } else if (lengths[k] == mgr->nMaxNameLength) {
            ++mgr->nMaxNameLengthCount;
        }
    }
}

// Appends the names of a batch. False without memory: nothing is stored then. Inlined, so that a
// single name takes a straight way.
[[gnu::always_inline]] inline bool appendBatch(NamesManager *mgr, const GivenNames &given,
                                               const Batch &batch) {
    if (mgr->pSegments == nullptr) {
        recordPositions(mgr, batch, given.lengths);
    } else if (!recordSegment(mgr, batch)) {
        return false;
    }
    NameStorageBlock *pBlock = &mgr->pBlocks[batch.iBlock];
    char *pText = pBlock->pData + pBlock->nUsed;
    if (batch.nNames == 1) {
        copyText(pText, firstGiven(given), given.lengths[0]);
    } else {
        copyTexts(pText, given, batch.nNames, batch.nBytes);
    }
    countMaxLengths(mgr, given.lengths, batch.nNames);
    const int32_t iFirst = mgr->nNames;
    pBlock->nNamesInBlock += batch.nNames;
    pBlock->nUsed += batch.nBytes;
    mgr->nNames += batch.nNames;
    if (mgr->pLookupIndex != nullptr) {
        indexTexts(mgr, pText, given.lengths, batch.nNames, iFirst);
    }
    return true;
}

// Makes room for positions of nNames more names, where positions are kept. False without memory.
inline bool makeRoomForPositions(NamesManager *mgr, int32_t nNames) {
    const bool bNeeded =
        mgr->pSegments == nullptr && int64_t{mgr->nNames} + nNames > mgr->nPositionsAlloc;
    return !bNeeded || growPositionTable(mgr, mgr->nNames + nNames);
}

int32_t appendNames(NamesManager *mgr, GivenNames given, int32_t nNames) {
    if (!makeRoomForPositions(mgr, nNames)) { return 1; }
    while (nNames > 0) {
        Batch batch;
        if (!chooseBatch(mgr, given.lengths, nNames, &batch) || !appendBatch(mgr, given, batch)) {
            return 1;
        }
        given = skipGiven(given, batch.nNames);
        nNames -= batch.nNames;
    }
    return 0;
}

// Lookups rely on it.
[[maybe_unused]] bool areTrimmed(const GivenNames &given, int32_t nNames) {
    const char *pName = given.pText;
    for (int32_t k = 0; k < nNames; ++k) {
        pName = given.names != nullptr ? given.names[k] : pName;
        const int32_t nLength = given.lengths[k];
        if (nLength > 0 && pName[nLength - 1] == ' ') { return false; }
        pName += nLength + 1;
    }
    return true;
}

// storeRange for one name.
int32_t storeOne(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength) {
    const GivenNames given = {&pName, nullptr, &nLength};
    if (index != mgr->nNames || hasNoTables(mgr)) { return storeRange(mgr, {index, index}, given); }
    assert(areTrimmed(given, 1));
    dropCursor(mgr);
    if (!makeRoomForPositions(mgr, 1)) { return 1; }
    const int64_t nBytes = int64_t{nLength} + 1;
    const int32_t iBlock = chooseBlock(mgr, nBytes);
    return iBlock >= 0 && appendBatch(mgr, given, {iBlock, 1, static_cast<int32_t>(nBytes)}) ? 0
                                                                                             : 1;
}

// Length of a name without trailing blanks. False if that is too long.
bool measureTrimmed(const char *pName, int32_t *pLength) {
    const uint64_t nLength = trimmedLength(pName, std::strlen(pName));
    *pLength = static_cast<int32_t>(nLength);
    return nLength <= kMaxNameBytes;
}

// Status 2 if one of the names is too long.
int32_t trimNames(const char *const *names, int32_t nNames, int32_t *lengths) {
    for (int32_t k = 0; k < nNames; ++k) {
        if (!measureTrimmed(names[k], &lengths[k])) { return 2; }
    }
    return 0;
}

// All names of a range in one store; lengths is their work array, given back here.
int32_t storeAtOnce(NamesManager *mgr, IndexRange range, const char *const *names,
                    int32_t *lengths) {
    int32_t nStatus = trimNames(names, countOf(range), lengths);
    if (nStatus == 0) {
        nStatus = storeRange(mgr, range, {names, nullptr, lengths});
        HostMem_Free(lengths, kSourceTag, __LINE__);
        releaseEmptyBlocks(mgr);
    } else {
        HostMem_Free(lengths, kSourceTag, __LINE__);
    }
    return nStatus;
}

int32_t trimAndStoreOne(NamesManager *mgr, int32_t index, const char *pName) {
    int32_t nLength = 0;
    return measureTrimmed(pName, &nLength) ? storeOne(mgr, index, pName, nLength) : 2;
}

// NamesManager_AddName; the index is in the caller's base, which decides when empty blocks are
// released.
int32_t addName(NamesManager *mgr, int32_t index, int32_t bOneBased, const char *pName) {
    IndexRange range;
    if (!toIndexRange(index, index, bOneBased, &range)) { return 1; }
    const int32_t nStatus = trimAndStoreOne(mgr, range.first, pName);
    if (nStatus == 0 && index % kReleaseInterval == 0) { releaseEmptyBlocks(mgr); }
    return nStatus;
}

// Addresses from nBegin on that lie in one block, or in none.
struct Surroundings {
    uintptr_t nBegin;
    uintptr_t nBytes;
    bool bInBlock;
};

uintptr_t addressOf(const char *p) {
    return reinterpret_cast<uintptr_t>(p);
}

Surroundings surroundingsOf(const NamesManager *mgr, const char *pName) {
    uintptr_t nBegin = 0;
    uintptr_t nEnd = UINTPTR_MAX;
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        const uintptr_t nBlock = addressOf(mgr->pBlocks[b].pData);
        const uintptr_t nBlockEnd = nBlock + static_cast<uintptr_t>(mgr->pBlocks[b].nSize);
        if (nBlockEnd <= addressOf(pName)) {
            nBegin = std::max(nBegin, nBlockEnd);
        } else if (nBlock > addressOf(pName)) {
            nEnd = std::min(nEnd, nBlock);
        } else {
            return {nBlock, nBlockEnd - nBlock, true};
        }
    }
    return {nBegin, nEnd - nBegin, false};
}

// *pLast: the surroundings of the name asked for before, mostly those of the next one, too.
inline bool liesInBlock(const NamesManager *mgr, const char *pName, Surroundings *pLast) {
    if (addressOf(pName) - pLast->nBegin >= pLast->nBytes) { *pLast = surroundingsOf(mgr, pName); }
    return pLast->bInBlock;
}

bool anyLiesInBlock(const NamesManager *mgr, const char *const *names, int32_t nNames) {
    Surroundings last = {0, 0, false};
    return std::any_of(names, names + nNames,
                       [mgr, &last](const char *pName) { return liesInBlock(mgr, pName, &last); });
}

// Where those of the names that lie in the manager itself are put for the time of a store: as many
// pointers, then their texts. NULL without memory.
const char **copyOwnNames(const NamesManager *mgr, const char *const *names, int32_t nNames) {
    uint64_t nBytes = static_cast<uint64_t>(nNames) * sizeof(char *);
    Surroundings last = {0, 0, false};
    for (int32_t k = 0; k < nNames; ++k) {
        nBytes += liesInBlock(mgr, names[k], &last) ? std::strlen(names[k]) + 1 : 0;
    }
    const char **ppCopies = static_cast<const char **>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (ppCopies == nullptr) { return nullptr; }
    char *pText = reinterpret_cast<char *>(ppCopies + nNames);
    for (int32_t k = 0; k < nNames; ++k) {
        ppCopies[k] = names[k];
        if (liesInBlock(mgr, names[k], &last)) {
            const size_t nName = std::strlen(names[k]) + 1;
            ppCopies[k] = static_cast<const char *>(std::memcpy(pText, names[k], nName));
            pText += nName;
        }
    }
    return ppCopies;
}

// The names of a range at once, or one after the other where there is no memory for their lengths.
int32_t storeSeveral(NamesManager *mgr, IndexRange range, const char *const *names) {
    const uint64_t nBytes = static_cast<uint64_t>(countOf(range)) * sizeof(int32_t);
    int32_t *lengths = static_cast<int32_t *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (lengths != nullptr) { return storeAtOnce(mgr, range, names, lengths); }
    for (int32_t i = range.first; i <= range.last; ++i) {
        const int32_t nStatus = trimAndStoreOne(mgr, i, names[i - range.first]);
        if (nStatus != 0) { return nStatus; }
    }
    releaseEmptyBlocks(mgr);
    return 0;
}

}  // namespace

int32_t addNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                 const char *const *names) {
    IndexRange range;
    if (first == last) { return addName(mgr, first, bOneBased, names[0]); }
    if (last < first) {
        releaseEmptyBlocks(mgr);
        return 0;
    }
    if (!toIndexRange(first, last, bOneBased, &range)) { return 1; }
    // Of names that replace others, those that lie in the manager itself would be overwritten by
    // those stored before them.
    if (range.first >= mgr->nNames || !anyLiesInBlock(mgr, names, countOf(range))) {
        return storeSeveral(mgr, range, names);
    }
    const char **ppCopies = copyOwnNames(mgr, names, countOf(range));
    const int32_t nStatus = ppCopies != nullptr ? storeSeveral(mgr, range, ppCopies) : 1;
    HostMem_Free(ppCopies, kSourceTag, __LINE__);
    return nStatus;
}

int32_t addOneName(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength) {
    const int32_t nStatus = storeOne(mgr, index, pName, nLength);
    if (nStatus == 0 && index % kReleaseInterval == 0) { releaseEmptyBlocks(mgr); }
    return nStatus;
}

int32_t storeRange(NamesManager *mgr, IndexRange range, const GivenNames &given) {
    assert(areTrimmed(given, countOf(range)));
    if (hasNoTables(mgr) ||
        (range.first > mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.first - 1) != 0)) {
        return 1;
    }
    dropCursor(mgr);
    const int32_t nReplaced = std::max(0, std::min(range.last + 1, mgr->nNames) - range.first);
    if (nReplaced > 0 &&
        replaceNames(mgr, {range.first, range.first + nReplaced - 1}, given) != 0) {
        return 1;
    }
    return nReplaced == countOf(range)
               ? 0
               : appendNames(mgr, skipGiven(given, nReplaced), countOf(range) - nReplaced);
}

}  // namespace names

using namespace names;

int32_t NamesManager_StoreNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                const char *const *names, const int32_t *lengths) {
    IndexRange range;
    return toIndexRange(first, last, bOneBased, &range)
               ? storeRange(mgr, range, {names, nullptr, lengths})
               : 1;
}

int32_t NamesManager_AddNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                              const char *const *names) {
    ScopedLock lock(mgr);
    return addNames(mgr, first, last, bOneBased, names);
}

int32_t NamesManager_AddName(NamesManager *mgr, int32_t index, int32_t bOneBased,
                             const char *name) {
    ScopedLock lock(mgr);
    return addName(mgr, index, bOneBased, name);
}
