/** @file
 * A hash map from NUL-terminated texts to 32-bit numbers of 0 or more.
 *
 * **Threads.** A map has no lock. Any number of threads may call HostHashMap_Find() and
 * HostHashMap_FindList() at once on a map that nobody changes meanwhile; for every other call only
 * one thread may use the map.
 *
 * Keys are compared by their text, byte for byte. The map keeps the pointer that it was given,
 * never a copy: a key's text stays the caller's and must stay at its address, unchanged, while its
 * entry is in the map. Keys that are only looked up are not kept.
 *
 * The shipped map holds every entry that it is given, equal keys included. No operation's cost
 * grows in proportion to the number of entries or of equal keys, and hashing is seeded at random,
 * so that nobody can choose keys that collide.
 */
#ifndef HOST_HOST_HASH_MAP_H
#define HOST_HOST_HASH_MAP_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostHashMap HostHashMap;
typedef struct HostHashMapKeyKind HostHashMapKeyKind; /**< incomplete here; the host's own */

/** What a map can do. Call through the functions of the same names below, which say what each does.
 */
typedef struct HostHashMapOps {
    int32_t (*pfnFind)(HostHashMap *pMap, const char *szKey);
    int32_t (*pfnInsert)(HostHashMap *pMap, const char *szKey, int32_t nValue, int32_t *pnExisting);
    int32_t (*pfnRemove)(HostHashMap *pMap, const char *szKey);
    void (*pfnReserved)(HostHashMap *pMap); /**< not for callers; does nothing in the shipped map */
    void (*pfnRelease)(HostHashMap *pMap);
} HostHashMapOps;

/** The part of a map that callers may read. */
struct HostHashMap {
    const HostHashMapOps *pOps;
    int64_t nEntries; /**< entries held, each of several equal keys counted */
};

/** The one kind of keys: NUL-terminated texts. */
extern const HostHashMapKeyKind HostHashMap_StringKeys;

/** Makes an empty map with room for nExpected entries; it takes more, and 0 or less asks for no
 * room. pKeyKind is &HostHashMap_StringKeys.
 *
 * Returns the map, which belongs to the caller until HostHashMap_Release(), or NULL if there is no
 * memory for it. */
HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t nExpected);

/** Returns the lowest value held under a key equal to szKey, or -1 if there is none. */
static inline int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey) {
    return pMap->pOps->pfnFind(pMap, szKey);
}

/** Adds the entry (szKey, nValue). Sets `*pnExisting`, unless pnExisting is NULL, to the lowest
 * value that was held under an equal key before, or to -1.
 *
 * Returns 0, or non-zero if memory ran out or nValue is negative; the map and `*pnExisting` are
 * unchanged then. */
static inline int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue,
                                         int32_t *pnExisting) {
    return pMap->pOps->pfnInsert(pMap, szKey, nValue, pnExisting);
}

/** Takes out one entry whose key equals szKey: the one inserted under this very address if there is
 * one (of several such the one with the lowest value), else the one with the lowest value. From
 * then on the map does not touch the text of that entry's key. Needs no memory.
 *
 * Returns 0 if an entry was taken out, or 1 if no key was equal. */
static inline int32_t HostHashMap_Remove(HostHashMap *pMap, const char *szKey) {
    return pMap->pOps->pfnRemove(pMap, szKey);
}

/** Destroys the map, which must not be NULL. Does not touch the keys' texts, which may be gone
 * already. */
static inline void HostHashMap_Release(HostHashMap *pMap) {
    pMap->pOps->pfnRelease(pMap);
}

/** @name Lists of keys, repeated keys
 * A host need not offer these functions. The lists do what the functions above do for each key in
 * turn, but can let the waits for memory of many keys overlap. The module goes key by key where
 * HOST_HASH_MAP_HAS_LISTS, or HOST_HASH_MAP_HAS_REPEATS for repeated keys, is not defined. A host
 * that takes this header as it is but does not offer them has the module compiled with
 * HOST_HASH_MAP_NO_LISTS defined.
 * @{ */
#ifndef HOST_HASH_MAP_NO_LISTS
#define HOST_HASH_MAP_HAS_LISTS 1
#define HOST_HASH_MAP_HAS_REPEATS 1

/** Sets pnValues[k], for each of the nKeys keys, to what HostHashMap_Find() returns for ppKeys[k],
 * or to -1 if ppKeys[k] is NULL. */
void HostHashMap_FindList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
                          int32_t *pnValues);

/** Inserts (ppKeys[k], nFirstValue + k) for each of the nKeys keys in order, passing over keys that
 * are NULL. Sets pnExisting[k], unless pnExisting is NULL, as HostHashMap_Insert() does, and to -1
 * if the key is NULL.
 *
 * Returns how many keys are done. That is fewer than nKeys if memory ran out, nFirstValue is
 * negative or a value would exceed INT32_MAX: the keys before that one are in the map, the others
 * are not, and the rest of pnExisting is untouched. */
int64_t HostHashMap_InsertList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
                               int32_t nFirstValue, int32_t *pnExisting);

/** In a map that holds no value twice: the lowest value, at least nFirst, that is held under a key
 * under which a lower value is held, too, and the lowest of these in *pnLowest. Returns -1, with
 * *pnLowest untouched, if there is none. nFirst is at least 0. */
int32_t HostHashMap_NextRepeated(HostHashMap *pMap, int32_t nFirst, int32_t *pnLowest);

#endif
/** @} */

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
