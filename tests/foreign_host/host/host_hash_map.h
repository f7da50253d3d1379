/* The foreign host's maps learn who makes them and who inserts, as its memory does. */
#ifndef HOST_HOST_HASH_MAP_H
#define HOST_HOST_HASH_MAP_H
#include <stdint.h>
typedef struct HostHashMap HostHashMap;
typedef struct HostHashMapKeyKind HostHashMapKeyKind;
struct HostHashMap {
    int64_t nEntries;
};
extern "C" {
extern const HostHashMapKeyKind HostHashMap_StringKeys;
HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t nExpected,
                                const char *szFile = __builtin_FILE(),
                                int32_t nLine = __builtin_LINE());
int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey);
int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue,
                           int32_t *pnExisting, const char *szFile = __builtin_FILE(),
                           int32_t nLine = __builtin_LINE());
int32_t HostHashMap_Remove(HostHashMap *pMap, const char *szKey);
void HostHashMap_Release(HostHashMap *pMap);
}
#endif
