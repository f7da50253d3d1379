// Retrieving names as pointers, their lengths, and the longest of these.
#include "names/retrieval.hpp"

#include "names/generating.hpp"
#include "names/storage/longest.hpp"
#include "names/storage/positions.hpp"

namespace names {

void finishRetrieval(NamesManager *mgr, const NameReader &reader) {
    if (mgr->pSegments == nullptr) { return; }
    if (!reader.location.bSearched) {
        mgr->nCursorMisses = 0;
    } else {
        const bool bTooMany = mgr->nCursorMisses >= kMaxFreeMisses;
        mgr->nCursorMisses += mgr->nCursorMisses < INT32_MAX ? 1 : 0;
        if (bTooMany) {
            static_cast<void>(storeIndividualPositions(mgr));
            return;
        }
    }
    const NameSegment &segment = mgr->pSegments[reader.location.iSegment];
    if (reader.iLast == segment.iLast) {
        mgr->iCursorName = -1;
    } else {
        mgr->iCursorName = reader.iLast + 1;
        mgr->iCursorSegment = reader.location.iSegment;
        mgr->iCursorBlock = segment.iBlock;
        mgr->nCursorOffset = reader.location.nOffset;
    }
}

namespace {

// Reads the name at the cursor and moves the cursor on as finishRetrieval would: the step that
// sequential readers take for almost every name.
const char *readAtCursor(NamesManager *mgr) {
    const NameStorageBlock &block = mgr->pBlocks[mgr->iCursorBlock];
    const char *pText = block.pData + mgr->nCursorOffset;
    mgr->nCursorMisses = 0;
    if (mgr->iCursorName == mgr->pSegments[mgr->iCursorSegment].iLast) {
        mgr->iCursorName = -1;
    } else {
        ++mgr->iCursorName;
        mgr->nCursorOffset += lengthOfName(pText, block.pData + block.nSize) + 1;
    }
    return pText;
}

}  // namespace

int32_t getViews(NamesManager *mgr, IndexRange range, const char **ppNames, int32_t *pLengths) {
    if (range.last >= mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.last) != 0) {
        return 1;
    }
    if ((ppNames == nullptr && pLengths == nullptr) || range.first > range.last) { return 0; }
    NameReader reader = startReading(mgr, range);
    while (const int32_t nNames = readNames(&reader, ppNames, pLengths)) {
        if (ppNames != nullptr) { ppNames += nNames; }
        if (pLengths != nullptr) { pLengths += nNames; }
    }
    finishRetrieval(mgr, reader);
    return 0;
}

[[gnu::noinline]] const char *getOne(NamesManager *mgr, int32_t index) {
    IndexRange range;
    const char *pName = nullptr;
    if (!toIndexRange(index, index, 0, &range)) { return nullptr; }
    return getViews(mgr, range, &pName, nullptr) == 0 ? pName : nullptr;
}

}  // namespace names

using namespace names;

void NamesManager_GetNameLengths(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                 int32_t *lengths) {
    ScopedLock lock(mgr);
    IndexRange range;
    if (toIndexRange(first, last, bOneBased, &range) && range.last < mgr->nNames) {
        readLengths(mgr, range, lengths);
    }
}

int32_t NamesManager_GetNamePointers(NamesManager *mgr, int32_t first, int32_t last,
                                     int32_t bOneBased, const char **ppNames) {
    return NamesManager_GetNameViews(mgr, first, last, bOneBased, ppNames, nullptr);
}

int32_t NamesManager_GetNameViews(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                  const char **ppNames, int32_t *pLengths) {
    ScopedLock lock(mgr);
    IndexRange range;
    return toIndexRange(first, last, bOneBased, &range) ? getViews(mgr, range, ppNames, pLengths)
                                                        : 1;
}

// The usual cases take few instructions, so that the cache misses of neighbouring calls overlap.
const char *NamesManager_GetName(NamesManager *mgr, int32_t index, int32_t bOneBased) {
    // An index below 0 becomes a huge one.
    const uint32_t i = static_cast<uint32_t>(index) - (bOneBased != 0 ? 1U : 0U);
    ScopedLock lock(mgr);
    if (i < static_cast<uint32_t>(mgr->nNames)) {
        if (mgr->pPositions != nullptr) {
            return textAt(mgr, mgr->pPositions[i].iBlock, mgr->pPositions[i].nOffset);
        }
        if (static_cast<int32_t>(i) == mgr->iCursorName) { return readAtCursor(mgr); }
    }
    return getOne(mgr, static_cast<int32_t>(i));
}

int32_t NamesManager_GetMaxNameLength(NamesManager *mgr) {
    ScopedLock lock(mgr);
    return maxNameLength(mgr);
}
