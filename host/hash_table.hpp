// The table of the hash map: one entry for each hash, found without a look at any text.
//
// Entries lie in buckets of 16, four cache lines, with one tag byte for each and 16 marks for all
// beside them:
//
//     pEntries  | bucket 0: line 0 (4 entries) | line 1 | line 2 | line 3 | bucket 1: ...
//     pTags     | bucket 0: 16 tags | bucket 1: ...         0: the place is free, else the tag of
//     its entry's hash pMarks    | bucket 0: 16 bits | bucket 1: ... Entry       { szKey or
//     pGroups: 8 bytes, nValue: 4, nHash: 4 }
//
// One hash tells everything that a search needs, so that all of it can be asked for at the same
// moment:
//
//     home    the bucket, by the high bits: homes ascend with hashes, for any number of buckets
//     line    where in the bucket an entry goes as long as there is room, by the low bits
//     tag     1 to 255, by bits of its own
//     mark    0 to 15, by the tag
//
// An entry that finds its home full goes on to the next bucket that has room, behind the last comes
// the first, and sets its mark in every bucket that it passes. A search ends at the first bucket
// without the mark of what it seeks.
//
// Invariants, besides those:
//   1. No two entries have the same hash (tag included). What a free place holds is never looked
//   at.
//   2. Marks stay until the table is laid out anew. A place freed in a bucket with marks is not
//   counted as room any more. So every marked
//      bucket has used up at least 16 of the places counted as room at first, which are fewer than
//      16 for each bucket: there are always buckets without marks, where searches end, and places
//      for all the room that is left.
#ifndef HOST_HASH_TABLE_HPP
#define HOST_HASH_TABLE_HPP

#include <cstdint>

#include "host/bucket_tags.hpp"

namespace host {

struct KeyGroup;

// What the table keeps of a key's hash, 40 bits.
struct KeyHash {
    uint32_t nHash;
    uint8_t nTag;  // 1 to 255
};

// Of 64 bits, whichever of them differ from key to key: the product's high bits depend on all.
inline KeyHash keyHash(uint64_t nBits) {
    const uint64_t nMixed = nBits * 0x9e3779b97f4a7c15;
    const uint8_t nTag = static_cast<uint8_t>(nMixed >> 24);
    return {static_cast<uint32_t>(nMixed >> 32), static_cast<uint8_t>(nTag + (nTag == 0 ? 1 : 0))};
}

constexpr int32_t kIsGroup = -1;  // in an entry, in place of a value

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
    int64_t nRoom;  // entries that can still come before the table has to be laid out anew
    int64_t nUsed;  // entries
    void *pMemory;  // of both, NULL while there are no entries' places
};

// A table without memory, which answers searches.
HashTable emptyTable();

// Makes room for nExpected entries in an empty table. False without memory: nothing has changed.
bool reserveTable(HashTable *pTable, int64_t nExpected);

// Makes room for at least one more entry where there is none left, which moves entries. False
// without memory: nothing has changed.
bool growTable(HashTable *pTable);

// Gives the memory back; entries need no farewell.
void freeTable(HashTable *pTable);

// ---- Bits of a hash ----

inline uint32_t homeOf(const HashTable &table, KeyHash hash) {
    return static_cast<uint32_t>((uint64_t{hash.nHash} * table.nBuckets) >> 32);
}

inline uint32_t markOf(KeyHash hash) {
    return hash.nTag % 16;
}

// The places of the cache line in which an entry of this hash lies best.
inline uint32_t bestPlaces(KeyHash hash) {
    return 0xfU << (hash.nHash % 4 * 4);
}

// Of places of a bucket, at least one, the first for this hash.
inline uint32_t firstPlace(uint32_t nPlaces, KeyHash hash) {
    const uint32_t nBest = nPlaces & bestPlaces(hash);
    return static_cast<uint32_t>(__builtin_ctz(nBest != 0 ? nBest : nPlaces));
}

// ---- Places ----

inline Entry *entryAt(const HashTable &table, uint32_t iBucket, uint32_t iPlace) {
    return table.pEntries + (uint64_t{iBucket} * kBucketEntries + iPlace);
}

inline uint8_t *tagsOf(const HashTable &table, uint32_t iBucket) {
    return table.pTags + uint64_t{iBucket} * kBucketEntries;
}

inline uint32_t bucketBehind(const HashTable &table, uint32_t iBucket) {
    return iBucket + 1 == table.nBuckets ? 0 : iBucket + 1;
}

