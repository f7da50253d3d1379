// Positions and the switch to them.
#include "names/storage/positions.hpp"

#include "names/storage/segments.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

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

}  // namespace names
