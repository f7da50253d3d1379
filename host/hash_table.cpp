#include "host/hash_table.hpp"

#include <algorithm>
#include <cstring>

#include "host/host_memory.h"
#include "host/platform.hpp"

namespace host {
namespace {

// Bytes of a table that is worth large pages: searches hit all of its pages at random, and the
// addresses of large ones stay cached. Smaller tables would have few of them.
constexpr uint64_t kLargePagesFrom = 8 * 1024 * 1024;
constexpr uint64_t kLineBytes = 64;  // of a cache line
constexpr uint64_t kBucketBytes =
    kBucketSlots * (sizeof(Entry) + sizeof(uint8_t)) + sizeof(uint16_t);
constexpr int64_t kRoomOfBucket = 14;  // of 16 slots: the load factor at which a table is rebuilt
constexpr int64_t kMaxBuckets = UINT32_MAX;
static_assert(sizeof(Entry) * 4 == kLineBytes);

// A table of free slots. False without memory.
bool makeTable(int64_t nBuckets, HashTable *pTable) {
    if (nBuckets > kMaxBuckets) { return false; }
    const uint64_t nBytes = static_cast<uint64_t>(nBuckets) * kBucketBytes + kLineBytes;
    void *pMemory = HostMem_Alloc(nBytes, kHashSourceTag, __LINE__);
    if (pMemory == nullptr) { return false; }
    if (nBytes >= kLargePagesFrom) { adviseLargePages(pMemory, nBytes); }
    const uint64_t nSkipped =
        (kLineBytes - reinterpret_cast<uintptr_t>(pMemory) % kLineBytes) % kLineBytes;
    pTable->pMemory = pMemory;
    pTable->pEntries = reinterpret_cast<Entry *>(static_cast<char *>(pMemory) + nSkipped);
    pTable->pTags = reinterpret_cast<uint8_t *>(pTable->pEntries + nBuckets * kBucketSlots);
    pTable->pMarks = reinterpret_cast<uint16_t *>(pTable->pTags + nBuckets * kBucketSlots);
    pTable->nBuckets = static_cast<uint32_t>(nBuckets);
    pTable->nRoom = nBuckets * kRoomOfBucket;
    pTable->nUsed = 0;
    std::memset(pTable->pTags, 0,
                static_cast<uint64_t>(nBuckets) * (kBucketSlots + sizeof(uint16_t)));
    return true;
}

// The free slots of the buckets that were filled last, one bit each. Reading 16 tags right after
// writing one of them would stall: the load cannot be forwarded from the smaller store.
struct FreeSlots {
    uint32_t iBucket;
    uint32_t nSlots;
};

constexpr uint32_t kRecentBuckets = 4;  // homes ascend, but for entries within one old bucket

// Those of a bucket; the caller keeps them up to date.
uint32_t *freeSlots(FreeSlots *pRecent, const HashTable &table, uint32_t iBucket) {
    FreeSlots *pHere = &pRecent[iBucket % kRecentBuckets];
    if (pHere->iBucket != iBucket) { *pHere = {iBucket, equalTags(tagsOf(table, iBucket), 0)}; }
    return &pHere->nSlots;
}

void forgetFreeSlots(FreeSlots *pRecent) {
    std::fill_n(pRecent, kRecentBuckets, FreeSlots{UINT32_MAX, 0});  // no bucket's number
}

void moveEntry(HashTable *pTo, FreeSlots *pRecent, const Entry &entry, uint8_t nTag) {
    const KeyHash hash = {entry.nHash, nTag};
    const uint32_t iHome = homeOf(*pTo, hash);
    uint32_t *pnFree = freeSlots(pRecent, *pTo, iHome);
    if (*pnFree == 0) {  // rare: the entry goes to a later bucket, which may be among the recent
        *addEntry(pTo, hash) = entry;
        forgetFreeSlots(pRecent);
        return;
    }
    const uint32_t iSlot = firstSlot(*pnFree, hash);
    *pnFree ^= 1U << iSlot;
    *takeSlot(pTo, iHome, iSlot, hash) = entry;
}

// Entries move in the order of their buckets, which is that of their hashes but for the few that
// lie after their home, and so fill the new table from its start to its end.
void moveEntries(HashTable *pTo, const HashTable &from) {
    FreeSlots aRecent[kRecentBuckets];
    forgetFreeSlots(aRecent);
    for (uint32_t iBucket = 0; iBucket < from.nBuckets; ++iBucket) {
        const uint8_t *pTags = tagsOf(from, iBucket);
        for (uint32_t nTaken = equalTags(pTags, 0) ^ 0xffff; nTaken != 0; nTaken &= nTaken - 1) {
            const uint32_t iSlot = static_cast<uint32_t>(__builtin_ctz(nTaken));
            moveEntry(pTo, aRecent, *entryAt(from, iBucket, iSlot), pTags[iSlot]);
        }
    }
}

}  // namespace

HashTable emptyTable() {
    alignas(kLineBytes) static Entry aEntries[kBucketSlots] = {};
    static uint8_t aTags[kBucketSlots] = {};
    static uint16_t nMarks = 0;
    return {aEntries, aTags, &nMarks, 1, 0, 0, nullptr};
}

bool reserveTable(HashTable *pTable, int64_t nExpected) {
    constexpr int64_t kFilled = 4;  // of 5 slots: the load factor once all that is expected is in
    return nExpected <= kMaxBuckets * kRoomOfBucket &&
           makeTable(nExpected * 5 / (kFilled * kBucketSlots) + 1, pTable);
}

// The new table has half as many buckets again, or as many as before when a quarter of the room was
// lost to removals. Either way there is then room for a third as many entries as have moved, so
// that rebuilds are amortised: they move at most three entries for each one that is added.
bool growTable(HashTable *pTable) {
    HashTable grown;
    const int64_t nBuckets = pTable->pMemory != nullptr ? pTable->nBuckets : 0;
    const bool bRoomLost = pTable->nUsed < nBuckets * kRoomOfBucket / 4 * 3;
    if (!makeTable(bRoomLost ? nBuckets : nBuckets + nBuckets / 2 + 1, &grown)) { return false; }
    moveEntries(&grown, *pTable);
    freeTable(pTable);
    *pTable = grown;
    return true;
}

void freeTable(HashTable *pTable) {
    HostMem_Free(pTable->pMemory, kHashSourceTag, __LINE__);
    *pTable = emptyTable();
}

}  // namespace host
