/* All that the names manager asks of a host, on one page to copy and to fill in. docs/porting.md
 * says how. Cut at the file names, each part is a complete replacement for the shipped header of
 * that name; the module compiles against these parts and nothing else.
 *
 * What you choose: the inside of HostLock, HostHashMapKeyKind, HostPool, HostText and
 * HostInputStream, the codes of your streams, and everything marked "yours".
 *
 * Every function has C linkage and must not throw. Functions are called from any thread; those of
 * one object (a lock apart) by one thread at a time, except where a promise below says more. Sizes
 * are bytes. nSourceTag identifies the module (0x6e616d65735f6d67) and nLine its source line, for
 * your diagnosis alone. Texts end in a NUL.
 */
#ifndef HOST_SERVICES_H
#define HOST_SERVICES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- host/host_memory.h ---- */

/* Memory of unspecified content, aligned for every fundamental type, or NULL. A size of 0 yields a
 * unique pointer. AllocRecord is asked for the records of managers, Alloc for everything else. */
void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);
void *HostMem_Alloc(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/* Resizes memory of these functions and keeps its content up to the smaller size; a NULL pMemory is
 * allocated anew. NULL on failure: pMemory stays valid. Tables grow in steps of 16 or 32 records,
 * so resizing must not copy each time: hold slack for large sizes, or remap. */
void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t nSourceTag, int32_t nLine);

/* Frees it. NULL does nothing. */
void HostMem_Free(void *pMemory, uint64_t nSourceTag, int32_t nLine);

/* ---- host/host_lock.h ---- */

/* A recursive lock, part of the manager's record: a complete type. The fields are yours. */
typedef struct HostLock {
    void *pYours;
} HostLock;

/* Makes a free lock at pLock, which does not move. 0, or non-zero: it could not be made. */
int32_t HostLock_Init(HostLock *pLock);

/* Waits until no other thread holds the lock, then takes it; its holder takes it once more. Each
 * operation of the module takes and releases it: make it cheap while nobody waits. A copy of a
 * manager holds two locks, the destination's first. */
void HostLock_Acquire(HostLock *pLock);

/* Takes one Acquire of this thread back. */
void HostLock_Release(HostLock *pLock);

/* Ends a lock that nobody holds. */
void HostLock_Destroy(HostLock *pLock);

/* ---- host/host_report.h ---- */

/* A default name could not be stored. Called with the manager's lock held: must not wait for a
 * thread that wants it. nCode is 0. */
void Host_ReportError(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText);

/* The audit or the self-check found a violation; szFormat as for printf. It may return or not.
 * nCode is 0. */
void Host_ReportAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szFormat,
                          ...);

/* Reports both texts unless they are equal byte for byte. Only the self-check calls it. */
void Host_AssertStringsEqual(uint64_t nSourceTag, int32_t nLine, const char *szExpected,
                             const char *szActual);

/* ---- host/host_hash_map.h ---- */

/* A map from texts to numbers of 0 or more. Keys are compared byte for byte. The map keeps the
 * address of an inserted key, whose text stays put and unchanged until its entry is removed or the
 * map released; keys that are only looked up are not kept. nEntries is the number of entries.
 *
 * Several threads may look keys up in a map at once as long as nobody changes it.
 *
 * What you do with equal keys is your choice. A map that holds and counts each of them keeps the
 * index of a list with repeated names; one that refuses them makes each lookup in such a list build
 * the index anew, which is slow but right. */
typedef struct HostHashMap HostHashMap;
typedef struct HostHashMapKeyKind HostHashMapKeyKind; /* yours */
typedef struct HostHashMapOps {
    int32_t (*pfnFind)(HostHashMap *pMap, const char *szKey);
    int32_t (*pfnInsert)(HostHashMap *pMap, const char *szKey, int32_t nValue, int32_t *pnExisting);
    int32_t (*pfnRemove)(HostHashMap *pMap, const char *szKey);
    void (*pfnReserved)(HostHashMap *pMap); /* never called */
    void (*pfnRelease)(HostHashMap *pMap);
} HostHashMapOps;
struct HostHashMap {
    const HostHashMapOps *pOps;
    int64_t nEntries;
};

/* The kind of keys asked for. It only has to exist. */
extern const HostHashMapKeyKind HostHashMap_StringKeys;

/* An empty map, or NULL without memory. nExpected entries will come; it must take more. */
HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t nExpected);

/* The value of a key, -1 for none. Of several equal keys the lowest value, if the map holds all. */
static inline int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey) {
    return pMap->pOps->pfnFind(pMap, szKey);
}