inline bool isMarked(const HashTable &table, uint32_t iBucket, KeyHash hash) {
    return (table.pMarks[iBucket] >> markOf(hash) & 1) != 0;
}

// ---- All entries: places 0 to placesOf - 1 in the order of the buckets, taken or free ----

inline uint64_t placesOf(const HashTable &table) {
    return uint64_t{table.nBuckets} * kBucketEntries;
}

inline bool isTaken(const HashTable &table, uint64_t iPlace) {
    return table.pTags[iPlace] != 0;
}

// ---- Searching ----

// Asks for the memory that a search for this hash reads first.
inline void prefetchTags(const HashTable &table, KeyHash hash) {
    __builtin_prefetch(tagsOf(table, homeOf(table, hash)));
}

// And for what it most likely reads next.
inline void prefetchEntry(const HashTable &table, KeyHash hash) {
    __builtin_prefetch(entryAt(table, homeOf(table, hash), hash.nHash % 4 * 4));
}

// The entry of a hash, NULL if there is none.
inline Entry *findEntry(const HashTable &table, KeyHash hash) {
    uint32_t iBucket = homeOf(table, hash);
    while (true) {
        uint32_t nEqual = equalTags(tagsOf(table, iBucket), hash.nTag);
        while (nEqual != 0) {
            const uint32_t iPlace = firstPlace(nEqual, hash);
            Entry *pEntry = entryAt(table, iBucket, iPlace);
            if (pEntry->nHash == hash.nHash) { return pEntry; }
            nEqual &= ~(uint32_t{1} << iPlace);
        }
        if (!isMarked(table, iBucket, hash)) { return nullptr; }
        iBucket = bucketBehind(table, iBucket);
    }
}

// False if there surely is no entry of the hash: what decides lies at home, where a new entry goes.
inline bool mayHaveEntry(const HashTable &table, KeyHash hash) {
    const uint32_t iHome = homeOf(table, hash);
    return equalTags(tagsOf(table, iHome), hash.nTag) != 0 || isMarked(table, iHome, hash);
}

// Takes a free place for an entry that is not in the table, which must have room. The entry is the
// caller's to write.
inline Entry *takePlace(HashTable *pTable, uint32_t iBucket, uint32_t iPlace, KeyHash hash) {
    tagsOf(*pTable, iBucket)[iPlace] = hash.nTag;
    --pTable->nRoom;
    ++pTable->nUsed;
    return entryAt(*pTable, iBucket, iPlace);
}

// The place of an entry that is not in the table, which must have room: at home, or where there is
// room behind it.
inline Entry *addEntry(HashTable *pTable, KeyHash hash) {
    uint32_t iBucket = homeOf(*pTable, hash);
    uint32_t nFree = equalTags(tagsOf(*pTable, iBucket), 0);
    while (nFree == 0) {
        pTable->pMarks[iBucket] |= static_cast<uint16_t>(1U << markOf(hash));
        iBucket = bucketBehind(*pTable, iBucket);
        nFree = equalTags(tagsOf(*pTable, iBucket), 0);
    }
    return takePlace(pTable, iBucket, firstPlace(nFree, hash), hash);
}

// Frees the place of an entry of the table.
inline void removeEntry(HashTable *pTable, const Entry *pEntry) {
    const uint64_t iPlace = static_cast<uint64_t>(pEntry - pTable->pEntries);
    pTable->pTags[iPlace] = 0;
    pTable->nRoom += pTable->pMarks[iPlace / kBucketEntries] == 0 ? 1 : 0;
    --pTable->nUsed;
}

// ---- Searching step by step ----

// The entry that a search for this hash comes to first; NULL if it will find none.
inline Entry *likelyEntry(const HashTable &table, KeyHash hash) {
    const uint32_t iHome = homeOf(table, hash);
    const uint32_t nEqual = equalTags(tagsOf(table, iHome), hash.nTag);
    if (nEqual != 0) { return entryAt(table, iHome, firstPlace(nEqual, hash)); }
    return isMarked(table, iHome, hash) ? findEntry(table, hash) : nullptr;
}

// The entry of the hash, given the likely one.
inline Entry *findEntry(const HashTable &table, KeyHash hash, Entry *pLikely) {
    return pLikely == nullptr || pLikely->nHash == hash.nHash ? pLikely : findEntry(table, hash);
}

}  // namespace host

#endif
