// Given names that lie in the manager that they are stored in.
#ifndef NAMES_OWN_NAMES_HPP
#define NAMES_OWN_NAMES_HPP

#include "names/storage/record.hpp"

namespace names {

bool anyLiesInBlock(const NamesManager *mgr, const char *const *names, int32_t nNames);

// Where those of the names that lie in the manager itself are put for the time of a store: as many
// pointers, then their texts. NULL without memory. The caller frees it.
const char **copyOwnNames(const NamesManager *mgr, const char *const *names, int32_t nNames);

}  // namespace names

#endif
