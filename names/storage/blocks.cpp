// Text blocks.
#include "names/storage/blocks.hpp"

#include <algorithm>

namespace names {

bool resizeBlockTable(NamesManager *mgr, int64_t nNewAlloc) {
    void *pNew =
        resizeTable(mgr->pBlocks, mgr->nBlocksAlloc, nNewAlloc, sizeof(NameStorageBlock), __LINE__);
    if (pNew == nullptr) { return false; }
    mgr->pBlocks = static_cast<NameStorageBlock *>(pNew);
    mgr->nBlocksAlloc = static_cast<int32_t>(nNewAlloc);
    return true;
}

char *allocText(int64_t nBytes) {
    return static_cast<char *>(HostMem_Alloc(static_cast<uint64_t>(nBytes), kSourceTag, __LINE__));
}

// A block of nSize bytes at the end of the table, which must have the room.
bool addBlock(NamesManager *mgr, int64_t nSize) {
    char *pData = allocText(nSize);
    if (pData == nullptr) { return false; }
    mgr->pBlocks[mgr->nBlocks++] = {pData, static_cast<int32_t>(nSize), 0, 0};
    return true;
}

namespace {

// Fails over to ever smaller blocks rather than fail, as long as the text fits.
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

// Block numbers that references take on when blocks go.
struct Renumbering {
    const NameStorageBlock
        *pReleased;  // released records in table order, nSize their old block number
    int32_t nReleased;
    int32_t iLastOld;  // neighbours mostly lie in one block
    int32_t iLastNew;
};

int32_t renumbered(Renumbering *pMap, int32_t iBlock) {
    if (iBlock != pMap->iLastOld) {
        const NameStorageBlock *pEnd = pMap->pReleased + pMap->nReleased;
        const NameStorageBlock *pFirstAbove = std::lower_bound(
            pMap->pReleased, pEnd, iBlock,
            [](const NameStorageBlock &released, int32_t iOld) { return released.nSize < iOld; });
        pMap->iLastOld = iBlock;
        pMap->iLastNew = iBlock - static_cast<int32_t>(pFirstAbove - pMap->pReleased);
    }
    return pMap->iLastNew;
}

// Frees the text of empty blocks and moves the blocks that stay to the front, in order; the records
// of the others, in table order, behind them carry their old number in nSize. The number of blocks
// that stay: at least one, the last if all are empty.
int32_t partitionBlocks(NamesManager *mgr) {
    int32_t nKept = 0;
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        const bool bOnlyOneLeft = nKept == 0 && b == mgr->nBlocks - 1;
        if (mgr->pBlocks[b].nUsed != 0 || bOnlyOneLeft) {
            std::swap(mgr->pBlocks[nKept++], mgr->pBlocks[b]);
        } else {
            freeMemory(mgr->pBlocks[b].pData);
            mgr->pBlocks[b] = {nullptr, b, 0, 0};
        }
    }
    std::sort(
        mgr->pBlocks + nKept, mgr->pBlocks + mgr->nBlocks,
        [](const NameStorageBlock &a, const NameStorageBlock &b) { return a.nSize < b.nSize; });
    return nKept;
}

}  // namespace

int32_t searchBlock(NamesManager *mgr, int64_t nNeed) {
    for (int32_t b = mgr->nBlocks - 1; b >= 0; --b) {
        if (roomIn(mgr->pBlocks[b]) >= nNeed) { return b; }
    }
    return addBlockForText(mgr, nNeed) ? mgr->nBlocks - 1 : -1;
}

void releaseEmptyBlocks(NamesManager *mgr) {
    const auto isEmpty = [](const NameStorageBlock &block) { return block.nUsed == 0; };
    if (mgr->nBlocks < 2 || std::none_of(mgr->pBlocks, mgr->pBlocks + mgr->nBlocks, isEmpty)) {
        return;
    }
    const int32_t nKept = partitionBlocks(mgr);
    Renumbering map = {mgr->pBlocks + nKept, mgr->nBlocks - nKept, -1, -1};
    for (int32_t s = 0; s < mgr->nSegments; ++s) {
        mgr->pSegments[s].iBlock = renumbered(&map, mgr->pSegments[s].iBlock);
    }
    for (int32_t i = 0; mgr->pPositions != nullptr && i < mgr->nNames; ++i) {
        mgr->pPositions[i].iBlock = renumbered(&map, mgr->pPositions[i].iBlock);
    }
    if (mgr->iCursorName >= 0) { mgr->iCursorBlock = renumbered(&map, mgr->iCursorBlock); }
    mgr->nBlocks = nKept;
}

}  // namespace names
