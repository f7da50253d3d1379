// Adding names given with their lengths.
#include "names/own_names.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

int32_t withoutBlanks(const char *pName, int32_t nLength) {
    return static_cast<int32_t>(trimmedLength(pName, static_cast<uint64_t>(nLength)));
}

// Stores the names at once with their lengths without trailing blanks.
bool storeTrimmed(NamesManager *mgr, IndexRange range, const char *const *ppNames,
                  const int32_t *pTrimmed) {
    const bool bStored = storeNames(mgr, range, {ppNames, nullptr, pTrimmed});
    releaseEmptyBlocks(mgr);
    return bStored;
}

// Stores the names, some of which end in blanks: one after the other if there is no memory for
// their lengths without.
bool trimAndStore(NamesManager *mgr, IndexRange range, const char *const *ppNames,
                  const int32_t *pLengths) {
    int32_t *pTrimmed = allocNumbers(countOf(range), __LINE__);
    bool bStored = true;
    if (pTrimmed != nullptr) {
        for (int32_t k = 0; k < countOf(range); ++k) {
            pTrimmed[k] = withoutBlanks(ppNames[k], pLengths[k]);
        }
        bStored = storeTrimmed(mgr, range, ppNames, pTrimmed);
        freeMemory(pTrimmed);
        return bStored;
    }
    for (int32_t k = 0; bStored && k < countOf(range); ++k) {
        const int32_t nLength = withoutBlanks(ppNames[k], pLengths[k]);
        bStored = storeName(mgr, range.first + k, ppNames[k], nLength);
    }
    if (bStored) { releaseEmptyBlocks(mgr); }
    return bStored;
}

int32_t addWithLengths(NamesManager *mgr, IndexRange range, const char *const *ppNames,
                       const int32_t *pLengths) {
    bool bTrimmed = true;
    for (int32_t k = 0; k < countOf(range); ++k) {
        const int32_t nLength = withoutBlanks(ppNames[k], pLengths[k]);
        if (nLength > kMaxNameBytes) { return 2; }
        bTrimmed = bTrimmed && nLength == pLengths[k];
    }
    StableNames stable;
    stable.ppNames = ppNames;
    if (range.first < mgr->nNames && !makeStable(mgr, ppNames, pLengths, countOf(range), &stable)) {
        return 1;
    }
    const bool bStored = bTrimmed ? storeTrimmed(mgr, range, stable.ppNames, pLengths)
                                  : trimAndStore(mgr, range, stable.ppNames, pLengths);
    return bStored ? 0 : 1;
}

// first: in the caller's base.
int32_t addOneWithLength(NamesManager *mgr, int32_t first, int32_t index, const char *pName,
                         int32_t nGiven) {
    const int32_t nLength = withoutBlanks(pName, nGiven);
    if (nLength > kMaxNameBytes) { return 2; }
    if (!storeName(mgr, index, pName, nLength)) { return 1; }
    releaseAtIntervals(mgr, first);
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_AddNamesWithLengths(NamesManager *mgr, int32_t first, int32_t last,
                                         int32_t bOneBased, const char *const *names,
                                         const int32_t *lengths) {
    ScopedLock lock(mgr);
    IndexRange range;
    if (last < first) {
        releaseEmptyBlocks(mgr);
        return 0;
    }
    if (!toIndexRange(first, last, bOneBased, &range) ||
        holdAnyNul(names, lengths, countOf(range))) {
        return 1;
    }
    return first == last ? addOneWithLength(mgr, first, range.first, names[0], lengths[0])
                         : addWithLengths(mgr, range, names, lengths);
}
