// Removing a range of names.
#include "names/removal.hpp"

#include <algorithm>

#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/positions.hpp"
#include "names/storage/reading.hpp"

namespace names {

namespace {

void removePositions(NamesManager *mgr, IndexRange range) {
    for (int32_t i = range.first; i <= range.last; ++i) {
        leaveBlock(&mgr->pBlocks[mgr->pPositions[i].iBlock], 1);
    }
    std::copy(mgr->pPositions + range.last + 1, mgr->pPositions + mgr->nNames,
              mgr->pPositions + range.first);
}

// Cuts the range out of the segments that it lies in, from the first one up. What these hold of
// names before and after it stays. The table must have room for two more records.
void removeSegments(NamesManager *mgr, IndexRange range) {
    const NameLocation start = locateName(mgr, range.first);
    int32_t iSegment = start.iSegment;
    int32_t nFront = start.nOffset - mgr->pSegments[iSegment].nOffset;
    const int32_t iMoved = iSegment + (nFront > 0 ? 1 : 0);  // the first record to be renumbered
    NameSegment aRest[2];
    int32_t nRest = 0;
    for (int32_t iNext = range.first; iNext <= range.last; ++iSegment, nFront = 0) {
        const int32_t iLast = std::min(mgr->pSegments[iSegment].iLast, range.last);
        const Cut cut = cutSegment(mgr, iSegment, {iNext, iLast}, nFront);
        giveBackPiece(mgr, cut.middle);
        if (hasNames(cut.front)) { aRest[nRest++] = cut.front; }
        if (hasNames(cut.back)) { aRest[nRest++] = cut.back; }
        iNext = iLast + 1;
    }
    spliceSegments(mgr, start.iSegment, iSegment, aRest, nRest);
    for (int32_t s = iMoved; s < mgr->nSegments; ++s) {
        mgr->pSegments[s].iFirst -= countOf(range);
        mgr->pSegments[s].iLast -= countOf(range);
    }
}

}  // namespace

bool removeRange(NamesManager *mgr, IndexRange range) {
    dropIndex(mgr);
    noteRemovedNames(mgr, range);
    if (mgr->pSegments == nullptr) {
        removePositions(mgr, range);
    } else if (makeRoomForCut(mgr)) {
        removeSegments(mgr, range);
    } else {
        return false;
    }
    mgr->nNames -= countOf(range);
    dropCursor(mgr);
    switchIfFragmented(mgr);
    releaseEmptyBlocks(mgr);
    return true;
}

}  // namespace names

using namespace names;

int32_t NamesManager_RemoveNames(NamesManager *mgr, int32_t first, int32_t last,
                                 int32_t bOneBased) {
    ScopedLock lock(mgr);
    const int64_t nBase = bOneBased != 0 ? 1 : 0;
    const int64_t iFirst = first - nBase;
    const int64_t iLast = std::min<int64_t>(last - nBase, mgr->nNames - 1);
    if (iFirst < 0 || iFirst > last - nBase + 1) { return 1; }
    if (iFirst > iLast) { return 0; }
    return removeRange(mgr, {static_cast<int32_t>(iFirst), static_cast<int32_t>(iLast)}) ? 0 : 1;
}
