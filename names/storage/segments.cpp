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

void spliceSegments(NamesManager *mgr, int32_t iBegin, int32_t iEnd, const NameSegment *pRecords,
                    int32_t nRecords) {
    const int32_t nBehind = mgr->nSegments - iEnd;
    if (iBegin + nRecords != iEnd && nBehind > 0) {
        std::memmove(mgr->pSegments + iBegin + nRecords, mgr->pSegments + iEnd,
                     static_cast<size_t>(nBehind) * sizeof(NameSegment));
    }
    std::copy_n(pRecords, nRecords, mgr->pSegments + iBegin);
    mgr->nSegments = iBegin + nRecords + nBehind;
}

namespace {

bool isPiece(const NameSegment &piece) {
    return piece.iFirst <= piece.iLast;
}

bool canMerge(const NameSegment &a, const NameSegment &b) {
    return a.iBlock == b.iBlock && a.nOffset + a.nBytes == b.nOffset &&
           b.iLast - a.iFirst + 1 <= kMaxMergedNames;
}

}  // namespace

Cut cutSegment(const NamesManager *mgr, int32_t iSegment, int32_t iFirst, int32_t iLast) {
    const NameSegment whole = mgr->pSegments[iSegment];
    TextSpan text = textOf(mgr, whole);
    const int32_t nFront = bytesOfNames(text, iFirst - whole.iFirst);
    text.pText += nFront;
    const int32_t nFrontAndRun =
        iLast == whole.iLast ? whole.nBytes : nFront + bytesOfNames(text, iLast - iFirst + 1);
    Cut cut = {iSegment, whole, whole, whole};
    cut.front.iLast = iFirst - 1;
    cut.front.nBytes = nFront;
    cut.run = {iFirst, iLast, whole.iBlock, whole.nOffset + nFront, nFrontAndRun - nFront};
    cut.back.iFirst = iLast + 1;
    cut.back.nOffset += nFrontAndRun;
    cut.back.nBytes -= nFrontAndRun;
    return cut;
}

// Puts the pieces of a cut into the table in place of the segment they came from; the run is merged
// with what its text touches, forwards only where it ends the range. Without bMerge the bare cut
// stays. The table must have room for two more records. The number of the segment that holds the
// run afterwards.
int32_t putBack(NamesManager *mgr, const Cut &cut, bool bMerge, bool bEndsRange) {
    int32_t iBegin = cut.iSegment;
    int32_t iEnd = cut.iSegment + 1;
    const bool bFront = isPiece(cut.front);
    const bool bBack = isPiece(cut.back);
    NameSegment run = cut.run;
    const NameSegment *pBefore = bFront       ? &cut.front
                                 : iBegin > 0 ? &mgr->pSegments[iBegin - 1]
                                              : nullptr;
    const NameSegment *pAfter = bBack                   ? &cut.back
                                : iEnd < mgr->nSegments ? &mgr->pSegments[iEnd]
                                                        : nullptr;
    const bool bMergeBefore = bMerge && pBefore != nullptr && canMerge(*pBefore, run);
    if (bMergeBefore) {
        run.iFirst = pBefore->iFirst;
        run.nOffset = pBefore->nOffset;
        run.nBytes += pBefore->nBytes;
        iBegin -= bFront ? 0 : 1;
    }
    const bool bMergeAfter = bMerge && bEndsRange && pAfter != nullptr && canMerge(run, *pAfter);
    if (bMergeAfter) {
        run.iLast = pAfter->iLast;
        run.nBytes += pAfter->nBytes;
        iEnd += bBack ? 0 : 1;
    }
    NameSegment aRecords[3];
    int32_t nRecords = 0;
    if (bFront && !bMergeBefore) { aRecords[nRecords++] = cut.front; }
    const int32_t iRun = iBegin + nRecords;
    aRecords[nRecords++] = run;
    if (bBack && !bMergeAfter) { aRecords[nRecords++] = cut.back; }
    spliceSegments(mgr, iBegin, iEnd, aRecords, nRecords);
    return iRun;
}

}  // namespace names
