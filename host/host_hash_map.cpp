// The map: entries of the table, by hash; groups beside it for the keys that share one.
//
//     Entry { szKey,  nValue >= 0, nHash }    the only key of its hash
//     Entry { pGroups, kIsGroup,   nHash } -> two or more keys, most often equal ones
//
// A text is read only to confirm that it is the one sought. Lists of keys are worked through in
// chunks, step by step, each step prefetching what the next one reads, so that the waits for memory
// of many keys overlap.
#include "host/host_hash_map.h"

#include <algorithm>
#include <cstring>

#include "host/hash_table.hpp"
#include "host/host_memory.h"
#include "host/key_group.hpp"
#include "host/repeats.hpp"

// A test names a header with hashes of few bits instead.
#ifndef HOST_TEXT_HASH_HEADER
#define HOST_TEXT_HASH_HEADER "host/text_hash.hpp"
#endif
#include HOST_TEXT_HASH_HEADER

struct HostHashMapKeyKind {
    char cUnused;
};

const HostHashMapKeyKind HostHashMap_StringKeys = {'\0'};

namespace host {
namespace {

struct StringMap {
    HostHashMap host;  // first: callers hold its address
    const HashSecret *pSecret;
    HashTable table;
    int64_t nGroups;  // entries that hold several keys
    Repeats repeats;
};

StringMap &stringMap(HostHashMap *pMap) {
    return *reinterpret_cast<StringMap *>(pMap);
}

// ---- Entries ----

// The lowest value under a key in the entry of its hash, -1 if there is none.
int32_t valueIn(const Entry &entry, const char *szKey) {
    if (entry.nValue == kIsGroup) { return lowestValue(entry.pGroups, szKey); }
    return std::strcmp(entry.szKey, szKey) == 0 ? entry.nValue : -1;
}

// Adds a key to the entry of its hash. Returns the group that it is in then, NULL without memory:
// nothing has changed.
KeyGroup *addToGroups(StringMap *pMap, Entry *pEntry, const char *szKey, int32_t nValue) {
    if (pEntry->nValue == kIsGroup) { return addKey(&pEntry->pGroups, szKey, nValue); }
    KeyGroup *pGroups = nullptr;
    if (addKey(&pGroups, pEntry->szKey, pEntry->nValue) == nullptr) { return nullptr; }
    KeyGroup *pGroup = addKey(&pGroups, szKey, nValue);
    if (pGroup == nullptr) {
        destroyGroups(pGroups);
        return nullptr;
    }
    pEntry->pGroups = pGroups;
    pEntry->nValue = kIsGroup;
    ++pMap->nGroups;
    return pGroup;
}

// The same, given the lowest value under the key so far, -1 for none: of the two values the higher
// repeats the other from now on. Not inlined: most keys have a hash of their own.
[[gnu::noinline]] bool addToEntry(StringMap *pMap, Entry *pEntry, const char *szKey, int32_t nValue,
                                  int32_t nExisting) {
    const int32_t nRepeat = std::max(nValue, nExisting);
    if (nExisting >= 0 && !reserveRepeat(&pMap->repeats, nRepeat)) { return false; }
    const KeyGroup *pGroup = addToGroups(pMap, pEntry, szKey, nValue);
    if (nExisting >= 0) {
        pGroup != nullptr ? addRepeat(&pMap->repeats, nRepeat, pGroup)
                          : removeRepeat(&pMap->repeats, nRepeat);
    }
    return pGroup != nullptr;
}

// Removes a key from an entry that holds several; the last one left becomes the entry's own key.
// False if no key is equal.
bool removeFromGroups(StringMap *pMap, Entry *pEntry, const char *szKey) {
    int32_t nRepeat = -1;
    if (!removeKey(&pEntry->pGroups, szKey, &nRepeat)) { return false; }
    if (nRepeat >= 0) { removeRepeat(&pMap->repeats, nRepeat); }
    KeyGroup *pGroups = pEntry->pGroups;
    if (hasOneKey(pGroups, &pEntry->szKey, &pEntry->nValue)) {
        destroyGroups(pGroups);
        --pMap->nGroups;
    }
    return true;
}

// ---- One key ----

// False without memory: nothing has changed. Not inlined: only for keys whose hash may be in the
// table already, and for a table without room.
[[gnu::noinline]] bool insertSearching(StringMap *pMap, const char *szKey, KeyHash hash,
                                       int32_t nValue, int32_t *pnExisting) {
    Entry *pEntry = findEntry(pMap->table, hash);
    if (pEntry != nullptr) {  // an equal key, or one that the hash does not tell apart
        const int32_t nExisting = valueIn(*pEntry, szKey);
        if (!addToEntry(pMap, pEntry, szKey, nValue, nExisting)) { return false; }
        *pnExisting = nExisting;
    } else {  // a new hash after all, or no room, which is made only now that it is needed
        if (pMap->table.nRoom == 0 && !growTable(&pMap->table)) { return false; }
        *addEntry(&pMap->table, hash) = {{szKey}, nValue, hash.nHash};
        *pnExisting = -1;
    }
    ++pMap->host.nEntries;
    return true;
}

bool insertHashed(StringMap *pMap, const char *szKey, KeyHash hash, int32_t nValue,
                  int32_t *pnExisting) {
    if (pMap->table.nRoom == 0 || mayHaveEntry(pMap->table, hash)) {
        return insertSearching(pMap, szKey, hash, nValue, pnExisting);
    }
    // A new hash and room for it: no entry and no text need be read.
    *addEntry(&pMap->table, hash) = {{szKey}, nValue, hash.nHash};
    *pnExisting = -1;
    ++pMap->host.nEntries;
    return true;
}

// Slots from which on a search prefetches the entry along with the tags. In smaller tables the tags
// come from a cache, and soon enough: a key that is not there should not wait for an entry.
constexpr uint64_t kTagsBeyondCaches = 8 * 1024 * 1024;

int32_t findKey(HostHashMap *pMap, const char *szKey) {
    const StringMap &map = stringMap(pMap);
    const KeyHash hash = hashText(*map.pSecret, szKey);
    if (slotsOf(map.table) >= kTagsBeyondCaches) { prefetchEntry(map.table, hash); }
    const Entry *pEntry = findEntry(map.table, hash);
    return pEntry != nullptr ? valueIn(*pEntry, szKey) : -1;
}

int32_t insertKey(HostHashMap *pMap, const char *szKey, int32_t nValue, int32_t *pnExisting) {
    StringMap &map = stringMap(pMap);
    const KeyHash hash = hashText(*map.pSecret, szKey);
    prefetchEntry(map.table, hash);
    int32_t nUnwanted = -1;
    return nValue >= 0 && insertHashed(&map, szKey, hash, nValue,
                                       pnExisting != nullptr ? pnExisting : &nUnwanted)
               ? 0
               : 1;
}

int32_t takeOutKey(HostHashMap *pMap, const char *szKey) {
    StringMap &map = stringMap(pMap);
    const KeyHash hash = hashText(*map.pSecret, szKey);
    prefetchEntry(map.table, hash);
    Entry *pEntry = findEntry(map.table, hash);
    if (pEntry == nullptr) { return 1; }
    if (pEntry->nValue == kIsGroup) {
        if (!removeFromGroups(&map, pEntry, szKey)) { return 1; }
    } else {
        if (std::strcmp(pEntry->szKey, szKey) != 0) { return 1; }
        removeEntry(&map.table, pEntry);
    }
    --map.host.nEntries;
    return 0;
}

// ---- Lists of keys ----

constexpr int64_t kChunkKeys = 32;  // more would evict from the cache what was prefetched for them

// Keys that are looked up together; a key may be NULL.
struct KeyChunk {
    const char *const *ppKeys;
    int32_t nKeys;
    KeyHash aHashes[kChunkKeys];
    Entry *apEntries[kChunkKeys];  // first the likely ones, then those of the hashes; NULL for none
};

// Hashes the keys and prefetches where their searches begin.
void startSearches(const StringMap &map, KeyChunk *pChunk) {
    for (int32_t k = 0; k < pChunk->nKeys; ++k) {
        if (pChunk->ppKeys[k] != nullptr) {
            pChunk->aHashes[k] = hashText(*map.pSecret, pChunk->ppKeys[k]);
            prefetchTags(map.table, pChunk->aHashes[k]);
            prefetchEntry(map.table, pChunk->aHashes[k]);
        }
    }
}

// Prefetches the entries that the searches read first: some lie in another line of their bucket
// than was prefetched for the hash.
void prefetchLikelyEntries(const StringMap &map, KeyChunk *pChunk) {
    for (int32_t k = 0; k < pChunk->nKeys; ++k) {
        pChunk->apEntries[k] =
            pChunk->ppKeys[k] != nullptr ? likelyEntry(map.table, pChunk->aHashes[k]) : nullptr;
        __builtin_prefetch(pChunk->apEntries[k]);
    }
}

// Comparing reads 32 bytes of a text at once, often across the end of a cache line.
void prefetchText(const char *szText) {
    __builtin_prefetch(szText);
    __builtin_prefetch(reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(szText) + 31));
}

// Finds the entries of the hashes and prefetches their texts, or groups.
void findEntriesAndPrefetchTexts(const StringMap &map, KeyChunk *pChunk) {
    for (int32_t k = 0; k < pChunk->nKeys; ++k) {
        if (pChunk->apEntries[k] != nullptr) {
            pChunk->apEntries[k] = findEntry(map.table, pChunk->aHashes[k], pChunk->apEntries[k]);
        }
        if (pChunk->apEntries[k] != nullptr) { prefetchText(pChunk->apEntries[k]->szKey); }
    }
}

void prefetchTextsOfGroups(const KeyChunk &chunk) {
    for (int32_t k = 0; k < chunk.nKeys; ++k) {
        const Entry *pEntry = chunk.apEntries[k];
        if (pEntry != nullptr && pEntry->nValue == kIsGroup) {
            prefetchText(anyText(pEntry->pGroups));
        }
    }
}

void findChunk(const StringMap &map, KeyChunk *pChunk, int32_t *pnValues) {
    startSearches(map, pChunk);
    prefetchLikelyEntries(map, pChunk);
    findEntriesAndPrefetchTexts(map, pChunk);
    if (map.nGroups > 0) { prefetchTextsOfGroups(*pChunk); }
    for (int32_t k = 0; k < pChunk->nKeys; ++k) {
        const Entry *pEntry = pChunk->apEntries[k];
        pnValues[k] = pEntry != nullptr ? valueIn(*pEntry, pChunk->ppKeys[k]) : -1;
    }
}

// Whether so many keys repeat others that it pays to prefetch texts, which new keys do not read.
bool manyRepeat(const StringMap &map) {
    return map.nGroups > map.table.nUsed / 64;
}

// Returns how many keys are done, fewer than all without memory. Entries found before are not kept:
// keys inserted meanwhile can move them or bring their hash, and a new key mostly just writes to
// the line that was prefetched.
int32_t insertChunk(StringMap *pMap, KeyChunk *pChunk, int32_t nFirstValue, int32_t *pnExisting) {
    startSearches(*pMap, pChunk);
    if (manyRepeat(*pMap)) {
        prefetchLikelyEntries(*pMap, pChunk);
        findEntriesAndPrefetchTexts(*pMap, pChunk);
    }
    for (int32_t k = 0; k < pChunk->nKeys; ++k) {
        const char *szKey = pChunk->ppKeys[k];
        if (szKey == nullptr) {
            pnExisting[k] = -1;
        } else if (!insertHashed(pMap, szKey, pChunk->aHashes[k], nFirstValue + k,
                                 &pnExisting[k])) {
            return k;
        }
    }
    return pChunk->nKeys;
}

void doNothing(HostHashMap * /*pMap*/) {}

void releaseMap(HostHashMap *pMap) {
    StringMap &map = stringMap(pMap);
    for (uint64_t i = 0; map.nGroups > 0 && i < slotsOf(map.table); ++i) {
        if (isTaken(map.table, i) && map.table.pEntries[i].nValue == kIsGroup) {
            destroyGroups(map.table.pEntries[i].pGroups);
            --map.nGroups;
        }
    }
    freeTable(&map.table);
    freeRepeats(&map.repeats);
    HostMem_Free(&map, kHashSourceTag, __LINE__);
}

constexpr HostHashMapOps kMapOps = {findKey, insertKey, takeOutKey, doNothing, releaseMap};

}  // namespace
}  // namespace host

