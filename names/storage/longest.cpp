// The known length of the longest name.
#include "names/storage/longest.hpp"

#include <algorithm>

#include "names/storage/reading.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

// The new length of a name that had nOld bytes, against the known maximum.
void noteReplacedLength(NamesManager *mgr, int32_t nOld, int32_t nNew) {
    if (nNew > nOld && nNew > mgr->nMaxNameLength) {
        mgr->nMaxNameLength = nNew;
        mgr->nMaxNameLengthCount = 1;
    } else if (nNew < nOld && nOld == mgr->nMaxNameLength && --mgr->nMaxNameLengthCount == 0) {
        mgr->nMaxNameLength = -1;
    }
}

// The length of the longest name, and how many are as long.
struct Longest {
    int32_t nLength;
    int32_t nCount;
};

// Takes in names that start at aStarts and end where the next one starts. Free of branches for the
// single name.
void noteLongest(const int32_t *aStarts, int32_t nNames, Longest *pLongest) {
    int32_t nLongest = 0;
    for (int32_t k = 0; k < nNames; ++k) {
        nLongest = std::max(nLongest, aStarts[k + 1] - aStarts[k] - 1);
    }
    if (nLongest > pLongest->nLength) { *pLongest = {nLongest, 0}; }
    if (nLongest == pLongest->nLength) {
        for (int32_t k = 0; k < nNames; ++k) {
            pLongest->nCount += aStarts[k + 1] - aStarts[k] - 1 == nLongest ? 1 : 0;
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
        aStarts[1] = static_cast<int32_t>(std::strlen(
                         textAt(mgr, mgr->pPositions[i].iBlock, mgr->pPositions[i].nOffset))) +
                     1;
        noteLongest(aStarts, 1, &longest);
    }
    return longest;
}

}  // namespace

int32_t *lengthsForMaximum(NamesManager *mgr, IndexRange range) {
    if (mgr->nMaxNameLength < 0) { return nullptr; }
    const uint64_t nBytes = static_cast<uint64_t>(countOf(range)) * sizeof(int32_t);
    int32_t *lengths = static_cast<int32_t *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (lengths != nullptr) {
        readLengths(mgr, range, lengths);
    } else {
        mgr->nMaxNameLength = -1;
    }
    return lengths;
}

void noteAddedLengths(NamesManager *mgr, const int32_t *lengths, int32_t nNames) {
    for (int32_t k = 0; mgr->nMaxNameLength >= 0 && k < nNames; ++k) {
        if (lengths[k] > mgr->nMaxNameLength) {
            mgr->nMaxNameLength = lengths[k];
            mgr->nMaxNameLengthCount = 1;
        } else if (lengths[k] == mgr->nMaxNameLength) {
            ++mgr->nMaxNameLengthCount;
        }
    }
}

// Brings a known maximum up to date before any text changes.
void noteReplacedLengths(NamesManager *mgr, IndexRange range, const int32_t *lengths) {
    int32_t *oldLengths = lengthsForMaximum(mgr, range);
    for (int32_t k = 0; k < countOf(range) && mgr->nMaxNameLength >= 0; ++k) {
        noteReplacedLength(mgr, oldLengths[k], lengths[k]);
    }
    HostMem_Free(oldLengths, kSourceTag, __LINE__);
}

// One name less of the length given.
void noteRemovedLength(NamesManager *mgr, int32_t nLength) {
    if (nLength == mgr->nMaxNameLength && --mgr->nMaxNameLengthCount == 0) {
        mgr->nMaxNameLength = -1;
    }
}

void noteRemovedLengths(NamesManager *mgr, IndexRange range) {
    int32_t *lengths = lengthsForMaximum(mgr, range);
    for (int32_t k = 0; k < countOf(range) && mgr->nMaxNameLength >= 0; ++k) {
        noteRemovedLength(mgr, lengths[k]);
    }
    HostMem_Free(lengths, kSourceTag, __LINE__);
}

int32_t maxNameLength(NamesManager *mgr) {
    if (mgr->nMaxNameLength < 0) {
        const Longest longest = findLongest(mgr);
        mgr->nMaxNameLength = longest.nLength;
        mgr->nMaxNameLengthCount = longest.nCount;
    }
    return mgr->nMaxNameLength;
}

}  // namespace names
