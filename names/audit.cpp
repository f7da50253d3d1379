// The consistency audit: every invariant of a manager, checked in one pass over its tables. What
// has a table, block or segment number that is not sound is not read through; everything else is
// still examined.
#include <algorithm>
#include <cstring>

#include "host/host_report.h"
#include "names/audit.hpp"

namespace names {

namespace {

struct Audit {
    const NamesManager *mgr;
    bool bReports;
    int32_t nViolated;
};

// Counts a check that does not hold, and reports it; the line tells the checks apart. A host's
// report may not return.
void expect(Audit *pAudit, bool bHolds, int32_t nLine) {
    if (bHolds) { return; }
    ++pAudit->nViolated;
    if (pAudit->bReports) {
        Host_ReportAssertion(kSourceTag, nLine, 0, "names_manager assertion failed");
    }
}

// Sums wrap around as the audited 32-bit numbers do.
int32_t sumOf(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

// How far tables can be read, even if the record claims more.
int32_t readableBlocks(const NamesManager *mgr) {
    return mgr->pBlocks != nullptr ? std::min(mgr->nBlocks, mgr->nBlocksAlloc) : 0;
}

int32_t readableSegments(const NamesManager *mgr) {
    return std::min(mgr->nSegments, mgr->nSegmentsAlloc);
}

const NameStorageBlock *blockOrNull(const NamesManager *mgr, int32_t iBlock) {
    return 0 <= iBlock && iBlock < readableBlocks(mgr) ? &mgr->pBlocks[iBlock] : nullptr;
}

// The name at an offset of a block; NULL if it does not lie, with its NUL, in the block's memory.
// The used bytes do not count here: what they get wrong has been reported.
const char *nameOrNull(const NamesManager *mgr, int32_t iBlock, int32_t nOffset) {
    const NameStorageBlock *pBlock = blockOrNull(mgr, iBlock);
    if (pBlock == nullptr || pBlock->pData == nullptr || nOffset < 0 || nOffset >= pBlock->nSize) {
        return nullptr;
    }
    const char *pName = pBlock->pData + nOffset;
    const size_t nRest = static_cast<size_t>(pBlock->nSize - nOffset);
    return std::memchr(pName, 0, nRest) != nullptr ? pName : nullptr;
}

void auditCounts(Audit *pAudit) {
    const NamesManager *mgr = pAudit->mgr;
    expect(pAudit, mgr->pBlocks != nullptr, __LINE__);
    expect(pAudit, mgr->nBlocks <= mgr->nBlocksAlloc, __LINE__);
    expect(pAudit, mgr->nSegments <= mgr->nSegmentsAlloc, __LINE__);
    expect(pAudit, mgr->pPositions == nullptr || mgr->nNames <= mgr->nPositionsAlloc, __LINE__);
}

void auditBlocks(Audit *pAudit) {
    const NamesManager *mgr = pAudit->mgr;
    for (int32_t b = 0; b < readableBlocks(mgr); ++b) {
        const NameStorageBlock &block = mgr->pBlocks[b];
        expect(pAudit, block.nUsed <= block.nSize, __LINE__);
        expect(pAudit, block.nNamesInBlock != 0 || block.nUsed == 0, __LINE__);
        expect(pAudit, block.nUsed != 0 || block.nNamesInBlock == 0, __LINE__);
        expect(pAudit, block.nNamesInBlock <= 0 || block.nUsed > 0, __LINE__);
        expect(pAudit, block.nUsed <= 0 || block.nNamesInBlock > 0, __LINE__);
    }
}

void auditSegments(Audit *pAudit) {
    const NamesManager *mgr = pAudit->mgr;
    expect(pAudit, mgr->pPositions == nullptr, __LINE__);
    expect(pAudit, mgr->nSegments <= mgr->nNames, __LINE__);
    int32_t iNext = 0;
    for (int32_t s = 0; s < readableSegments(mgr); ++s) {
        const NameSegment &segment = mgr->pSegments[s];
        expect(pAudit, segment.iFirst <= segment.iLast, __LINE__);
        expect(pAudit, segment.iFirst == iNext, __LINE__);
        expect(pAudit, 0 <= segment.iBlock && segment.iBlock < mgr->nBlocks, __LINE__);
        const NameStorageBlock *pBlock = blockOrNull(mgr, segment.iBlock);
        if (pBlock != nullptr) {
            expect(pAudit, segment.nOffset <= pBlock->nUsed, __LINE__);
            expect(pAudit, sumOf(segment.nOffset, segment.nBytes) <= pBlock->nUsed, __LINE__);
        }
        expect(pAudit, int64_t{segment.iLast} - segment.iFirst < kMaxSegmentNames, __LINE__);
        iNext = sumOf(segment.iLast, 1);
    }
    const bool bAllReadable = readableSegments(mgr) == mgr->nSegments;
    if (mgr->nNames > 0 && (bAllReadable || mgr->nSegments < 1)) {
        expect(pAudit,
               mgr->nSegments > 0 && mgr->pSegments[mgr->nSegments - 1].iLast == mgr->nNames - 1,
               __LINE__);
    }
}

// Names whose position can be read.
int32_t readablePositions(const NamesManager *mgr) {
    return mgr->pPositions != nullptr ? std::min(mgr->nNames, mgr->nPositionsAlloc) : 0;
}

void auditPositions(Audit *pAudit) {
    const NamesManager *mgr = pAudit->mgr;
    expect(pAudit, mgr->pPositions != nullptr, __LINE__);
    const int32_t nPositions = readablePositions(mgr);
    const int32_t nBlocks = readableBlocks(mgr);
    for (int32_t i = 0; i < nPositions; ++i) {
        const NamePosition position = mgr->pPositions[i];
        expect(pAudit, 0 <= position.iBlock && position.iBlock < mgr->nBlocks, __LINE__);
        if (0 <= position.iBlock && position.iBlock < nBlocks) {
            expect(pAudit, position.nOffset < mgr->pBlocks[position.iBlock].nUsed, __LINE__);
        }
    }
}

void auditCursor(Audit *pAudit) {
    const NamesManager *mgr = pAudit->mgr;
    if (mgr->iCursorName < 0) { return; }
    expect(pAudit, mgr->iCursorName < mgr->nNames, __LINE__);
    expect(pAudit, 0 <= mgr->iCursorBlock && mgr->iCursorBlock < mgr->nBlocks, __LINE__);
    expect(pAudit, 0 <= mgr->iCursorSegment && mgr->iCursorSegment < mgr->nSegments, __LINE__);
    if (mgr->pSegments != nullptr && 0 <= mgr->iCursorSegment &&
        mgr->iCursorSegment < readableSegments(mgr)) {
        const NameSegment &segment = mgr->pSegments[mgr->iCursorSegment];
        expect(pAudit, segment.iFirst <= mgr->iCursorName && mgr->iCursorName <= segment.iLast,
               __LINE__);
    }
    const NameStorageBlock *pBlock = blockOrNull(mgr, mgr->iCursorBlock);
    if (pBlock != nullptr) { expect(pAudit, mgr->nCursorOffset < pBlock->nUsed, __LINE__); }
    expect(pAudit, mgr->nCursorMisses >= 0, __LINE__);
}

bool findsName(const NamesManager *mgr, const char *pName, int32_t index) {
    return pName != nullptr && HostHashMap_Find(mgr->pLookupIndex, pName) == index;
}

// A segment's names are no longer walked where one does not end inside its block.
void auditIndexedSegment(Audit *pAudit, const NameSegment &segment) {
    const NamesManager *mgr = pAudit->mgr;
    int32_t nOffset = segment.nOffset;
    for (int64_t i = segment.iFirst;
         i <= segment.iLast && blockOrNull(mgr, segment.iBlock) != nullptr; ++i) {
        const char *pName = nameOrNull(mgr, segment.iBlock, nOffset);
        expect(pAudit, findsName(mgr, pName, static_cast<int32_t>(i)), __LINE__);
        if (pName == nullptr) { return; }
        nOffset += static_cast<int32_t>(std::strlen(pName)) + 1;
    }
}

void auditIndex(Audit *pAudit) {
    const NamesManager *mgr = pAudit->mgr;
    if (mgr->pLookupIndex == nullptr) { return; }
    expect(pAudit, mgr->pLookupIndex->nEntries == mgr->nNames, __LINE__);
    if (mgr->pSegments != nullptr) {
        for (int32_t s = 0; s < readableSegments(mgr); ++s) {
            auditIndexedSegment(pAudit, mgr->pSegments[s]);
        }
        return;
    }
    for (int32_t i = 0; i < readablePositions(mgr); ++i) {
        const NamePosition position = mgr->pPositions[i];
        if (blockOrNull(mgr, position.iBlock) != nullptr) {
            expect(pAudit, findsName(mgr, nameOrNull(mgr, position.iBlock, position.nOffset), i),
                   __LINE__);
        }
    }
}

int32_t auditAll(Audit audit) {
    expect(&audit, audit.mgr != nullptr, __LINE__);
    if (audit.mgr != nullptr) {
        auditCounts(&audit);
        auditBlocks(&audit);
        if (audit.mgr->pSegments != nullptr) {
            auditSegments(&audit);
        } else {
            auditPositions(&audit);
        }
        auditCursor(&audit);
        auditIndex(&audit);
    }
    return audit.nViolated;
}

}  // namespace

int32_t countViolations(const NamesManager *mgr) {
    return auditAll({mgr, true, 0});
}

bool isConsistent(const NamesManager *mgr) {
    return auditAll({mgr, false, 0}) == 0;
}

}  // namespace names

void NamesManager_AssertConsistency(NamesManager *mgr) {
    static_cast<void>(names::countViolations(mgr));
}
