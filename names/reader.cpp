// Reading a manager that nobody changes, without its lock.
//
// The cursor of a reader stands at a name and keeps the NULs of the 64 bytes looked at last, so
// that the next name costs no search and mostly no look at text.
#include "names/names_reader.h"

#include <cstring>

#include "names/lookup.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/reading.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

inline uint64_t nulsInWindow(const NamesReader &reader) {
    return matchWindow(reader.pWindow, {reader.pNext, reader.pEnd, reader.pMemoryEnd}, 0);
}

// Sets the cursor to a name of a segment, at its offset in the block.
void setReaderCursor(NamesReader *reader, int32_t index, int32_t iSegment, int32_t nOffset) {
    const NamesManager *mgr = reader->pManager;
    const NameSegment &segment = mgr->pSegments[iSegment];
    reader->iNext = index;
    reader->iSegment = iSegment;
    reader->iLast = segment.iLast;
    reader->pNext = textAt(mgr, segment.iBlock, nOffset);
    reader->pWindow = reader->pNext;
    reader->pEnd = textAt(mgr, segment.iBlock, segment.nOffset + segment.nBytes);
    reader->pMemoryEnd = textAt(mgr, segment.iBlock, mgr->pBlocks[segment.iBlock].nSize);
    reader->nNuls = nulsInWindow(*reader);
}

// Not inlined: sequential readers come here once for each segment.
[[gnu::noinline]] void enterNextSegment(NamesReader *reader) {
    const int32_t iNext = reader->iSegment + 1;
    if (iNext < reader->pManager->nSegments) {
        setReaderCursor(reader, reader->iLast + 1, iNext,
                        reader->pManager->pSegments[iNext].nOffset);
    } else {
        reader->iNext = -1;
    }
}

[[gnu::noinline]] void seekName(NamesReader *reader, int32_t index) {
    const NameLocation location = searchName(reader->pManager, index);
    setReaderCursor(reader, index, location.iSegment, location.nOffset);
}

// The name at the cursor, which moves on by one.
inline const char *takeNext(NamesReader *reader, int32_t *pnLength) {
    const char *pName = reader->pNext;
    while (reader->nNuls == 0) {
        reader->pWindow += kWindowBytes;
        reader->nNuls = nulsInWindow(*reader);
    }
    const char *pNul = reader->pWindow + lowestBit(reader->nNuls);
    reader->nNuls &= reader->nNuls - 1;
    reader->pNext = pNul + 1;
    if (pnLength != nullptr) { *pnLength = static_cast<int32_t>(pNul - pName); }
    if (reader->iNext++ == reader->iLast) { enterNextSegment(reader); }
    return pName;
}

// Puts a range of names, which is not empty, into arrays and the cursor after it.
void readViews(NamesReader *reader, IndexRange range, const char **ppNames, int32_t *pLengths) {
    const NamesManager *mgr = reader->pManager;
    NameReader names = {mgr, range.first, range.last, {0, 0, false}};
    if (mgr->pSegments != nullptr) {
        if (range.first != reader->iNext) { seekName(reader, range.first); }
        const int32_t iBlock = mgr->pSegments[reader->iSegment].iBlock;
        const int64_t nOffset = reader->pNext - mgr->pBlocks[iBlock].pData;
        names.location = {reader->iSegment, static_cast<int32_t>(nOffset), false};
    }
    for (int32_t n = readNames(&names, ppNames, pLengths); n > 0;
         n = readNames(&names, ppNames, pLengths)) {
        if (ppNames != nullptr) { ppNames += n; }
        if (pLengths != nullptr) { pLengths += n; }
    }
    if (mgr->pSegments == nullptr) { return; }
    reader->iSegment = names.location.iSegment;
    reader->iLast = mgr->pSegments[reader->iSegment].iLast;
    if (range.last < reader->iLast) {
        setReaderCursor(reader, range.last + 1, reader->iSegment, names.location.nOffset);
    } else {
        enterNextSegment(reader);
    }
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesReader_Open(NamesReader *reader, NamesManager *mgr, int32_t bLookups) {
    ScopedLock lock(mgr);
    *reader = {};
    reader->pManager = mgr;
    reader->iNext = -1;
    if (bLookups != 0) { reader->pIndex = currentIndex(mgr); }
    return bLookups != 0 && reader->pIndex == nullptr && mgr->nNames > 0 ? 1 : 0;
}

int32_t NamesReader_GetNumNames(const NamesReader *reader) {
    return reader->pManager->nNames;
}

const char *NamesReader_GetName(NamesReader *reader, int32_t index, int32_t bOneBased,
                                int32_t *pnLength) {
    const NamesManager *mgr = reader->pManager;
    // An index below 0 becomes a huge one.
    const uint32_t i = static_cast<uint32_t>(index) - (bOneBased != 0 ? 1U : 0U);
    if (i >= static_cast<uint32_t>(mgr->nNames)) { return nullptr; }
    if (mgr->pPositions != nullptr) {
        const char *pName = textAt(mgr, mgr->pPositions[i].iBlock, mgr->pPositions[i].nOffset);
        if (pnLength != nullptr) { *pnLength = static_cast<int32_t>(std::strlen(pName)); }
        return pName;
    }
    if (static_cast<int32_t>(i) != reader->iNext) { seekName(reader, static_cast<int32_t>(i)); }
    return takeNext(reader, pnLength);
}

int32_t NamesReader_GetNameViews(NamesReader *reader, int32_t first, int32_t last,
                                 int32_t bOneBased, const char **ppNames, int32_t *pLengths) {
    IndexRange range;
    if (!toIndexRange(first, last, bOneBased, &range)) { return 1; }
    if (countOf(range) == 0) { return 0; }
    if (range.last >= reader->pManager->nNames) { return 1; }
    readViews(reader, range, ppNames, pLengths);
    return 0;
}

int32_t NamesReader_FindName(NamesReader *reader, const char *name, int32_t bOneBased) {
    return findNameIn(reader->pIndex, name, bOneBased);
}

int32_t NamesReader_FindNames(NamesReader *reader, const char *const *ppNames, int32_t nCount,
                              int32_t nWidth, int32_t bOneBased, int32_t *pIndices) {
    return findNamesIn(reader->pIndex, ppNames, nCount, nWidth, bOneBased, pIndices);
}
