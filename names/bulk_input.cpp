// Storing names given back to back in one buffer, or as a field that need not end in a NUL.
#include <algorithm>

#include "names/storage/text_walk.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

// Work arrays for one batch of names.
struct BatchArrays {
    const char **ppNames;
    int32_t *pLengths;
    int32_t nRoom;
};

void freeArrays(BatchArrays *pArrays) {
    HostMem_Free(pArrays->pLengths, kSourceTag, __LINE__);
    HostMem_Free(pArrays->ppNames, kSourceTag, __LINE__);
}

// False without memory for both: there is neither then.
bool allocArrays(BatchArrays *pArrays, int32_t nRoom) {
    const uint64_t nNames = static_cast<uint64_t>(nRoom);
    pArrays->nRoom = nRoom;
    pArrays->pLengths = nullptr;
    pArrays->ppNames =
        static_cast<const char **>(HostMem_Alloc(nNames * sizeof(char *), kSourceTag, __LINE__));
    if (pArrays->ppNames != nullptr) {
        pArrays->pLengths =
            static_cast<int32_t *>(HostMem_Alloc(nNames * sizeof(int32_t), kSourceTag, __LINE__));
    }
    if (pArrays->pLengths == nullptr) {
        freeArrays(pArrays);
        return false;
    }
    return true;
}

// Notes the lengths of names whose starts have been found. False if one ends in a blank.
bool noteLengths(const char *pText, const int32_t *aStarts, int32_t nNames, int32_t *pLengths) {
    int32_t nBlanks = 0;
    for (int32_t k = 0; k < nNames; ++k) {
        const int32_t iNul = aStarts[k + 1] - 1;
        pLengths[k] = iNul - aStarts[k];
        nBlanks += pText[iNul - (pLengths[k] > 0 ? 1 : 0)] == ' ' ? 1 : 0;
    }
    return nBlanks == 0;
}

// Notes the lengths of the nNames names at pText, provided that they can be taken as they lie: none
// ends in a blank or is too long. Each of the names yet to come has at least its NUL, so that as
// many bytes can be looked at at once; a name found in as many as it may have is not too long.
bool measureUntrimmed(const char *pText, int32_t nNames, int32_t *pLengths) {
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    while (nNames > 0) {
        const char *pEnd = pText + std::min(nNames, kMaxNameBytes);
        int32_t nFound =
            findNameStarts({pText, pEnd, pEnd}, std::min(nNames, kMaxSegmentNames), aStarts);
        if (nFound == 0) {
            const size_t nLength = std::strlen(pText);
            if (nLength > kMaxNameBytes) { return false; }
            nFound = 1;
            aStarts[1] = static_cast<int32_t>(nLength) + 1;
        }
        if (!noteLengths(pText, aStarts, nFound, pLengths)) { return false; }
        pText += aStarts[nFound];
        pLengths += nFound;
        nNames -= nFound;
    }
    return true;
}

// Notes start and trimmed length of the nNames names at *ppText and steps over them. Status 2 if
// one is too long.
int32_t measureNames(const char **ppText, int32_t nNames, const BatchArrays &arrays) {
    const char *pText = *ppText;
    for (int32_t k = 0; k < nNames; ++k) {
        const size_t nLength = std::strlen(pText);
        const uint64_t nTrimmed = trimmedLength(pText, nLength);
        if (nTrimmed > kMaxNameBytes) { return 2; }
        arrays.ppNames[k] = pText;
        arrays.pLengths[k] = static_cast<int32_t>(nTrimmed);
        pText += nLength + 1;
    }
    *ppText = pText;
    return 0;
}

int32_t storeInBatches(NamesManager *mgr, IndexRange range, const char *pText,
                       const BatchArrays &arrays) {
    int32_t nStatus = 0;
    int32_t nDone = 0;
    do {
        const int32_t nBatch = std::min(countOf(range) - nDone, arrays.nRoom);
        const int32_t iFirst = range.first + nDone;
        GivenNames given = {nullptr, pText, arrays.pLengths};
        if (measureUntrimmed(pText, nBatch, arrays.pLengths)) {
            pText += bytesFor(arrays.pLengths, nBatch);
        } else {
            given = {arrays.ppNames, nullptr, arrays.pLengths};
            nStatus = measureNames(&pText, nBatch, arrays);
        }
        if (nStatus == 0) { nStatus = storeRange(mgr, {iFirst, iFirst + nBatch - 1}, given); }
        nDone += nBatch;
    } while (nStatus == 0 && nDone < countOf(range));
    return nStatus;
}

// The caller's index base is kept: it decides which single stores release empty blocks.
int32_t storeSingly(NamesManager *mgr, int32_t first, int32_t nNames, int32_t bOneBased,
                    const char *pText) {
    for (int32_t k = 0; k < nNames; ++k) {
        const int32_t nStatus = addNames(mgr, first + k, first + k, bOneBased, &pText);
        if (nStatus != 0) { return nStatus; }
        pText += std::strlen(pText) + 1;
    }
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_AddNamesFromBuffer(NamesManager *mgr, int32_t first, int32_t last,
                                        int32_t bOneBased, const char *buffer) {
    ScopedLock lock(mgr);
    IndexRange range;
    if (!toIndexRange(first, last, bOneBased, &range)) { return 1; }
    BatchArrays arrays;
    if (first == last || !allocArrays(&arrays, std::min(countOf(range), kMaxBatchNames))) {
        return storeSingly(mgr, first, countOf(range), bOneBased, buffer);
    }
    const int32_t nStatus = storeInBatches(mgr, range, buffer, arrays);
    freeArrays(&arrays);
    return nStatus;
}

int32_t NamesManager_AddNameWithMaxLength(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                          const char *name, int32_t nMaxLength) {
    ScopedLock lock(mgr);
    const size_t nGiven = strnlen(name, static_cast<size_t>(std::max(nMaxLength, 0)));
    const int32_t nLength = static_cast<int32_t>(trimmedLength(name, nGiven));
    return NamesManager_StoreNames(mgr, index, index, bOneBased, &name, &nLength);
}
