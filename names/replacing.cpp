// Replacing stored names.
//
// In segment mode the range is taken piece by piece, a piece being what lies in one segment:
//
//     segment s        [ front | middle | back ]     front and back keep their text where it is
//                                |
//                 rewritten in place, grown at the end of its block, or moved to another
//                                |
//     s-1 [ ... ]  [ front ][ middle ][ back ]  [ ... ] s+1
//                  merged again with neighbours that its text still touches
//
// The records that this leaves are worked out first; the table then changes once.
#include <algorithm>

#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/positions.hpp"
#include "names/storage/segments.hpp"
#include "names/storage/text_walk.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

// ---- Individual-positions mode ----

// Finds new room for a name that outgrew its old one. *piBlock: the block tried first, then the one
// taken. False without memory.
bool moveName(NamesManager *mgr, NamePosition *pPosition, int32_t nOldBytes, int64_t nNeed,
              int32_t *piBlock) {
    if (roomIn(mgr->pBlocks[*piBlock]) < nNeed) {
        const int32_t iChosen = chooseBlock(mgr, nNeed);
        if (iChosen < 0) { return false; }
        *piBlock = iChosen;
    }
    NameStorageBlock *pBlock = &mgr->pBlocks[*piBlock];
    if (pPosition->iBlock != *piBlock) {
        giveBackText(&mgr->pBlocks[pPosition->iBlock], pPosition->nOffset, nOldBytes, 1);
        ++pBlock->nNamesInBlock;
    }
    *pPosition = {*piBlock, pBlock->nUsed};
    pBlock->nUsed += static_cast<int32_t>(nNeed);
    return true;
}

// iBlock: the block that text that has to move is tried in first.
int32_t replaceByPosition(NamesManager *mgr, IndexRange range, GivenNames given, int32_t iBlock) {
    for (int32_t i = range.first; i <= range.last; ++i, given = skipGiven(given, 1)) {
        NamePosition *pPosition = &mgr->pPositions[i];
        const int32_t nOldBytes =
            static_cast<int32_t>(std::strlen(textAt(mgr, pPosition->iBlock, pPosition->nOffset))) +
            1;
        const int64_t nNeed = int64_t{given.lengths[0]} + 1;
        if (nNeed > nOldBytes && !moveName(mgr, pPosition, nOldBytes, nNeed, &iBlock)) { return 1; }
        char *pText = mgr->pBlocks[pPosition->iBlock].pData + pPosition->nOffset;
        copyText(pText, firstGiven(given), given.lengths[0]);
        indexTexts(mgr, pText, given.lengths, 1, i);
    }
    return 0;
}

// ---- Segment mode ----

// Gives the run room for nNew bytes: where it is, by growing at its block's end, or elsewhere.
// False without memory.
bool makeRoom(NamesManager *mgr, NameSegment *pRun, int64_t nNew) {
    NameStorageBlock *pBlock = &mgr->pBlocks[pRun->iBlock];
    const bool bAtEnd = pRun->nOffset + pRun->nBytes == pBlock->nUsed;
    if (nNew <= pRun->nBytes || (bAtEnd && nNew <= int64_t{pBlock->nSize} - pRun->nOffset)) {
        if (bAtEnd) { pBlock->nUsed = pRun->nOffset + static_cast<int32_t>(nNew); }
    } else {
        const int32_t iChosen = chooseBlock(mgr, nNew);
        if (iChosen < 0) { return false; }
        giveBackText(&mgr->pBlocks[pRun->iBlock], pRun->nOffset, pRun->nBytes, namesIn(*pRun));
        pBlock = &mgr->pBlocks[iChosen];
        pRun->iBlock = iChosen;
        pRun->nOffset = pBlock->nUsed;
        pBlock->nNamesInBlock += namesIn(*pRun);
        pBlock->nUsed += static_cast<int32_t>(nNew);
    }
    pRun->nBytes = static_cast<int32_t>(nNew);
    return true;
}

// Replaces the part of the range that lies in segment iSegment. The segment that holds it
// afterwards, or -1: it keeps its old text, and the cuts that separate it stay.
int32_t replaceRun(NamesManager *mgr, int32_t iSegment, IndexRange range, const GivenNames &given) {
    const NameSegment *pSegment = &mgr->pSegments[iSegment];
    const int32_t iLast = std::min(pSegment->iLast, range.last);
    const bool bCuts = pSegment->iFirst < range.first || pSegment->iLast > range.last;
    if (bCuts && mgr->nSegmentsAlloc - mgr->nSegments < 2 && !growSegmentTable(mgr)) { return -1; }
    Cut cut = cutSegment(mgr, iSegment, range.first, iLast);
    const int32_t nRun = namesIn(cut.run);
    if (!makeRoom(mgr, &cut.run, bytesFor(given.lengths, nRun))) {
        putBack(mgr, cut, false, false);
        return -1;
    }
    char *pText = mgr->pBlocks[cut.run.iBlock].pData + cut.run.nOffset;
    copyTexts(pText, given, nRun, cut.run.nBytes);
    indexTexts(mgr, pText, given.lengths, nRun, range.first);
    return putBack(mgr, cut, true, iLast == range.last);
}

// Run by run, until the range is done or the segments are given up. What is left of both is in
// *pRange and *pGiven then.
int32_t replaceInSegments(NamesManager *mgr, IndexRange *pRange, GivenNames *pGiven) {
    int32_t iSegment = 0;
    while (pRange->first <= pRange->last && mgr->pSegments != nullptr) {
        const bool bNext = iSegment < mgr->nSegments &&
                           mgr->pSegments[iSegment].iFirst <= pRange->first &&
                           pRange->first <= mgr->pSegments[iSegment].iLast;
        if (!bNext) { iSegment = findSegment(mgr, pRange->first); }
        const int32_t iLast = std::min(mgr->pSegments[iSegment].iLast, pRange->last);
        const int32_t iRun = replaceRun(mgr, iSegment, *pRange, *pGiven);
        if (iRun < 0) { return 1; }
        iSegment = iRun + 1;
        *pGiven = skipGiven(*pGiven, iLast - pRange->first + 1);
        pRange->first = iLast + 1;
        switchIfFragmented(mgr);
    }
    return 0;
}

}  // namespace

int32_t replaceNames(NamesManager *mgr, IndexRange range, GivenNames given) {
    noteReplacedLengths(mgr, range, given.lengths);
    unindexNames(mgr, range);
    int32_t iBlock = mgr->nBlocks - 1;
    int32_t nStatus = 0;
    if (mgr->pSegments != nullptr) {
        nStatus = replaceInSegments(mgr, &range, &given);
        iBlock = 0;
    }
    if (nStatus == 0 && range.first <= range.last) {
        nStatus = replaceByPosition(mgr, range, given, iBlock);
    }
    if (nStatus != 0) {  // old texts of names not reached are out of the index, and lengths of new
                         // ones may be in the maximum
        mgr->nMaxNameLength = -1;
        dropIndex(mgr);
    }
    return nStatus;
}

}  // namespace names
