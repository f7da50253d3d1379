// Removing the names at a list of indices.
//
// A list is removed as its runs of consecutive indices would be one by one, from the highest down.
// Done literally, each run would shift the rest of the table; so segments and positions are each
// swept once. In segment mode:
//
//   plan     goes through the runs on counts alone, to learn how large the segment table gets, or
//            after which run the manager switches to positions
//   sweep    removes all runs, or those up to the switch, from the last segment down to the one
//            where the lowest of them begins, and writes what stays aside: as segments, or where it
//            switches as positions
//   finish   puts what was written in place; nothing changes below it. What is left of the list
//            after a switch is removed from the positions
//
// Two runs leave at least one name between them, so no block that the single removals would keep is
// released at the end.
#include <algorithm>
#include <functional>

#include "names/removal.hpp"
#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/positions.hpp"
#include "names/storage/segments.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

// Indices of existing names in ascending order, some perhaps more than once.
struct IndexList {
    const int32_t *pIndices;
    int32_t nIndices;
};

// Takes the highest run of consecutive indices off the list. False if none is left.
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

bool removeRunByRun(NamesManager *mgr, IndexList list) {
    bool bAll = true;
    IndexRange run;
    while (takeRun(&list, &run)) { bAll = removeRange(mgr, run) && bAll; }
    return bAll;
}

// ---- Segment mode ----

// What removing run by run comes to, up to the run after which the manager switches.
struct RemovalPlan {
    IndexList rest;  // what is left of the list then
    int32_t nRemoved;
    int32_t iLowest;  // the segment in which the lowest run begins
    int32_t nSegments;
    int64_t nSegmentsAlloc;
    bool bSwitches;
};

RemovalPlan planRemoval(const NamesManager *mgr, IndexList list) {
    RemovalPlan plan = {list, 0, mgr->nSegments - 1, mgr->nSegments, mgr->nSegmentsAlloc, false};
    const NameSegment *pSegments = mgr->pSegments;
    IndexRange run;
    while (!plan.bSwitches && takeRun(&plan.rest, &run)) {
        // Every removal first makes room for two more records.
        plan.nSegmentsAlloc += plan.nSegments + 2 > plan.nSegmentsAlloc ? kTableStep : 0;
        // What lies after the run in its last segment becomes a segment of its own.
        while (pSegments[plan.iLowest].iFirst > run.last) { --plan.iLowest; }
        plan.nSegments += pSegments[plan.iLowest].iLast > run.last ? 1 : 0;
        // Segments that begin in the run go; one that begins before it keeps its front.
        for (; pSegments[plan.iLowest].iFirst > run.first; --plan.iLowest) { --plan.nSegments; }
        plan.nSegments -= pSegments[plan.iLowest].iFirst == run.first ? 1 : 0;
        plan.nRemoved += countOf(run);
        plan.bSwitches = plan.nSegments > (mgr->nNames - plan.nRemoved) / 2;
    }
    return plan;
}

// The way from the last name down. Names that stay move down by nBelow.
struct Sweep {
    NamesManager *mgr;
    void (*pfnKeep)(Sweep *pSweep, IndexRange range);  // writes names of pSegment that stay
    NameSegment *pKept;           // the segment written last, above which lie those of higher names
    NamePosition *pPositions;     // where positions are written, by index
    const NameSegment *pSegment;  // the segment that iTop lies in or below
    int32_t iTop;                 // the highest name not swept yet
    int32_t nBelow;               // names to be removed below iTop
    const NameSegment *pWalked;   // the segment that aStarts are of, NULL: none yet
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
};

// Prefetches the text that a sweep walks next, which a hardware prefetcher does not foresee: it
// expects ascending reads. Within a long text it goes on by itself.
void prefetchText(const NamesManager *mgr, const NameSegment &segment) {
    constexpr int32_t kCacheLine = 64;
    constexpr int32_t kMostBytes = 4096;
    const char *pText = textAt(mgr, segment.iBlock, segment.nOffset);
    for (int32_t n = 0; n < std::min(segment.nBytes, kMostBytes); n += kCacheLine) {
        __builtin_prefetch(pText + n);
    }
}

void walkSegment(Sweep *pSweep, const NameSegment *pSegment) {
    if (pSegment > pSweep->mgr->pSegments) { prefetchText(pSweep->mgr, pSegment[-1]); }
    findStartsIn(pSweep->mgr, *pSegment, pSweep->aStarts);
    pSweep->pWalked = pSegment;
}

