// Retrieving names: what moves the cursor.
#ifndef NAMES_RETRIEVAL_HPP
#define NAMES_RETRIEVAL_HPP

#include "names/storage/reading.hpp"

namespace names {

int32_t getPointers(NamesManager *mgr, IndexRange range,
                    const char **ppNames);             // as NamesManager_GetNamePointers
const char *getOne(NamesManager *mgr, int32_t index);  // as NamesManager_GetName, 0-based

// What every retrieval of at least one name leaves: the cursor at the name that follows, and the
// miss counter. Too many misses in a row switch to positions instead; if that fails, the cursor
// stays where it was and the next miss tries again. reader has read its range to the end.
void finishRetrieval(NamesManager *mgr, const NameReader &reader);

}  // namespace names

#endif
