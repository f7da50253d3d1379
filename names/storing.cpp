// Storing names given as pointers, one or many, and names of other managers.
#include "names/storing.hpp"

#include <algorithm>
#include <cassert>

#include "names/generating.hpp"
#include "names/own_names.hpp"

namespace names {

bool storeNames(NamesManager *mgr, IndexRange range, const GivenNames &given) {
    assert(areTrimmed(given, countOf(range)));
    if (hasNoTables(mgr) ||
        (range.first > mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.first - 1) != 0)) {
        return false;
    }
    dropCursor(mgr);
    const int32_t nReplaced = std::max(0, std::min(range.last + 1, mgr->nNames) - range.first);
    if (nReplaced > 0 && !replaceNames(mgr, {range.first, range.first + nReplaced - 1}, given)) {
        return false;
    }
    return nReplaced == countOf(range) ||
           appendNames(mgr, skipGiven(given, nReplaced), countOf(range) - nReplaced);
}

bool storeName(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength) {
    if (index != mgr->nNames) {
        return storeNames(mgr, {index, index}, {&pName, nullptr, &nLength});
    }
    dropCursor(mgr);
    return appendName(mgr, pName, nLength);
}

int32_t addName(NamesManager *mgr, int32_t index, int32_t bOneBased, const char *pName) {
    IndexRange range;
    int32_t nLength = 0;
    if (!toIndexRange(index, index, bOneBased, &range)) { return 1; }
    if (!measureTrimmed(pName, &nLength)) { return 2; }
    if (!storeName(mgr, range.first, pName, nLength)) { return 1; }
    releaseAtIntervals(mgr, index);
    return 0;
}

namespace {

// Adds names one after the other, without memory for their lengths.
int32_t addSingly(NamesManager *mgr, IndexRange range, const char *const *ppNames) {
    for (int32_t i = range.first; i <= range.last; ++i) {
        const char *pName = ppNames[i - range.first];
        int32_t nLength = 0;
        if (!measureTrimmed(pName, &nLength)) { return 2; }
        if (!storeName(mgr, i, pName, nLength)) { return 1; }
    }
    releaseEmptyBlocks(mgr);
    return 0;
}

// Adds names at once. pLengths is a work array.
int32_t addMeasured(NamesManager *mgr, IndexRange range, const char *const *ppNames,
                    int32_t *pLengths) {
    for (int32_t k = 0; k < countOf(range); ++k) {
        if (!measureTrimmed(ppNames[k], &pLengths[k])) { return 2; }
    }
    const bool bStored = storeNames(mgr, range, {ppNames, nullptr, pLengths});
    releaseEmptyBlocks(mgr);
    return bStored ? 0 : 1;
}

int32_t addRange(NamesManager *mgr, IndexRange range, const char *const *ppNames) {
    int32_t *pLengths = allocNumbers(countOf(range), __LINE__);
    if (pLengths == nullptr) { return addSingly(mgr, range, ppNames); }
    const int32_t nStatus = addMeasured(mgr, range, ppNames, pLengths);
    freeMemory(pLengths);
    return nStatus;
}

}  // namespace

int32_t addNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                 const char *const *ppNames) {
    IndexRange range;
    if (first == last) { return addName(mgr, first, bOneBased, ppNames[0]); }
    if (last < first) {
        releaseEmptyBlocks(mgr);
        return 0;
    }
    if (!toIndexRange(first, last, bOneBased, &range)) { return 1; }
    if (range.first >= mgr->nNames) { return addRange(mgr, range, ppNames); }
    StableNames stable;
    return makeStable(mgr, ppNames, nullptr, countOf(range), &stable)
               ? addRange(mgr, range, stable.ppNames)
               : 1;
}

}  // namespace names

using namespace names;

int32_t NamesManager_StoreNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                const char *const *names, const int32_t *lengths) {
    IndexRange range;
    const bool bStored = toIndexRange(first, last, bOneBased, &range) &&
                         storeNames(mgr, range, {names, nullptr, lengths});
    return bStored ? 0 : 1;
}

int32_t NamesManager_AddNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                              const char *const *names) {
    ScopedLock lock(mgr);
    return addNames(mgr, first, last, bOneBased, names);
}

int32_t NamesManager_AddName(NamesManager *mgr, int32_t index, int32_t bOneBased,
                             const char *name) {
    ScopedLock lock(mgr);
    return addName(mgr, index, bOneBased, name);
}

int32_t NamesManager_CopyName(NamesManager *destination, int32_t destinationIndex,
                              int32_t bDestinationOneBased, NamesManager *source,
                              int32_t sourceIndex, int32_t bSourceOneBased) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    return pName != nullptr
               ? NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pName)
               : 1;
}

int32_t NamesManager_CopyNameWithPrefix(NamesManager *destination, int32_t destinationIndex,
                                        int32_t bDestinationOneBased, NamesManager *source,
                                        int32_t sourceIndex, int32_t bSourceOneBased,
                                        const char *prefix) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    if (pName == nullptr) { return 1; }
    const size_t nPrefix = std::strlen(prefix);
    const size_t nName = std::strlen(pName) + 1;
    TextBuffer buffer;
    char *pText = roomFor(&buffer, nPrefix + nName);
    if (pText == nullptr) { return 1; }
    std::memcpy(pText, prefix, nPrefix);
    std::memcpy(pText + nPrefix, pName, nName);
    return NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pText);
}
