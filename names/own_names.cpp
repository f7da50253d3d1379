// Given names that lie in the manager that they are stored in.
#include "names/own_names.hpp"

#include <algorithm>

namespace names {

namespace {

// Addresses from nBegin on that lie in one block, or in none.
struct Surroundings {
    uintptr_t nBegin;
    uintptr_t nBytes;
    bool bInBlock;
};

uintptr_t addressOf(const char *p) {
    return reinterpret_cast<uintptr_t>(p);
}

Surroundings surroundingsOf(const NamesManager *mgr, const char *pName) {
    uintptr_t nBegin = 0;
    uintptr_t nEnd = UINTPTR_MAX;
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        const uintptr_t nBlock = addressOf(mgr->pBlocks[b].pData);
        const uintptr_t nBlockEnd = nBlock + static_cast<uintptr_t>(mgr->pBlocks[b].nSize);
        if (nBlockEnd <= addressOf(pName)) {
            nBegin = std::max(nBegin, nBlockEnd);
        } else if (nBlock > addressOf(pName)) {
            nEnd = std::min(nEnd, nBlock);
        } else {
            return {nBlock, nBlockEnd - nBlock, true};
        }
    }
    return {nBegin, nEnd - nBegin, false};
}

// *pLast: the surroundings of the name asked for before, mostly those of the next one, too.
inline bool liesInBlock(const NamesManager *mgr, const char *pName, Surroundings *pLast) {
    if (addressOf(pName) - pLast->nBegin >= pLast->nBytes) { *pLast = surroundingsOf(mgr, pName); }
    return pLast->bInBlock;
}

}  // namespace

bool anyLiesInBlock(const NamesManager *mgr, const char *const *names, int32_t nNames) {
    Surroundings last = {0, 0, false};
    return std::any_of(names, names + nNames,
                       [mgr, &last](const char *pName) { return liesInBlock(mgr, pName, &last); });
}

// Where those of the names that lie in the manager itself are put for the time of a store: as many
// pointers, then their texts. NULL without memory.
const char **copyOwnNames(const NamesManager *mgr, const char *const *names, int32_t nNames) {
    uint64_t nBytes = static_cast<uint64_t>(nNames) * sizeof(char *);
    Surroundings last = {0, 0, false};
    for (int32_t k = 0; k < nNames; ++k) {
        nBytes += liesInBlock(mgr, names[k], &last) ? std::strlen(names[k]) + 1 : 0;
    }
    const char **ppCopies = static_cast<const char **>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (ppCopies == nullptr) { return nullptr; }
    char *pText = reinterpret_cast<char *>(ppCopies + nNames);
    for (int32_t k = 0; k < nNames; ++k) {
        ppCopies[k] = names[k];
        if (liesInBlock(mgr, names[k], &last)) {
            const size_t nName = std::strlen(names[k]) + 1;
            ppCopies[k] = static_cast<const char *>(std::memcpy(pText, names[k], nName));
            pText += nName;
        }
    }
    return ppCopies;
}

}  // namespace names
