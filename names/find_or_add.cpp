// Finding names, and adding those that are not held, as if one after the other.
//
// While there is a current index, lookups change nothing. Names are then looked up in chunks, and
// those of a chunk that are not held are appended together. Everything else goes name by name.
#include <algorithm>

#include "names/lookup.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

// Names of a chunk that are not held, each once.
struct NewNames {
    int32_t nNames;
    uint64_t aEnds[kChunkNames];  // their last bytes, at most 8
    int32_t aLengths[kChunkNames];
    const char *apNames[kChunkNames];
    int32_t aFirsts[kChunkNames];  // where in the chunk each comes first
};

uint64_t endOf(const char *pName, int32_t nLength) {
    uint64_t nEnd = 0;
    const int32_t nBytes = std::min(nLength, static_cast<int32_t>(sizeof nEnd));
    std::memcpy(&nEnd, pName + nLength - nBytes, static_cast<size_t>(nBytes));
    return nEnd;
}

// Puts a name, the k-th of the chunk, among the new ones unless it is there. Returns its number.
int32_t noteNew(NewNames *pNew, const char *pName, int32_t k) {
    int32_t nLength = 0;
    static_cast<void>(measureTrimmed(pName, &nLength));  // none that is too long gets here
    const uint64_t nEnd = endOf(pName, nLength);
    for (int32_t n = 0; n < pNew->nNames; ++n) {
        if (pNew->aEnds[n] == nEnd && pNew->aLengths[n] == nLength &&
            std::memcmp(pNew->apNames[n], pName, static_cast<size_t>(nLength)) == 0) {
            return n;
        }
    }
    pNew->aEnds[pNew->nNames] = nEnd;
    pNew->aLengths[pNew->nNames] = nLength;
    pNew->apNames[pNew->nNames] = pName;
    pNew->aFirsts[pNew->nNames] = k;
    return pNew->nNames++;
}

// Appends the new names, up to each after which empty blocks are released: that depends on its
// index in the caller's base. Returns how many were appended before memory ran out, or all.
int32_t appendNew(NamesManager *mgr, const NewNames &fresh, int32_t bOneBased) {
    int32_t nDone = 0;
    while (nDone < fresh.nNames && mgr->nNames < INT32_MAX) {
        const int64_t index = int64_t{mgr->nNames} + (bOneBased != 0 ? 1 : 0);
        const int64_t nToRelease = (kReleaseInterval - index % kReleaseInterval) % kReleaseInterval;
        const int32_t nNames =
            static_cast<int32_t>(std::min<int64_t>(fresh.nNames - nDone, nToRelease + 1));
        const GivenNames given = {fresh.apNames + nDone, nullptr, fresh.aLengths + nDone};
        dropCursor(mgr);
        const int32_t nAppended = appendInTurn(mgr, given, nNames);
        nDone += nAppended;
        if (nAppended < nNames) { break; }
        if (nNames == nToRelease + 1) { releaseEmptyBlocks(mgr); }
    }
    return nDone;
}

// Returns 2 if a name that is not held is too long to be added, 1 if there is no memory to find
// out, else 0.
int32_t checkLengths(NameLookup *pLookup, int32_t nCount) {
    for (int32_t k = 0; k < nCount; ++k) {
        int32_t nLength = 0;
        int32_t iFound = -1;
        if (measureTrimmed(pLookup->ppNames[k], &nLength)) { continue; }
        pLookup->pIndex = currentIndex(pLookup->mgr);
        if (!findTogether(pLookup, k, 1, &iFound)) { return 1; }
        if (iFound < 0) { return 2; }
    }
    return 0;
}

// Adds those of the names that have not been found and sets their 0-based indices. Returns how many
// names have one then: all, or those before the first for which there is no memory.
int32_t addMissing(NameLookup *pLookup, int32_t first, int32_t nNames, int32_t bOneBased,
                   int32_t *pFound) {
    NewNames fresh;
    fresh.nNames = 0;
    const int32_t iFirstNew = pLookup->mgr->nNames;
    for (int32_t k = 0; k < nNames; ++k) {
        if (pFound[k] < 0) {
            pFound[k] = iFirstNew + noteNew(&fresh, pLookup->ppNames[first + k], k);
        }
    }
    const int32_t nAppended = appendNew(pLookup->mgr, fresh, bOneBased);
    return nAppended == fresh.nNames ? nNames : fresh.aFirsts[nAppended];
}

// How many of the names can be looked up before the first of them is added.
int32_t chunkOf(const NamesManager *mgr, int32_t nNames) {
    const bool bTogether = isIndexCurrent(mgr) && mgr->nNames <= INT32_MAX - kChunkNames;
    return bTogether ? std::min(nNames, kChunkNames) : 1;
}

// Returns how many names have got an index: all, or those before the first for which there is no
// memory.
int32_t findOrAdd(NameLookup *pLookup, int32_t nCount, int32_t bOneBased, int32_t *pIndices) {
    int32_t nDone = 0;
    int32_t nSingly = 0;  // names to go one by one, for lack of memory to look them up together
    bool bMemory = true;
    while (bMemory && nDone < nCount) {
        int32_t aFound[kChunkNames];
        pLookup->pIndex = currentIndex(pLookup->mgr);
        const int32_t nNames = nSingly > 0 ? 1 : chunkOf(pLookup->mgr, nCount - nDone);
        if (!findTogether(pLookup, nDone, nNames, aFound)) {
            nSingly = nNames;
            bMemory = nNames > 1;
            continue;
        }
        const int32_t nHere = addMissing(pLookup, nDone, nNames, bOneBased, aFound);
        for (int32_t k = 0; pIndices != nullptr && k < nHere; ++k) {
            pIndices[nDone + k] = aFound[k] + (bOneBased != 0 ? 1 : 0);
        }
        nDone += nHere;
        nSingly = std::max(nSingly - 1, 0);
        bMemory = nHere == nNames;
    }
    return nDone;
}

// A single name that can be looked up as it is. Returns a status.
int32_t findOrAddOne(NamesManager *mgr, const char *szName, int32_t bOneBased, int32_t *pIndex) {
    const int32_t nBase = bOneBased != 0 ? 1 : 0;
    int32_t index = HostHashMap_Find(mgr->pLookupIndex, szName);
    int32_t nStatus = 0;
    if (index < 0) {
        index = mgr->nNames;
        nStatus = index <= INT32_MAX - nBase
                      ? NamesManager_AddName(mgr, index + nBase, bOneBased, szName)
                      : 1;
    }
    if (pIndex != nullptr) { *pIndex = nStatus == 0 ? index + nBase : -1; }
    return nStatus;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_FindOrAddNames(NamesManager *mgr, const char *const *names, int32_t nCount,
                                    int32_t bOneBased, int32_t *pIndices) {
    ScopedLock lock(mgr);
    if (nCount == 1 && isIndexCurrent(mgr) && !endsInBlank(names[0])) {
        return findOrAddOne(mgr, names[0], bOneBased, pIndices);
    }
    NameLookup lookup = {mgr, nullptr, names, nullptr, NamesManagerWidth_Terminated, {}};
    int32_t nStatus = checkLengths(&lookup, nCount);
    const int32_t nDone = nStatus == 0 ? findOrAdd(&lookup, nCount, bOneBased, pIndices) : 0;
    if (nDone < nCount) {
        if (pIndices != nullptr) { std::fill(pIndices + nDone, pIndices + nCount, -1); }
        nStatus = std::max(nStatus, 1);
    }
    return nStatus;
}
