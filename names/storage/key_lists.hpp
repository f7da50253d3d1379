// What a host's hash map may offer: many keys at once, else they go key by key; repeated keys.
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

// HostHashMap_NextRepeated. False on hosts that do not offer it: nothing is written then.
bool findNextRepeated(HostHashMap *pMap, int32_t nFirst, int32_t *pnRepeated, int32_t *pnLowest);

}  // namespace names

#endif
