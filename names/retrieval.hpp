// Retrieving names: what moves the cursor.
#ifndef NAMES_RETRIEVAL_HPP
#define NAMES_RETRIEVAL_HPP

#include "names/storage/reading.hpp"

namespace names {

// NamesManager_GetNameViews for a range that has been checked.
int32_t getViews(NamesManager *mgr, IndexRange range, const char **ppNames, int32_t *pLengths);

// NamesManager_GetName for a 0-based index.
const char *getOne(NamesManager *mgr, int32_t index);

// Does what every retrieval of at least one name ends with: moves the cursor to the name that
// follows, and counts a miss where the first name had to be searched for. Too many misses in a row
// switch to positions instead; if that fails, the cursor stays where it was and the next miss tries
// again. reader has read its range to the end.
void finishRetrieval(NamesManager *mgr, const NameReader &reader);

}  // namespace names

#endif
