// The table of the hash map: one entry for each hash, found without a look at any text.
//
// Entries lie in buckets of 16 slots, which are four cache lines. Arrays of their own hold one tag
// byte for each slot and 16 marks for each bucket:
//
//     pEntries  | bucket 0: line 0 (4 slots) | line 1 | line 2 | line 3 | bucket 1: ...
//     pTags     | bucket 0: 16 bytes | bucket 1: ...    0: free slot, else the tag of its entry
//     pMarks    | bucket 0: 16 bits  | bucket 1: ...
//     Entry     { szKey or pGroups: 8 bytes, nValue: 4, nHash: 4 }
//
// A hash says everything that a search needs, so that all of its memory can be prefetched at once:
//
//     home    the bucket to probe first, by the high bits: homes ascend with hashes, and the number
//             of buckets need not be a power of two
//     line    the line of a bucket that is filled first with such hashes, by the low bits
//     tag     1 to 255, by bits of its own
//     mark    0 to 15, by the tag
//
// Probing is linear, bucket by bucket; after the last comes the first. An entry that finds its home
// full goes to the next bucket with a free slot and sets its mark in every bucket that it passes.
// A search ends at the first bucket that lacks the mark it looks for, so removals need no
// tombstones.
//
// Invariants, besides those:
//   1. No two entries have the same hash (tag included). A free slot's bytes are never read.
//   2. Marks stay until the table is rebuilt. A slot that is freed in a bucket with marks does not
//      count as room again. Room begins below 16 for each bucket, and a bucket with marks has used
//      up 16 of it, so some bucket is always without marks, where searches end, and there is a free
//      slot for all the room that is left.
#ifndef HOST_HASH_TABLE_HPP
#define HOST_HASH_TABLE_HPP

#include <cstdint>

#include "host/bucket_tags.hpp"

