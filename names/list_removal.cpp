// Removing the names at a list of indices.
//
// A list is removed as its runs of consecutive indices would be one by one, from the highest down,
// but in one sweep: done literally each run would shift the rest of the table. The sweep first goes
// through the runs on counts alone, to learn how large the table grows and whether and where the
// switch to positions falls, then writes the final records straight away. Two runs leave at least
// one name between them, so no block that the single removals would keep is released at the end.
#include <algorithm>
#include <functional>

#include "names/removal.hpp"
#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/segments.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

// Indices of existing names in ascending order, some perhaps more than once.
struct IndexList {
    const int32_t *pIndices;
    int32_t nIndices;
};

// Takes the highest run of consecutive indices off the list; false when none is left.
bool takeRun(IndexList *pList, IndexRange *pRun) {
    if (pList->nIndices == 0) { return false; }
    int32_t n = pList->nIndices - 1;
    *pRun = {pList->pIndices[n], pList->pIndices[n]};
    for (; n > 0 && pList->pIndices[n - 1] >= pRun->first - 1; --n) {
        pRun->first = pList->pIndices[n - 1];
    }
    pList->nIndices = n;
    return true;
}

// What removing the runs one by one would come to.
struct RemovalPlan {
    int32_t nRemoved;
    int32_t nSegments;
    int64_t nSegmentsAlloc;
    int32_t nRunsInSegments;  // runs removed before the switch to positions
    int32_t nPositionsAlloc;  // names at the switch, -1: there is none
};

RemovalPlan planRemoval(const NamesManager *mgr, IndexList list) {
    RemovalPlan plan = {0, mgr->nSegments, mgr->nSegmentsAlloc, 0, -1};
    const NameSegment *pSegment = mgr->pSegments + mgr->nSegments - 1;
    IndexRange run;
    while (takeRun(&list, &run)) {
        plan.nRemoved += countOf(run);
        if (plan.nPositionsAlloc >= 0) { continue; }
        while (pSegment->iFirst > run.last) { --pSegment; }
        plan.nSegmentsAlloc += plan.nSegments + 2 > plan.nSegmentsAlloc ? kTableStep : 0;
        plan.nSegments += pSegment->iLast > run.last ? 1 : 0;
        for (; pSegment->iFirst > run.first; --pSegment) { --plan.nSegments; }
        plan.nSegments -= pSegment->iFirst < run.first ? 0 : 1;
        ++plan.nRunsInSegments;
        if (plan.nSegments > (mgr->nNames - plan.nRemoved) / 2) {
            plan.nPositionsAlloc = mgr->nNames - plan.nRemoved;
        }
    }
    return plan;
}

// Where the names of one segment start, from its nOffset on.
struct WalkedSegment {
    int32_t iSegment;  // -1: none yet
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
};

// Processors foresee that text is read upwards, where a sweep next needs the segment below. Of long
// texts they foresee the rest.
void prefetchText(const NamesManager *mgr, const NameSegment &segment) {
    constexpr int32_t kCacheLine = 64;
    constexpr int32_t kMostBytes = 4096;
    const char *pText = textAt(mgr, segment.iBlock, segment.nOffset);
    for (int32_t n = 0; n < std::min(segment.nBytes, kMostBytes); n += kCacheLine) {
        __builtin_prefetch(pText + n);
    }
}

void walkSegment(const NamesManager *mgr, int32_t s, WalkedSegment *pWalked) {
    if (s > 0) { prefetchText(mgr, mgr->pSegments[s - 1]); }
    findStartsIn(mgr, mgr->pSegments[s], pWalked->aStarts);
    pWalked->iSegment = s;
}

// The starts of names in a segment, in order, and its end. Runs come in order, so that hardly any
// segment is walked twice.
inline const int32_t *startsIn(const NamesManager *mgr, int32_t s, WalkedSegment *pWalked) {
    if (pWalked->iSegment != s) { walkSegment(mgr, s, pWalked); }
    return pWalked->aStarts;
}

// The piece of segment s that holds the given names. A whole segment need not be walked.
NameSegment pieceOf(const NamesManager *mgr, int32_t s, IndexRange names, WalkedSegment *pWalked) {
    const NameSegment &whole = mgr->pSegments[s];
    if (whole.iFirst == names.first && whole.iLast == names.last) { return whole; }
    const int32_t *pStarts = startsIn(mgr, s, pWalked);
    const int32_t nStart = pStarts[names.first - whole.iFirst];
    const int32_t nEnd = pStarts[names.last + 1 - whole.iFirst];
    return {names.first, names.last, whole.iBlock, whole.nOffset + nStart, nEnd - nStart};
}

// A sweep over the segments from the last name down.
struct Sweep {
    NamesManager *mgr;
    NameSegment *pNewSegments;  // where the records kept are written, one of these two
    NamePosition *pNewPositions;
    int32_t iNewSegment;  // the record written last
    int32_t iSegment;     // the segment that iTop lies in or below
    int32_t iTop;         // the highest name not swept yet
    int32_t nBelow;       // names to be removed below iTop
    WalkedSegment *pWalked;
};

