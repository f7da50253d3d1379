// Reading a manager that nobody changes, without its lock.
//
// In segment mode a reader keeps the starts of some consecutive names, found together. Reading
// these in any order writes nothing, and the name after the last costs no search.
#include "names/names_reader.h"

#include <cstring>

#include "names/lookup.hpp"
#include "names/storage/lookup_index.hpp"
#include "names/storage/reading.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

// After a search the next name may lie anywhere, so few starts are found along with the first.
constexpr int32_t kAheadOfSearched = 4;

// Where a name lies, without a search for those whose starts are known and the one after them.
NameLocation locateByReader(const NamesReader &reader, int32_t index) {
    const uint32_t k = static_cast<uint32_t>(index) - static_cast<uint32_t>(reader.iFirst);
    if (k > static_cast<uint32_t>(reader.nNames)) { return searchName(reader.pManager, index); }
    return {reader.iSegment, reader.nOffset + reader.aStarts[k], false};
}

// Forgets the names and sets the cursor.
void moveCursor(NamesReader *reader, int32_t index, const NameLocation &location) {
    reader->iFirst = index;
    reader->nNames = 0;
    reader->iSegment = location.iSegment;
    reader->nOffset = location.nOffset;
    reader->aStarts[0] = 0;
}

// Finds the starts of a name and of some after it in its segment.
[[gnu::noinline]] const char *readAhead(NamesReader *reader, int32_t index, int32_t *pnLength) {
    const NamesManager *mgr = reader->pManager;
    const NameLocation location = locateByReader(*reader, index);
    const int32_t nAhead = location.bSearched ? kAheadOfSearched : NAMES_READER_AHEAD;
    NameReader names = {mgr, index, std::min(nAhead - 1, mgr->nNames - 1 - index) + index,
                        location};
    const int32_t nNames = enterSegment(&names);
    const TextSpan text = restOfSegment(names);
    static_assert(sizeof reader->aStarts ==
                  roomForStarts(NAMES_READER_AHEAD) * sizeof reader->aStarts[0]);
    moveCursor(reader, index, names.location);
    reader->pText = text.pText;
    reader->nNames = nNames;
    findNameStarts(text, nNames, reader->aStarts);
    if (pnLength != nullptr) { *pnLength = reader->aStarts[1] - 1; }
    return text.pText;
}

[[gnu::noinline]] const char *withLength(const char *pName, int32_t *pnLength) {
    *pnLength = static_cast<int32_t>(std::strlen(pName));
    return pName;
}

// Puts a range of names, which is not empty, into arrays and the cursor after it.
void readViews(NamesReader *reader, IndexRange range, const char **ppNames, int32_t *pLengths) {
    const NamesManager *mgr = reader->pManager;
    NameReader names = {mgr, range.first, range.last, {0, 0, false}};
    if (mgr->pSegments != nullptr) { names.location = locateByReader(*reader, range.first); }
    for (int32_t n = readNames(&names, ppNames, pLengths); n > 0;
         n = readNames(&names, ppNames, pLengths)) {
        if (ppNames != nullptr) { ppNames += n; }
        if (pLengths != nullptr) { pLengths += n; }
    }
    moveCursor(reader, names.iNext, names.location);
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesReader_Open(NamesReader *reader, NamesManager *mgr, int32_t bLookups) {
    ScopedLock lock(mgr);
    *reader = {};
    reader->pManager = mgr;
    reader->pBlocks = mgr->pBlocks;
    reader->pPositions = mgr->pPositions;
    if (mgr->pPositions != nullptr) { reader->nPositions = mgr->nNames; }
    if (mgr->nSegments > 0) { reader->nOffset = mgr->pSegments[0].nOffset; }
    if (bLookups != 0) { reader->pIndex = currentIndex(mgr); }
    return bLookups != 0 && reader->pIndex == nullptr && mgr->nNames > 0 ? 1 : 0;
}

int32_t NamesReader_GetNumNames(const NamesReader *reader) {
    return reader->pManager->nNames;
}

const char *NamesReader_GetName(NamesReader *reader, int32_t index, int32_t bOneBased,
                                int32_t *pnLength) {
    // An index below 0 becomes a huge one.
    const uint32_t i = static_cast<uint32_t>(index) - (bOneBased != 0 ? 1U : 0U);
    const uint32_t k = i - static_cast<uint32_t>(reader->iFirst);
    if (k < static_cast<uint32_t>(reader->nNames)) {
        const int32_t *pStart = &reader->aStarts[k];
        if (pnLength != nullptr) { *pnLength = pStart[1] - pStart[0] - 1; }
        return reader->pText + *pStart;
    }
    if (i < static_cast<uint32_t>(reader->nPositions)) {
        const NamePosition &position = reader->pPositions[i];
        const char *pName = textAt(reader->pManager, position.iBlock, position.nOffset);
        return pnLength != nullptr ? withLength(pName, pnLength) : pName;
    }
    if (i >= static_cast<uint32_t>(reader->pManager->nNames)) { return nullptr; }
    return readAhead(reader, static_cast<int32_t>(i), pnLength);
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
