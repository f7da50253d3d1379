// Given names that lie in the manager itself.
#include "names/own_names.hpp"

#include <algorithm>

namespace names {

namespace {

constexpr int32_t kMostWalks = 4;      // over all blocks, before they are sorted
constexpr int32_t kBlocksPerCopy = 4;  // blocks walked over in the time that a short copy takes

// nEnd is the address after the last one.
struct AddressRange {
    uintptr_t nBegin;
    uintptr_t nEnd;
};

uintptr_t addressOf(const char *p) {
    return reinterpret_cast<uintptr_t>(p);
}

AddressRange rangeOf(const NameStorageBlock &block) {
    const uintptr_t nBegin = addressOf(block.pData);
    return {nBegin, nBegin + static_cast<uintptr_t>(block.nSize)};
}

// Finds the gap between blocks that an address lies in. False if it lies in a block.
bool walkToGap(const NamesManager *mgr, uintptr_t nAddress, AddressRange *pGap) {
    *pGap = {0, UINTPTR_MAX};
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        const AddressRange block = rangeOf(mgr->pBlocks[b]);
        if (block.nEnd <= nAddress) {
            pGap->nBegin = std::max(pGap->nBegin, block.nEnd);
        } else if (block.nBegin > nAddress) {
            pGap->nEnd = std::min(pGap->nEnd, block.nBegin);
        } else {
            return false;
        }
    }
    return true;
}

// The same by a binary search over sorted blocks.
bool searchGap(const AddressRange *pSorted, int32_t nBlocks, uintptr_t nAddress,
               AddressRange *pGap) {
    const AddressRange *pEnd = pSorted + nBlocks;
    const AddressRange *pAbove =
        std::upper_bound(pSorted, pEnd, nAddress,
                         [](uintptr_t n, const AddressRange &block) { return n < block.nBegin; });
    pGap->nBegin = pAbove == pSorted ? 0 : pAbove[-1].nEnd;
    pGap->nEnd = pAbove == pEnd ? UINTPTR_MAX : pAbove->nBegin;
    return nAddress >= pGap->nBegin;
}

// The address ranges of the blocks in ascending order, which the caller frees; NULL without memory.
AddressRange *sortBlocks(const NamesManager *mgr) {
    const uint64_t nBytes = static_cast<uint64_t>(mgr->nBlocks) * sizeof(AddressRange);
    AddressRange *pSorted =
        static_cast<AddressRange *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pSorted == nullptr) { return nullptr; }
    std::transform(mgr->pBlocks, mgr->pBlocks + mgr->nBlocks, pSorted, rangeOf);
    std::sort(pSorted, pSorted + mgr->nBlocks,
              [](const AddressRange &a, const AddressRange &b) { return a.nBegin < b.nBegin; });
    return pSorted;
}

// Neighbouring names mostly lie in one gap, which one walk over the blocks finds. Where they do
// not, the blocks are sorted; without memory for that it takes more walks.
bool anyLiesInBlock(const NamesManager *mgr, const char *const *ppNames, int32_t nNames) {
    const char *const *ppEnd = ppNames + nNames;
    const int32_t nMostWalks = std::min(kMostWalks, mgr->nBlocks);
    AddressRange gap = {0, 0};
    AddressRange *pSorted = nullptr;
    bool bOutside = true;
    for (int32_t nGaps = 0; bOutside; ++nGaps) {
        ppNames = std::find_if_not(ppNames, ppEnd, [gap](const char *pName) {
            return addressOf(pName) - gap.nBegin < gap.nEnd - gap.nBegin;
        });
        if (ppNames == ppEnd) { break; }
        if (nGaps == nMostWalks) { pSorted = sortBlocks(mgr); }
        bOutside = pSorted != nullptr ? searchGap(pSorted, mgr->nBlocks, addressOf(*ppNames), &gap)
                                      : walkToGap(mgr, addressOf(*ppNames), &gap);
    }
    freeMemory(pSorted);
    return !bOutside;
}

// The length of a name, or nMost if it is longer.
size_t givenLength(const char *const *ppNames, const int32_t *pLengths, int32_t k, size_t nMost) {
    return pLengths != nullptr ? std::min(static_cast<size_t>(pLengths[k]), nMost)
                               : strnlen(ppNames[k], nMost);
}

// Copies few and short names. False if they are not.
bool copyLocally(const char *const *ppNames, const int32_t *pLengths, int32_t nNames,
                 StableNames *pStable) {
    if (nNames > kMostLocalNames) { return false; }
    char *pText = pStable->aLocalTexts;
    for (int32_t k = 0; k < nNames; ++k) {
        const size_t nRoom = static_cast<size_t>(pStable->aLocalTexts + kLocalNamesBytes - pText);
        const size_t nLength = givenLength(ppNames, pLengths, k, nRoom);
        if (nLength == nRoom) { return false; }
        pStable->apLocal[k] = static_cast<char *>(std::memcpy(pText, ppNames[k], nLength));
        pText[nLength] = 0;
        pText += nLength + 1;
    }
    pStable->ppNames = pStable->apLocal;
    return true;
}

// Copies any names: pointers, then texts. False without memory.
bool copyToHeap(const char *const *ppNames, const int32_t *pLengths, int32_t nNames,
                StableNames *pStable) {
    uint64_t nBytes = static_cast<uint64_t>(nNames) * sizeof(char *);
    for (int32_t k = 0; k < nNames; ++k) {
        nBytes += givenLength(ppNames, pLengths, k, SIZE_MAX) + 1;
    }
    pStable->ppHeap = static_cast<const char **>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pStable->ppHeap == nullptr) { return false; }
    char *pText = reinterpret_cast<char *>(pStable->ppHeap + nNames);
    for (int32_t k = 0; k < nNames; ++k) {
        const size_t nLength = givenLength(ppNames, pLengths, k, SIZE_MAX);
        pStable->ppHeap[k] = static_cast<char *>(std::memcpy(pText, ppNames[k], nLength));
        pText[nLength] = 0;
        pText += nLength + 1;
    }
    pStable->ppNames = pStable->ppHeap;
    return true;
}

}  // namespace

bool makeStable(const NamesManager *mgr, const char *const *ppNames, const int32_t *pLengths,
                int32_t nNames, StableNames *pStable) {
    const bool bCopyIsCheaper = mgr->nBlocks / kBlocksPerCopy > nNames;
    if (bCopyIsCheaper && copyLocally(ppNames, pLengths, nNames, pStable)) { return true; }
    if (anyLiesInBlock(mgr, ppNames, nNames)) {
        return copyToHeap(ppNames, pLengths, nNames, pStable);
    }
    pStable->ppNames = ppNames;
    return true;
}

}  // namespace names
