// Finding indices by name: in the hash index, or by the scan that stands in for it when it cannot
// be built.
//
// No stored name ends in a blank. In an index a NUL-terminated name is therefore looked up as it
// was given, and only if it is not found and does end in a blank once more without: most names are
// never measured.
#include "names/lookup.hpp"

#include <algorithm>

#include "names/retrieval.hpp"
#include "names/storage/given_names.hpp"
#include "names/storage/key_lists.hpp"
#include "names/storage/lookup_index.hpp"

namespace names {

namespace {

// Reads on from the cursor as any sequential reader does, and so moves it.
int32_t scanForText(NamesManager *mgr, const char *szText) {
    for (int32_t i = 0; i < mgr->nNames; ++i) {
        if (std::strcmp(getOne(mgr, i), szText) == 0) { return i; }
    }
    return -1;
}

// Finds texts exactly as they are, -1 for NULL. Without an index it must be one text, not NULL.
void findExact(NamesManager *mgr, NameLookupIndex *pIndex, const char *const *ppTexts,
               int32_t nTexts, int32_t *pFound) {
    if (nTexts > 1) {
        findKeys(pIndex, ppTexts, nTexts, pFound);
    } else {
        *pFound =
            pIndex != nullptr ? HostHashMap_Find(pIndex, *ppTexts) : scanForText(mgr, *ppTexts);
    }
}

}  // namespace

int32_t findTexts(NamesManager *mgr, const char *const *ppTexts, int32_t nTexts, int32_t *pFound) {
    if (*ppTexts == nullptr) {  // no reason to build an index
        *pFound = -1;
        return 1;
    }
    NameLookupIndex *pIndex = currentIndex(mgr);
    const int32_t nChunk = isIndexCurrent(mgr) ? nTexts : 1;
    findExact(mgr, pIndex, ppTexts, nChunk, pFound);
    return nChunk;
}

namespace {

// What of a name given with nWidth counts in a lookup.
struct SoughtText {
    bool bAsGiven;   // it is NUL-terminated there and needs no trimming
    size_t nLength;  // else
};

SoughtText soughtText(const char *pName, int32_t nWidth) {
    if (nWidth < -1) { return {true, 0}; }
    const size_t nGiven =
        nWidth < 0 ? std::strlen(pName) : strnlen(pName, static_cast<size_t>(nWidth));
    const bool bTerminated = nWidth < 0 || nGiven < static_cast<size_t>(nWidth);
    const size_t nLength = trimmedLength(pName, nGiven);
    return {bTerminated && nLength == nGiven, nLength};
}

// The width that a name is given with: a field of its length, where it has one.
int32_t widthOf(const NameLookup &lookup, int32_t k) {
    return lookup.pLengths != nullptr ? lookup.pLengths[k] : lookup.nWidth;
}

// Finds a name too long to be looked up together with others, which share the buffer. False without
// memory.
bool findLong(NameLookup *pLookup, const char *pName, size_t nLength, int32_t *piFound) {
    char *pText = roomFor(&pLookup->buffer, nLength + 1);
    if (pText == nullptr) { return false; }
    copyText(pText, pName, static_cast<int32_t>(nLength));
    findExact(pLookup->mgr, pLookup->pIndex, &pText, 1, piFound);
    return true;
}

// Finds those of the names that have not been found as they were given: pFound[k] is -1 for these.
// bTried: all have been looked up so. False without memory.
bool findTrimmed(NameLookup *pLookup, int32_t first, int32_t nNames, bool bTried, int32_t *pFound) {
    const char *apTexts[kChunkNames];
    char aCopies[kChunkNames][kLocalTextBytes];
    bool bAny = false;
    for (int32_t k = 0; k < nNames; ++k) {
        apTexts[k] = nullptr;
        if (pFound[k] >= 0) { continue; }
        const char *pName = pLookup->ppNames[first + k];
        const SoughtText sought = soughtText(pName, widthOf(*pLookup, first + k));
        if (sought.bAsGiven) {
            apTexts[k] = bTried ? nullptr : pName;
        } else if (sought.nLength < kLocalTextBytes) {
            copyText(aCopies[k], pName, static_cast<int32_t>(sought.nLength));
            apTexts[k] = aCopies[k];
        } else if (!findLong(pLookup, pName, sought.nLength, &pFound[k])) {
            return false;
        }
        bAny = bAny || apTexts[k] != nullptr;
    }
    if (bAny) {
        int32_t aTrimmed[kChunkNames];
        findExact(pLookup->mgr, pLookup->pIndex, apTexts, nNames, aTrimmed);
        for (int32_t k = 0; k < nNames; ++k) {
            pFound[k] = apTexts[k] != nullptr ? aTrimmed[k] : pFound[k];
        }
    }
    return true;
}

}  // namespace

bool findTogether(NameLookup *pLookup, int32_t first, int32_t nNames, int32_t *pFound) {
    if (pLookup->pIndex == nullptr || widthOf(*pLookup, first) >= 0) {
        std::fill_n(pFound, nNames, -1);
        return findTrimmed(pLookup, first, nNames, false, pFound);
    }
    findExact(pLookup->mgr, pLookup->pIndex, pLookup->ppNames + first, nNames, pFound);
    const bool bAll = std::none_of(pFound, pFound + nNames, [](int32_t i) { return i < 0; });
    return bAll || findTrimmed(pLookup, first, nNames, true, pFound);
}

namespace {

int32_t inBase(int32_t iFound, int32_t bOneBased) {
    return iFound >= 0 && bOneBased != 0 ? iFound + 1 : iFound;
}

// A whole list, in chunks.
int32_t findAll(NameLookup *pLookup, int32_t nCount, int32_t bOneBased, int32_t *pIndices) {
    const int32_t nAtOnce = pLookup->pIndex != nullptr ? kChunkNames : 1;
    for (int32_t nDone = 0; nDone < nCount;) {
        int32_t aFound[kChunkNames];
        const int32_t nNames = std::min(nCount - nDone, nAtOnce);
        if (!findTogether(pLookup, nDone, nNames, aFound)) {
            if (pIndices != nullptr) { std::fill_n(pIndices, nCount, -1); }
            return 1;
        }
        for (int32_t k = 0; pIndices != nullptr && k < nNames; ++k) {
            pIndices[nDone + k] = inBase(aFound[k], bOneBased);
        }
        nDone += nNames;
    }
    return 0;
}

// Finds one name. bTried: it is not in a current index as it was given.
[[gnu::noinline]] int32_t findOne(NamesManager *mgr, const char *pName, int32_t nWidth,
                                  bool bTried) {
    NameLookup lookup = {mgr, currentIndex(mgr), &pName, nullptr, nWidth, {}};
    int32_t iFound = -1;
    static_cast<void>(bTried ? findTrimmed(&lookup, 0, 1, true, &iFound)
                             : findTogether(&lookup, 0, 1, &iFound));
    return iFound;
}

}  // namespace

int32_t findNamesIn(NameLookupIndex *pIndex, const char *const *ppNames, int32_t nCount,
                    int32_t nWidth, int32_t bOneBased, int32_t *pIndices) {
    if (pIndex == nullptr) {
        if (pIndices != nullptr) { std::fill_n(pIndices, std::max(nCount, 0), -1); }
        return 0;
    }
    NameLookup lookup = {nullptr, pIndex, ppNames, nullptr, nWidth, {}};
    return findAll(&lookup, nCount, bOneBased, pIndices);
}

int32_t findNameIn(NameLookupIndex *pIndex, const char *szName, int32_t bOneBased) {
    if (pIndex == nullptr) { return -1; }
    int32_t iFound = HostHashMap_Find(pIndex, szName);
    if (iFound < 0 && endsInBlank(szName)) {
        NameLookup lookup = {nullptr, pIndex, &szName, nullptr, NamesManagerWidth_Terminated, {}};
        static_cast<void>(findTrimmed(&lookup, 0, 1, true, &iFound));
    }
    return inBase(iFound, bOneBased);
}

}  // namespace names

