// The shipped hash map beside lists of entries, with all bits of its hashes and with few.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "host/host_hash_map.h"
#include "tests/few_hash_bits/few_hash_bits.hpp"
#include "tests/starve.hpp"

namespace {

using Entry = std::pair<const char *, int32_t>;  // key and value
using Keys = std::vector<const char *>;
using Values = std::vector<int32_t>;

// Few texts and many addresses. A key that is no longer held is overwritten at once.
struct Model {
    int64_t nLive = HostMem_GetNumLive();
    std::mt19937 random;
    bool bStarved;
    HostHashMap *map = HostHashMap_Create(&HostHashMap_StringKeys, pick(30) - 5);
    std::vector<std::vector<char>> keys = std::vector<std::vector<char>>(300);
    std::map<std::string, std::vector<Entry>> held = {};
    int64_t nEntries = 0;
    int32_t nInserted = 0;
    bool bWasAtEnd = false;

    explicit Model(unsigned nSeed, bool bWithoutMemory = false)
        : random(nSeed), bStarved(bWithoutMemory) {}
    ~Model() {
        if (map != nullptr) { HostHashMap_Release(map); }
    }

    // An empty map has given everything back but itself and its table, if it has one.
    void removeAll() {
        if (map == nullptr) { return; }
        for (const auto &[text, entries] : held) {
            for (const Entry &entry : entries) {
                ASSERT_EQ(0, HostHashMap_Remove(map, entry.first));
            }
        }
        EXPECT_GE(nLive + 2, HostMem_GetNumLive());
    }

    void play(int nSteps) {
        for (int i = 0; map != nullptr && i < nSteps && !testing::Test::HasFatalFailure(); ++i) {
            const int nWhat = pick(20);
            nWhat < 8    ? insert()
            : nWhat < 9  ? insertList()
            : nWhat < 11 ? findList()
            : nWhat < 12 ? nextRepeated()
                         : remove();
            ASSERT_EQ(nEntries, map->nEntries);
        }
    }

    int pick(int nBelow) { return int(random() % unsigned(nBelow)); }

    // As long as before: it stays where it is.
    const char *anyKey() {
        static const std::vector<std::string> texts = {
            "", "a", "aa", std::string(17, 'a'), std::string(241, 'a'), std::string(999, '\xff')};
        const size_t iKey = random() % keys.size();
        const std::string text = iKey < 100 ? texts[iKey % texts.size()] : std::to_string(iKey / 2);
        keys[iKey].assign(text.c_str(), text.c_str() + text.size() + 1);
        return keys[iKey].data();
    }
    Keys anyKeys() {
        Keys list(size_t(pick(100)));
        for (const char *&szKey : list) { szKey = pick(9) == 0 ? nullptr : anyKey(); }
        return list;
    }

    static auto lowest(std::vector<Entry> &entries, const char *szKey) {
        const auto isBefore = [szKey](const Entry &one, const Entry &other) {
            return std::pair(one.first != szKey, one.second) <
                   std::pair(other.first != szKey, other.second);
        };
        return std::min_element(entries.begin(), entries.end(), isBefore);
    }
    int32_t lowestValue(const char *szKey) {
        if (szKey == nullptr || held[szKey].empty()) { return -1; }
        return lowest(held[szKey], nullptr)->second;
    }
    void hold(const char *szKey, int32_t nValue) {
        held[szKey].emplace_back(szKey, nValue), ++nEntries;
    }