// Where the name at an index of a segment and those after it start, in bytes from the segment's
// nOffset. Runs come in order, so that hardly any segment is walked twice.
inline const int32_t *startsFrom(Sweep *pSweep, const NameSegment *pSegment, int32_t index) {
    if (pSweep->pWalked != pSegment) { walkSegment(pSweep, pSegment); }
    return pSweep->aStarts + (index - pSegment->iFirst);
}

// The names of a range as a piece of the segment that holds them. A whole segment need not be
// walked.
inline NameSegment sweptPiece(Sweep *pSweep, const NameSegment *pSegment, IndexRange range) {
    if (pSegment->iFirst == range.first && pSegment->iLast == range.last) { return *pSegment; }
    const int32_t *pStarts = startsFrom(pSweep, pSegment, range.first);
    return pieceOf(*pSegment, range, pStarts[0], pStarts[countOf(range)]);
}

void keepAsSegment(Sweep *pSweep, IndexRange range) {
    NameSegment piece = sweptPiece(pSweep, pSweep->pSegment, range);
    piece.iFirst -= pSweep->nBelow;
    piece.iLast -= pSweep->nBelow;
    *--pSweep->pKept = piece;
}

void keepAsPositions(Sweep *pSweep, IndexRange range) {
    const NameSegment &segment = *pSweep->pSegment;
    const int32_t *pStarts = startsFrom(pSweep, &segment, range.first);
    NamePosition *pPositions = pSweep->pPositions + (range.first - pSweep->nBelow);
    for (int32_t k = 0; k < countOf(range); ++k) {
        pPositions[k] = {segment.iBlock, segment.nOffset + pStarts[k]};
    }
}

// Keeps the names from the top down to first.
void keepDownTo(Sweep *pSweep, int32_t first) {
    while (pSweep->iTop >= first) {
        while (pSweep->pSegment->iFirst > pSweep->iTop) { --pSweep->pSegment; }
        const int32_t iFirst = std::max(first, pSweep->pSegment->iFirst);
        pSweep->pfnKeep(pSweep, {iFirst, pSweep->iTop});
        pSweep->iTop = iFirst - 1;
    }
}

// Removes the names of a range in a segment.
void removePiece(Sweep *pSweep, const NameSegment *pSegment, IndexRange range) {
    if (isMaximumKnown(pSweep->mgr)) {
        const int32_t *pStarts = startsFrom(pSweep, pSegment, range.first);
        for (int32_t k = 0; k < countOf(range); ++k) {
            noteRemovedLength(pSweep->mgr, pStarts[k + 1] - pStarts[k] - 1);
        }
    }
    giveBackPiece(pSweep->mgr, sweptPiece(pSweep, pSegment, range));
}

// Removes a run, which ends at the top. Its text is given back from its first segment up, as
// removing the run alone would.
void removeRun(Sweep *pSweep, IndexRange run) {
    while (pSweep->pSegment->iFirst > run.first) { --pSweep->pSegment; }
    int32_t iNext = run.first;
    for (const NameSegment *pSegment = pSweep->pSegment; iNext <= run.last; ++pSegment) {
        const int32_t iLast = std::min(run.last, pSegment->iLast);
        removePiece(pSweep, pSegment, {iNext, iLast});
        iNext = iLast + 1;
    }
    pSweep->nBelow -= countOf(run);
    pSweep->iTop = run.first - 1;
}

// Removes the runs of a plan and keeps the names above them, between them, and before them in the
// lowest segment.
void sweepRuns(Sweep *pSweep, IndexList list, const RemovalPlan &plan) {
    NamesManager *mgr = pSweep->mgr;
    pSweep->pSegment = mgr->pSegments + mgr->nSegments - 1;
    pSweep->iTop = mgr->nNames - 1;
    pSweep->nBelow = plan.nRemoved;
    pSweep->pWalked = nullptr;
    IndexRange run;
    while (list.nIndices > plan.rest.nIndices && takeRun(&list, &run)) {
        keepDownTo(pSweep, run.last + 1);
        removeRun(pSweep, run);
    }
    keepDownTo(pSweep, mgr->pSegments[plan.iLowest].iFirst);
    mgr->nNames -= plan.nRemoved;
}

// False without memory: nothing has changed.
bool sweepToSegments(NamesManager *mgr, IndexList list, const RemovalPlan &plan) {
    const int32_t nKept = plan.nSegments - plan.iLowest;
    const uint64_t nBytes = static_cast<uint64_t>(nKept) * sizeof(NameSegment);
    NameSegment *pKept = static_cast<NameSegment *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    const bool bMemory = pKept != nullptr && (plan.nSegmentsAlloc == mgr->nSegmentsAlloc ||
                                              resizeSegmentTable(mgr, plan.nSegmentsAlloc));
    if (bMemory) {
        Sweep sweep;
        sweep.mgr = mgr;
        sweep.pfnKeep = keepAsSegment;
        sweep.pKept = pKept + nKept;
        sweepRuns(&sweep, list, plan);
        spliceSegments(mgr, plan.iLowest, mgr->nSegments, pKept, nKept);
    }
    freeMemory(pKept);
    return bMemory;
}

