// Creating, destroying, clearing and counting.
#include "names/lifecycle.hpp"

#include "names/storage/blocks.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/name_format.hpp"
#include "names/storage/segments.hpp"

namespace names {

namespace {

constexpr char kDefaultFormat[] = "nm%d";

}  // namespace

bool clearAll(NamesManager *mgr) {
    bool bTable = true;
    forgetMaximum(mgr);
    mgr->nMaxNameLengthCount = 0;
    mgr->nNames = 0;
    dropCursor(mgr);
    for (int32_t b = 1; b < mgr->nBlocks; ++b) { freeMemory(mgr->pBlocks[b].pData); }
    leaveBlock(&mgr->pBlocks[0], mgr->pBlocks[0].nNamesInBlock);
    mgr->nBlocks = 1;
    mgr->nGeneratedNameBase = 0;
    mgr->nSegments = 0;
    if (mgr->pSegments == nullptr) {
        mgr->nSegmentsAlloc = 0;
        bTable = growSegmentTable(mgr);
    }
    freeMemory(mgr->pPositions);
    mgr->pPositions = nullptr;
    mgr->nPositionsAlloc = 0;
    dropIndex(mgr);
    return bTable;
}

}  // namespace names

using namespace names;

NamesManager *NamesManager_Create(void *pOwner, const char *szFormat) {
    if (szFormat == nullptr) { szFormat = kDefaultFormat; }
    if (!isNameFormat(szFormat)) { return nullptr; }
    NamesManager *mgr = static_cast<NamesManager *>(
        HostMem_AllocRecord(sizeof(NamesManager), kSourceTag, __LINE__));
    if (mgr == nullptr) { return nullptr; }
    std::memset(mgr, 0, sizeof *mgr);
    if (HostLock_Init(&mgr->lock) != 0) {
        freeMemory(mgr);
        return nullptr;
    }
    mgr->pOwner = pOwner;
    std::strcpy(mgr->szNameFormat, szFormat);
    forgetMaximum(mgr);
    mgr->iCursorName = -1;
    const bool bComplete = resizeBlockTable(mgr, kTableStep) && addBlock(mgr, kFirstBlockBytes) &&
                           growSegmentTable(mgr);
    if (!bComplete) {
        NamesManager_Destroy(mgr);
        return nullptr;
    }
    return mgr;
}

void NamesManager_Destroy(NamesManager *mgr) {
    if (mgr == nullptr) { return; }
    dropIndex(mgr);
    freeMemory(mgr->pSegments);
    freeMemory(mgr->pPositions);
    for (int32_t b = 0; b < mgr->nBlocks; ++b) { freeMemory(mgr->pBlocks[b].pData); }
    freeMemory(mgr->pBlocks);
    HostLock_Destroy(&mgr->lock);
    freeMemory(mgr);
}

int32_t NamesManager_Clear(NamesManager *mgr) {
    ScopedLock lock(mgr);
    return clearAll(mgr) ? 0 : 1;
}

void NamesManager_Lock(NamesManager *mgr) {
    HostLock_Acquire(&mgr->lock);
}

void NamesManager_Unlock(NamesManager *mgr) {
    HostLock_Release(&mgr->lock);
}

int32_t NamesManager_GetNumNames(NamesManager *mgr) {
    ScopedLock lock(mgr);
    return mgr->nNames;
}

int32_t NamesManager_Version(void) {
    return NAMES_MANAGER_VERSION;
}
