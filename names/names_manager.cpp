// The record, its lifecycle, and the storage that every other source builds on: blocks, tables,
// copying, the switch to positions, the release of empty blocks.
#include "names/names_manager.h"

#include <cstring>

#include <algorithm>

#include "host/host_memory.h"
#include "names/names_internal.hpp"
#include "names/text_walk.hpp"

namespace names {

namespace {

constexpr char kDefaultFormat[] = "nm%d";

// A record table resized to nNewAlloc records, those beyond nAlloc zeroed. NULL without memory: the
// old table stays valid.
void *resizeTable(void *pTable, int32_t nAlloc, int64_t nNewAlloc, uint64_t nRecordBytes,
                  int32_t nLine) {
    if (nNewAlloc > INT32_MAX) { return nullptr; }
    void *pNew =
        HostMem_Realloc(pTable, static_cast<uint64_t>(nNewAlloc) * nRecordBytes, kSourceTag, nLine);
    if (pNew != nullptr && nNewAlloc > nAlloc) {
        const uint64_t nOldBytes = static_cast<uint64_t>(nAlloc) * nRecordBytes;
        std::memset(static_cast<char *>(pNew) + nOldBytes, 0,
                    static_cast<uint64_t>(nNewAlloc - nAlloc) * nRecordBytes);
    }
    return pNew;
}

bool resizeBlockTable(NamesManager *mgr, int64_t nNewAlloc) {
    void *pNew =
        resizeTable(mgr->pBlocks, mgr->nBlocksAlloc, nNewAlloc, sizeof(NameStorageBlock), __LINE__);
    if (pNew == nullptr) { return false; }
    mgr->pBlocks = static_cast<NameStorageBlock *>(pNew);
    mgr->nBlocksAlloc = static_cast<int32_t>(nNewAlloc);
    return true;
}

char *allocText(int64_t nBytes) {
    return static_cast<char *>(HostMem_Alloc(static_cast<uint64_t>(nBytes), kSourceTag, __LINE__));
}

void freeMemory(void *pMemory) {
    HostMem_Free(pMemory, kSourceTag, __LINE__);
}

// A block of nSize bytes at the end of the table, which must have the room.
bool addBlock(NamesManager *mgr, int64_t nSize) {
    char *pData = allocText(nSize);
    if (pData == nullptr) { return false; }
    mgr->pBlocks[mgr->nBlocks++] = {pData, static_cast<int32_t>(nSize), 0, 0};
    return true;
}

// Fails over to ever smaller blocks rather than fail, as long as the text fits.
bool addBlockForText(NamesManager *mgr, int64_t nNeed) {
    if (nNeed > INT32_MAX || (mgr->nBlocks == mgr->nBlocksAlloc &&
                              !resizeBlockTable(mgr, int64_t{mgr->nBlocksAlloc} + kTableStep))) {
        return false;
    }
    int64_t nSize = std::max<int64_t>(nNeed, kNewBlockBytes);
    while (!addBlock(mgr, nSize)) {
        nSize /= 2;
        if (nSize <= std::max<int64_t>(nNeed, kLeastBlockBytes)) { return false; }
    }
    return true;
}

// Block numbers that references take on when blocks go.
struct Renumbering {
    const NameStorageBlock
        *pReleased;  // released records in table order, nSize their old block number
    int32_t nReleased;
    int32_t iLastOld;  // neighbours mostly lie in one block
    int32_t iLastNew;
};

int32_t renumbered(Renumbering *pMap, int32_t iBlock) {
    if (iBlock != pMap->iLastOld) {
        const NameStorageBlock *pEnd = pMap->pReleased + pMap->nReleased;
        const NameStorageBlock *pFirstAbove = std::lower_bound(
            pMap->pReleased, pEnd, iBlock,
            [](const NameStorageBlock &released, int32_t iOld) { return released.nSize < iOld; });
        pMap->iLastOld = iBlock;
        pMap->iLastNew = iBlock - static_cast<int32_t>(pFirstAbove - pMap->pReleased);
    }
    return pMap->iLastNew;
}

// Frees the text of empty blocks and moves the blocks that stay to the front, in order; the records
// of the others, in table order, behind them carry their old number in nSize. The number of blocks
// that stay: at least one, the last if all are empty.
int32_t partitionBlocks(NamesManager *mgr) {
    int32_t nKept = 0;
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        const bool bOnlyOneLeft = nKept == 0 && b == mgr->nBlocks - 1;
        if (mgr->pBlocks[b].nUsed != 0 || bOnlyOneLeft) {
            std::swap(mgr->pBlocks[nKept++], mgr->pBlocks[b]);
        } else {
            freeMemory(mgr->pBlocks[b].pData);
            mgr->pBlocks[b] = {nullptr, b, 0, 0};
        }
    }
    std::sort(
        mgr->pBlocks + nKept, mgr->pBlocks + mgr->nBlocks,
        [](const NameStorageBlock &a, const NameStorageBlock &b) { return a.nSize < b.nSize; });
    return nKept;
}

}  // namespace

