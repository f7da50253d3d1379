// Text blocks.
#include "names/storage/blocks.hpp"

#include <algorithm>

#include "names/storage/segments.hpp"

namespace names {

bool resizeBlockTable(NamesManager *mgr, int64_t nNewAlloc) {
    void *pNew =
        resizeTable(mgr->pBlocks, mgr->nBlocksAlloc, nNewAlloc, sizeof(NameStorageBlock), __LINE__);
    if (pNew == nullptr) { return false; }
    mgr->pBlocks = static_cast<NameStorageBlock *>(pNew);
    mgr->nBlocksAlloc = static_cast<int32_t>(nNewAlloc);
    return true;
}

bool addBlock(NamesManager *mgr, int64_t nSize) {
    void *pData = HostMem_Alloc(static_cast<uint64_t>(nSize), kSourceTag, __LINE__);
    if (pData == nullptr) { return false; }
    mgr->pBlocks[mgr->nBlocks++] = {static_cast<char *>(pData), static_cast<int32_t>(nSize), 0, 0};
    return true;
}

namespace {

// Tries ever smaller blocks before it fails, as long as the text fits.
bool addBlockForText(NamesManager *mgr, int64_t nNeed) {
    if (nNeed > INT32_MAX || (mgr->nBlocks == mgr->nBlocksAlloc &&
                              !resizeBlockTable(mgr, int64_t{mgr->nBlocksAlloc} + kTableStep))) {
        return false;
    }
    int64_t nSize = std::max<int64_t>(nNeed, kNewBlockBytes);
    while (!addBlock(mgr, nSize)) {
        nSize /= 2;
        if (nSize <= std::max<int64_t>(nNeed, kLeastBlockBytes)) { return false; }
    }
    return true;
}

bool isEmptyBlock(const NameStorageBlock &block) {
    return block.nUsed == 0;
}

// Frees the text of the empty blocks, but for one if there is no other; in the others nNamesInBlock
// becomes their number without these.
void freeEmptyTexts(NamesManager *mgr) {
    int32_t nKept = 0;
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        NameStorageBlock *pBlock = &mgr->pBlocks[b];
        const bool bOnlyOneLeft = nKept == 0 && b == mgr->nBlocks - 1;
        if (isEmptyBlock(*pBlock) && !bOnlyOneLeft) {
            freeMemory(pBlock->pData);
            pBlock->pData = nullptr;
        } else {
            pBlock->nNamesInBlock = nKept++;
        }
    }
}

// Gives segments, positions and a set cursor the block numbers that nNamesInBlock holds.
void renumberReferences(NamesManager *mgr) {
    const auto renumber = [mgr](int32_t *piBlock) {
        *piBlock = mgr->pBlocks[*piBlock].nNamesInBlock;
    };
    for (int32_t s = 0; s < mgr->nSegments; ++s) { renumber(&mgr->pSegments[s].iBlock); }
    for (int32_t i = 0; mgr->pPositions != nullptr && i < mgr->nNames; ++i) {
        renumber(&mgr->pPositions[i].iBlock);
    }
    if (mgr->iCursorName >= 0) { renumber(&mgr->iCursorBlock); }
}

void countNamesInBlocks(NamesManager *mgr) {
    for (int32_t b = 0; b < mgr->nBlocks; ++b) { mgr->pBlocks[b].nNamesInBlock = 0; }
    for (int32_t s = 0; s < mgr->nSegments; ++s) {
        mgr->pBlocks[mgr->pSegments[s].iBlock].nNamesInBlock += namesIn(mgr->pSegments[s]);
    }
    for (int32_t i = 0; mgr->pPositions != nullptr && i < mgr->nNames; ++i) {
        ++mgr->pBlocks[mgr->pPositions[i].iBlock].nNamesInBlock;
    }
}

}  // namespace

int32_t searchBlock(NamesManager *mgr, int64_t nNeed) {
    for (int32_t b = mgr->nBlocks - 1; b >= 0; --b) {
        if (roomIn(mgr->pBlocks[b]) >= nNeed) { return b; }
    }
    return addBlockForText(mgr, nNeed) ? mgr->nBlocks - 1 : -1;
}

// A release must not need memory. So nNamesInBlock, which can be counted again, holds each block's
// new number while references still have the old one.
void releaseEmptyBlocks(NamesManager *mgr) {
    NameStorageBlock *pEnd = mgr->pBlocks + mgr->nBlocks;
    if (mgr->nBlocks < 2 || std::none_of(mgr->pBlocks, pEnd, isEmptyBlock)) { return; }
    freeEmptyTexts(mgr);
    renumberReferences(mgr);
    const auto isFreed = [](const NameStorageBlock &block) { return block.pData == nullptr; };
    pEnd = std::remove_if(mgr->pBlocks, pEnd, isFreed);
    mgr->nBlocks = static_cast<int32_t>(pEnd - mgr->pBlocks);
    countNamesInBlocks(mgr);
}

}  // namespace names