using namespace names;

int32_t NamesManager_FindNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                               int32_t nWidth, int32_t bOneBased, int32_t *pIndices) {
    ScopedLock lock(mgr);
    NameLookup lookup = {mgr, currentIndex(mgr), ppNames, nullptr, nWidth, {}};
    return findAll(&lookup, nCount, bOneBased, pIndices);
}

int32_t NamesManager_FindNamesWithLengths(NamesManager *mgr, const char *const *ppNames,
                                          const int32_t *pLengths, int32_t nCount,
                                          int32_t bOneBased, int32_t *pIndices) {
    ScopedLock lock(mgr);
    if (holdAnyNul(ppNames, pLengths, nCount)) {
        if (pIndices != nullptr) { std::fill_n(pIndices, nCount, -1); }
        return 1;
    }
    NameLookup lookup = {mgr, currentIndex(mgr), ppNames, pLengths, 0, {}};
    return findAll(&lookup, nCount, bOneBased, pIndices);
}

// A hit, and a miss of a name that needs no trimming, take few instructions in a current index, so
// that the cache misses of neighbouring calls overlap.
int32_t NamesManager_FindName(NamesManager *mgr, const char *name, int32_t bOneBased) {
    ScopedLock lock(mgr);
    const bool bIndexed = isIndexCurrent(mgr);
    if (bIndexed) {
        const int32_t iFound = HostHashMap_Find(mgr->pLookupIndex, name);
        if (iFound >= 0 || !endsInBlank(name)) { return inBase(iFound, bOneBased); }
    }
    return inBase(findOne(mgr, name, NamesManagerWidth_Terminated, bIndexed), bOneBased);
}

int32_t NamesManager_FindNameInField(NamesManager *mgr, const char *name, int32_t nWidth,
                                     int32_t bOneBased) {
    ScopedLock lock(mgr);
    return inBase(findOne(mgr, name, nWidth, false), bOneBased);
}

int32_t NamesManager_FindNameList(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                                  int32_t bOneBased, int32_t *pIndices) {
    return NamesManager_FindNames(mgr, ppNames, nCount, NamesManagerWidth_Terminated, bOneBased,
                                  pIndices);
}