char *roomFor(TextBuffer *pBuffer, uint64_t nBytes) {
    if (nBytes <= kLocalTextBytes) { return pBuffer->aLocal; }
    if (nBytes > pBuffer->nHeap) {
        void *pNew = HostMem_Realloc(pBuffer->pHeap, nBytes, kSourceTag, __LINE__);
        if (pNew == nullptr) { return nullptr; }
        pBuffer->pHeap = static_cast<char *>(pNew);
        pBuffer->nHeap = nBytes;
    }
    return pBuffer->pHeap;
}

int32_t searchBlock(NamesManager *mgr, int64_t nNeed) {
    for (int32_t b = mgr->nBlocks - 1; b >= 0; --b) {
        if (roomIn(mgr->pBlocks[b]) >= nNeed) { return b; }
    }
    return addBlockForText(mgr, nNeed) ? mgr->nBlocks - 1 : -1;
}

bool resizeSegmentTable(NamesManager *mgr, int64_t nNewAlloc) {
    void *pNew =
        resizeTable(mgr->pSegments, mgr->nSegmentsAlloc, nNewAlloc, sizeof(NameSegment), __LINE__);
    if (pNew == nullptr) { return false; }
    mgr->pSegments = static_cast<NameSegment *>(pNew);
    mgr->nSegmentsAlloc = static_cast<int32_t>(nNewAlloc);
    return true;
}

bool growSegmentTable(NamesManager *mgr) {
    return resizeSegmentTable(mgr, int64_t{mgr->nSegmentsAlloc} + kTableStep);
}

void freeSegmentTable(NamesManager *mgr) {
    freeMemory(mgr->pSegments);
    mgr->pSegments = nullptr;
    mgr->nSegments = 0;
    mgr->nSegmentsAlloc = 0;
}

bool growPositionTable(NamesManager *mgr, int32_t nPositions) {
    const int64_t nShortfall = int64_t{nPositions} - mgr->nPositionsAlloc;
    const int64_t nNewAlloc =
        mgr->nPositionsAlloc + (nShortfall + kPositionsStep - 1) / kPositionsStep * kPositionsStep;
    void *pNew = resizeTable(mgr->pPositions, mgr->nPositionsAlloc, nNewAlloc, sizeof(NamePosition),
                             __LINE__);
    if (pNew == nullptr) { return false; }
    mgr->pPositions = static_cast<NamePosition *>(pNew);
    mgr->nPositionsAlloc = static_cast<int32_t>(nNewAlloc);
    return true;
}

void spliceSegments(NamesManager *mgr, int32_t iBegin, int32_t iEnd, const NameSegment *pRecords,
                    int32_t nRecords) {
    const int32_t nBehind = mgr->nSegments - iEnd;
    if (iBegin + nRecords != iEnd && nBehind > 0) {
        std::memmove(mgr->pSegments + iBegin + nRecords, mgr->pSegments + iEnd,
                     static_cast<size_t>(nBehind) * sizeof(NameSegment));
    }
    std::copy_n(pRecords, nRecords, mgr->pSegments + iBegin);
    mgr->nSegments = iBegin + nRecords + nBehind;
}

// A stretch of names that turn out to lie back to back moves in one piece; whatever stands between
// them there, NULs end them here.
void copyTexts(char *pText, const GivenNames &given, int32_t nNames, int32_t nBytes) {
    if (given.names == nullptr) {
        std::memcpy(pText, given.pText, static_cast<size_t>(nBytes));
        return;
    }
    for (int32_t i = 0; i < nNames;) {
        const char *pSource = given.names[i];
        int64_t nStretch = given.lengths[i];
        int32_t iEnd = i + 1;
        while (iEnd < nNames && given.names[iEnd] == pSource + nStretch + 1) {
            nStretch += 1 + given.lengths[iEnd++];
        }
        std::memmove(pText, pSource, static_cast<size_t>(nStretch));
        for (; i < iEnd; ++i) {
            pText += given.lengths[i];
            *pText++ = 0;
        }
    }
}

