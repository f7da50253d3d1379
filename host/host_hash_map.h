/* A hash map from NUL-terminated texts to 32-bit numbers.
 *
 * Keys are compared by their text, byte for byte. The map keeps the pointer it was given, never a
 * copy: a key's text stays the caller's and must stay where it is, unchanged, while its entry is in
 * the map. Keys that are only looked up are not kept. Values are 0 or greater.
 *
 * The shipped map holds every entry it is given, equal keys included. No operation's cost grows in
 * proportion to the number of entries or of equal keys, and hashing is seeded at random, so that
 * nobody can choose keys that collide.
 *
 * A map has no lock: at most one thread may use it at a time, except that several may call
 * HostHashMap_Find at once.
 */
#ifndef HOST_HOST_HASH_MAP_H
#define HOST_HOST_HASH_MAP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostHashMap HostHashMap;
typedef struct HostHashMapKeyKind HostHashMapKeyKind; /* the host's own */

/* What a map can do. Call through the functions of the same names below, which say what each does.
 */
typedef struct HostHashMapOps {
    int32_t (*pfnFind)(HostHashMap *pMap, const char *szKey);
    int32_t (*pfnInsert)(HostHashMap *pMap, const char *szKey, int32_t nValue, int32_t *pnExisting);
    int32_t (*pfnRemove)(HostHashMap *pMap, const char *szKey);
    void (*pfnReserved)(HostHashMap *pMap); /* not for callers; does nothing in the shipped map */
    void (*pfnRelease)(HostHashMap *pMap);
} HostHashMapOps;

/* The part of a map that callers may read. */
struct HostHashMap {
    const HostHashMapOps *pOps;
    int64_t nEntries; /* the number of entries held, each of several equal keys counted */
};

/* The one kind of keys: NUL-terminated texts. */
extern const HostHashMapKeyKind HostHashMap_StringKeys;

/* Makes an empty map with room for nExpected entries (it takes more; 0 or less asks for none).
 * pKeyKind is &HostHashMap_StringKeys. Returns the map, which belongs to the caller until
 * HostHashMap_Release, or NULL when there is no memory for it. */
HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t nExpected);

/* Returns the lowest value held under a key equal to szKey, or -1 when there is none. */
static inline int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey) {
    return pMap->pOps->pfnFind(pMap, szKey);
}

/* Adds the entry (szKey, nValue) and sets *pnExisting, unless pnExisting is NULL, to the lowest
 * value that was there under an equal key before, or to -1. Returns 0, or non-zero when memory ran
 * out or nValue is negative: the map and *pnExisting are then unchanged. */
static inline int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue,
                                         int32_t *pnExisting) {
    return pMap->pOps->pfnInsert(pMap, szKey, nValue, pnExisting);
}

/* Takes out one entry whose key equals szKey: the one inserted under this very address when there
 * is one (of several such the lowest value), else the one of the lowest value. From then on the map
 * does not touch the text of that entry's key. Returns 0 when an entry was taken out, 1 when no key
 * was equal. Needs no memory. */
static inline int32_t HostHashMap_Remove(HostHashMap *pMap, const char *szKey) {
    return pMap->pOps->pfnRemove(pMap, szKey);
}

/* Destroys the map. Does not touch the keys' texts, which may be gone already. pMap must not be
 * NULL. */
static inline void HostHashMap_Release(HostHashMap *pMap) {
    pMap->pOps->pfnRelease(pMap);
}

/* ---- Lists of keys: an offer that a host need not make
 * ------------------------------------------------------------------------------- A host that makes
 * it defines this macro and both functions. They do what the functions above do for each key in
 * turn, but can let the waits for memory of many keys overlap. The module goes key by key where the
 * macro is not defined. Several threads may call HostHashMap_FindList at once, too. A host that
 * takes this header as it is and makes no such offer has the module compiled with
 * HOST_HASH_MAP_NO_LISTS defined.
 */
#ifndef HOST_HASH_MAP_NO_LISTS
#define HOST_HASH_MAP_HAS_LISTS 1

/* Sets pnValues[k], for each of the nKeys keys, to what HostHashMap_Find answers for ppKeys[k], or
 * to -1 where that is NULL. */
void HostHashMap_FindList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
                          int32_t *pnValues);

/* Inserts (ppKeys[k], nFirstValue + k) for each of the nKeys keys in order; NULL is passed over.
 * Sets pnExisting[k], unless pnExisting is NULL, as HostHashMap_Insert does, and to -1 where the
 * key is NULL. Returns how many keys are done: fewer than nKeys when memory ran out, nFirstValue is
 * negative or a value would pass INT32_MAX. The first so many are then in, the map holds no other
 * of them, and the rest of pnExisting is untouched. */
int64_t HostHashMap_InsertList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
                               int32_t nFirstValue, int32_t *pnExisting);

#endif

#ifdef __cplusplus
}
#endif

#endif
