// Storing names. What the operations are called:
//
//   add       trims trailing blanks and checks the length
//   store     takes trimmed names with their lengths
//   append    stores at the end of the list
//   replace   stores over existing names
//
// They fail for want of memory, but for what is said of add; names stored before the failure stay.
#ifndef NAMES_STORING_HPP
#define NAMES_STORING_HPP

#include "names/storage/blocks.hpp"
#include "names/storage/given_names.hpp"

// Stores names[k], lengths[k] bytes long, at index first + k; the bytes need no NUL there. Callers
// have trimmed the names: none may end in a blank, which no lookup would find (a debug build
// asserts it). Fills a gap before the range with default names, replaces what exists, appends the
// rest. Returns 0 or 1. A name given alone may lie in mgr itself; of several that replace others,
// none may.
int32_t NamesManager_StoreNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                const char *const *names, const int32_t *lengths);

namespace names {

// NamesManager_AddNames and NamesManager_AddName. Indices are in the caller's base, which decides
// where a single name releases empty blocks.
int32_t addNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                 const char *const *ppNames);
int32_t addName(NamesManager *mgr, int32_t index, int32_t bOneBased, const char *pName);

// NamesManager_StoreNames for a range that has been checked, and for one name.
bool storeNames(NamesManager *mgr, IndexRange range, const GivenNames &given);
bool storeName(NamesManager *mgr, int32_t index, const char *pName, int32_t nLength);

// What follows a single name that is added: to look for empty blocks after each would be too much.
inline void releaseAtIntervals(NamesManager *mgr, int32_t index) {
    if (index % kReleaseInterval == 0) { releaseEmptyBlocks(mgr); }
}

bool appendNames(NamesManager *mgr, GivenNames given, int32_t nNames);
bool appendName(NamesManager *mgr, const char *pName, int32_t nLength);

// Appends names and leaves the record as appendName would for one after the other. Returns how many
// were appended before memory ran out, or all.
int32_t appendInTurn(NamesManager *mgr, GivenNames given, int32_t nNames);

// The range exists.
bool replaceNames(NamesManager *mgr, IndexRange range, GivenNames given);

}  // namespace names

#endif
