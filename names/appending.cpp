// Appending names: whole batches of them into the block with room, recorded in segments or
// positions.
#include <algorithm>

#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/positions.hpp"
#include "names/storage/segments.hpp"
#include "names/storing.hpp"

namespace names {

namespace {

// Names that go to one block in one piece.
struct Batch {
    int32_t iBlock;
    int32_t nNames;
    int32_t nBytes;  // NULs included
};

// Chooses the block for the first of the names, and how many of those behind it go along. False
// without memory.
bool chooseBatch(NamesManager *mgr, const int32_t *lengths, int32_t nNames, Batch *pBatch) {
    pBatch->iBlock = chooseBlock(mgr, int64_t{lengths[0]} + 1);
    if (pBatch->iBlock < 0) { return false; }
    const int64_t nRoom = roomIn(mgr->pBlocks[pBatch->iBlock]);
    int32_t nTaken = std::min(nNames, kMaxSegmentNames);
    int64_t nBytes = bytesFor(lengths, nTaken);
    while (nBytes > nRoom) { nBytes -= int64_t{lengths[--nTaken]} + 1; }
    pBatch->nNames = nTaken;
    pBatch->nBytes = static_cast<int32_t>(nBytes);
    return true;
}

// Lets the last segment go on with the batch if the texts touch, else adds a segment. False without
// memory.
[[gnu::always_inline]] inline bool recordSegment(NamesManager *mgr, const Batch &batch) {
    const int32_t nUsed = mgr->pBlocks[batch.iBlock].nUsed;
    if (mgr->nSegments > 0) {
        NameSegment *pLast = &mgr->pSegments[mgr->nSegments - 1];
        if (pLast->iBlock == batch.iBlock && pLast->nOffset + pLast->nBytes == nUsed &&
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

void recordPositions(NamesManager *mgr, const Batch &batch, const int32_t *lengths) {
    int32_t nOffset = mgr->pBlocks[batch.iBlock].nUsed;
    for (int32_t k = 0; k < batch.nNames; ++k) {
        mgr->pPositions[mgr->nNames + k] = {batch.iBlock, nOffset};
        nOffset += lengths[k] + 1;
    }
}

// Appends the names of a batch. False without memory: nothing is stored then. Inlined, so that a
// single name takes a straight way.
[[gnu::always_inline]] inline bool appendBatch(NamesManager *mgr, const GivenNames &given,
                                               const Batch &batch) {
    if (mgr->pSegments == nullptr) {
        recordPositions(mgr, batch, given.lengths);
    } else if (!recordSegment(mgr, batch)) {
        return false;
    }
    NameStorageBlock *pBlock = &mgr->pBlocks[batch.iBlock];
    char *pText = pBlock->pData + pBlock->nUsed;
    if (batch.nNames == 1) {
        copyText(pText, firstGiven(given), given.lengths[0]);
    } else {
        copyTexts(pText, given, batch.nNames, batch.nBytes);
    }
    noteAddedLengths(mgr, given.lengths, batch.nNames);
    const int32_t iFirst = mgr->nNames;
    pBlock->nNamesInBlock += batch.nNames;
    pBlock->nUsed += batch.nBytes;
    mgr->nNames += batch.nNames;
    if (mgr->pLookupIndex != nullptr) {
        indexTexts(mgr, pText, given.lengths, batch.nNames, iFirst);
    }
    return true;
}

// Makes room for positions of nNames more names, where positions are kept. False without memory.
inline bool makeRoomForPositions(NamesManager *mgr, int32_t nNames) {
    const bool bNeeded =
        mgr->pSegments == nullptr && int64_t{mgr->nNames} + nNames > mgr->nPositionsAlloc;
    return !bNeeded || growPositionTable(mgr, mgr->nNames + nNames);
}

}  // namespace

int32_t appendNames(NamesManager *mgr, GivenNames given, int32_t nNames) {
    if (!makeRoomForPositions(mgr, nNames)) { return 1; }
    while (nNames > 0) {
        Batch batch;
        if (!chooseBatch(mgr, given.lengths, nNames, &batch) || !appendBatch(mgr, given, batch)) {
            return 1;
        }
        given = skipGiven(given, batch.nNames);
        nNames -= batch.nNames;
    }
    return 0;
}

bool appendOne(NamesManager *mgr, const GivenNames &given) {
    if (!makeRoomForPositions(mgr, 1)) { return false; }
    const int64_t nBytes = int64_t{given.lengths[0]} + 1;
    const int32_t iBlock = chooseBlock(mgr, nBytes);
    return iBlock >= 0 && appendBatch(mgr, given, {iBlock, 1, static_cast<int32_t>(nBytes)});
}

}  // namespace names
