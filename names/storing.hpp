// Storing names. Add trims trailing blanks and checks the length; store takes trimmed names with
// their lengths; append stores at the end of the list; replace stores over existing names.
#ifndef NAMES_STORING_HPP
#define NAMES_STORING_HPP

#include "names/storage/given_names.hpp"

// Stores names[k], lengths[k] bytes long, at index first + k; the bytes need no NUL there. Callers
// have trimmed the names: none may end in a blank, which no lookup would find (a debug build
// asserts it). Fills a gap before the range with default names, replaces what exists, appends the
// rest. 0, or 1: what was stored before the failure stays. A name given alone may lie in mgr
// itself; of several that replace others, none may.
int32_t NamesManager_StoreNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                const char *const *names, const int32_t *lengths);

namespace names {

int32_t addNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                 const char *const *names);  // NamesManager_AddNames

// Stores one name at a 0-based index as NamesManager_AddNames does; it needs no trimming and is not
// too long. 0 or 1.
int32_t addOneName(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength);

// NamesManager_StoreNames for a range that has been checked.
int32_t storeRange(NamesManager *mgr, IndexRange range, const GivenNames &given);

// Replaces the names of a range that exists. 0 or 1.
int32_t replaceNames(NamesManager *mgr, IndexRange range, GivenNames given);

// NamesManager_AddName; the index is in the caller's base, which decides when empty blocks are
// released.
int32_t addName(NamesManager *mgr, int32_t index, int32_t bOneBased, const char *pName);

// Appends nNames names. Returns 0, or 1 without memory: what was stored before stays.
int32_t appendNames(NamesManager *mgr, GivenNames given, int32_t nNames);
bool appendOne(NamesManager *mgr, const GivenNames &given);

}  // namespace names

#endif