int32_t clearNames(NamesManager *mgr) {
    int32_t nStatus = 0;
    mgr->nMaxNameLength = -1;
    mgr->nMaxNameLengthCount = 0;
    mgr->nNames = 0;
    dropCursor(mgr);
    for (int32_t b = 1; b < mgr->nBlocks; ++b) { freeMemory(mgr->pBlocks[b].pData); }
    mgr->pBlocks[0].nUsed = 0;
    mgr->pBlocks[0].nNamesInBlock = 0;
    mgr->nBlocks = 1;
    mgr->nGeneratedNameBase = 0;
    mgr->nSegments = 0;
    if (mgr->pSegments == nullptr) {
        mgr->nSegmentsAlloc = 0;
        nStatus = growSegmentTable(mgr) ? 0 : 1;
    }
    freeMemory(mgr->pPositions);
    mgr->pPositions = nullptr;
    mgr->nPositionsAlloc = 0;
    dropIndex(mgr);
    return nStatus;
}

int32_t storeIndividualPositions(NamesManager *mgr) {
    if (mgr->pSegments == nullptr) { return 1; }
    const uint64_t nBytes = static_cast<uint64_t>(mgr->nNames) * sizeof(NamePosition);
    NamePosition *pPositions =
        static_cast<NamePosition *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pPositions == nullptr) { return 1; }
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    NamePosition *pNext = pPositions;
    for (const NameSegment *pSegment = mgr->pSegments; pSegment < mgr->pSegments + mgr->nSegments;
         ++pSegment) {
        const int32_t nNames = namesIn(*pSegment);
        findStartsIn(mgr, *pSegment, aStarts);
        for (int32_t k = 0; k < nNames; ++k) {
            *pNext++ = {pSegment->iBlock, pSegment->nOffset + aStarts[k]};
        }
    }
    freeSegmentTable(mgr);
    mgr->pPositions = pPositions;
    mgr->nPositionsAlloc = mgr->nNames;
    mgr->iCursorName = -1;
    return 0;
}

void switchIfFragmented(NamesManager *mgr) {
    if (mgr->nSegments > mgr->nNames / 2) { static_cast<void>(storeIndividualPositions(mgr)); }
}

void releaseEmptyBlocks(NamesManager *mgr) {
    const auto isEmpty = [](const NameStorageBlock &block) { return block.nUsed == 0; };
    if (mgr->nBlocks < 2 || std::none_of(mgr->pBlocks, mgr->pBlocks + mgr->nBlocks, isEmpty)) {
        return;
    }
    const int32_t nKept = partitionBlocks(mgr);
    Renumbering map = {mgr->pBlocks + nKept, mgr->nBlocks - nKept, -1, -1};
    for (int32_t s = 0; s < mgr->nSegments; ++s) {
        mgr->pSegments[s].iBlock = renumbered(&map, mgr->pSegments[s].iBlock);
    }
    for (int32_t i = 0; mgr->pPositions != nullptr && i < mgr->nNames; ++i) {
        mgr->pPositions[i].iBlock = renumbered(&map, mgr->pPositions[i].iBlock);
    }
    if (mgr->iCursorName >= 0) { mgr->iCursorBlock = renumbered(&map, mgr->iCursorBlock); }
    mgr->nBlocks = nKept;
}

