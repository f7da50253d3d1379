// Lists of keys for the host's map: handed over at once where the host offers that, else key by
// key. The only source of the module that depends on what a host offers.
#include "names/names_internal.hpp"

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

}  // namespace names
