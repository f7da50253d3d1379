// Segments and their table.
#include "names/storage/segments.hpp"

#include <algorithm>

namespace names {

bool resizeSegmentTable(NamesManager *mgr, int64_t nNewAlloc) {
    void *pNew =
        resizeTable(mgr->pSegments, mgr->nSegmentsAlloc, nNewAlloc, sizeof(NameSegment), __LINE__);
    if (pNew == nullptr) { return false; }
    mgr->pSegments = static_cast<NameSegment *>(pNew);
    mgr->nSegmentsAlloc = static_cast<int32_t>(nNewAlloc);
    return true;
}

bool growSegmentTable(NamesManager *mgr) {
    return resizeSegmentTable(mgr, int64_t{mgr->nSegmentsAlloc} + kTableStep);
}

void freeSegmentTable(NamesManager *mgr) {
    freeMemory(mgr->pSegments);
    mgr->pSegments = nullptr;
    mgr->nSegments = 0;
    mgr->nSegmentsAlloc = 0;
}

int32_t findSegment(const NamesManager *mgr, int32_t index) {
    int32_t iLow = 0;
    int32_t iHigh = mgr->nSegments - 1;
    while (true) {
        const int32_t iMiddle = iLow + (iHigh - iLow) / 2;
        if (mgr->pSegments[iMiddle].iFirst > index) {
            iHigh = iMiddle - 1;
        } else if (mgr->pSegments[iMiddle].iLast >= index) {
            return iMiddle;
        } else {
            iLow = iMiddle + 1;
        }
    }
}

void findStartsIn(const NamesManager *mgr, const NameSegment &segment, int32_t *aStarts) {
    findNameStarts(textOf(mgr, segment), namesIn(segment), aStarts);
}

int32_t bytesBefore(const NamesManager *mgr, const NameSegment &segment, int32_t index) {
    return bytesOfNames(textOf(mgr, segment), index - segment.iFirst);
}

void spliceSegments(NamesManager *mgr, int32_t iBegin, int32_t iEnd, const NameSegment *pRecords,
                    int32_t nRecords) {
    const int32_t nAfter = mgr->nSegments - iEnd;
    if (iBegin + nRecords != iEnd && nAfter > 0) {
        std::memmove(mgr->pSegments + iBegin + nRecords, mgr->pSegments + iEnd,
                     static_cast<size_t>(nAfter) * sizeof(NameSegment));
    }
    std::copy_n(pRecords, nRecords, mgr->pSegments + iBegin);
    mgr->nSegments = iBegin + nRecords + nAfter;
}

Cut cutSegment(const NamesManager *mgr, int32_t iSegment, IndexRange range, int32_t nFront) {
    const NameSegment whole = mgr->pSegments[iSegment];
    int32_t nEnd = whole.nBytes;
    if (range.last < whole.iLast) {
        TextSpan text = textOf(mgr, whole);
        text.pText += nFront;
        nEnd = nFront + bytesOfNames(text, countOf(range));
    }
    return {iSegment, pieceOf(whole, {whole.iFirst, range.first - 1}, 0, nFront),
            pieceOf(whole, range, nFront, nEnd),
            pieceOf(whole, {range.last + 1, whole.iLast}, nEnd, whole.nBytes)};
}

namespace {

bool canMerge(const NameSegment &a, const NameSegment &b) {
    return a.iBlock == b.iBlock && a.nOffset + a.nBytes == b.nOffset &&
           b.iLast - a.iFirst + 1 <= kMaxMergedNames;
}

// Adds a record to a list, or merges it with the last one where that is wanted and can be. A piece
// without names adds nothing.
void addRecord(NameSegment *pRecords, int32_t *pnRecords, const NameSegment &record, bool bMerge) {
    if (!hasNames(record)) { return; }
    if (bMerge && *pnRecords > 0 && canMerge(pRecords[*pnRecords - 1], record)) {
        NameSegment *pLast = &pRecords[*pnRecords - 1];
        pLast->iLast = record.iLast;
        pLast->nBytes += record.nBytes;
    } else {
        pRecords[(*pnRecords)++] = record;
    }
}

}  // namespace

// Where there is no piece before or after the middle, its neighbour in the table is the one to
// merge with.
int32_t putBack(NamesManager *mgr, const Cut &cut, bool bMerge, bool bEndsRange) {
    const bool bBefore = !hasNames(cut.front) && cut.iSegment > 0;
    const bool bAfter = !hasNames(cut.back) && cut.iSegment + 1 < mgr->nSegments;
    const int32_t iBegin = cut.iSegment - (bBefore ? 1 : 0);
    const int32_t iEnd = cut.iSegment + (bAfter ? 2 : 1);
    NameSegment aRecords[3];
    int32_t nRecords = 0;
    addRecord(aRecords, &nRecords, bBefore ? mgr->pSegments[iBegin] : cut.front, false);
    addRecord(aRecords, &nRecords, cut.middle, bMerge);
    const int32_t iMiddle = iBegin + nRecords - 1;
    addRecord(aRecords, &nRecords, bAfter ? mgr->pSegments[iEnd - 1] : cut.back,
              bMerge && bEndsRange);
    spliceSegments(mgr, iBegin, iEnd, aRecords, nRecords);
    return iMiddle;
}

}  // namespace names