// Writes what is kept of segment s.
void keepPiece(Sweep *pSweep, int32_t s, IndexRange names) {
    const NamesManager *mgr = pSweep->mgr;
    if (pSweep->pNewSegments != nullptr) {
        NameSegment piece = pieceOf(mgr, s, names, pSweep->pWalked);
        piece.iFirst -= pSweep->nBelow;
        piece.iLast -= pSweep->nBelow;
        pSweep->pNewSegments[--pSweep->iNewSegment] = piece;
        return;
    }
    const NameSegment &segment = mgr->pSegments[s];
    const int32_t *pStarts = startsIn(mgr, s, pSweep->pWalked);
    for (int32_t i = names.first; i <= names.last; ++i) {
        pSweep->pNewPositions[i - pSweep->nBelow] = {segment.iBlock,
                                                     segment.nOffset + pStarts[i - segment.iFirst]};
    }
}

void keepDownTo(Sweep *pSweep, int32_t first) {
    while (pSweep->iTop >= first) {
        while (pSweep->mgr->pSegments[pSweep->iSegment].iFirst > pSweep->iTop) {
            --pSweep->iSegment;
        }
        const int32_t iPieceFirst =
            std::max(first, pSweep->mgr->pSegments[pSweep->iSegment].iFirst);
        keepPiece(pSweep, pSweep->iSegment, {iPieceFirst, pSweep->iTop});
        pSweep->iTop = iPieceFirst - 1;
    }
}

void noteRemovedPiece(NamesManager *mgr, int32_t s, IndexRange names, WalkedSegment *pWalked) {
    const int32_t *pStarts = startsIn(mgr, s, pWalked) + (names.first - mgr->pSegments[s].iFirst);
    for (int32_t k = 0; k < countOf(names) && mgr->nMaxNameLength >= 0; ++k) {
        noteRemovedLength(mgr, pStarts[k + 1] - pStarts[k] - 1);
    }
}

// Removes what a run takes of segment s.
void removePiece(Sweep *pSweep, int32_t s, IndexRange names, bool bInSegments) {
    NamesManager *mgr = pSweep->mgr;
    if (mgr->nMaxNameLength >= 0) { noteRemovedPiece(mgr, s, names, pSweep->pWalked); }
    NameStorageBlock *pBlock = &mgr->pBlocks[mgr->pSegments[s].iBlock];
    if (bInSegments) {
        const NameSegment piece = pieceOf(mgr, s, names, pSweep->pWalked);
        giveBackText(pBlock, piece.nOffset, piece.nBytes, countOf(names));
    } else {
        leaveBlock(pBlock, countOf(names));
    }
}

// Text is given back in ascending order within a run, as removing the run alone would.
void removeRun(Sweep *pSweep, IndexRange run, bool bInSegments) {
    int32_t s = pSweep->iSegment;
    while (pSweep->mgr->pSegments[s].iFirst > run.first) { --s; }
    pSweep->iSegment = s;
    for (int32_t iFirst = run.first; iFirst <= run.last; ++s) {
        const int32_t iLast = std::min(run.last, pSweep->mgr->pSegments[s].iLast);
        removePiece(pSweep, s, {iFirst, iLast}, bInSegments);
        iFirst = iLast + 1;
    }
    pSweep->nBelow -= countOf(run);
    pSweep->iTop = run.first - 1;
}

// Makes the memory that the sweep writes to, and the table as large as it gets: as the removals one
// by one would leave it, with what its spare records held. False without memory: nothing has
// changed, but perhaps the table's capacity, which is part of the plan.
bool prepareSweep(NamesManager *mgr, const RemovalPlan &plan, Sweep *pSweep) {
    if (plan.nPositionsAlloc >= 0) {
        const uint64_t nBytes = static_cast<uint64_t>(plan.nPositionsAlloc) * sizeof(NamePosition);
        pSweep->pNewPositions =
            static_cast<NamePosition *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
        return pSweep->pNewPositions != nullptr;
    }
    const uint64_t nBytes = static_cast<uint64_t>(plan.nSegments) * sizeof(NameSegment);
    pSweep->pNewSegments = static_cast<NameSegment *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pSweep->pNewSegments == nullptr) { return false; }
    if (plan.nSegmentsAlloc > mgr->nSegmentsAlloc &&
        !resizeSegmentTable(mgr, plan.nSegmentsAlloc)) {
        HostMem_Free(pSweep->pNewSegments, kSourceTag, __LINE__);
        return false;
    }
    return true;
}

// Puts what was kept in place of the segments.
void takeOver(NamesManager *mgr, const RemovalPlan &plan, const Sweep &sweep) {
    mgr->nNames -= plan.nRemoved;
    if (sweep.pNewPositions != nullptr) {
        std::fill(sweep.pNewPositions + mgr->nNames, sweep.pNewPositions + plan.nPositionsAlloc,
                  NamePosition{0, 0});
        freeSegmentTable(mgr);
        mgr->pPositions = sweep.pNewPositions;
        mgr->nPositionsAlloc = plan.nPositionsAlloc;
    } else {
        std::copy_n(sweep.pNewSegments, plan.nSegments, mgr->pSegments);
        mgr->nSegments = plan.nSegments;
        HostMem_Free(sweep.pNewSegments, kSourceTag, __LINE__);
    }
}

