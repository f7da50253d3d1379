// Finding indices by name.
#ifndef NAMES_LOOKUP_HPP
#define NAMES_LOOKUP_HPP

#include "names/storage/record.hpp"

namespace names {

// Looks names without trailing blanks up, each as if alone: their 0-based indices, -1 for none and
// for NULL. Returns how many were looked up: only the first where the next one may find another
// index, for want of memory or on a host that makes it stale.
int32_t findTexts(NamesManager *mgr, const char *const *ppTexts, int32_t nTexts, int32_t *pFound);

constexpr int32_t kChunkNames = 32;

// A list of names, looked up in chunks.
struct NameLookup {
    NamesManager *mgr;        // for scans alone
    NameLookupIndex *pIndex;  // NULL: by scans, one for each name
    const char *const *ppNames;
    const int32_t *pLengths;  // NULL: all are given with nWidth
    int32_t nWidth;
    TextBuffer buffer;
};

// Finds up to kChunkNames of the names, one where there is no index: their 0-based indices, -1 for
// none. False without memory.
bool findTogether(NameLookup *pLookup, int32_t first, int32_t nNames, int32_t *pFound);

// NamesManager_FindNames in an index, which changes nothing and needs no lock. NULL: finds nothing.
int32_t findNamesIn(NameLookupIndex *pIndex, const char *const *ppNames, int32_t nCount,
                    int32_t nWidth, int32_t bOneBased, int32_t *pIndices);

// NamesManager_FindName in an index.
int32_t findNameIn(NameLookupIndex *pIndex, const char *szName, int32_t bOneBased);

}  // namespace names

#endif