    void insert() {
        const char *szKey = anyKey();
        // No value twice.
        const int32_t nValue = pick(50) == 0 ? -1 - pick(9) : ++nInserted * 7919 & 0xfffff,
                      nLowest = lowestValue(szKey);
        int32_t nExisting = -7;
        const bool bDone = HostHashMap_Insert(map, szKey, nValue, &nExisting) == 0;
        ASSERT_TRUE(bStarved ? nValue >= 0 || !bDone : bDone == (nValue >= 0));
        ASSERT_EQ(bDone ? nLowest : -7, nExisting);
        if (bDone) { hold(szKey, nValue); }
        ASSERT_EQ(lowestValue(szKey), HostHashMap_Find(map, szKey));
    }
    void insertList() {
        const Keys list = anyKeys();
        Values existing(list.size(), -7), expected = existing;
        const int nFrom = pick(10);
        const bool bAtEnd = nFrom == 0 && !std::exchange(bWasAtEnd, true);
        const int32_t nUsual = 0x100000 + 100 * ++nInserted, nFirst = bAtEnd ? INT32_MAX - pick(100)
                                                                      : nFrom == 1 ? -1
                                                                                   : nUsual;
        const int64_t nMost =
            nFrom == 1 ? 0 : std::min(std::ssize(list), INT32_MAX - std::ptrdiff_t{nFirst} + 1);
        const int64_t nDone = HostHashMap_InsertList(map, list.data(), std::ssize(list), nFirst,
                                                     nFrom == 2 ? nullptr : existing.data());
        ASSERT_LE(nDone, nMost);
        ASSERT_TRUE(bStarved || nDone == nMost);
        for (size_t k = 0; k < size_t(nDone); ++k) {
            if (nFrom != 2) { expected[k] = lowestValue(list[k]); }
            if (list[k] != nullptr) { hold(list[k], nFirst + int32_t(k)); }
        }
        ASSERT_EQ(expected, existing);
    }
    void findList() {
        const Keys list = anyKeys();
        Values found(list.size() + 1, -7), expected = found;
        HostHashMap_FindList(map, list.data(), std::ssize(list), found.data());
        std::transform(list.begin(), list.end(), expected.begin(),
                       [this](const char *szKey) { return lowestValue(szKey); });
        ASSERT_EQ(expected, found);
    }
    void nextRepeated() {
        const int32_t nFirst = pick(9) == 0 ? INT32_MAX - pick(200) : pick(3) * pick(1 << 20);
        std::pair<int32_t, int32_t> expected = {-1, -7};
        for (const auto &[text, entries] : held) {
            const int32_t nLowest = lowestValue(text.c_str());
            for (const auto &[szKey, nValue] : entries) {
                const bool bCounts = nValue != nLowest && nValue >= nFirst;
                if (bCounts && unsigned(nValue) < unsigned(expected.first)) {
                    expected = {nValue, nLowest};
                }
            }
        }
        int32_t nLowest = -7;
        const int32_t nRepeated = HostHashMap_NextRepeated(map, nFirst, &nLowest);
        ASSERT_EQ(expected, std::pair(nRepeated, nLowest));
    }
    void remove() {
        const char *szKey = anyKey();
        std::vector<Entry> &entries = held[szKey];
        ASSERT_EQ(entries.empty() ? 1 : 0, HostHashMap_Remove(map, szKey));
        if (entries.empty()) { return; }
        const auto gone = lowest(entries, szKey);
        char *szGone = const_cast<char *>(gone->first);
        entries.erase(gone), --nEntries;
        ASSERT_EQ(lowestValue(szKey), HostHashMap_Find(map, szKey));
        if (entries.empty() || lowest(entries, szGone)->first != szGone) {
            std::memset(szGone, '#', std::strlen(szGone));
        }
    }
};

// What of the hashes is kept: all; one tag for all; low bits, high bits, few bits; none.
const KeptBits kKept[] = {{~uint64_t{0}, 0xff},          {~uint64_t{0}, 0}, {0xffff, 0xff},
                          {0xffff'0000'0000'0000, 0xff}, {0x3f, 0xff},      {0, 0xff}};

struct HashMap : testing::TestWithParam<KeptBits> {
    HashMap() { g_keptBits = GetParam(); }
};
INSTANTIATE_TEST_SUITE_P(Kept, HashMap, testing::ValuesIn(kKept));

TEST_P(HashMap, AgreesWithModelAlsoWhenMemoryFails) {
    for (const unsigned nSeed : {1U, 2U}) {
        Model model(nSeed);
        model.play(3000);
        model.removeAll();
    }
    starve([] {
        Model model(3, true);
        model.play(50);
        model.removeAll();
    });
    EXPECT_EQ(nullptr, HostHashMap_Create(&HostHashMap_StringKeys, INT64_MAX));
}

// Would take minutes, longer than a test may, if any key were sought by walking over others.
TEST_P(HashMap, HoldsManyEqualAndManyDifferentKeys) {
    constexpr int32_t kCount = 200000;
    const std::vector<char> empties(kCount, '\0');
    std::vector<std::string> different(kCount);
    HostHashMap *pMap = HostHashMap_Create(&HostHashMap_StringKeys, 0);
    for (int32_t i = 0; i < kCount; ++i) {
        different[size_t(i)] = std::to_string(i);
        ASSERT_EQ(0, HostHashMap_Insert(pMap, different[size_t(i)].c_str(), i, nullptr));
        ASSERT_EQ(0, HostHashMap_Insert(pMap, &empties[size_t(i)], i ^ 0x1ff, nullptr));
    }
    for (int32_t i = kCount - 1; i > 0; --i) {  // by address, and so that the lowest value stays
        ASSERT_EQ(0, HostHashMap_Find(pMap, ""));
        ASSERT_EQ(0, HostHashMap_Remove(pMap, &empties[size_t(i == 0x1ff ? 0 : i)]));
        ASSERT_EQ(i, HostHashMap_Find(pMap, different[size_t(i)].c_str()));
    }
    EXPECT_EQ(kCount + 1, pMap->nEntries);
    HostHashMap_Release(pMap);
}

// Entries that come and go for ever neither make the table larger nor lay it out anew too often.
TEST(HashTable, LivesOnTheRoomThatRemovalsLeave) {
    constexpr size_t kHeld = 2000, kRounds = 100;
    std::mt19937_64 random(1);
    std::vector<host::KeyHash> hashes;
    host::HashTable table = host::emptyTable();
    ASSERT_TRUE(host::reserveTable(&table, kHeld));
    size_t nLayouts = 0;
    for (size_t i = 0; i < kHeld * kRounds; ++i) {
        hashes.push_back(host::keyHash(random()));
        if (i >= kHeld) {
            host::removeEntry(&table, host::findEntry(table, hashes[i - kHeld]));
            ASSERT_EQ(nullptr, host::findEntry(table, hashes[i - kHeld]));
        }
        if (table.nRoom == 0) {
            ++nLayouts;
            ASSERT_TRUE(host::growTable(&table));
        }
        host::addEntry(&table, hashes[i])->nHash = hashes[i].nHash;
    }
    EXPECT_LE(table.nBuckets, kHeld / 8);
    EXPECT_LE(nLayouts, kRounds / 2);
    for (size_t i = hashes.size() - kHeld; i < hashes.size(); ++i) {
        ASSERT_NE(nullptr, host::findEntry(table, hashes[i]));
    }
    host::freeTable(&table);
}

}  // namespace
