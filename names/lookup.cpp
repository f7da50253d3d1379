// Finding indices by name: in the hash index, or by the scan that stands in for it when it cannot
// be built.
//
// No stored name ends in a blank. In an index a NUL-terminated name is therefore looked up as it
// was given, and only if it is not found and does end in a blank once more without: most names are
// never measured.
#include "names/lookup.hpp"

#include <algorithm>

#include "names/retrieval.hpp"
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

// Looks texts up, -1 for NULL. Without an index there must be one, not NULL.
void findInIndex(NamesManager *mgr, NameLookupIndex *pIndex, const char *const *ppTexts,
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
    findInIndex(mgr, pIndex, ppTexts, nChunk, pFound);
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

// The first nLength bytes of a name as a text of their own: at pLocal or, if that has no room for
// them, in the buffer. NULL without memory.
const char *copySought(const char *pName, size_t nLength, char *pLocal, TextBuffer *pBuffer) {
    char *pText = nLength < kLocalTextBytes ? pLocal : roomFor(pBuffer, nLength + 1);
    if (pText != nullptr) { copyText(pText, pName, static_cast<int32_t>(nLength)); }
    return pText;
}

constexpr int32_t kChunkNames = 32;

// A list of names given with nWidth, looked up in chunks.
struct NameLookup {
    NamesManager *mgr;
    NameLookupIndex *pIndex;  // NULL: by scans, one for each name
    int32_t nWidth;
    TextBuffer buffer;
};

// Finds those of the names that have not been found as they were given: aFound[k] is -1 for these.
// bTried: all have been looked up so. False without memory.
bool findTrimmed(NameLookup *pLookup, const char *const *ppNames, int32_t nNames, bool bTried,
                 int32_t *aFound) {
    const char *apTexts[kChunkNames];
    char aCopies[kChunkNames][kLocalTextBytes];
    int32_t nTexts = 0;
    for (int32_t k = 0; k < nNames; ++k) {
        apTexts[k] = nullptr;
        if (aFound[k] >= 0) { continue; }
        const SoughtText sought = soughtText(ppNames[k], pLookup->nWidth);
        if (sought.bAsGiven && bTried) { continue; }
        const char *szText =
            sought.bAsGiven ? ppNames[k]
                            : copySought(ppNames[k], sought.nLength, aCopies[k], &pLookup->buffer);
        if (szText == nullptr) { return false; }
        if (szText == ppNames[k] || szText == aCopies[k]) {
            apTexts[k] = szText;
            ++nTexts;
        } else {  // before the buffer takes the next long one
            findInIndex(pLookup->mgr, pLookup->pIndex, &szText, 1, &aFound[k]);
        }
    }
    if (nTexts > 0) {
        int32_t aTrimmed[kChunkNames];
        findInIndex(pLookup->mgr, pLookup->pIndex, apTexts, nNames, aTrimmed);
        for (int32_t k = 0; k < nNames; ++k) {
            aFound[k] = apTexts[k] != nullptr ? aTrimmed[k] : aFound[k];
        }
    }
    return true;
}

// Finds up to kChunkNames names, one where there is no index. False without memory.
bool findChunk(NameLookup *pLookup, const char *const *ppNames, int32_t nNames, int32_t *aFound) {
    const bool bAsGiven = pLookup->pIndex != nullptr && pLookup->nWidth < 0;
    if (bAsGiven) {
        findInIndex(pLookup->mgr, pLookup->pIndex, ppNames, nNames, aFound);
    } else {
        std::fill_n(aFound, nNames, -1);
    }
    return findTrimmed(pLookup, ppNames, nNames, bAsGiven, aFound);
}

int32_t inBase(int32_t iFound, int32_t bOneBased) {
    return iFound >= 0 && bOneBased != 0 ? iFound + 1 : iFound;
}

// NamesManager_FindNames.
int32_t findNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount, int32_t nWidth,
                  int32_t bOneBased, int32_t *pIndices) {
    NameLookup lookup = {mgr, currentIndex(mgr), nWidth, {}};
    const int32_t nAtOnce = lookup.pIndex != nullptr ? kChunkNames : 1;
    for (int32_t nDone = 0; nDone < nCount;) {
        int32_t aFound[kChunkNames];
        const int32_t nNames = std::min(nCount - nDone, nAtOnce);
        if (!findChunk(&lookup, ppNames + nDone, nNames, aFound)) {
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

[[gnu::noinline]] int32_t findOne(NamesManager *mgr, const char *pName, int32_t nWidth,
                                  int32_t bOneBased) {
    int32_t iFound = -1;
    static_cast<void>(findNames(mgr, &pName, 1, nWidth, bOneBased, &iFound));
    return iFound;
}

bool endsInBlank(const char *szText) {
    const size_t nLength = std::strlen(szText);
    return nLength > 0 && szText[nLength - 1] == ' ';
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_FindNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                               int32_t nWidth, int32_t bOneBased, int32_t *pIndices) {
    ScopedLock lock(mgr);
    return findNames(mgr, ppNames, nCount, nWidth, bOneBased, pIndices);
}

// A hit, and a miss of a name that needs no trimming, take few instructions in a current index, so
// that the cache misses of neighbouring calls overlap.
int32_t NamesManager_FindName(NamesManager *mgr, const char *name, int32_t bOneBased) {
    ScopedLock lock(mgr);
    if (isIndexCurrent(mgr)) {
        const int32_t iFound = HostHashMap_Find(mgr->pLookupIndex, name);
        if (iFound >= 0 || !endsInBlank(name)) { return inBase(iFound, bOneBased); }
    }
    return findOne(mgr, name, -1, bOneBased);
}

int32_t NamesManager_FindNameInField(NamesManager *mgr, const char *name, int32_t nWidth,
                                     int32_t bOneBased) {
    ScopedLock lock(mgr);
    return findOne(mgr, name, nWidth, bOneBased);
}

int32_t NamesManager_FindNameList(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                                  int32_t bOneBased, int32_t *pIndices) {
    return NamesManager_FindNames(mgr, ppNames, nCount, -1, bOneBased, pIndices);
}
