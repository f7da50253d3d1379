// Repeated names: the check of names before they are stored, and the search among those held.
#include <algorithm>
#include <cctype>

#include "host/host_pool.h"
#include "names/generating.hpp"
#include "names/lookup.hpp"
#include "names/storage/key_lists.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/reading.hpp"

namespace names {

namespace {

constexpr int32_t kCheckedChunk = 128;

// How many are looked up at once at first when a repeated name is sought: few, as it may be near.
constexpr int32_t kFirstChunk = 16;

// The names of a range as they were given; a name may be NULL.
struct CheckedNames {
    const char *const *ppNames;
    const int32_t *pLengths;
    int32_t nNames;
};

// The names as they are compared, and the text of those that had to be rewritten.
struct PreparedNames {
    const char **ppNames;
    char *pTexts;
};

struct Clash {
    int32_t iHeld;   // 0-based index of the name that was there first; -1: no clash
    int32_t iGiven;  // 0-based index that the name repeating it is meant for
    const char *szName;
};

bool isWhiteSpace(char c) {
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

// A name ends at its first NUL; what follows that does not count.
int32_t lengthToNul(const char *pName, int32_t nLength) {
    return static_cast<int32_t>(strnlen(pName, static_cast<size_t>(nLength)));
}

bool isUsableInPlace(const char *pName, int32_t nGiven) {
    const int32_t nLength = lengthToNul(pName, nGiven);
    return (nLength == 0 || !isWhiteSpace(pName[nLength - 1])) && pName[nLength] == 0;
}

bool allUsableInPlace(const CheckedNames &given) {
    for (int32_t k = 0; k < given.nNames; ++k) {
        if (given.ppNames[k] != nullptr && !isUsableInPlace(given.ppNames[k], given.pLengths[k])) {
            return false;
        }
    }
    return true;
}

void *poolAlloc(uint64_t nBytes) {
    return HostPool_Alloc(HostPool_Get(), nBytes, 0, 0);
}

void poolFree(void *pMemory) {
    HostPool_Free(HostPool_Get(), pMemory, 0, 0);
}

// Room for every given name with a NUL.
char *allocPrepared(const CheckedNames &given) {
    uint64_t nBytes = 0;
    for (int32_t k = 0; k < given.nNames; ++k) {
        nBytes += given.ppNames[k] != nullptr ? static_cast<uint64_t>(given.pLengths[k]) + 1 : 0;
    }
    return static_cast<char *>(poolAlloc(nBytes));
}

// Copies a name's text without trailing white space to *ppTexts, which it moves on, and returns the
// copy.
const char *copyPrepared(const char *pName, int32_t nGiven, char **ppTexts) {
    char *pText = *ppTexts;
    int32_t nLength = lengthToNul(pName, nGiven);
    while (nLength > 0 && isWhiteSpace(pName[nLength - 1])) { --nLength; }
    std::memcpy(pText, pName, static_cast<size_t>(nLength));
    pText[nLength] = 0;
    *ppTexts = pText + nLength + 1;
    return pText;
}

// Makes room for texts only if a name has to be rewritten. False without memory; the caller frees
// what there is in any case.
bool prepareNames(const CheckedNames &given, PreparedNames *pPrepared) {
    pPrepared->pTexts = nullptr;
    pPrepared->ppNames =
        static_cast<const char **>(poolAlloc(static_cast<uint64_t>(given.nNames) * sizeof(char *)));
    if (pPrepared->ppNames == nullptr) { return false; }
    if (allUsableInPlace(given)) {
        std::copy_n(given.ppNames, given.nNames, pPrepared->ppNames);
        return true;
    }
    pPrepared->pTexts = allocPrepared(given);
    if (pPrepared->pTexts == nullptr) { return false; }
    char *pTexts = pPrepared->pTexts;
    for (int32_t k = 0; k < given.nNames; ++k) {
        const char *pName = given.ppNames[k];
        const bool bCopy = pName != nullptr && !isUsableInPlace(pName, given.pLengths[k]);
        pPrepared->ppNames[k] = bCopy ? copyPrepared(pName, given.pLengths[k], &pTexts) : pName;
    }
    return true;
}

// Looks for two equal names among the given ones, the first of which is meant for index iFirst. 1
// without memory, unless it ran out after a clash.
int32_t insertUntilClash(HostHashMap *pMap, const char *const *ppNames, int32_t nNames,
                         int32_t iFirst, Clash *pClash) {
    int32_t aEarlier[kCheckedChunk];
    for (int32_t first = 0; first < nNames;) {
        const int32_t nChunk = std::min(nNames - first, kCheckedChunk);
        const int32_t nDone = insertKeys(pMap, ppNames + first, nChunk, iFirst + first, aEarlier);
        const int32_t k = static_cast<int32_t>(
            std::find_if(aEarlier, aEarlier + nDone, [](int32_t i) { return i >= 0; }) - aEarlier);
        if (k < nDone) {
            *pClash = {aEarlier[k], iFirst + first + k, ppNames[first + k]};
            return 0;
        }
        if (nDone < nChunk) { return 1; }
        first += nChunk;
    }
    return 0;
}

int32_t clashAmongGiven(const char *const *ppNames, int32_t nNames, int32_t iFirst, Clash *pClash) {
    HostHashMap *pMap = HostHashMap_Create(&HostHashMap_StringKeys, nNames);
    if (pMap == nullptr) { return 1; }
    const int32_t nStatus = insertUntilClash(pMap, ppNames, nNames, iFirst, pClash);
    HostHashMap_Release(pMap);
    return nStatus;
}

// Looks for the given names among those that the manager holds outside the range.
void clashWithHeld(NamesManager *mgr, const char *const *ppNames, IndexRange range, Clash *pClash) {
    if (range.first == 0 && range.last >= mgr->nNames - 1) { return; }
    int32_t aFound[kCheckedChunk];
    for (int32_t first = 0; first < countOf(range);) {
        const int32_t nFound = findTexts(mgr, ppNames + first,
                                         std::min(countOf(range) - first, kCheckedChunk), aFound);
        for (int32_t k = 0; k < nFound; ++k) {
            if (aFound[k] >= 0 && (aFound[k] < range.first || aFound[k] > range.last)) {
                *pClash = {aFound[k], range.first + first + k, ppNames[first + k]};
                return;
            }
        }
        first += nFound;
    }
}

int32_t findClash(NamesManager *mgr, IndexRange range, const char *const *ppNames,
                  const int32_t *pLengths, PreparedNames *pPrepared, Clash *pClash) {
    if (NamesManager_GenerateNamesUpTo(mgr, range.first - 1) != 0) { return 1; }
    const int32_t nNames = countOf(range);
    if (nNames == 0) { return 0; }
    if (!prepareNames({ppNames, pLengths, nNames}, pPrepared) ||
        clashAmongGiven(pPrepared->ppNames, nNames, range.first, pClash) != 0) {
        return 1;
    }
    if (pClash->iHeld < 0) { clashWithHeld(mgr, pPrepared->ppNames, range, pClash); }
    return 0;
}

// Copies what of a text fits, and a NUL.
void copyCut(char *pBuffer, int32_t nBufferSize, const char *szText) {
    if (nBufferSize >= 1) {
        const size_t nBytes = strnlen(szText, static_cast<size_t>(nBufferSize) - 1);
        std::memcpy(pBuffer, szText, nBytes);
        pBuffer[nBytes] = 0;
    }
}

// Looks for the first of the names from index first on that is held at a lower index, too. Where
// the map does not know, more and more names are looked up at once, so that the way to a near one
// is short.
int32_t findRepeated(NamesManager *mgr, int32_t first, int32_t *piEarlier) {
    NameLookupIndex *pIndex = currentIndex(mgr);
    if (pIndex == nullptr) { return -1; }
    int32_t iRepeated = -1;
    if (findNextRepeated(pIndex, first, &iRepeated, piEarlier)) { return iRepeated; }
    const char *apNames[kCheckedChunk];
    int32_t aFound[kCheckedChunk];
    NameReader reader = startReading(mgr, {first, mgr->nNames - 1});
    for (int32_t nMost = kFirstChunk; reader.iNext < mgr->nNames;
         nMost = std::min(2 * nMost, kCheckedChunk)) {
        const int32_t iFirst = reader.iNext;
        reader.iLast = iFirst + std::min(nMost, mgr->nNames - iFirst) - 1;
        const int32_t nNames = readNames(&reader, apNames, nullptr);
        findKeys(pIndex, apNames, nNames, aFound);
        for (int32_t k = 0; k < nNames; ++k) {
            if (aFound[k] >= 0 && aFound[k] < iFirst + k) {
                *piEarlier = aFound[k];
                return iFirst + k;
            }
        }
    }
    return -1;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_CheckDuplicateNames(NamesManager *mgr, int32_t first, int32_t last,
                                         int32_t bOneBased, const char *const *ppNames,
                                         const int32_t *pnLengths, int32_t *pbDuplicate,
                                         int32_t *piFirstIndex, int32_t *piSecondIndex,
                                         char *szDuplicateName, int32_t nDuplicateNameSize) {
    ScopedLock lock(mgr);
    *pbDuplicate = 0;
    IndexRange range;
    if (!toIndexRange(first, last, bOneBased, &range)) { return 1; }
    PreparedNames prepared = {nullptr, nullptr};
    Clash clash = {-1, -1, nullptr};
    const int32_t nStatus = findClash(mgr, range, ppNames, pnLengths, &prepared, &clash);
    if (nStatus == 0 && clash.iHeld >= 0) {
        const int32_t nBase = bOneBased != 0 ? 1 : 0;
        *pbDuplicate = 1;
        *piFirstIndex = clash.iHeld + nBase;
        *piSecondIndex = clash.iGiven + nBase;
        copyCut(szDuplicateName, nDuplicateNameSize, clash.szName);
    }
    poolFree(prepared.pTexts);
    poolFree(prepared.ppNames);
    return nStatus;
}

int32_t NamesManager_CheckDuplicateNamesInBuffer(NamesManager *mgr, int32_t first, int32_t last,
                                                 int32_t bOneBased, const char *buffer,
                                                 int32_t *pbDuplicate, int32_t *piFirstIndex,
                                                 int32_t *piSecondIndex, char *szDuplicateName,
                                                 int32_t nDuplicateNameSize) {
    IndexRange range;
    if (!toIndexRange(first, last, bOneBased, &range)) { return 1; }
    const uint64_t nNames = static_cast<uint64_t>(countOf(range));
    int32_t *pLengths =
        static_cast<int32_t *>(HostMem_Alloc(nNames * sizeof(int32_t), kSourceTag, __LINE__));
    const char **ppNames =
        static_cast<const char **>(HostMem_Alloc(nNames * sizeof(char *), kSourceTag, __LINE__));
    int32_t nStatus = 1;
    if (pLengths != nullptr && ppNames != nullptr) {
        for (int32_t k = 0; k < countOf(range); ++k) {
            const size_t nLength = std::strlen(buffer);
            const bool bTakesPart = nLength <= kMaxNameBytes;
            ppNames[k] = bTakesPart ? buffer : nullptr;
            pLengths[k] = bTakesPart ? static_cast<int32_t>(nLength) : 0;
            buffer += nLength + 1;
        }
        nStatus = NamesManager_CheckDuplicateNames(mgr, first, last, bOneBased, ppNames, pLengths,
                                                   pbDuplicate, piFirstIndex, piSecondIndex,
                                                   szDuplicateName, nDuplicateNameSize);
    }
    freeMemory(ppNames);
    freeMemory(pLengths);
    return nStatus;
}

int32_t NamesManager_FindRepeatedName(NamesManager *mgr, int32_t first, int32_t bOneBased,
                                      int32_t *piEarlier) {
    ScopedLock lock(mgr);
    const int32_t nBase = bOneBased != 0 ? 1 : 0;
    if (first < nBase || first - nBase >= mgr->nNames) { return -1; }
    int32_t iEarlier = -1;
    const int32_t iRepeated = findRepeated(mgr, first - nBase, &iEarlier);
    if (iRepeated < 0) { return -1; }
    *piEarlier = iEarlier + nBase;
    return iRepeated + nBase;
}
