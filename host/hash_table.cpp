#include "host/hash_table.hpp"

#include <cstring>

#include <algorithm>

#include "host/host_memory.h"
#include "host/platform.hpp"

namespace host {

namespace {

constexpr uint64_t kSourceTag = 0x686f737468617368;  // "hosthash"
constexpr uint64_t kLargePagesFrom =
    8 * 1024 * 1024;  // bytes of a table; smaller ones have few large pages to gain
constexpr uint64_t kCacheLine = 64;
constexpr uint64_t kBucketBytes =
    kBucketEntries * (sizeof(Entry) + sizeof(uint8_t)) + sizeof(uint16_t);
constexpr int64_t kRoomOfBucket =
    14;  // entries for each bucket when the table grows; 16 would make searches long
constexpr int64_t kMaxBuckets = UINT32_MAX;
static_assert(sizeof(Entry) * 4 == kCacheLine);

// A table of free places. False without memory.
bool makeTable(HashTable *pTable, int64_t nBuckets) {
    if (nBuckets > kMaxBuckets) { return false; }
    const uint64_t nBytes = static_cast<uint64_t>(nBuckets) * kBucketBytes + kCacheLine;
    void *pMemory = HostMem_Alloc(nBytes, kSourceTag, __LINE__);
    if (pMemory == nullptr) { return false; }
    if (nBytes >= kLargePagesFrom) {  // searches hit all of its pages at random, whose addresses
                                      // the processor can then keep at hand
        adviseLargePages(pMemory, nBytes);
    }
    const uint64_t nSkipped =
        (kCacheLine - reinterpret_cast<uintptr_t>(pMemory) % kCacheLine) % kCacheLine;
    pTable->pMemory = pMemory;
    pTable->pEntries = reinterpret_cast<Entry *>(static_cast<char *>(pMemory) + nSkipped);
    pTable->pTags = reinterpret_cast<uint8_t *>(pTable->pEntries + nBuckets * kBucketEntries);
    pTable->pMarks = reinterpret_cast<uint16_t *>(pTable->pTags + nBuckets * kBucketEntries);
    pTable->nBuckets = static_cast<uint32_t>(nBuckets);
    pTable->nRoom = nBuckets * kRoomOfBucket;
    pTable->nUsed = 0;
    std::memset(pTable->pTags, 0,
                static_cast<uint64_t>(nBuckets) * (kBucketEntries + sizeof(uint16_t)));
    return true;
}

// What is free in the buckets that entries went to last. Reading a bucket's tags right after one of
// them was written would make the processor wait.
struct FreePlaces {
    uint32_t iBucket;
    uint32_t nPlaces;  // one bit for each
};

constexpr uint32_t kRecentBuckets = 4;  // homes ascend, but for those within a bucket that is moved

// Those of a bucket, which the caller keeps up to date.
uint32_t *freePlaces(FreePlaces *pRecent, const HashTable &table, uint32_t iBucket) {
    FreePlaces *pHere = &pRecent[iBucket % kRecentBuckets];
    if (pHere->iBucket != iBucket) { *pHere = {iBucket, equalTags(tagsOf(table, iBucket), 0)}; }
    return &pHere->nPlaces;
}

void forgetFreePlaces(FreePlaces *pRecent) {
    std::fill_n(pRecent, kRecentBuckets, FreePlaces{UINT32_MAX, 0});  // no bucket's number
}

void moveEntry(HashTable *pTo, FreePlaces *pRecent, const Entry &entry, uint8_t nTag) {
    const KeyHash hash = {entry.nHash, nTag};
    const uint32_t iHome = homeOf(*pTo, hash);
    uint32_t *pnFree = freePlaces(pRecent, *pTo, iHome);
    if (*pnFree == 0) {
        *addEntry(pTo, hash) = entry;
        forgetFreePlaces(pRecent);
        return;
    }
    const uint32_t iPlace = firstPlace(*pnFree, hash);
    *pnFree ^= 1U << iPlace;
    *takePlace(pTo, iHome, iPlace, hash) = entry;
}

// Entries go over in the order of their buckets, which is that of their hashes but for the few that
// were passed on, and so fill the new table from its front to its back.
void moveEntries(HashTable *pTo, const HashTable &from) {
    FreePlaces aRecent[kRecentBuckets];
    forgetFreePlaces(aRecent);
    for (uint32_t iBucket = 0; iBucket < from.nBuckets; ++iBucket) {
        const uint8_t *pTags = tagsOf(from, iBucket);
        for (uint32_t nTaken = equalTags(pTags, 0) ^ 0xffff; nTaken != 0; nTaken &= nTaken - 1) {
            const uint32_t iPlace = static_cast<uint32_t>(__builtin_ctz(nTaken));
            moveEntry(pTo, aRecent, *entryAt(from, iBucket, iPlace), pTags[iPlace]);
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
    return nExpected <= kMaxBuckets * kRoomOfBucket &&
           makeTable(pTable, nExpected * 5 / (kFilled * kBucketEntries) + 1);
}

// Half as large again; when a quarter of the room went into holes that removals left, as large as
// before. So each layout is paid for by the entries that came since the last one, at most three
// entries moved for each.
bool growTable(HashTable *pTable) {
    HashTable grown;
    const int64_t nBuckets = pTable->pMemory != nullptr ? pTable->nBuckets : 0;
    const bool bHoles = pTable->nUsed < nBuckets * kRoomOfBucket / 4 * 3;
    if (!makeTable(&grown, bHoles ? nBuckets : nBuckets + nBuckets / 2 + 1)) { return false; }
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
