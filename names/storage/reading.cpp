// Locating names and reading them in ascending order.
#include "names/storage/reading.hpp"

namespace names {

NameLocation searchName(const NamesManager *mgr, int32_t index) {
    const int32_t iSegment = findSegment(mgr, index);
    const NameSegment &segment = mgr->pSegments[iSegment];
    return {iSegment, segment.nOffset + bytesBefore(mgr, segment, index), true};
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

namespace {

int32_t readInSegment(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    const int32_t nNames = enterSegment(pReader);
    const TextSpan text = restOfSegment(*pReader);
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    findNameStarts(text, nNames, aStarts);
    for (int32_t k = 0; ppNames != nullptr && k < nNames; ++k) {
        ppNames[k] = text.pText + aStarts[k];
    }
    for (int32_t k = 0; pLengths != nullptr && k < nNames; ++k) {
        pLengths[k] = aStarts[k + 1] - aStarts[k] - 1;
    }
    stepOver(pReader, nNames, aStarts[nNames]);
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
    while (const int32_t nNames = readNames(&reader, nullptr, lengths)) { lengths += nNames; }
}

}  // namespace names
