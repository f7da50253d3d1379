// Copying a whole manager.
#include <algorithm>

#include "names/lifecycle.hpp"
#include "names/storage/blocks.hpp"
#include "names/storage/positions.hpp"
#include "names/storage/segments.hpp"

namespace names {

namespace {

// Gives a cleared dst the capacities and the storage mode of src. False without memory.
bool copyTables(NamesManager *dst, const NamesManager *src) {
    if (!resizeBlockTable(dst, src->nBlocksAlloc)) { return false; }
    if (src->pSegments != nullptr) { return resizeSegmentTable(dst, src->nSegmentsAlloc); }
    dst->pPositions = allocPositions(src->nPositionsAlloc);
    if (dst->pPositions == nullptr) { return false; }
    dst->nPositionsAlloc = src->nPositionsAlloc;
    std::memset(dst->pPositions + src->nNames, 0,
                static_cast<size_t>(src->nPositionsAlloc - src->nNames) * sizeof(NamePosition));
    freeSegmentTable(dst);
    return true;
}

// Gives it empty blocks of src's sizes; block 0, which it has already, may stay larger. False
// without memory.
bool copyBlockSizes(NamesManager *dst, const NamesManager *src) {
    NameStorageBlock *pFirst = &dst->pBlocks[0];
    if (pFirst->nSize < src->pBlocks[0].nSize) {
        void *pData = HostMem_Realloc(pFirst->pData, static_cast<uint64_t>(src->pBlocks[0].nSize),
                                      kSourceTag, __LINE__);
        if (pData == nullptr) { return false; }
        pFirst->pData = static_cast<char *>(pData);
        pFirst->nSize = src->pBlocks[0].nSize;
    }
    for (int32_t b = 1; b < src->nBlocks; ++b) {
        if (!addBlock(dst, src->pBlocks[b].nSize)) { return false; }
    }
    return true;
}

// The part of a copy that cannot fail.
void copyContent(NamesManager *dst, const NamesManager *src) {
    dst->nNames = src->nNames;
    for (int32_t b = 0; b < src->nBlocks; ++b) {
        std::memcpy(dst->pBlocks[b].pData, src->pBlocks[b].pData,
                    static_cast<size_t>(src->pBlocks[b].nUsed));
        dst->pBlocks[b].nUsed = src->pBlocks[b].nUsed;
        dst->pBlocks[b].nNamesInBlock = src->pBlocks[b].nNamesInBlock;
    }
    if (src->pSegments != nullptr) {
        std::copy_n(src->pSegments, src->nSegments, dst->pSegments);
        dst->nSegments = src->nSegments;
    } else {
        std::copy_n(src->pPositions, src->nNames, dst->pPositions);
    }
    dst->nMaxNameLength = src->nMaxNameLength;
    dst->nMaxNameLengthCount = src->nMaxNameLengthCount;
    dst->nGeneratedNameBase = src->nGeneratedNameBase;
    std::memcpy(dst->szNameFormat, src->szNameFormat, sizeof dst->szNameFormat);
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_Copy(NamesManager *dst, NamesManager *src) {
    if (dst == src) { return 1; }
    ScopedLock lockDestination(dst);
    ScopedLock lockSource(src);
    if (hasNoTables(src) || !clearAll(dst) || !copyTables(dst, src) || !copyBlockSizes(dst, src)) {
        return 1;
    }
    copyContent(dst, src);
    return 0;
}
