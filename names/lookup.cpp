// Finding indices by name: the hash index over the stored texts, and the scan that stands in for it
// when it cannot be built.
#include <cstring>

#include <algorithm>

#include "names/names_internal.hpp"

namespace names {

void dropIndex(NamesManager *mgr) {
    if (mgr->pLookupIndex != nullptr) {
        HostHashMap_Release(mgr->pLookupIndex);
        mgr->pLookupIndex = nullptr;
    }
}

void indexTexts(NamesManager *mgr, const char *pText, const int32_t *lengths, int32_t nNames,
                int32_t iFirst) {
    if (mgr->pLookupIndex == nullptr) { return; }
    if (nNames == 1) {
        if (HostHashMap_Insert(mgr->pLookupIndex, pText, iFirst, nullptr) != 0) { dropIndex(mgr); }
        return;
    }
    const char *apNames[kMaxSegmentNames];
    for (int32_t k = 0; k < nNames; ++k) {
        apNames[k] = pText;
        pText += lengths[k] + 1;
    }
    if (insertKeys(mgr->pLookupIndex, apNames, nNames, iFirst, nullptr) < nNames) {
        dropIndex(mgr);
    }
}

namespace {

void buildIndex(NamesManager *mgr) {
    mgr->pLookupIndex = HostHashMap_Create(&HostHashMap_StringKeys, mgr->nNames);
    const char *apNames[kMaxSegmentNames];
    NameReader reader = startReading(mgr, {0, mgr->nNames - 1});
    for (int32_t i = 0; mgr->pLookupIndex != nullptr && i < mgr->nNames;) {
        const int32_t nNames = readNames(&reader, apNames, nullptr);
        if (insertKeys(mgr->pLookupIndex, apNames, nNames, i, nullptr) < nNames) { dropIndex(mgr); }
        i += nNames;
    }
}

// Reads on from the cursor as any sequential reader does, and so moves it.
int32_t scanForText(NamesManager *mgr, const char *szText) {
    for (int32_t i = 0; i < mgr->nNames; ++i) {
        if (std::strcmp(getOne(mgr, i), szText) == 0) { return i; }
    }
    return -1;
}

bool endsInBlank(const char *szText) {
    const size_t nLength = std::strlen(szText);
    return nLength > 0 && szText[nLength - 1] == ' ';
}

// What of a name given with nWidth counts in a lookup.
struct SoughtText {
    size_t nLength;
    bool bAsGiven;  // it is NUL-terminated there and needs no trimming
};

SoughtText soughtText(const char *pName, int32_t nWidth) {
    const size_t nGiven =
        nWidth < 0 ? std::strlen(pName) : strnlen(pName, static_cast<size_t>(nWidth));
    const bool bTerminated = nWidth < 0 || nGiven < static_cast<size_t>(nWidth);
    const size_t nLength = nWidth < -1 ? nGiven : trimmedLength(pName, nGiven);
    return {nLength, bTerminated && nLength == nGiven};
}

// NUL-terminated, the name itself where it can be; NULL without memory for a copy in the buffer.
const char *lookupText(const char *pName, SoughtText sought, TextBuffer *pBuffer) {
    if (sought.bAsGiven) { return pName; }
    char *pText = roomFor(pBuffer, sought.nLength + 1);
    if (pText != nullptr) { copyText(pText, pName, static_cast<int32_t>(sought.nLength)); }
    return pText;
}

}  // namespace

NameLookupIndex *currentIndex(NamesManager *mgr) {
    if (isIndexCurrent(mgr)) { return mgr->pLookupIndex; }
    dropIndex(mgr);
    if (mgr->nNames > 0) { buildIndex(mgr); }
    return mgr->pLookupIndex;
}

int32_t findTexts(NamesManager *mgr, const char *const *ppTexts, int32_t nTexts, int32_t *pFound) {
    if (ppTexts[0] == nullptr) {
        *pFound = -1;
        return 1;
    }
    NameLookupIndex *pIndex = currentIndex(mgr);
    if (nTexts == 1 || !isIndexCurrent(mgr)) {
        *pFound =
            pIndex != nullptr ? HostHashMap_Find(pIndex, ppTexts[0]) : scanForText(mgr, ppTexts[0]);
        return 1;
    }
    findKeys(pIndex, ppTexts, nTexts, pFound);
    return nTexts;
}

namespace {

int32_t inBase(int32_t iFound, int32_t bOneBased) {
    return iFound >= 0 && bOneBased != 0 ? iFound + 1 : iFound;
}

// Finds a name given with nWidth, in the index where there is one; false without memory. No stored
// name ends in a blank, so a terminated name that the index holds as it was given needed no
// trimming: most names are not measured at all.
bool findName(NamesManager *mgr, NameLookupIndex *pIndex, const char *pName, int32_t nWidth,
              TextBuffer *pBuffer, int32_t *piFound) {
    if (pIndex != nullptr && nWidth < 0) {
        *piFound = HostHashMap_Find(pIndex, pName);
        if (*piFound >= 0) { return true; }
    }
    const char *szText = lookupText(pName, soughtText(pName, nWidth), pBuffer);
    if (szText == nullptr) { return false; }
    if (pIndex == nullptr) {
        *piFound = scanForText(mgr, szText);
    } else if (nWidth >= 0 || szText != pName) {
        *piFound = HostHashMap_Find(pIndex, szText);
    }
    return true;
}

[[gnu::noinline]] int32_t findOne(NamesManager *mgr, const char *pName) {
    TextBuffer buffer;
    int32_t iFound = -1;
    static_cast<void>(findName(mgr, currentIndex(mgr), pName, -1, &buffer, &iFound));
    return iFound;
}

constexpr int32_t kFoundAtOnce = 32;

// Finds those of the names that cannot be looked up as they were given, or were not found so;
// aFound[k] is -1 for these. Short texts are looked up together, a long one shares the buffer with
// the others. False without memory.
bool findTrimmed(NameLookupIndex *pIndex, const char *const *ppNames, int32_t nNames,
                 int32_t nWidth, TextBuffer *pBuffer, int32_t *aFound) {
    const char *apTexts[kFoundAtOnce];
    char aCopies[kFoundAtOnce][kLocalTextBytes];
    bool bAny = false;
    for (int32_t k = 0; k < nNames; ++k) {
        apTexts[k] = nullptr;
        if (aFound[k] >= 0) { continue; }
        const SoughtText sought = soughtText(ppNames[k], nWidth);
        if (sought.bAsGiven) {
            apTexts[k] = nWidth >= 0 ? ppNames[k] : nullptr;
        } else if (sought.nLength < kLocalTextBytes) {
            copyText(aCopies[k], ppNames[k], static_cast<int32_t>(sought.nLength));
            apTexts[k] = aCopies[k];
        } else {
            const char *szText = lookupText(ppNames[k], sought, pBuffer);
            if (szText == nullptr) { return false; }
            aFound[k] = HostHashMap_Find(pIndex, szText);
        }
        bAny = bAny || apTexts[k] != nullptr;
    }
    if (bAny) {
        int32_t aTrimmed[kFoundAtOnce];
        findKeys(pIndex, apTexts, nNames, aTrimmed);
        for (int32_t k = 0; k < nNames; ++k) {
            aFound[k] = apTexts[k] != nullptr ? aTrimmed[k] : aFound[k];
        }
    }
    return true;
}

// findName for up to kFoundAtOnce names.
bool findSome(NamesManager *mgr, NameLookupIndex *pIndex, const char *const *ppNames,
              int32_t nNames, int32_t nWidth, TextBuffer *pBuffer, int32_t *aFound) {
    if (pIndex == nullptr || nNames == 1) {
        for (int32_t k = 0; k < nNames; ++k) {
            if (!findName(mgr, pIndex, ppNames[k], nWidth, pBuffer, &aFound[k])) { return false; }
        }
        return true;
    }
    if (nWidth < 0) {
        findKeys(pIndex, ppNames, nNames, aFound);
    } else {
        std::fill_n(aFound, nNames, -1);
    }
    return nWidth < -1 || findTrimmed(pIndex, ppNames, nNames, nWidth, pBuffer, aFound);
}

int32_t findNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount, int32_t nWidth,
                  int32_t bOneBased, int32_t *pIndices) {
    TextBuffer buffer;
    NameLookupIndex *pIndex = currentIndex(mgr);
    for (int32_t first = 0; first < nCount;) {
        int32_t aFound[kFoundAtOnce];
        const int32_t nNames = std::min(nCount - first, kFoundAtOnce);
        const bool bDone = findSome(mgr, pIndex, ppNames + first, nNames, nWidth, &buffer, aFound);
        if (!bDone && pIndices != nullptr) { std::fill_n(pIndices, nCount, -1); }
        if (!bDone) { return 1; }
        for (int32_t k = 0; pIndices != nullptr && k < nNames; ++k) {
            pIndices[first + k] = inBase(aFound[k], bOneBased);
        }
        first += nNames;
    }
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_FindNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                               int32_t nWidth, int32_t bOneBased, int32_t *pIndices) {
    ScopedLock lock(mgr);
    return findNames(mgr, ppNames, nCount, nWidth, bOneBased, pIndices);
}

// The usual cases, a hit and a miss in a current index, take few instructions, so that the cache
// misses of neighbouring calls overlap.
int32_t NamesManager_FindName(NamesManager *mgr, const char *name, int32_t bOneBased) {
    ScopedLock lock(mgr);
    const bool bIndexed = isIndexCurrent(mgr);
    int32_t iFound = bIndexed ? HostHashMap_Find(mgr->pLookupIndex, name) : -1;
    if (iFound < 0 && (!bIndexed || endsInBlank(name))) { iFound = findOne(mgr, name); }
    return inBase(iFound, bOneBased);
}

int32_t NamesManager_FindNameInField(NamesManager *mgr, const char *name, int32_t nWidth,
                                     int32_t bOneBased) {
    int32_t iFound = -1;
    static_cast<void>(NamesManager_FindNames(mgr, &name, 1, nWidth, bOneBased, &iFound));
    return iFound;
}

int32_t NamesManager_FindNameList(NamesManager *mgr, const char *const *ppNames, int32_t nCount,
                                  int32_t bOneBased, int32_t *pIndices) {
    return NamesManager_FindNames(mgr, ppNames, nCount, -1, bOneBased, pIndices);
}
