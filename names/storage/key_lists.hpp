// Many keys of a hash map at once, on hosts that offer lists of keys, else key by key.
#ifndef NAMES_STORAGE_KEY_LISTS_HPP
#define NAMES_STORAGE_KEY_LISTS_HPP

#include <cstdint>

#include "host/host_hash_map.h"

namespace names {

// HostHashMap_Find for each of the keys, -1 for NULL: at once where the host offers lists, else key
// by key.
void findKeys(HostHashMap *pMap, const char *const *ppKeys, int32_t nKeys, int32_t *pnValues);

// HostHashMap_Insert for each of the keys but NULL, with the values from nFirstValue on. pnExisting
// may be NULL. How many keys are done: all, or those before the first that could not be inserted.
int32_t insertKeys(HostHashMap *pMap, const char *const *ppKeys, int32_t nKeys, int32_t nFirstValue,
                   int32_t *pnExisting);

}  // namespace names

#endif
