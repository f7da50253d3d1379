// The known length of the longest name.
#include "names/storage/longest.hpp"

#include <algorithm>

#include "names/storage/positions.hpp"
#include "names/storage/reading.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

// A name that becomes as long as the longest is not counted, so the count may be too low, never too
// high.
void noteReplacedLength(NamesManager *mgr, int32_t nOld, int32_t nNew) {
    if (nNew > mgr->nMaxNameLength) {
        noteAddedLength(mgr, nNew);
    } else if (nNew < nOld) {
        noteRemovedLength(mgr, nOld);
    }
}

// The lengths of a range while the maximum is known; the caller frees them. NULL if it is unknown,
// or becomes so for want of memory.
int32_t *lengthsForMaximum(NamesManager *mgr, IndexRange range) {
    if (!isMaximumKnown(mgr)) { return nullptr; }
    int32_t *pLengths = allocNumbers(countOf(range), __LINE__);
    if (pLengths != nullptr) {
        readLengths(mgr, range, pLengths);
    } else {
        forgetMaximum(mgr);
    }
    return pLengths;
}

}  // namespace

void noteReplacedNames(NamesManager *mgr, IndexRange range, const int32_t *pLengths) {
    int32_t *pOldLengths = lengthsForMaximum(mgr, range);
    for (int32_t k = 0; isMaximumKnown(mgr) && k < countOf(range); ++k) {
        noteReplacedLength(mgr, pOldLengths[k], pLengths[k]);
    }
    freeMemory(pOldLengths);
}

void noteRemovedNames(NamesManager *mgr, IndexRange range) {
    int32_t *pLengths = lengthsForMaximum(mgr, range);
    for (int32_t k = 0; isMaximumKnown(mgr) && k < countOf(range); ++k) {
        noteRemovedLength(mgr, pLengths[k]);
    }
    freeMemory(pLengths);
}

namespace {

// The length of the longest name, and how many names have it.
struct Longest {
    int32_t nLength;
    int32_t nCount;
};

// Takes in names that start at pStarts and end where the next one starts. The loops have no branch
// for a single name.
void noteLongest(const int32_t *pStarts, int32_t nNames, Longest *pLongest) {
    int32_t nLongest = 0;
    for (int32_t k = 0; k < nNames; ++k) {
        nLongest = std::max(nLongest, pStarts[k + 1] - pStarts[k] - 1);
    }
    if (nLongest > pLongest->nLength) { *pLongest = {nLongest, 0}; }
    if (nLongest == pLongest->nLength) {
        for (int32_t k = 0; k < nNames; ++k) {
            pLongest->nCount += pStarts[k + 1] - pStarts[k] - 1 == nLongest ? 1 : 0;
        }
    }
}

Longest findLongest(const NamesManager *mgr) {
    Longest longest = {0, 0};
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    for (int32_t s = 0; s < mgr->nSegments; ++s) {
        findStartsIn(mgr, mgr->pSegments[s], aStarts);
        noteLongest(aStarts, namesIn(mgr->pSegments[s]), &longest);
    }
    for (int32_t i = 0; mgr->pPositions != nullptr && i < mgr->nNames; ++i) {
        aStarts[0] = 0;
        aStarts[1] = lengthAt(mgr, mgr->pPositions[i]) + 1;
        noteLongest(aStarts, 1, &longest);
    }
    return longest;
}

}  // namespace

int32_t maxNameLength(NamesManager *mgr) {
    if (!isMaximumKnown(mgr)) {
        const Longest longest = findLongest(mgr);
        mgr->nMaxNameLength = longest.nLength;
        mgr->nMaxNameLengthCount = longest.nCount;
    }
    return mgr->nMaxNameLength;
}

}  // namespace names