namespace {

// Capacity and mode of a cleared dst as of src.
bool copyTables(NamesManager *dst, const NamesManager *src) {
    if (!resizeBlockTable(dst, src->nBlocksAlloc)) { return false; }
    if (src->pSegments != nullptr) { return resizeSegmentTable(dst, src->nSegmentsAlloc); }
    const uint64_t nBytes = static_cast<uint64_t>(src->nPositionsAlloc) * sizeof(NamePosition);
    dst->pPositions = static_cast<NamePosition *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (dst->pPositions == nullptr) { return false; }
    dst->nPositionsAlloc = src->nPositionsAlloc;
    std::memset(dst->pPositions + src->nNames, 0,
                static_cast<size_t>(src->nPositionsAlloc - src->nNames) * sizeof(NamePosition));
    freeSegmentTable(dst);
    return true;
}

// Empty blocks of src's sizes; only block 0, which dst has already, may stay larger.
bool copyBlockSizes(NamesManager *dst, const NamesManager *src) {
    NameStorageBlock *pFirst = &dst->pBlocks[0];
    if (pFirst->nSize < src->pBlocks[0].nSize) {
        void *pData = HostMem_Realloc(pFirst->pData, static_cast<uint64_t>(src->pBlocks[0].nSize),
                                      kSourceTag, __LINE__);
        if (pData == nullptr) { return false; }
        pFirst->pData = static_cast<char *>(pData);
        pFirst->nSize = src->pBlocks[0].nSize;
    }
    for (int32_t b = 1; b < src->nBlocks; ++b) {
        if (!addBlock(dst, src->pBlocks[b].nSize)) { return false; }
    }
    return true;
}

// The part of a copy that cannot fail.
void copyContent(NamesManager *dst, const NamesManager *src) {
    dst->nNames = src->nNames;
    for (int32_t b = 0; b < src->nBlocks; ++b) {
        std::memcpy(dst->pBlocks[b].pData, src->pBlocks[b].pData,
                    static_cast<size_t>(src->pBlocks[b].nUsed));
        dst->pBlocks[b].nUsed = src->pBlocks[b].nUsed;
        dst->pBlocks[b].nNamesInBlock = src->pBlocks[b].nNamesInBlock;
    }
    if (src->pSegments != nullptr) {
        std::copy_n(src->pSegments, src->nSegments, dst->pSegments);
        dst->nSegments = src->nSegments;
    } else {
        std::copy_n(src->pPositions, src->nNames, dst->pPositions);
    }
    dst->nMaxNameLength = src->nMaxNameLength;
    dst->nMaxNameLengthCount = src->nMaxNameLengthCount;
    dst->nGeneratedNameBase = src->nGeneratedNameBase;
    std::memcpy(dst->szNameFormat, src->szNameFormat, sizeof dst->szNameFormat);
}

}  // namespace

}  // namespace names

using namespace names;

NamesManager *NamesManager_Create(void *pOwner, const char *szFormat) {
    if (szFormat == nullptr) { szFormat = kDefaultFormat; }
    if (!isNameFormat(szFormat)) { return nullptr; }
    NamesManager *mgr = static_cast<NamesManager *>(
        HostMem_AllocRecord(sizeof(NamesManager), kSourceTag, __LINE__));
    if (mgr == nullptr) { return nullptr; }
    std::memset(mgr, 0, sizeof *mgr);
    if (HostLock_Init(&mgr->lock) != 0) {
        freeMemory(mgr);
        return nullptr;
    }
    mgr->pOwner = pOwner;
    std::strcpy(mgr->szNameFormat, szFormat);
    mgr->nMaxNameLength = -1;
    mgr->iCursorName = -1;
    const bool bComplete = resizeBlockTable(mgr, kTableStep) && addBlock(mgr, kFirstBlockBytes) &&
                           growSegmentTable(mgr);
    if (!bComplete) {
        NamesManager_Destroy(mgr);
        return nullptr;
    }
    return mgr;
}

void NamesManager_Destroy(NamesManager *mgr) {
    if (mgr == nullptr) { return; }
    dropIndex(mgr);
    freeMemory(mgr->pSegments);
    freeMemory(mgr->pPositions);
    for (int32_t b = 0; b < mgr->nBlocks; ++b) { freeMemory(mgr->pBlocks[b].pData); }
    freeMemory(mgr->pBlocks);
    HostLock_Destroy(&mgr->lock);
    freeMemory(mgr);
}

int32_t NamesManager_Clear(NamesManager *mgr) {
    ScopedLock lock(mgr);
    return clearNames(mgr);
}

int32_t NamesManager_GetNumNames(NamesManager *mgr) {
    ScopedLock lock(mgr);
    return mgr->nNames;
}

int32_t NamesManager_Version(void) {
    return NAMES_MANAGER_VERSION;
}

int32_t NamesManager_Copy(NamesManager *dst, NamesManager *src) {
    if (dst == src) { return 1; }
    ScopedLock lockDestination(dst);
    ScopedLock lockSource(src);
    if (hasNoTables(src) || clearNames(dst) != 0 || !copyTables(dst, src) ||
        !copyBlockSizes(dst, src)) {
        return 1;
    }
    copyContent(dst, src);
    return 0;
}

int32_t NamesManager_StoreIndividualNamePositions(NamesManager *mgr) {
    ScopedLock lock(mgr);
    return storeIndividualPositions(mgr);
}

int32_t NamesManager_ReleaseEmptyBlocks(NamesManager *mgr) {
    ScopedLock lock(mgr);
    releaseEmptyBlocks(mgr);
    return 0;
}
