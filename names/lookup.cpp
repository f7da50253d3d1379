/* Finding indices by name: the hash index over the stored texts, and the scan that stands in for it when it cannot be built. */
#include <string.h>

#include <algorithm>

#include "names/names_internal.hpp"

namespace names {

void dropIndex(NamesManager *mgr) {
    if (mgr->pLookupIndex != nullptr) {
        HostHashMap_Release(mgr->pLookupIndex);
        mgr->pLookupIndex = nullptr;
    }
}

void indexTexts(NamesManager *mgr, const char *pText, const int32_t *lengths, int32_t nNames, int32_t iFirst) {
    for (int32_t k = 0; k < nNames && mgr->pLookupIndex != nullptr; ++k) {
        if (HostHashMap_Insert(mgr->pLookupIndex, pText, iFirst + k, nullptr) != 0) {
            dropIndex(mgr);
        }
        pText += lengths[k] + 1;
    }
}

namespace {

bool isIndexCurrent(const NamesManager *mgr) {
    return mgr->pLookupIndex != nullptr && mgr->pLookupIndex->nEntries == mgr->nNames;
}

void buildIndex(NamesManager *mgr) {
    mgr->pLookupIndex = HostHashMap_Create(&HostHashMap_StringKeys, mgr->nNames);
    const char *apNames[kMaxSegmentNames];
    NameReader reader = startReading(mgr, {0, mgr->nNames - 1});
    for (int32_t i = 0; mgr->pLookupIndex != nullptr && i < mgr->nNames;) {
        const int32_t iEnd = i + readNames(&reader, apNames, nullptr);
        for (int32_t k = 0; i < iEnd; ++k, ++i) {
            if (HostHashMap_Insert(mgr->pLookupIndex, apNames[k], i, nullptr) != 0) {
                dropIndex(mgr);
                return;
            }
        }
    }
}

/* Reads on from the cursor as any sequential reader does, and so moves it. */
int32_t scanForText(NamesManager *mgr, const char *szText) {
    for (int32_t i = 0; i < mgr->nNames; ++i) {
        if (strcmp(getOne(mgr, i), szText) == 0) {
            return i;
        }
    }
    return -1;
}

bool endsInBlank(const char *szText) {
    const size_t nLength = strlen(szText);
    return nLength > 0 && szText[nLength - 1] == ' ';
}

/* The NUL-terminated text that a name given with nWidth is looked up by: the name itself where it needs no trimming, else a copy in the
 * buffer; NULL without memory for that. */
const char *lookupText(const char *pName, int32_t nWidth, TextBuffer *pBuffer) {
    if (nWidth < -1) {
        return pName;
    }
    const size_t nGiven = nWidth < 0 ? strlen(pName) : strnlen(pName, static_cast<size_t>(nWidth));
    const bool bTerminated = nWidth < 0 || nGiven < static_cast<size_t>(nWidth);
    if (bTerminated && (nGiven == 0 || pName[nGiven - 1] != ' ')) {
        return pName;
    }
    const size_t nLength = trimmedLength(pName, nGiven);
    char *pText = roomFor(pBuffer, nLength + 1);
    if (pText != nullptr) {
        memcpy(pText, pName, nLength);
        pText[nLength] = 0;
    }
    return pText;
}

}  // namespace

NameLookupIndex *currentIndex(NamesManager *mgr) {
    if (isIndexCurrent(mgr)) {
        return mgr->pLookupIndex;
    }
    dropIndex(mgr);
    if (mgr->nNames > 0) {
        buildIndex(mgr);
    }
    return mgr->pLookupIndex;
}

int32_t findText(NamesManager *mgr, const char *szText) {
    NameLookupIndex *pIndex = currentIndex(mgr);
    return pIndex != nullptr ? HostHashMap_Find(pIndex, szText) : scanForText(mgr, szText);
}

namespace {

int32_t inBase(int32_t iFound, int32_t bOneBased) {
    return iFound >= 0 && bOneBased != 0 ? iFound + 1 : iFound;
}

/* Finds a name given with nWidth, in the index where there is one; false without memory. No stored name ends in a blank, so a terminated
 * name that the index holds as it was given needed no trimming: most names are not measured at all. */
bool findName(NamesManager *mgr, NameLookupIndex *pIndex, const char *pName, int32_t nWidth, TextBuffer *pBuffer, int32_t *piFound) {
    if (pIndex != nullptr && nWidth < 0) {
        *piFound = HostHashMap_Find(pIndex, pName);
        if (*piFound >= 0) {
            return true;
        }
    }
    const char *szText = lookupText(pName, nWidth, pBuffer);
    if (szText == nullptr) {
        return false;
    }
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

int32_t findNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount, int32_t nWidth, int32_t bOneBased, int32_t *pIndices) {
    TextBuffer buffer;
    NameLookupIndex *pIndex = currentIndex(mgr);
    for (int32_t k = 0; k < nCount; ++k) {
        int32_t iFound = -1;
        if (!findName(mgr, pIndex, ppNames[k], nWidth, &buffer, &iFound)) {
            if (pIndices != nullptr) {
                std::fill_n(pIndices, nCount, -1);
            }
            return 1;
        }
        if (pIndices != nullptr) {
            pIndices[k] = inBase(iFound, bOneBased);
        }
    }
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_FindNames(NamesManager *mgr, const char *const *ppNames, int32_t nCount, int32_t nWidth, int32_t bOneBased,
                               int32_t *pIndices) {
    ScopedLock lock(mgr);
    return findNames(mgr, ppNames, nCount, nWidth, bOneBased, pIndices);
}

/* The usual cases, a hit and a miss in a current index, take few instructions, so that the cache misses of neighbouring calls overlap. */
int32_t NamesManager_FindName(NamesManager *mgr, const char *name, int32_t bOneBased) {
    ScopedLock lock(mgr);
    const bool bIndexed = isIndexCurrent(mgr);
    int32_t iFound = bIndexed ? HostHashMap_Find(mgr->pLookupIndex, name) : -1;
    if (iFound < 0 && (!bIndexed || endsInBlank(name))) {
        iFound = findOne(mgr, name);
    }
    return inBase(iFound, bOneBased);
}

int32_t NamesManager_FindNameInField(NamesManager *mgr, const char *name, int32_t nWidth, int32_t bOneBased) {
    int32_t iFound = -1;
    static_cast<void>(NamesManager_FindNames(mgr, &name, 1, nWidth, bOneBased, &iFound));
    return iFound;
}

int32_t NamesManager_FindNameList(NamesManager *mgr, const char *const *ppNames, int32_t nCount, int32_t bOneBased, int32_t *pIndices) {
    return NamesManager_FindNames(mgr, ppNames, nCount, -1, bOneBased, pIndices);
}