/* Inserts a key and, unless pnExisting is NULL, sets *pnExisting to the value found under an equal
 * key before (the lowest), or to -1. 0, also where the map keeps only the first of equal keys; or
 * non-zero without memory: nothing has changed then. */
static inline int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue,
                                         int32_t *pnExisting) {
    return pMap->pOps->pfnInsert(pMap, szKey, nValue, pnExisting);
}

/* Removes the entry inserted under this very address, else one with an equal key. 0, or 1: there is
 * none. */
static inline int32_t HostHashMap_Remove(HostHashMap *pMap, const char *szKey) {
    return pMap->pOps->pfnRemove(pMap, szKey);
}

/* Destroys the map without a look at its keys' texts, which may be gone. */
static inline void HostHashMap_Release(HostHashMap *pMap) {
    pMap->pOps->pfnRelease(pMap);
}

/* Optional. Lists of keys, so that a map can overlap their cache misses: define the macro and both
 * functions, or neither.
 *
 * #define HOST_HASH_MAP_HAS_LISTS 1
 *
 * Find for each key, -1 for NULL:
 *     void HostHashMap_FindList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
 *                               int32_t *pnValues);
 *
 * Insert for each key but NULL, key k with the value nFirstValue + k; pnExisting may be NULL.
 * Returns how many are done: all, or those before the first that could not be inserted.
 *     int64_t HostHashMap_InsertList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
 *                                    int32_t nFirstValue, int32_t *pnExisting);
 *
 * Optional. Repeated keys, so that none need be looked up to find them:
 *
 * #define HOST_HASH_MAP_HAS_REPEATS 1
 *
 * The lowest value, at least nFirst, held under a key under which a lower value is held, too, and
 * the lowest of these; -1 for none, and *pnLowest is untouched. No value is held twice.
 *     int32_t HostHashMap_NextRepeated(HostHashMap *pMap, int32_t nFirst, int32_t *pnLowest);
 */

/* ---- host/host_pool.h ---- */

/* Work memory for the check for repeated names; your ordinary allocator will do. NULL without
 * memory; a size of 0 yields a unique pointer; freeing NULL does nothing. The module passes 0 for
 * the two last arguments. */
typedef struct HostPool HostPool; /* yours */
HostPool *HostPool_Get(void);
void *HostPool_Alloc(HostPool *pPool, uint64_t nBytes, int32_t nReserved1, int32_t nReserved2);
void HostPool_Free(HostPool *pPool, void *pMemory, int32_t nReserved1, int32_t nReserved2);

/* ---- host/host_text.h ---- */

/* A text buffer that a caller of NamesManager_WriteNameToText passes in. 0 on success. Called
 * without the manager's lock, by the thread that passed it. AppendPadded fills up with blanks to
 * nCharacters; what it does with a longer string is yours. */
typedef struct HostText HostText; /* yours */
int32_t HostText_Append(HostText *pText, const char *szString);
int32_t HostText_AppendPadded(HostText *pText, const char *szString, int64_t nCharacters);
int32_t HostText_AppendRepeated(HostText *pText, int64_t nCount, char cCharacter);

/* ---- host/host_stream.h ---- */

/* Streams that a caller of NamesManager_Save and NamesManager_Load passes in. Both functions move
 * exactly nBytes and return 0, or return your own non-zero code, which the operation passes on.
 * Called with the manager's lock held: must not wait for a thread that wants it. A read that fails
 * should touch no more of the buffer than it delivers, since images may claim more than they hold.
 */
typedef struct HostOutputStream HostOutputStream;
typedef struct HostOutputStreamOps {
    int32_t (*pfnWrite)(HostOutputStream *pStream, const void *pData, uint64_t nBytes);
} HostOutputStreamOps;
struct HostOutputStream {
    const HostOutputStreamOps *pOps; /* the first member of your stream */
};
static inline int32_t HostStream_Write(HostOutputStream *pStream, const void *pData,
                                       uint64_t nBytes) {
    return pStream->pOps->pfnWrite(pStream, pData, nBytes);
}
typedef struct HostInputStream HostInputStream; /* yours */
int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes);

/* ---- host/host_problem.h ---- */

/* Makes and destroys the object that owns managers in your library; 0 on success. Only the
 * self-check calls them. */
typedef struct ZOLTproblem *ZOLTprob;
int32_t ZOLTcreateprob(ZOLTprob *pProb);
int32_t ZOLTdestroyprob(ZOLTprob prob);

#ifdef __cplusplus
}
#endif

#endif
