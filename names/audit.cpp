/* The consistency audit: every invariant of a manager, checked in one pass over its tables. A table, block or segment number that has just
 * been reported is not read through; everything else is still examined. */
#include <string.h>

#include <algorithm>

#include "host/host_report.h"
#include "names/names_internal.hpp"

namespace names {

namespace {

/* Reports a violation; the line tells the checks apart. May not return. */
bool expect(bool bHolds, int32_t nLine) {
    if (!bHolds) {
        Host_ReportAssertion(kSourceTag, nLine, 0, "names_manager assertion failed");
    }
    return bHolds;
}

/* Sums wrap around as the audited 32-bit numbers do. */
int32_t sumOf(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

/* Counts that can be read up to, whatever the record claims. */
int32_t readableBlocks(const NamesManager *mgr) {
    return mgr->pBlocks != nullptr ? std::min(mgr->nBlocks, mgr->nBlocksAlloc) : 0;
}

int32_t readableSegments(const NamesManager *mgr) {
    return std::min(mgr->nSegments, mgr->nSegmentsAlloc);
}

const NameStorageBlock *blockOrNull(const NamesManager *mgr, int32_t iBlock) {
    return 0 <= iBlock && iBlock < readableBlocks(mgr) ? &mgr->pBlocks[iBlock] : nullptr;
}

/* The name at an offset of a block; NULL if it does not lie, with its NUL, in the block's memory. */
const char *nameOrNull(const NamesManager *mgr, int32_t iBlock, int32_t nOffset) {
    const NameStorageBlock *pBlock = blockOrNull(mgr, iBlock);
    if (pBlock == nullptr || pBlock->pData == nullptr || nOffset < 0 || nOffset >= std::min(pBlock->nUsed, pBlock->nSize)) {
        return nullptr;
    }
    const char *pName = pBlock->pData + nOffset;
    const size_t nRest = static_cast<size_t>(std::min(pBlock->nUsed, pBlock->nSize) - nOffset);
    return memchr(pName, 0, nRest) != nullptr ? pName : nullptr;
}

void auditCounts(const NamesManager *mgr) {
    expect(mgr->pBlocks != nullptr, __LINE__);
    expect(mgr->nBlocks <= mgr->nBlocksAlloc, __LINE__);
    expect(mgr->nSegments <= mgr->nSegmentsAlloc, __LINE__);
    expect(mgr->pPositions == nullptr || mgr->nNames <= mgr->nPositionsAlloc, __LINE__);
}

void auditBlocks(const NamesManager *mgr) {
    for (int32_t b = 0; b < readableBlocks(mgr); ++b) {
        const NameStorageBlock &block = mgr->pBlocks[b];
        expect(block.nUsed <= block.nSize, __LINE__);
        expect(block.nNamesInBlock != 0 || block.nUsed == 0, __LINE__);
        expect(block.nUsed != 0 || block.nNamesInBlock == 0, __LINE__);
        expect(block.nNamesInBlock <= 0 || block.nUsed > 0, __LINE__);
        expect(block.nUsed <= 0 || block.nNamesInBlock > 0, __LINE__);
    }
}

void auditSegments(const NamesManager *mgr) {
    expect(mgr->pPositions == nullptr, __LINE__);
    expect(mgr->nSegments <= mgr->nNames, __LINE__);
    int32_t iNext = 0;
    for (int32_t s = 0; s < readableSegments(mgr); ++s) {
        const NameSegment &segment = mgr->pSegments[s];
        expect(segment.iFirst <= segment.iLast, __LINE__);
        expect(segment.iFirst == iNext, __LINE__);
        expect(0 <= segment.iBlock && segment.iBlock < mgr->nBlocks, __LINE__);
        const NameStorageBlock *pBlock = blockOrNull(mgr, segment.iBlock);
        if (pBlock != nullptr) {
            expect(segment.nOffset <= pBlock->nUsed, __LINE__);
            expect(sumOf(segment.nOffset, segment.nBytes) <= pBlock->nUsed, __LINE__);
        }
        expect(int64_t{segment.iLast} - segment.iFirst < kMaxSegmentNames, __LINE__);
        iNext = sumOf(segment.iLast, 1);
    }
    const bool bAllReadable = readableSegments(mgr) == mgr->nSegments;
    if (mgr->nNames > 0 && (bAllReadable || mgr->nSegments < 1)) {
        expect(mgr->nSegments > 0 && mgr->pSegments[mgr->nSegments - 1].iLast == mgr->nNames - 1, __LINE__);
    }
}

/* Names whose position can be read. */
int32_t readablePositions(const NamesManager *mgr) {
    return mgr->pPositions != nullptr ? std::min(mgr->nNames, mgr->nPositionsAlloc) : 0;
}

void auditPositions(const NamesManager *mgr) {
    expect(mgr->pPositions != nullptr, __LINE__);
    for (int32_t i = 0; i < readablePositions(mgr); ++i) {
        const NamePosition position = mgr->pPositions[i];
        expect(0 <= position.iBlock && position.iBlock < mgr->nBlocks, __LINE__);
        const NameStorageBlock *pBlock = blockOrNull(mgr, position.iBlock);
        if (pBlock != nullptr) {
            expect(position.nOffset < pBlock->nUsed, __LINE__);
        }
    }
}

void auditCursor(const NamesManager *mgr) {
    if (mgr->iCursorName < 0) {
        return;
    }
    expect(mgr->iCursorName < mgr->nNames, __LINE__);
    expect(0 <= mgr->iCursorBlock && mgr->iCursorBlock < mgr->nBlocks, __LINE__);
    expect(0 <= mgr->iCursorSegment && mgr->iCursorSegment < mgr->nSegments, __LINE__);
    if (mgr->pSegments != nullptr && 0 <= mgr->iCursorSegment && mgr->iCursorSegment < readableSegments(mgr)) {
        const NameSegment &segment = mgr->pSegments[mgr->iCursorSegment];
        expect(segment.iFirst <= mgr->iCursorName && mgr->iCursorName <= segment.iLast, __LINE__);
    }
    const NameStorageBlock *pBlock = blockOrNull(mgr, mgr->iCursorBlock);
    if (pBlock != nullptr) {
        expect(mgr->nCursorOffset < pBlock->nUsed, __LINE__);
    }
    expect(mgr->nCursorMisses >= 0, __LINE__);
}

bool findsName(const NamesManager *mgr, const char *pName, int32_t index) {
    return pName != nullptr && HostHashMap_Find(mgr->pLookupIndex, pName) == index;
}

/* A segment's names are no longer walked where one does not end inside its block. */
void auditIndexedSegment(const NamesManager *mgr, const NameSegment &segment) {
    int32_t nOffset = segment.nOffset;
    for (int64_t i = segment.iFirst; i <= segment.iLast && blockOrNull(mgr, segment.iBlock) != nullptr; ++i) {
        const char *pName = nameOrNull(mgr, segment.iBlock, nOffset);
        expect(findsName(mgr, pName, static_cast<int32_t>(i)), __LINE__);
        if (pName == nullptr) {
            return;
        }
        nOffset += static_cast<int32_t>(strlen(pName)) + 1;
    }
}

void auditIndex(const NamesManager *mgr) {
    if (mgr->pLookupIndex == nullptr) {
        return;
    }
    expect(mgr->pLookupIndex->nEntries == mgr->nNames, __LINE__);
    if (mgr->pSegments != nullptr) {
        for (int32_t s = 0; s < readableSegments(mgr); ++s) {
            auditIndexedSegment(mgr, mgr->pSegments[s]);
        }
        return;
    }
    for (int32_t i = 0; i < readablePositions(mgr); ++i) {
        const NamePosition position = mgr->pPositions[i];
        if (blockOrNull(mgr, position.iBlock) != nullptr) {
            expect(findsName(mgr, nameOrNull(mgr, position.iBlock, position.nOffset), i), __LINE__);
        }
    }
}

}  // namespace

}  // namespace names

using namespace names;

void NamesManager_AssertConsistency(NamesManager *mgr) {
    if (!expect(mgr != nullptr, __LINE__)) {
        return;
    }
    auditCounts(mgr);
    auditBlocks(mgr);
    if (mgr->pSegments != nullptr) {
        auditSegments(mgr);
    } else {
        auditPositions(mgr);
    }
    auditCursor(mgr);
    auditIndex(mgr);
}
