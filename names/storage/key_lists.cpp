// The one source that depends on what a host's map offers.
#include "names/storage/key_lists.hpp"

namespace names {

void findKeys(HostHashMap *pMap, const char *const *ppKeys, int32_t nKeys, int32_t *pnValues) {
#ifdef HOST_HASH_MAP_HAS_LISTS
    HostHashMap_FindList(pMap, ppKeys, nKeys, pnValues);
#else
    for (int32_t k = 0; k < nKeys; ++k) {
        pnValues[k] = ppKeys[k] != nullptr ? HostHashMap_Find(pMap, ppKeys[k]) : -1;
    }
#endif
}

int32_t insertKeys(HostHashMap *pMap, const char *const *ppKeys, int32_t nKeys, int32_t nFirstValue,
                   int32_t *pnExisting) {
#ifdef HOST_HASH_MAP_HAS_LISTS
    return static_cast<int32_t>(
        HostHashMap_InsertList(pMap, ppKeys, nKeys, nFirstValue, pnExisting));
#else
    for (int32_t k = 0; k < nKeys; ++k) {
        int32_t nExisting = -1;
        if (ppKeys[k] != nullptr &&
            HostHashMap_Insert(pMap, ppKeys[k], nFirstValue + k, &nExisting) != 0) {
            return k;
        }
        if (pnExisting != nullptr) { pnExisting[k] = nExisting; }
    }
    return nKeys;
#endif
}

bool findNextRepeated(HostHashMap *pMap, int32_t nFirst, int32_t *pnRepeated, int32_t *pnLowest) {
#ifdef HOST_HASH_MAP_HAS_REPEATS
    *pnRepeated = HostHashMap_NextRepeated(pMap, nFirst, pnLowest);
    return true;
#else
    static_cast<void>(pMap), static_cast<void>(nFirst);
    static_cast<void>(pnRepeated), static_cast<void>(pnLowest);
    return false;
#endif
}

}  // namespace names