using namespace host;

HostHashMap *HostHashMap_Create(const HostHashMapKeyKind * /*pKeyKind*/, int64_t nExpected) {
    StringMap *pMap =
        static_cast<StringMap *>(HostMem_AllocRecord(sizeof(StringMap), kHashSourceTag, __LINE__));
    if (pMap == nullptr) { return nullptr; }
    *pMap = {{&kMapOps, 0}, &processSecret(), emptyTable(), 0, {nullptr, 0, 0}};
    if (nExpected > 0 && !reserveTable(&pMap->table, nExpected)) {
        releaseMap(&pMap->host);
        return nullptr;
    }
    return &pMap->host;
}

void HostHashMap_FindList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
                          int32_t *pnValues) {
    for (KeyChunk chunk; nKeys > 0;
         ppKeys += chunk.nKeys, pnValues += chunk.nKeys, nKeys -= chunk.nKeys) {
        chunk.ppKeys = ppKeys;
        chunk.nKeys = static_cast<int32_t>(std::min(kChunkKeys, nKeys));
        findChunk(stringMap(pMap), &chunk, pnValues);
    }
}

int64_t HostHashMap_InsertList(HostHashMap *pMap, const char *const *ppKeys, int64_t nKeys,
                               int32_t nFirstValue, int32_t *pnExisting) {
    const int64_t nMost =
        nFirstValue < 0 ? 0 : std::min(nKeys, int64_t{INT32_MAX} - nFirstValue + 1);
    int32_t anUnwanted[kChunkKeys];
    int64_t nDone = 0;
    while (nDone < nMost) {
        KeyChunk chunk;
        chunk.ppKeys = ppKeys + nDone;
        chunk.nKeys = static_cast<int32_t>(std::min(kChunkKeys, nMost - nDone));
        const int32_t nInserted =
            insertChunk(&stringMap(pMap), &chunk, nFirstValue + static_cast<int32_t>(nDone),
                        pnExisting != nullptr ? pnExisting + nDone : anUnwanted);
        nDone += nInserted;
        if (nInserted < chunk.nKeys) { break; }  // no memory
    }
    return nDone;
}

int32_t HostHashMap_NextRepeated(HostHashMap *pMap, int32_t nFirst, int32_t *pnLowest) {
    const KeyGroup *pGroup = nullptr;
    const int32_t nRepeat = nextRepeat(stringMap(pMap).repeats, nFirst, &pGroup);
    if (nRepeat >= 0) { *pnLowest = lowestValue(*pGroup); }
    return nRepeat;
}
