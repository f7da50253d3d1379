// Storing names given back to back in one buffer, part by part, or as a field that need not end in
// a NUL.
#include <algorithm>

#include "names/storage/text_walk.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

// Work arrays for the names of one part.
struct PartArrays {
    const char **ppNames;
    int32_t *pLengths;
    int32_t nRoom;
};

void freeArrays(PartArrays *pArrays) {
    freeMemory(pArrays->pLengths);
    freeMemory(pArrays->ppNames);
}

// False without memory for both: there is neither then.
bool allocArrays(PartArrays *pArrays, int32_t nRoom) {
    const uint64_t nBytes = static_cast<uint64_t>(nRoom) * sizeof(char *);
    pArrays->ppNames = static_cast<const char **>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    pArrays->pLengths = pArrays->ppNames != nullptr ? allocNumbers(nRoom, __LINE__) : nullptr;
    pArrays->nRoom = nRoom;
    if (pArrays->pLengths == nullptr) { freeArrays(pArrays); }
    return pArrays->pLengths != nullptr;
}

// Sets the lengths of names that start at aStarts, the end of the last one included. False if one
// ends in a blank.
bool noteLengths(const char *pText, const int32_t *aStarts, int32_t nNames, int32_t *pLengths) {
    int32_t nBlanks = 0;
    for (int32_t k = 0; k < nNames; ++k) {
        const int32_t iNul = aStarts[k + 1] - 1;
        pLengths[k] = iNul - aStarts[k];
        nBlanks += pText[iNul - (pLengths[k] > 0 ? 1 : 0)] == ' ' ? 1 : 0;
    }
    return nBlanks == 0;
}

// Sets the lengths of the nNames names at pText. False if they cannot be taken as they lie: one
// ends in a blank or is too long. Each name yet to come has at least its NUL, so that many bytes
// can be read at once; a name that ends in as many as a name may have is not too long.
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

// Sets starts and trimmed lengths of the nNames names at *ppText and steps over them. False if one
// is too long.
bool measureNames(const char **ppText, int32_t nNames, const PartArrays &arrays) {
    const char *pText = *ppText;
    for (int32_t k = 0; k < nNames; ++k) {
        const size_t nLength = std::strlen(pText);
        const uint64_t nTrimmed = trimmedLength(pText, nLength);
        if (nTrimmed > kMaxNameBytes) { return false; }
        arrays.ppNames[k] = pText;
        arrays.pLengths[k] = static_cast<int32_t>(nTrimmed);
        pText += nLength + 1;
    }
    *ppText = pText;
    return true;
}

// A range without names is stored once all the same: it may have a gap before it.
int32_t addInParts(NamesManager *mgr, IndexRange range, const char *pText,
                   const PartArrays &arrays) {
    do {
        const int32_t nNames = std::min(countOf(range), arrays.nRoom);
        GivenNames given = {nullptr, pText, arrays.pLengths};
        if (measureUntrimmed(pText, nNames, arrays.pLengths)) {
            pText += bytesFor(arrays.pLengths, nNames);
        } else {
            given = {arrays.ppNames, nullptr, arrays.pLengths};
            if (!measureNames(&pText, nNames, arrays)) { return 2; }
        }
        if (!storeNames(mgr, {range.first, range.first + nNames - 1}, given)) { return 1; }
        range.first += nNames;
    } while (countOf(range) > 0);
    return 0;
}

// Without memory for a part. The caller's index base is kept: it decides where single names release
// empty blocks.
int32_t addOneByOne(NamesManager *mgr, int32_t first, int32_t nNames, int32_t bOneBased,
                    const char *pText) {
    for (int32_t k = 0; k < nNames; ++k) {
        const int32_t nStatus = addName(mgr, first + k, bOneBased, pText);
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
    PartArrays arrays;
    if (first == last || !allocArrays(&arrays, std::min(countOf(range), kMaxBatchNames))) {
        return addOneByOne(mgr, first, countOf(range), bOneBased, buffer);
    }
    const int32_t nStatus = addInParts(mgr, range, buffer, arrays);
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
