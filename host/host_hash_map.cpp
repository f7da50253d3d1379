// The map: entries of the table, by hash; groups beside it for the keys that share one.
//
//     Entry { szKey,  nValue >= 0, nHash }    the only key of its hash
//     Entry { pGroup, kIsGroup,    nHash } -> KeyGroup of two or more keys, equal ones as a rule
//
// A text is read only to confirm that it is the one sought. Lists of keys are worked through in chunks, step by step, so that the waits for
// memory of many keys overlap: each step asks for what the next one reads. What a step found is a hint and no more. The last step does what
// the operation for one key does, and finds everything close at hand.
#include "host/host_hash_map.h"

#include <string.h>

#include <algorithm>

#include "host/hash_table.hpp"
#include "host/host_memory.h"
#include "host/key_group.hpp"
#include "host/text_hash.hpp"

struct HostHashMapKeyKind {
    char cUnused;
};

const HostHashMapKeyKind HostHashMap_StringKeys = {'\0'};

namespace host {

namespace {

constexpr uint64_t kSourceTag = 0x686f737468617368;  // "hosthash"
constexpr int64_t kChunk = 32;                       // keys that wait together; more would push out of the cache what they wait for

struct StringMap {
    HostHashMap host;  // first: callers hold its address
    const HashSecret *pSecret;
    HashTable table;
    int64_t nGroups;
};

StringMap &stringMap(HostHashMap *pMap) {
    return *reinterpret_cast<StringMap *>(pMap);
}

// ---- Entries ----

// The lowest value under a key in the entry of its hash, -1 if there is none.
int32_t valueIn(const Entry &entry, const char *szKey) {
    if (entry.nValue == kIsGroup) {
        return lowestValue(*entry.pGroup, szKey);
    }
    return strcmp(entry.szKey, szKey) == 0 ? entry.nValue : -1;
}

// Adds a key to the entry of its hash. False without memory: nothing has changed.
bool addToEntry(StringMap *pMap, Entry *pEntry, const char *szKey, int32_t nValue) {
    if (pEntry->nValue == kIsGroup) {
        return addKey(pEntry->pGroup, szKey, nValue);
    }
    KeyGroup *pGroup = createGroup();
    if (pGroup == nullptr) {
        return false;
    }
    if (!addKey(pGroup, pEntry->szKey, pEntry->nValue) || !addKey(pGroup, szKey, nValue)) {
        destroyGroup(pGroup);
        return false;
    }
    pEntry->pGroup = pGroup;
    pEntry->nValue = kIsGroup;
    ++pMap->nGroups;
    return true;
}

// Takes a key out of a group, and the entry back from it once one key is left. False if no key is equal.
bool removeFromGroup(StringMap *pMap, Entry *pEntry, const char *szKey) {
    KeyGroup *pGroup = pEntry->pGroup;
    if (!removeKey(pGroup, szKey)) {
        return false;
    }
    if (hasOneKey(*pGroup, &pEntry->szKey, &pEntry->nValue)) {
        destroyGroup(pGroup);
        --pMap->nGroups;
    }
    return true;
}

// ---- One key ----

int32_t findHashed(const StringMap &map, const char *szKey, KeyHash hash) {
    const Entry *pEntry = findEntry(map.table, hash);
    return pEntry != nullptr ? valueIn(*pEntry, szKey) : -1;
}

// False without memory: nothing has changed.
bool insertHashed(StringMap *pMap, const char *szKey, KeyHash hash, int32_t nValue, int32_t *pnExisting) {
    Entry *pEntry = findEntry(pMap->table, hash);
    int32_t nExisting = -1;
    if (pEntry != nullptr) {
        nExisting = valueIn(*pEntry, szKey);
        if (!addToEntry(pMap, pEntry, szKey, nValue)) {
            return false;
        }
    } else {
        if (pMap->table.nRoom == 0 && !growTable(&pMap->table)) {
            return false;
        }
        pEntry = addEntry(&pMap->table, hash);
        pEntry->szKey = szKey;
        pEntry->nValue = nValue;
        pEntry->nHash = hash.nHash;
    }
    ++pMap->host.nEntries;
    if (pnExisting != nullptr) {
        *pnExisting = nExisting;
    }
    return true;
}

int32_t findKey(HostHashMap *pMap, const char *szKey) {
    const StringMap &map = stringMap(pMap);
    const KeyHash hash = hashText(*map.pSecret, szKey);
    prefetchHome(map.table, hash);
    return findHashed(map, szKey, hash);
}

int32_t insertKey(HostHashMap *pMap, const char *szKey, int32_t nValue, int32_t *pnExisting) {
    StringMap &map = stringMap(pMap);
    const KeyHash hash = hashText(*map.pSecret, szKey);
    prefetchHome(map.table, hash);
    return nValue >= 0 && insertHashed(&map, szKey, hash, nValue, pnExisting) ? 0 : 1;
}

int32_t takeOutKey(HostHashMap *pMap, const char *szKey) {
    StringMap &map = stringMap(pMap);
    const KeyHash hash = hashText(*map.pSecret, szKey);
    prefetchHome(map.table, hash);
    Entry *pEntry = findEntry(map.table, hash);
    if (pEntry == nullptr) {
        return 1;
    }
    if (pEntry->nValue == kIsGroup) {
        if (!removeFromGroup(&map, pEntry, szKey)) {
            return 1;
        }
    } else {
        if (strcmp(pEntry->szKey, szKey) != 0) {
            return 1;
        }
        removeEntry(&map.table, pEntry);
    }
    --map.host.nEntries;
    return 0;
}

// ---- Lists of keys ----

// Keys that are looked at together; a key may be NULL.
struct Chunk {
    const char *const *ppKeys;
    int32_t nKeys;
    KeyHash aHashes[kChunk];
    const Entry *apLikely[kChunk];  // the entries that the searches come to first, NULL for none
};

// Hashes the keys and asks for where the searches begin.
void startSearches(const StringMap &map, const char *const *ppKeys, int32_t nKeys, Chunk *pChunk) {
    pChunk->ppKeys = ppKeys;
    pChunk->nKeys = nKeys;
    for (int32_t k = 0; k < nKeys; ++k) {
        if (ppKeys[k] != nullptr) {
            pChunk->aHashes[k] = hashText(*map.pSecret, ppKeys[k]);
            prefetchHome(map.table, pChunk->aHashes[k]);
        }
    }
}

// Asks for a text of which nothing but its start is known. Comparing reads 32 bytes at once, often across the end of a cache line.
inline void prefetchText(const char *szText) {
    __builtin_prefetch(szText);
    __builtin_prefetch(reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(szText) + 31));
}

// Asks for the likely entries, where they do not lie in the line asked for already; with bInsert, for the places that new keys will get. Then
// for the texts to compare. (A function that wrote nothing would be taken for one without effect, and left out.)
void askForTexts(const StringMap &map, Chunk *pChunk, bool bInsert) {
    for (int32_t k = 0; k < pChunk->nKeys; ++k) {
        const bool bKey = pChunk->ppKeys[k] != nullptr;
        const Entry *pLikely = bKey ? likelyEntry(map.table, pChunk->aHashes[k]) : nullptr;
        const bool bNew = bInsert && bKey && pLikely == nullptr;
        __builtin_prefetch(bNew ? likelyPlace(map.table, pChunk->aHashes[k]) : pLikely);
        pChunk->apLikely[k] = pLikely;
    }
    for (int32_t k = 0; k < pChunk->nKeys; ++k) {
        const Entry *pLikely = pChunk->apLikely[k];
        if (pLikely != nullptr && pLikely->nHash == pChunk->aHashes[k].nHash) {
            prefetchText(pLikely->szKey);
        }
    }
}

void findChunk(const StringMap &map, const char *const *ppKeys, int32_t nKeys, int32_t *pnValues) {
    Chunk chunk;
    startSearches(map, ppKeys, nKeys, &chunk);
    askForTexts(map, &chunk, false);
    for (int32_t k = 0; k < nKeys; ++k) {
        pnValues[k] = ppKeys[k] != nullptr ? findHashed(map, ppKeys[k], chunk.aHashes[k]) : -1;
    }
}

// How many keys are done.
int32_t insertChunk(StringMap *pMap, const char *const *ppKeys, int32_t nKeys, int32_t nFirstValue, int32_t *pnExisting) {
    Chunk chunk;
    startSearches(*pMap, ppKeys, nKeys, &chunk);
    askForTexts(*pMap, &chunk, true);
    for (int32_t k = 0; k < nKeys; ++k) {
        int32_t nExisting = -1;
        if (ppKeys[k] != nullptr && !insertHashed(pMap, ppKeys[k], chunk.aHashes[k], nFirstValue + k, &nExisting)) {
            return k;
        }
        if (pnExisting != nullptr) {
            pnExisting[k] = nExisting;
        }
    }
    return nKeys;
}

void doNothing(HostHashMap * /*pMap*/) {}

void releaseMap(HostHashMap *pMap) {
    StringMap &map = stringMap(pMap);
    for (uint64_t i = 0; map.nGroups > 0 && i < placesOf(map.table); ++i) {
        if (isTaken(map.table, i) && map.table.pEntries[i].nValue == kIsGroup) {
            destroyGroup(map.table.pEntries[i].pGroup);
            --map.nGroups;
        }
    }
    freeTable(&map.table);
    HostMem_Free(&map, kSourceTag, __LINE__);
}

constexpr HostHashMapOps kOps = {findKey, insertKey, takeOutKey, doNothing, releaseMap};

}  // namespace

}  // namespace host

