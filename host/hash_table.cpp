#include "host/hash_table.hpp"

#include <string.h>

#include "host/host_memory.h"
#include "host/platform.hpp"

namespace host {

namespace {

constexpr uint64_t kSourceTag = 0x686f737468617368;    // "hosthash"
constexpr uint64_t kLargePagesFrom = 8 * 1024 * 1024;  // bytes of a table; smaller ones have few large pages to gain
constexpr uint64_t kCacheLine = 64;
constexpr uint64_t kBucketBytes = kBucketEntries * (sizeof(Entry) + sizeof(uint8_t)) + sizeof(uint16_t);
constexpr int64_t kRoomOfBucket = 14;  // entries for each bucket when the table grows; 16 would make searches long
constexpr int64_t kMaxBuckets = UINT32_MAX;
static_assert(sizeof(Entry) * 4 == kCacheLine);

// A table of free places. False without memory.
bool makeTable(HashTable *pTable, int64_t nBuckets) {
    if (nBuckets > kMaxBuckets) {
        return false;
    }
    const uint64_t nBytes = static_cast<uint64_t>(nBuckets) * kBucketBytes + kCacheLine;
    void *pMemory = HostMem_Alloc(nBytes, kSourceTag, __LINE__);
    if (pMemory == nullptr) {
        return false;
    }
    if (nBytes >= kLargePagesFrom) {  // searches hit all of its pages at random, whose addresses the processor can then keep at hand
        adviseLargePages(pMemory, nBytes);
    }
    const uint64_t nSkipped = (kCacheLine - reinterpret_cast<uintptr_t>(pMemory) % kCacheLine) % kCacheLine;
    pTable->pMemory = pMemory;
    pTable->pEntries = reinterpret_cast<Entry *>(static_cast<char *>(pMemory) + nSkipped);
    pTable->pTags = reinterpret_cast<uint8_t *>(pTable->pEntries + nBuckets * kBucketEntries);
    pTable->pMarks = reinterpret_cast<uint16_t *>(pTable->pTags + nBuckets * kBucketEntries);
    pTable->nBuckets = static_cast<uint32_t>(nBuckets);
    pTable->nRoom = nBuckets * kRoomOfBucket;
    pTable->nUsed = 0;
    memset(pTable->pTags, 0, static_cast<uint64_t>(nBuckets) * (kBucketEntries + sizeof(uint16_t)));
    return true;
}

// Entries go over in the order of their buckets, which is that of their hashes but for the few that were passed on, and so fill the new
// table from its front to its back.
void moveEntries(HashTable *pTo, const HashTable &from) {
    for (uint64_t i = 0; i < placesOf(from); ++i) {
        if (isTaken(from, i)) {
            const Entry &entry = from.pEntries[i];
            *addEntry(pTo, {entry.nHash, from.pTags[i]}) = entry;
        }
    }
}

}  // namespace

HashTable emptyTable() {
    alignas(kCacheLine) static Entry aEntries[kBucketEntries] = {};
    static uint8_t aTags[kBucketEntries] = {};
    static uint16_t nMarks = 0;
    return {aEntries, aTags, &nMarks, 1, 0, 0, nullptr};
}

bool reserveTable(HashTable *pTable, int64_t nExpected) {
    constexpr int64_t kFilled = 4;  // of 5 places
    return nExpected <= kMaxBuckets * kRoomOfBucket && makeTable(pTable, nExpected * 5 / (kFilled * kBucketEntries) + 1);
}

// Half as large again; when a quarter of the room went into holes that removals left, as large as before. So each layout is paid for by the
// entries that came since the last one, at most three entries moved for each.
bool growTable(HashTable *pTable) {
    HashTable grown;
    const int64_t nBuckets = pTable->pMemory != nullptr ? pTable->nBuckets : 0;
    const bool bHoles = pTable->nUsed < nBuckets * kRoomOfBucket / 4 * 3;
    if (!makeTable(&grown, bHoles ? nBuckets : nBuckets + nBuckets / 2 + 1)) {
        return false;
    }
    moveEntries(&grown, *pTable);
    freeTable(pTable);
    *pTable = grown;
    return true;
}

void freeTable(HashTable *pTable) {
    HostMem_Free(pTable->pMemory, kSourceTag, __LINE__);
    *pTable = emptyTable();
}

}  // namespace host
