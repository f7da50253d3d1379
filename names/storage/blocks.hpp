// Text blocks: which one new text goes to, how names enter and leave one, and when an empty one is
// released.
#ifndef NAMES_STORAGE_BLOCKS_HPP
#define NAMES_STORAGE_BLOCKS_HPP

#include "names/storage/record.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

inline const char *textAt(const NamesManager *mgr, int32_t iBlock, int32_t nOffset) {
    return mgr->pBlocks[iBlock].pData + nOffset;
}

// The nBytes bytes of text at nOffset.
inline TextSpan textSpan(const NamesManager *mgr, int32_t iBlock, int32_t nOffset, int32_t nBytes) {
    const NameStorageBlock &block = mgr->pBlocks[iBlock];
    return {block.pData + nOffset, block.pData + nOffset + nBytes, block.pData + block.nSize};
}

inline int64_t roomIn(const NameStorageBlock &block) {
    return int64_t{block.nSize} - block.nUsed;
}

// ---- The block for new text ----

// The block that new text of nNeed bytes, NULs included, goes to: the last one with room, else a
// new one; -1 if that could not be made. May move the block table.
int32_t searchBlock(NamesManager *mgr, int64_t nNeed);
inline int32_t chooseBlock(NamesManager *mgr, int64_t nNeed) {
    const int32_t iLast = mgr->nBlocks - 1;
    return roomIn(mgr->pBlocks[iLast]) >= nNeed ? iLast : searchBlock(mgr, nNeed);
}

// ---- Names enter and leave ----

// Names enter a block with text of nBytes, NULs included, that goes to nUsed.
inline void enterBlock(NameStorageBlock *pBlock, int32_t nBytes, int32_t nNames) {
    pBlock->nUsed += nBytes;
    pBlock->nNamesInBlock += nNames;
}

// Names leave a block. Their text goes dead, but a block without names is wholly free again.
inline void leaveBlock(NameStorageBlock *pBlock, int32_t nNames) {
    pBlock->nNamesInBlock -= nNames;
    if (pBlock->nNamesInBlock == 0) { pBlock->nUsed = 0; }
}

// The same for names whose text takes nBytes from nOffset on: at the end of the used bytes it is
// given back.
inline void giveBackText(NameStorageBlock *pBlock, int32_t nOffset, int32_t nBytes,
                         int32_t nNames) {
    if (nOffset + nBytes == pBlock->nUsed) { pBlock->nUsed = nOffset; }
    leaveBlock(pBlock, nNames);
}

// ---- The table ----

// False without memory: nothing has changed. New records are zeroed.
bool resizeBlockTable(NamesManager *mgr, int64_t nNewAlloc);

// Adds a block of nSize bytes at the end of the table, which must have the room. False without
// memory.
bool addBlock(NamesManager *mgr, int64_t nSize);

// Releases the blocks without text, but always keeps one: the last if all are empty.
void releaseEmptyBlocks(NamesManager *mgr);

}  // namespace names

#endif
