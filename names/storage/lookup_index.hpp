// The hash index over the stored texts: built at the first lookup, kept current by stores, dropped
// by removals.
#ifndef NAMES_STORAGE_LOOKUP_INDEX_HPP
#define NAMES_STORAGE_LOOKUP_INDEX_HPP

#include "names/storage/record.hpp"

namespace names {

// False also when a host's map does not count equal keys and there are some: each lookup then
// builds the index anew.
inline bool isIndexCurrent(const NamesManager *mgr) {
    return mgr->pLookupIndex != nullptr && mgr->pLookupIndex->nEntries == mgr->nNames;
}

// The index, built if need be; NULL when there are no names or it could not be built.
NameLookupIndex *currentIndex(NamesManager *mgr);

void dropIndex(NamesManager *mgr);

// Enters nNames names that lie back to back at pText, the first one at index iFirst. Does nothing
// without an index, drops it on failure.
void indexTexts(NamesManager *mgr, const char *pText, const int32_t *lengths, int32_t nNames,
                int32_t iFirst);

// Takes the names of a range out of the index, if there is one.
void unindexNames(NamesManager *mgr, IndexRange range);

}  // namespace names

#endif