using namespace host;

HostHashMap *HostHashMap_Create(const HostHashMapKeyKind * /*pKeyKind*/, int64_t nExpected) {
    StringMap *pMap = static_cast<StringMap *>(HostMem_AllocRecord(sizeof(StringMap), kSourceTag, __LINE__));
    if (pMap == nullptr) {
        return nullptr;
    }
    *pMap = {{&kOps, 0}, &processSecret(), emptyTable(), 0};
    if (nExpected > 0 && !reserveTable(&pMap->table, nExpected)) {
        releaseMap(&pMap->host);
        return nullptr;
    }
    return &pMap->host;
}

void HostHashMap_FindList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys, int32_t *pnValues) {
    for (int64_t n = 0; n < nKeys; n += kChunk) {
        findChunk(stringMap(pMap), ppKeys + n, static_cast<int32_t>(std::min(kChunk, nKeys - n)), pnValues + n);
    }
}

int64_t HostHashMap_InsertList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys, int32_t nFirstValue, int32_t *pnExisting) {
    const int64_t nMost = nFirstValue < 0 ? 0 : std::min(nKeys, int64_t{INT32_MAX} - nFirstValue + 1);
    int64_t nDone = 0;
    while (nDone < nMost) {
        const int32_t nChunk = static_cast<int32_t>(std::min(kChunk, nMost - nDone));
        const int32_t nInserted = insertChunk(&stringMap(pMap), ppKeys + nDone, nChunk, nFirstValue + static_cast<int32_t>(nDone),
                                              pnExisting != nullptr ? pnExisting + nDone : nullptr);
        nDone += nInserted;
        if (nInserted < nChunk) {
            break;
        }
    }
    return nDone;
}
