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

NamePosition *allocPositions(int32_t nPositions) {
    const uint64_t nBytes = static_cast<uint64_t>(nPositions) * sizeof(NamePosition);
    return static_cast<NamePosition *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
}

void findPositions(const NamesManager *mgr, int32_t nSegments, NamePosition *pPositions) {
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    for (int32_t s = 0; s < nSegments; ++s) {
        const NameSegment &segment = mgr->pSegments[s];
        findStartsIn(mgr, segment, aStarts);
        for (int32_t k = 0; k < namesIn(segment); ++k) {
            *pPositions++ = {segment.iBlock, segment.nOffset + aStarts[k]};
        }
    }
}

void takePositions(NamesManager *mgr, NamePosition *pPositions) {
    freeSegmentTable(mgr);
    mgr->pPositions = pPositions;
    mgr->nPositionsAlloc = mgr->nNames;
    mgr->iCursorName = -1;
}

bool storeIndividualPositions(NamesManager *mgr) {
    if (mgr->pSegments == nullptr) { return false; }
    NamePosition *pPositions = allocPositions(mgr->nNames);
    if (pPositions == nullptr) { return false; }
    findPositions(mgr, mgr->nSegments, pPositions);
    takePositions(mgr, pPositions);
    return true;
}

void switchIfFragmented(NamesManager *mgr) {
    if (mgr->nSegments > mgr->nNames / 2) { static_cast<void>(storeIndividualPositions(mgr)); }
}

}  // namespace names
