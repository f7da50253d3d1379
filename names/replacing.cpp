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
#include "names/storing.hpp"

namespace names {

namespace {

// ---- Individual-positions mode ----

// Finds new room for a name that outgrew its old one. *piBlock is the block tried first, then the
// one taken. Within its block the name's old text is not given back. False without memory.
bool moveName(NamesManager *mgr, NamePosition *pPosition, int32_t nOldBytes, int64_t nNeed,
              int32_t *piBlock) {
    if (roomIn(mgr->pBlocks[*piBlock]) < nNeed) {
        const int32_t iChosen = chooseBlock(mgr, nNeed);
        if (iChosen < 0) { return false; }
        *piBlock = iChosen;
    }
    NameStorageBlock *pBlock = &mgr->pBlocks[*piBlock];
    const bool bLeaves = pPosition->iBlock != *piBlock;
    if (bLeaves) {
        giveBackText(&mgr->pBlocks[pPosition->iBlock], pPosition->nOffset, nOldBytes, 1);
    }
    *pPosition = {*piBlock, pBlock->nUsed};
    enterBlock(pBlock, static_cast<int32_t>(nNeed), bLeaves ? 1 : 0);
    return true;
}

// iBlock is the block that text which has to move is tried in first.
bool replaceByPosition(NamesManager *mgr, IndexRange range, GivenNames given, int32_t iBlock) {
    for (int32_t i = range.first; i <= range.last; ++i, given = skipGiven(given, 1)) {
        NamePosition *pPosition = &mgr->pPositions[i];
        const int32_t nOldBytes = lengthAt(mgr, *pPosition) + 1;
        const int64_t nNeed = int64_t{given.pLengths[0]} + 1;
        if (nNeed > nOldBytes && !moveName(mgr, pPosition, nOldBytes, nNeed, &iBlock)) {
            return false;
        }
        char *pText = mgr->pBlocks[pPosition->iBlock].pData + pPosition->nOffset;
        copyText(pText, firstGiven(given), given.pLengths[0]);
        indexTexts(mgr, pText, given.pLengths, 1, i);
    }
    return true;
}

// ---- Segment mode ----

// Gives a piece room for nNew bytes: where it is, by growing at its block's end, or elsewhere.
// False without memory.
bool makeRoomForPiece(NamesManager *mgr, NameSegment *pPiece, int64_t nNew) {
    NameStorageBlock *pBlock = &mgr->pBlocks[pPiece->iBlock];
    const bool bAtEnd = pPiece->nOffset + pPiece->nBytes == pBlock->nUsed;
    const bool bFits =
        nNew <= pPiece->nBytes || (bAtEnd && nNew <= int64_t{pBlock->nSize} - pPiece->nOffset);
    if (bFits) {
        if (bAtEnd) { pBlock->nUsed = pPiece->nOffset + static_cast<int32_t>(nNew); }
    } else {
        const int32_t iChosen = chooseBlock(mgr, nNew);
        if (iChosen < 0) { return false; }
        giveBackPiece(mgr, *pPiece);
        pPiece->iBlock = iChosen;
        pPiece->nOffset = mgr->pBlocks[iChosen].nUsed;
        enterBlock(&mgr->pBlocks[iChosen], static_cast<int32_t>(nNew), namesIn(*pPiece));
    }
    pPiece->nBytes = static_cast<int32_t>(nNew);
    return true;
}

// Replaces the part of the range that lies in segment iSegment. Returns the number of the segment
// that holds it then, or -1 without memory: it keeps its old text, and the cuts that separate it
// stay.
int32_t replacePiece(NamesManager *mgr, int32_t iSegment, IndexRange range,
                     const GivenNames &given) {
    const NameSegment &segment = mgr->pSegments[iSegment];
    const int32_t iLast = std::min(segment.iLast, range.last);
    const bool bCuts = segment.iFirst < range.first || segment.iLast > range.last;
    const int32_t nFront = bytesBefore(mgr, segment, range.first);
    if (bCuts && !makeRoomForCut(mgr)) { return -1; }
    Cut cut = cutSegment(mgr, iSegment, {range.first, iLast}, nFront);
    const int32_t nNames = namesIn(cut.middle);
    if (!makeRoomForPiece(mgr, &cut.middle, bytesFor(given.pLengths, nNames))) {
        putBack(mgr, cut, false, false);
        return -1;
    }
    char *pText = mgr->pBlocks[cut.middle.iBlock].pData + cut.middle.nOffset;
    copyTexts(pText, given, nNames, cut.middle.nBytes);
    indexTexts(mgr, pText, given.pLengths, nNames, range.first);
    return putBack(mgr, cut, true, iLast == range.last);
}

// Replaces piece by piece until the range is done or the manager has switched to positions; takes
// what is done off *pRange and *pGiven. False without memory.
bool replaceInSegments(NamesManager *mgr, IndexRange *pRange, GivenNames *pGiven) {
    int32_t iSegment = 0;
    while (pRange->first <= pRange->last && mgr->pSegments != nullptr) {
        const bool bNext = iSegment < mgr->nSegments &&
                           mgr->pSegments[iSegment].iFirst <= pRange->first &&
                           pRange->first <= mgr->pSegments[iSegment].iLast;
        if (!bNext) { iSegment = findSegment(mgr, pRange->first); }
        const int32_t iLast = std::min(mgr->pSegments[iSegment].iLast, pRange->last);
        const int32_t iMiddle = replacePiece(mgr, iSegment, *pRange, *pGiven);
        if (iMiddle < 0) { return false; }
        iSegment = iMiddle + 1;
        *pGiven = skipGiven(*pGiven, iLast - pRange->first + 1);
        pRange->first = iLast + 1;
        switchIfFragmented(mgr);
    }
    return true;
}

}  // namespace

bool replaceNames(NamesManager *mgr, IndexRange range, GivenNames given) {
    noteReplacedNames(mgr, range, given.pLengths);
    unindexNames(mgr, range);
    int32_t iBlock = mgr->nBlocks - 1;
    bool bReplaced = true;
    if (mgr->pSegments != nullptr) {
        bReplaced = replaceInSegments(mgr, &range, &given);
        iBlock = 0;
    }
    if (bReplaced && range.first <= range.last) {
        bReplaced = replaceByPosition(mgr, range, given, iBlock);
    }
    if (!bReplaced) {
        // Old texts of names not reached are out of the index, and lengths of new ones may be in
        // the maximum.
        forgetMaximum(mgr);
        dropIndex(mgr);
    }
    return bReplaced;
}

}  // namespace names
