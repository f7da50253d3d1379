// The known length of the longest name: what adding, replacing and removing names does to it, and
// how it is found.
#ifndef NAMES_STORAGE_LONGEST_HPP
#define NAMES_STORAGE_LONGEST_HPP

#include "names/storage/record.hpp"

namespace names {

// The lengths of a range that is about to change, for the upkeep of a known maximum; the caller
// frees them. NULL while the maximum is not known, and without memory, when it becomes unknown.
int32_t *lengthsForMaximum(NamesManager *mgr, IndexRange range);

// Names of these lengths have been added.
void noteAddedLengths(NamesManager *mgr, const int32_t *lengths, int32_t nNames);

// Names of a range are about to be replaced by names of these lengths, or to be removed.
void noteReplacedLengths(NamesManager *mgr, IndexRange range, const int32_t *lengths);
void noteRemovedLengths(NamesManager *mgr, IndexRange range);

// One name of this length is about to be removed.
void noteRemovedLength(NamesManager *mgr, int32_t nLength);

// The length of the longest name, from the cache or by reading all names.
int32_t maxNameLength(NamesManager *mgr);

}  // namespace names

#endif
