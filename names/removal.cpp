// Removing a range of names.
#include "names/removal.hpp"

#include <algorithm>

#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/positions.hpp"
#include "names/storage/reading.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

void removePositions(NamesManager *mgr, IndexRange range) {
    for (int32_t i = range.first; i <= range.last; ++i) {
        leaveBlock(&mgr->pBlocks[mgr->pPositions[i].iBlock], 1);
    }
    std::copy(mgr->pPositions + range.last + 1, mgr->pPositions + mgr->nNames,
              mgr->pPositions + range.first);
}

// Takes the segments of a range out, leaving what its first and last segment hold of other names.
// The table has room for two more.
void removeSegments(NamesManager *mgr, IndexRange range) {
    const NameLocation place = locateName(mgr, range.first);
    NameSegment aRest[2];
    int32_t nRest = 0;
    int32_t nOffset = place.nOffset;
    int32_t iSegment = place.iSegment;
    if (mgr->pSegments[iSegment].iFirst < range.first) {
        aRest[nRest] = mgr->pSegments[iSegment];
        aRest[nRest].iLast = range.first - 1;
        aRest[nRest].nBytes = nOffset - aRest[nRest].nOffset;
        ++nRest;
    }
    for (int32_t iNext = range.first; iNext <= range.last; ++iSegment) {
        const NameSegment segment = mgr->pSegments[iSegment];
        const int32_t iLast = std::min(segment.iLast, range.last);
        int32_t nBytes = segment.nOffset + segment.nBytes - nOffset;
        if (iLast < segment.iLast) {
            nBytes =
                bytesOfNames(textSpan(mgr, segment.iBlock, nOffset, nBytes), iLast - iNext + 1);
            const int32_t nEnd = nOffset + nBytes;
            aRest[nRest++] = {iLast + 1, segment.iLast, segment.iBlock, nEnd,
                              segment.nOffset + segment.nBytes - nEnd};
        }
        giveBackText(&mgr->pBlocks[segment.iBlock], nOffset, nBytes, iLast - iNext + 1);
        iNext = iLast + 1;
        nOffset = iSegment + 1 < mgr->nSegments ? mgr->pSegments[iSegment + 1].nOffset : 0;
    }
    spliceSegments(mgr, place.iSegment, iSegment, aRest, nRest);
    for (int32_t s = place.iSegment; s < mgr->nSegments; ++s) {
        if (mgr->pSegments[s].iFirst > range.first) {
            mgr->pSegments[s].iFirst -= countOf(range);
            mgr->pSegments[s].iLast -= countOf(range);
        }
    }
}

}  // namespace

// Removes a range that is not empty and lies below nNames. 0, or 1 without memory for the segments
// that it cuts.
int32_t removeRange(NamesManager *mgr, IndexRange range) {
    dropIndex(mgr);
    noteRemovedLengths(mgr, range);
    if (mgr->pSegments == nullptr) {
        removePositions(mgr, range);
    } else if (mgr->nSegmentsAlloc - mgr->nSegments >= 2 || growSegmentTable(mgr)) {
        removeSegments(mgr, range);
    } else {
        return 1;
    }
    mgr->nNames -= countOf(range);
    dropCursor(mgr);
    if (mgr->pSegments != nullptr) { switchIfFragmented(mgr); }
    releaseEmptyBlocks(mgr);
    return 0;
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
    return iFirst <= iLast
               ? removeRange(mgr, {static_cast<int32_t>(iFirst), static_cast<int32_t>(iLast)})
               : 0;
}