// False without memory: nothing has changed.
bool sweepToPositions(NamesManager *mgr, IndexList list, const RemovalPlan &plan) {
    NamePosition *pPositions = allocPositions(mgr->nNames - plan.nRemoved);
    if (pPositions == nullptr) { return false; }
    Sweep sweep;
    sweep.mgr = mgr;
    sweep.pfnKeep = keepAsPositions;
    sweep.pPositions = pPositions;
    sweepRuns(&sweep, list, plan);
    findPositions(mgr, plan.iLowest, pPositions);
    takePositions(mgr, pPositions);
    return true;
}

// Removes runs from the segments, up to a switch, and takes them off the list. False without
// memory: nothing has changed.
bool removeFromSegments(NamesManager *mgr, IndexList *pList) {
    const RemovalPlan plan = planRemoval(mgr, *pList);
    const bool bRemoved =
        plan.bSwitches ? sweepToPositions(mgr, *pList, plan) : sweepToSegments(mgr, *pList, plan);
    if (bRemoved) { *pList = plan.rest; }
    return bRemoved;
}

// ---- Individual-positions mode ----

void removeFromPositions(NamesManager *mgr, IndexList list) {
    int32_t nKept = list.nIndices > 0 ? list.pIndices[0] : mgr->nNames;
    int32_t iNext = nKept;  // the first name not dealt with yet
    for (int32_t k = 0; k < list.nIndices; ++k) {
        const int32_t index = list.pIndices[k];
        if (index < iNext) { continue; }  // listed twice
        std::copy(mgr->pPositions + iNext, mgr->pPositions + index, mgr->pPositions + nKept);
        nKept += index - iNext;
        iNext = index + 1;
        const NamePosition position = mgr->pPositions[index];
        if (isMaximumKnown(mgr)) { noteRemovedLength(mgr, lengthAt(mgr, position)); }
        leaveBlock(&mgr->pBlocks[position.iBlock], 1);
    }
    std::copy(mgr->pPositions + iNext, mgr->pPositions + mgr->nNames, mgr->pPositions + nKept);
    mgr->nNames -= iNext - nKept;
}

// ---- Lists ----

bool removeSorted(NamesManager *mgr, const int32_t *pIndices, int32_t nCount) {
    const int32_t *pBegin = std::lower_bound(pIndices, pIndices + nCount, 0);
    const int32_t *pEnd = std::lower_bound(pBegin, pIndices + nCount, mgr->nNames);
    IndexList list = {pBegin, static_cast<int32_t>(pEnd - pBegin)};
    IndexList rest = list;
    IndexRange run;
    const bool bSeveralRuns = takeRun(&rest, &run) && rest.nIndices > 0;
    const bool bSegments = mgr->pSegments != nullptr;
    if (!bSeveralRuns || (bSegments && !removeFromSegments(mgr, &list))) {
        return removeRunByRun(mgr, list);
    }
    if (mgr->pPositions != nullptr) { removeFromPositions(mgr, list); }
    dropIndex(mgr);
    dropCursor(mgr);
    releaseEmptyBlocks(mgr);
    return true;
}

// Without memory to sort in: the highest index that is left, again and again.
bool removeUnsorted(NamesManager *mgr, const int32_t *pIndices, int32_t nCount) {
    bool bAll = true;
    int32_t iBound = mgr->nNames;
    while (true) {
        int32_t iHighest = -1;
        for (int32_t k = 0; k < nCount; ++k) {
            if (pIndices[k] < iBound) { iHighest = std::max(iHighest, pIndices[k]); }
        }
        if (iHighest < 0) { return bAll; }
        bAll = removeRange(mgr, {iHighest, iHighest}) && bAll;
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
    const int32_t *pEnd = pIndices + nCount;
    if (std::adjacent_find(pIndices, pEnd, std::greater_equal<int32_t>()) == pEnd) {
        return removeSorted(mgr, pIndices, nCount) ? 0 : 1;
    }
    int32_t *pSorted = allocNumbers(nCount, __LINE__);
    if (pSorted == nullptr) { return removeUnsorted(mgr, pIndices, nCount) ? 0 : 1; }
    std::copy_n(pIndices, nCount, pSorted);
    std::sort(pSorted, pSorted + nCount);
    const bool bAll = removeSorted(mgr, pSorted, nCount);
    freeMemory(pSorted);
    return bAll ? 0 : 1;
}
