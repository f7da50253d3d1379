// Storing names: the public entries, and the way from a range to its replaced and appended parts.
#include "names/storing.hpp"

#include <algorithm>
#include <cassert>

#include "names/generating.hpp"
#include "names/own_names.hpp"
#include "names/storage/blocks.hpp"

namespace names {

namespace {

// storeRange for one name.
int32_t storeOne(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength) {
    const GivenNames given = {&pName, nullptr, &nLength};
    if (index != mgr->nNames || hasNoTables(mgr)) { return storeRange(mgr, {index, index}, given); }
    assert(areTrimmed(given, 1));
    dropCursor(mgr);
    return appendOne(mgr, given) ? 0 : 1;
}

// Status 2 if one of the names is too long.
int32_t trimNames(const char *const *names, int32_t nNames, int32_t *lengths) {
    for (int32_t k = 0; k < nNames; ++k) {
        if (!measureTrimmed(names[k], &lengths[k])) { return 2; }
    }
    return 0;
}

// All names of a range in one store; lengths is their work array, given back here.
int32_t storeAtOnce(NamesManager *mgr, IndexRange range, const char *const *names,
                    int32_t *lengths) {
    int32_t nStatus = trimNames(names, countOf(range), lengths);
    if (nStatus == 0) {
        nStatus = storeRange(mgr, range, {names, nullptr, lengths});
        HostMem_Free(lengths, kSourceTag, __LINE__);
        releaseEmptyBlocks(mgr);
    } else {
        HostMem_Free(lengths, kSourceTag, __LINE__);
    }
    return nStatus;
}

int32_t trimAndStoreOne(NamesManager *mgr, int32_t index, const char *pName) {
    int32_t nLength = 0;
    return measureTrimmed(pName, &nLength) ? storeOne(mgr, index, pName, nLength) : 2;
}

// The names of a range at once, or one after the other where there is no memory for their lengths.
int32_t storeSeveral(NamesManager *mgr, IndexRange range, const char *const *names) {
    const uint64_t nBytes = static_cast<uint64_t>(countOf(range)) * sizeof(int32_t);
    int32_t *lengths = static_cast<int32_t *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (lengths != nullptr) { return storeAtOnce(mgr, range, names, lengths); }
    for (int32_t i = range.first; i <= range.last; ++i) {
        const int32_t nStatus = trimAndStoreOne(mgr, i, names[i - range.first]);
        if (nStatus != 0) { return nStatus; }
    }
    releaseEmptyBlocks(mgr);
    return 0;
}

}  // namespace

// NamesManager_AddName; the index is in the caller's base, which decides when empty blocks are
// released.
int32_t addName(NamesManager *mgr, int32_t index, int32_t bOneBased, const char *pName) {
    IndexRange range;
    if (!toIndexRange(index, index, bOneBased, &range)) { return 1; }
    const int32_t nStatus = trimAndStoreOne(mgr, range.first, pName);
    if (nStatus == 0 && index % kReleaseInterval == 0) { releaseEmptyBlocks(mgr); }
    return nStatus;
}

int32_t addNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                 const char *const *names) {
    IndexRange range;
    if (first == last) { return addName(mgr, first, bOneBased, names[0]); }
    if (last < first) {
        releaseEmptyBlocks(mgr);
        return 0;
    }
    if (!toIndexRange(first, last, bOneBased, &range)) { return 1; }
    // Of names that replace others, those that lie in the manager itself would be overwritten by
    // those stored before them.
    if (range.first >= mgr->nNames || !anyLiesInBlock(mgr, names, countOf(range))) {
        return storeSeveral(mgr, range, names);
    }
    const char **ppCopies = copyOwnNames(mgr, names, countOf(range));
    const int32_t nStatus = ppCopies != nullptr ? storeSeveral(mgr, range, ppCopies) : 1;
    HostMem_Free(ppCopies, kSourceTag, __LINE__);
    return nStatus;
}

int32_t addOneName(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength) {
    const int32_t nStatus = storeOne(mgr, index, pName, nLength);
    if (nStatus == 0 && index % kReleaseInterval == 0) { releaseEmptyBlocks(mgr); }
    return nStatus;
}

int32_t storeRange(NamesManager *mgr, IndexRange range, const GivenNames &given) {
    assert(areTrimmed(given, countOf(range)));
    if (hasNoTables(mgr) ||
        (range.first > mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.first - 1) != 0)) {
        return 1;
    }
    dropCursor(mgr);
    const int32_t nReplaced = std::max(0, std::min(range.last + 1, mgr->nNames) - range.first);
    if (nReplaced > 0 &&
        replaceNames(mgr, {range.first, range.first + nReplaced - 1}, given) != 0) {
        return 1;
    }
    return nReplaced == countOf(range)
               ? 0
               : appendNames(mgr, skipGiven(given, nReplaced), countOf(range) - nReplaced);
}

}  // namespace names

using namespace names;

int32_t NamesManager_StoreNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                const char *const *names, const int32_t *lengths) {
    IndexRange range;
    return toIndexRange(first, last, bOneBased, &range)
               ? storeRange(mgr, range, {names, nullptr, lengths})
               : 1;
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
