// Appending names: batches of them, each stored together in one block and recorded in segments or
// positions.
#include <algorithm>
#include <cassert>

#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/positions.hpp"
#include "names/storage/segments.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

// Names that are stored together in one block.
struct Batch {
    int32_t iBlock;
    int32_t nNames;
    int32_t nBytes;  // NULs included
};

// Chooses the block for the first of the names, and how many of those after it go along. False
// without memory.
bool chooseBatch(NamesManager *mgr, const int32_t *pLengths, int32_t nNames, Batch *pBatch) {
    pBatch->iBlock = chooseBlock(mgr, int64_t{pLengths[0]} + 1);
    if (pBatch->iBlock < 0) { return false; }
    const int64_t nRoom = roomIn(mgr->pBlocks[pBatch->iBlock]);
    int32_t nTaken = std::min(nNames, kMaxSegmentNames);
    int64_t nBytes = bytesFor(pLengths, nTaken);
    while (nBytes > nRoom) { nBytes -= int64_t{pLengths[--nTaken]} + 1; }
    pBatch->nNames = nTaken;
    pBatch->nBytes = static_cast<int32_t>(nBytes);
    return true;
}

// True if text that goes to a block is put right after that of a segment.
inline bool touchesEnd(const NamesManager *mgr, const NameSegment &segment, int32_t iBlock) {
    return segment.iBlock == iBlock &&
           segment.nOffset + segment.nBytes == mgr->pBlocks[iBlock].nUsed;
}

// How many names of a batch for a block would be stored together, too, if each were appended alone:
// all look for room in the last block first, fill segments up, and let the table of positions grow
// when it is full.
int32_t mostInTurn(const NamesManager *mgr, int32_t iBlock) {
    if (iBlock != mgr->nBlocks - 1) { return 1; }
    if (mgr->pSegments == nullptr) { return mgr->nPositionsAlloc - mgr->nNames; }
    if (mgr->nSegments == 0) { return kMaxSegmentNames; }
    const NameSegment &last = mgr->pSegments[mgr->nSegments - 1];
    const int32_t nHeld = touchesEnd(mgr, last, iBlock) ? namesIn(last) : kMaxSegmentNames;
    return nHeld < kMaxSegmentNames ? kMaxSegmentNames - nHeld : kMaxSegmentNames;
}

// Extends the last segment by the batch if the texts touch, else adds a segment. False without
// memory.
[[gnu::always_inline]] inline bool recordSegment(NamesManager *mgr, const Batch &batch) {
    const int32_t nUsed = mgr->pBlocks[batch.iBlock].nUsed;
    if (mgr->nSegments > 0) {
        NameSegment *pLast = &mgr->pSegments[mgr->nSegments - 1];
        if (touchesEnd(mgr, *pLast, batch.iBlock) &&
            namesIn(*pLast) + batch.nNames <= kMaxSegmentNames) {
            pLast->iLast += batch.nNames;
            pLast->nBytes += batch.nBytes;
            return true;
        }
    }
    if (mgr->nSegments == mgr->nSegmentsAlloc && !growSegmentTable(mgr)) { return false; }
    mgr->pSegments[mgr->nSegments++] = {mgr->nNames, mgr->nNames + batch.nNames - 1, batch.iBlock,
                                        nUsed, batch.nBytes};
    return true;
}

void recordPositions(NamesManager *mgr, const Batch &batch, const int32_t *pLengths) {
    int32_t nOffset = mgr->pBlocks[batch.iBlock].nUsed;
    for (int32_t k = 0; k < batch.nNames; ++k) {
        mgr->pPositions[mgr->nNames + k] = {batch.iBlock, nOffset};
        nOffset += pLengths[k] + 1;
    }
}

// Appends the names of a batch. False without memory: none is stored then. Inlined, so that a
// single name takes few instructions.
[[gnu::always_inline]] inline bool appendBatch(NamesManager *mgr, const GivenNames &given,
                                               const Batch &batch) {
    if (mgr->pSegments == nullptr) {
        recordPositions(mgr, batch, given.pLengths);
    } else if (!recordSegment(mgr, batch)) {
        return false;
    }
    NameStorageBlock *pBlock = &mgr->pBlocks[batch.iBlock];
    char *pText = pBlock->pData + pBlock->nUsed;
    if (batch.nNames == 1) {
        copyText(pText, firstGiven(given), given.pLengths[0]);
    } else {
        copyTexts(pText, given, batch.nNames, batch.nBytes);
    }
    noteAddedNames(mgr, given.pLengths, batch.nNames);
    enterBlock(pBlock, batch.nBytes, batch.nNames);
    const int32_t iFirst = mgr->nNames;
    mgr->nNames += batch.nNames;
    if (mgr->pLookupIndex != nullptr) {
        indexTexts(mgr, pText, given.pLengths, batch.nNames, iFirst);
    }
    return true;
}

// Makes room for the positions of nNames more names, in positions mode. False without memory, and
// without any table.
inline bool makeRoomForPositions(NamesManager *mgr, int32_t nNames) {
    const bool bNeeded =
        mgr->pSegments == nullptr && int64_t{mgr->nNames} + nNames > mgr->nPositionsAlloc;
    return !bNeeded || (!hasNoTables(mgr) && growPositionTable(mgr, mgr->nNames + nNames));
}

}  // namespace

bool appendNames(NamesManager *mgr, GivenNames given, int32_t nNames) {
    if (!makeRoomForPositions(mgr, nNames)) { return false; }
    while (nNames > 0) {
        Batch batch;
        if (!chooseBatch(mgr, given.pLengths, nNames, &batch) || !appendBatch(mgr, given, batch)) {
            return false;
        }
        given = skipGiven(given, batch.nNames);
        nNames -= batch.nNames;
    }
    return true;
}

int32_t appendInTurn(NamesManager *mgr, GivenNames given, int32_t nNames) {
    int32_t nDone = 0;
    while (nDone < nNames) {
        Batch batch;
        if (!makeRoomForPositions(mgr, 1) ||
            !chooseBatch(mgr, given.pLengths, nNames - nDone, &batch)) {
            return nDone;
        }
        batch.nNames = std::min(batch.nNames, mostInTurn(mgr, batch.iBlock));
        batch.nBytes = static_cast<int32_t>(bytesFor(given.pLengths, batch.nNames));
        if (!appendBatch(mgr, given, batch)) { return nDone; }
        given = skipGiven(given, batch.nNames);
        nDone += batch.nNames;
    }
    return nDone;
}

bool appendName(NamesManager *mgr, const char *pName, int32_t nLength) {
    const GivenNames given = {&pName, nullptr, &nLength};
    assert(areTrimmed(given, 1));
    if (!makeRoomForPositions(mgr, 1)) { return false; }
    const int64_t nBytes = int64_t{nLength} + 1;
    const int32_t iBlock = chooseBlock(mgr, nBytes);
    return iBlock >= 0 && appendBatch(mgr, given, {iBlock, 1, static_cast<int32_t>(nBytes)});
}

}  // namespace names
