// Locating names and reading them in ascending order.
#include "names/storage/reading.hpp"

#include <algorithm>

#include "names/storage/text_walk.hpp"

namespace names {

NameLocation searchName(const NamesManager *mgr, int32_t index) {
    const int32_t iSegment = findSegment(mgr, index);
    const NameSegment &segment = mgr->pSegments[iSegment];
    const char *pText = textAt(mgr, segment.iBlock, segment.nOffset);
    const char *pLimit = textLimit(mgr, segment.iBlock);
    const int32_t nBefore = bytesOfNames(pText, pLimit, index - segment.iFirst);
    return {iSegment, segment.nOffset + nBefore, true};
}

NameLocation locateName(const NamesManager *mgr, int32_t index) {
    if (index == 0) { return {0, mgr->pSegments[0].nOffset, false}; }
    if (index == mgr->iCursorName) { return {mgr->iCursorSegment, mgr->nCursorOffset, false}; }
    return searchName(mgr, index);
}

NameReader startReading(const NamesManager *mgr, IndexRange range) {
    NameReader reader = {mgr, range.first, range.last, {0, 0, false}};
    if (mgr->pSegments != nullptr && range.first <= range.last) {
        reader.location = locateName(mgr, range.first);
    }
    return reader;
}

// Steps on to the segment of the next name and tells how many names of the range lie in it, from
// the place on.
int32_t enterSegment(NameReader *pReader) {
    const NamesManager *mgr = pReader->mgr;
    if (pReader->iNext > mgr->pSegments[pReader->location.iSegment].iLast) {
        ++pReader->location.iSegment;
        pReader->location.nOffset = mgr->pSegments[pReader->location.iSegment].nOffset;
    }
    return std::min(mgr->pSegments[pReader->location.iSegment].iLast, pReader->iLast) -
           pReader->iNext + 1;
}

void leaveNames(NameReader *pReader, int32_t nNames, int32_t nBytes) {
    pReader->iNext += nNames;
    pReader->location.nOffset += nBytes;
}

namespace {

int32_t readInSegment(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    const int32_t nNames = enterSegment(pReader);
    const int32_t iBlock = pReader->mgr->pSegments[pReader->location.iSegment].iBlock;
    const char *pText = textAt(pReader->mgr, iBlock, pReader->location.nOffset);
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    findNameStarts(pText, textLimit(pReader->mgr, iBlock), nNames, aStarts);
    for (int32_t k = 0; ppNames != nullptr && k < nNames; ++k) { ppNames[k] = pText + aStarts[k]; }
    for (int32_t k = 0; pLengths != nullptr && k < nNames; ++k) {
        pLengths[k] = aStarts[k + 1] - aStarts[k] - 1;
    }
    leaveNames(pReader, nNames, aStarts[nNames]);
    return nNames;
}

int32_t readAtPositions(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    const NamePosition *pPositions = pReader->mgr->pPositions + pReader->iNext;
    const int32_t nNames = std::min(kMaxSegmentNames, pReader->iLast - pReader->iNext + 1);
    for (int32_t k = 0; k < nNames; ++k) {
        const char *pText = textAt(pReader->mgr, pPositions[k].iBlock, pPositions[k].nOffset);
        if (ppNames != nullptr) { ppNames[k] = pText; }
        if (pLengths != nullptr) { pLengths[k] = static_cast<int32_t>(std::strlen(pText)); }
    }
    pReader->iNext += nNames;
    return nNames;
}

}  // namespace

int32_t readNames(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    if (pReader->iNext > pReader->iLast) { return 0; }
    return pReader->mgr->pSegments != nullptr ? readInSegment(pReader, ppNames, pLengths)
                                              : readAtPositions(pReader, ppNames, pLengths);
}

void readLengths(const NamesManager *mgr, IndexRange range, int32_t *lengths) {
    NameReader reader = startReading(mgr, range);
    for (int32_t n = readNames(&reader, nullptr, lengths); n > 0;
         n = readNames(&reader, nullptr, lengths)) {
        lengths += n;
    }
}

}  // namespace names