namespace host {

struct KeyGroup;

constexpr uint64_t kHashSourceTag = 0x686f737468617368;  // "hosthash"

// What the table keeps of a key's hash, 40 bits.
struct KeyHash {
    uint32_t nHash;
    uint8_t nTag;  // 1 to 255
};

// Of 64 bits, no matter which of them differ from key to key: the product's high bits depend on
// all.
inline KeyHash keyHash(uint64_t nBits) {
    const uint64_t nMixed = nBits * 0x9e3779b97f4a7c15;
    const uint8_t nTag = static_cast<uint8_t>(nMixed >> 24);
    return {static_cast<uint32_t>(nMixed >> 32), static_cast<uint8_t>(nTag + (nTag == 0 ? 1 : 0))};
}

constexpr int32_t kIsGroup = -1;  // in an entry, instead of a value

struct Entry {
    union {
        const char *szKey;
        KeyGroup *pGroups;  // of all keys with this hash, where there are several
    };
    int32_t nValue;
    uint32_t nHash;
};

struct HashTable {
    Entry *pEntries;
    uint8_t *pTags;
    uint16_t *pMarks;
    uint32_t nBuckets;
    int64_t nRoom;  // entries that can still be added before the table must be rebuilt
    int64_t nUsed;  // entries
    void *pMemory;  // of all three arrays; NULL: the table has none of its own
};

// A table without memory of its own: it can be searched, and has no room.
HashTable emptyTable();

// Makes room for nExpected entries in an empty table. False without memory: nothing has changed.
bool reserveTable(HashTable *pTable, int64_t nExpected);

// Rebuilds a table that has no room left, so that it has room for at least one more entry; entries
// move. False without memory: nothing has changed.
bool growTable(HashTable *pTable);

// Frees the memory and leaves an empty table. Groups of keys are not destroyed.
void freeTable(HashTable *pTable);

// ---- Bits of a hash ----

inline uint32_t homeOf(const HashTable &table, KeyHash hash) {
    return static_cast<uint32_t>((uint64_t{hash.nHash} * table.nBuckets) >> 32);
}

inline uint32_t markOf(KeyHash hash) {
    return hash.nTag % 16;
}

// The slots of the cache line that is filled first with entries of this hash.
inline uint32_t preferredSlots(KeyHash hash) {
    return 0xfU << (hash.nHash % 4 * 4);
}

// Of a bucket's slots, one bit each and at least one, the one to look at first for this hash.
inline uint32_t firstSlot(uint32_t nSlots, KeyHash hash) {
    const uint32_t nPreferred = nSlots & preferredSlots(hash);
    return static_cast<uint32_t>(__builtin_ctz(nPreferred != 0 ? nPreferred : nSlots));
}

// ---- Buckets ----

inline Entry *entryAt(const HashTable &table, uint32_t iBucket, uint32_t iSlot) {
    return table.pEntries + (uint64_t{iBucket} * kBucketSlots + iSlot);
}

inline uint8_t *tagsOf(const HashTable &table, uint32_t iBucket) {
    return table.pTags + uint64_t{iBucket} * kBucketSlots;
}

inline uint32_t nextBucket(const HashTable &table, uint32_t iBucket) {
    return iBucket + 1 == table.nBuckets ? 0 : iBucket + 1;
}

inline bool isMarked(const HashTable &table, uint32_t iBucket, KeyHash hash) {
    return (table.pMarks[iBucket] >> markOf(hash) & 1) != 0;
}

// ---- All slots, 0 to slotsOf - 1 in the order of the buckets ----

inline uint64_t slotsOf(const HashTable &table) {
    return uint64_t{table.nBuckets} * kBucketSlots;
}

inline bool isTaken(const HashTable &table, uint64_t iSlot) {
    return table.pTags[iSlot] != 0;
}

// ---- Searching ----

// Prefetches what a search for this hash reads first.
inline void prefetchTags(const HashTable &table, KeyHash hash) {
    __builtin_prefetch(tagsOf(table, homeOf(table, hash)));
}

// Prefetches what it most likely reads next.
inline void prefetchEntry(const HashTable &table, KeyHash hash) {
    __builtin_prefetch(entryAt(table, homeOf(table, hash), hash.nHash % 4 * 4));
}

// The entry of a hash, NULL if there is none.
inline Entry *findEntry(const HashTable &table, KeyHash hash) {
    uint32_t iBucket = homeOf(table, hash);
    while (true) {
        // Slots with an equal tag: most often the entry's alone; one of 255 others has it by
        // chance.
        uint32_t nEqual = equalTags(tagsOf(table, iBucket), hash.nTag);
        while (nEqual != 0) {
            const uint32_t iSlot = firstSlot(nEqual, hash);
            Entry *pEntry = entryAt(table, iBucket, iSlot);
            if (pEntry->nHash == hash.nHash) { return pEntry; }
            nEqual &= ~(uint32_t{1} << iSlot);
        }
        // Nothing with this mark ever went past this bucket, so nothing lies in a later one.
        if (!isMarked(table, iBucket, hash)) { return nullptr; }
        iBucket = nextBucket(table, iBucket);
    }
}

// False if the table surely has no entry of this hash. Reads the home bucket's tags and marks
// alone.
inline bool mayHaveEntry(const HashTable &table, KeyHash hash) {
    const uint32_t iHome = homeOf(table, hash);
    return equalTags(tagsOf(table, iHome), hash.nTag) != 0 || isMarked(table, iHome, hash);
}

// Takes a free slot of a table with room, for a hash that is not in the table. The caller writes
// the entry.
inline Entry *takeSlot(HashTable *pTable, uint32_t iBucket, uint32_t iSlot, KeyHash hash) {
    tagsOf(*pTable, iBucket)[iSlot] = hash.nTag;
    --pTable->nRoom;
    ++pTable->nUsed;
    return entryAt(*pTable, iBucket, iSlot);
}

// The same for the first free slot on the way of the hash.
inline Entry *addEntry(HashTable *pTable, KeyHash hash) {
    uint32_t iBucket = homeOf(*pTable, hash);
    uint32_t nFree = equalTags(tagsOf(*pTable, iBucket), 0);
    while (nFree == 0) {  // the bucket is full: searches for this mark must go past it from now on
        pTable->pMarks[iBucket] |= static_cast<uint16_t>(1U << markOf(hash));
        iBucket = nextBucket(*pTable, iBucket);
        nFree = equalTags(tagsOf(*pTable, iBucket), 0);
    }
    return takeSlot(pTable, iBucket, firstSlot(nFree, hash), hash);
}

// Frees the slot of an entry of the table. It is room again unless its bucket has marks, which
// could not be taken back (invariant 2).
inline void removeEntry(HashTable *pTable, const Entry *pEntry) {
    const uint64_t iSlot = static_cast<uint64_t>(pEntry - pTable->pEntries);
    pTable->pTags[iSlot] = 0;
    pTable->nRoom += pTable->pMarks[iSlot / kBucketSlots] == 0 ? 1 : 0;
    --pTable->nUsed;
}

// ---- Searching in two steps, with a wait for memory between them ----

// The entry that a search for this hash reads first; NULL if it will find none.
inline Entry *likelyEntry(const HashTable &table, KeyHash hash) {
    const uint32_t iHome = homeOf(table, hash);
    const uint32_t nEqual = equalTags(tagsOf(table, iHome), hash.nTag);
    if (nEqual != 0) { return entryAt(table, iHome, firstSlot(nEqual, hash)); }
    return isMarked(table, iHome, hash) ? findEntry(table, hash) : nullptr;
}

// The entry of the hash, NULL if there is none, given the likely one.
inline Entry *findEntry(const HashTable &table, KeyHash hash, Entry *pLikely) {
    return pLikely == nullptr || pLikely->nHash == hash.nHash ? pLikely : findEntry(table, hash);
}

}  // namespace host

#endif