// False without memory: nothing has changed.
bool sweepSegments(NamesManager *mgr, IndexList list) {
    const RemovalPlan plan = planRemoval(mgr, list);
    WalkedSegment walked;
    walked.iSegment = -1;
    Sweep sweep = {
        mgr,           nullptr, nullptr, plan.nSegments, mgr->nSegments - 1, mgr->nNames - 1,
        plan.nRemoved, &walked};
    if (!prepareSweep(mgr, plan, &sweep)) { return false; }
    bool bMore = true;
    for (int32_t nRun = 0; bMore; ++nRun) {
        IndexRange run = {-1, -1};
        bMore = takeRun(&list, &run);
        keepDownTo(&sweep, run.last + 1);
        if (bMore) { removeRun(&sweep, run, nRun < plan.nRunsInSegments); }
    }
    takeOver(mgr, plan, sweep);
    return true;
}

void sweepPositions(NamesManager *mgr, IndexList list) {
    int32_t nKept = list.pIndices[0];
    int32_t iNext = nKept;  // names before this one are dealt with
    for (int32_t k = 0; k < list.nIndices; ++k) {
        const int32_t index = list.pIndices[k];
        if (index < iNext) {
            continue;  // listed twice
        }
        std::copy(mgr->pPositions + iNext, mgr->pPositions + index, mgr->pPositions + nKept);
        nKept += index - iNext;
        iNext = index + 1;
        if (mgr->nMaxNameLength >= 0) {
            const NamePosition position = mgr->pPositions[index];
            noteRemovedLength(mgr, static_cast<int32_t>(std::strlen(
                                       textAt(mgr, position.iBlock, position.nOffset))));
        }
        leaveBlock(&mgr->pBlocks[mgr->pPositions[index].iBlock], 1);
    }
    std::copy(mgr->pPositions + iNext, mgr->pPositions + mgr->nNames, mgr->pPositions + nKept);
    mgr->nNames -= iNext - nKept;
}

int32_t removeRunByRun(NamesManager *mgr, IndexList list) {
    int32_t nStatus = 0;
    IndexRange run;
    while (takeRun(&list, &run)) { nStatus |= removeRange(mgr, run); }
    return nStatus;
}

int32_t removeSorted(NamesManager *mgr, const int32_t *pIndices, int32_t nCount) {
    const int32_t *pBegin = std::lower_bound(pIndices, pIndices + nCount, 0);
    const int32_t *pEnd = std::lower_bound(pBegin, pIndices + nCount, mgr->nNames);
    const IndexList list = {pBegin, static_cast<int32_t>(pEnd - pBegin)};
    IndexList rest = list;
    IndexRange run;
    const bool bSeveralRuns = takeRun(&rest, &run) && rest.nIndices > 0;
    if (!bSeveralRuns) { return removeRunByRun(mgr, list); }
    if (mgr->pSegments == nullptr) {
        sweepPositions(mgr, list);
    } else if (!sweepSegments(mgr, list)) {
        return removeRunByRun(mgr, list);
    }
    dropIndex(mgr);
    dropCursor(mgr);
    releaseEmptyBlocks(mgr);
    return 0;
}

// Without memory to sort in: the highest index that is left, again and again.
int32_t removeUnsorted(NamesManager *mgr, const int32_t *pIndices, int32_t nCount) {
    int32_t nStatus = 0;
    int32_t iBound = mgr->nNames;
    while (true) {
        int32_t iHighest = -1;
        for (int32_t k = 0; k < nCount; ++k) {
            if (pIndices[k] < iBound) { iHighest = std::max(iHighest, pIndices[k]); }
        }
        if (iHighest < 0) { return nStatus; }
        nStatus |= removeRange(mgr, {iHighest, iHighest});
        iBound = iHighest;
    }
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_RemoveNamesByIndices(NamesManager *mgr, const int32_t *pIndices,
                                          int32_t nCount) {
    ScopedLock lock(mgr);
    if (nCount <= 0) { return 0; }
    if (std::adjacent_find(pIndices, pIndices + nCount, std::greater_equal<int32_t>()) ==
        pIndices + nCount) {
        return removeSorted(mgr, pIndices, nCount);
    }
    const uint64_t nBytes = static_cast<uint64_t>(nCount) * sizeof(int32_t);
    int32_t *pSorted = static_cast<int32_t *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pSorted == nullptr) { return removeUnsorted(mgr, pIndices, nCount); }
    std::copy_n(pIndices, nCount, pSorted);
    std::sort(pSorted, pSorted + nCount);
    const int32_t nStatus = removeSorted(mgr, pSorted, nCount);
    HostMem_Free(pSorted, kSourceTag, __LINE__);
    return nStatus;
}
