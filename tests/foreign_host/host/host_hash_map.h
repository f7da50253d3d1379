/* The foreign host's maps: plain functions, no table of operations and no lists of keys. */
#ifndef HOST_HOST_HASH_MAP_H
#define HOST_HOST_HASH_MAP_H
#include <stdint.h>
#ifdef __cplusplus
extern "C" {
#endif
typedef struct HostHashMap HostHashMap;
typedef struct HostHashMapKeyKind HostHashMapKeyKind;
struct HostHashMap {
    int64_t nEntries;
};
extern const HostHashMapKeyKind HostHashMap_StringKeys;
HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t nExpected);
int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey);
int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue,
                           int32_t *pnExisting);
int32_t HostHashMap_Remove(HostHashMap *pMap, const char *szKey);
void HostHashMap_Release(HostHashMap *pMap);
#ifdef __cplusplus
}
#endif
#endif
