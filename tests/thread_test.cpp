// Many threads on one manager and on a pair of managers; two managers on two threads.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

#include "names/names_manager.hpp"
#include "tests/loaded_manager.hpp"

namespace {

using loaded::Strings;

constexpr int32_t kThreads = 4, kOwned = 400, kSteps = 3000;

// What is shared: a manager, and another one that copies are made into, from a source that is only
// read. They start with the names s1 to s400.
NamesManager *g_pShared, *g_pCopy, *g_pSource;

std::string readName(NamesManager *mgr, int32_t index) {
    char szName[200] = "";
    NamesManager_GetNameIntoBuffer(mgr, index, 0, 0, 0, 0, szName, sizeof szName, nullptr);
    return szName;
}

// One operation of any kind. Of the first kOwned names each thread changes only every kThreads-th,
// which are those in mine; what moves names keeps to those after them. The status, or 1 where what
// was read is not what it has to be.
int32_t useOne(std::mt19937 &random, int32_t iThread, Strings &mine) {
    NamesManager *mgr = g_pShared;
    std::string &name = mine[random() % mine.size()];
    const int32_t index = int32_t(&name - mine.data()) * kThreads + iThread,
                  nLength = int32_t(name.size()), iLater = kOwned + int32_t(random() % 100),
                  aIndices[] = {iLater + 5, iLater, iLater + 1};
    const char *const apNames[] = {"later", "still", name.c_str()};
    int32_t aNumbers[3], bFound = 0;
    switch (random() % 22) {
    case 0: return NamesManager_AddNames(mgr, iLater, iLater + 1, 0, apNames);
    case 1: return NamesManager_AddNamesFromBuffer(mgr, iLater, iLater + 1, 0, "from\0buffer");
    case 2: return NamesManager_RemoveNames(mgr, iLater, INT32_MAX, 0);
    case 3: return NamesManager_RemoveNamesByIndices(mgr, aIndices, 3);
    case 4: return NamesManager_GenerateNames(mgr, iLater);
    case 5: return NamesManager_FindNames(mgr, apNames, 3, -1, 0, aNumbers) + aNumbers[2] - index;
    case 6: return NamesManager_GetMaxNameLength(mgr) >= nLength ? 0 : 1;
    case 7:
        NamesManager_GetNameLengths(mgr, index, index, 0, aNumbers);
        return aNumbers[0] - nLength;
    case 8:
        return NamesManager_CheckDuplicateNames(mgr, index, index, 0, apNames + 2, &nLength,
                                                &bFound, aNumbers, aNumbers, nullptr, 0);
    case 9:
        return NamesManager_GetNumNames(mgr) >= kOwned ? NamesManager_ReleaseEmptyBlocks(mgr) : 1;
    case 10: return loaded::save(mgr).empty() ? 1 : 0;
    case 11: return random() % 50 == 0 ? NamesManager_StoreIndividualNamePositions(mgr) * 0 : 0;
    case 12: return readName(mgr, index) == name ? 0 : 1;
    case 13: return NamesManager_Copy(g_pCopy, g_pSource);
    case 14: return loaded::load(g_pCopy, loaded::save(g_pSource));
    case 15: return NamesManager_Clear(g_pCopy);
    case 16: return NamesManager_CopyName(g_pCopy, index, 0, g_pSource, index, 0);
    case 17: return NamesManager_RemoveNames(g_pCopy, index, index + 3, 0);
    case 18: return NamesManager_FindName(g_pSource, readName(g_pSource, index).c_str(), 0) - index;
    case 19:
        name = "from " + readName(g_pSource, index);
        return NamesManager_CopyNameWithPrefix(mgr, index, 0, g_pSource, index, 0, "from ");
    default:
        name = "name " + std::to_string(index) + std::string(random() % 30, 'x');
        return NamesManager_AddName(mgr, index, 0, name.c_str());
    }
}

TEST(Threads, DoEverythingToOneManagerAndToAPair) {
    Strings owned[kThreads];
    for (NamesManager **ppMgr : {&g_pShared, &g_pCopy, &g_pSource}) {
        *ppMgr = NamesManager_Create(nullptr, "s%d");
        EXPECT_EQ(0, NamesManager_GenerateNames(*ppMgr, kOwned));
    }
    for (int32_t i = 0; i < kOwned; ++i) { owned[i % kThreads].push_back(readName(g_pShared, i)); }
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&owned, t] {
            std::mt19937 random(uint32_t(t) + 1);
            for (int32_t n = 0; n < kSteps; ++n) { EXPECT_EQ(0, useOne(random, t, owned[t])); }
        });
    }
    for (std::thread &thread : threads) { thread.join(); }
    for (int32_t i = 0; i < kOwned; ++i) {
        EXPECT_EQ(owned[i % kThreads][size_t(i / kThreads)], readName(g_pShared, i));
    }
    // Among later names there are equal ones, which an audited index must not hold.
    EXPECT_EQ(0, NamesManager_RemoveNames(g_pShared, kOwned, INT32_MAX, 0));
    EXPECT_EQ("", loaded::faultIn(g_pShared, g_pCopy, histories::randomChoices(1), 30));
    NamesManager_Destroy(g_pSource);
}

// Names that threads add at the end, one by one and in pairs, are all there, each once.
TEST(Threads, AddAtTheEndWithoutLosses) {
    constexpr int32_t kNames = 30000;
    names_manager::Manager names;
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&names, t] {
            for (int32_t n = t * kNames; n < (t + 1) * kNames; n += 3) {
                const std::string next = std::to_string(n + 1), last = std::to_string(n + 2);
                ASSERT_EQ(names_manager::Status::ok, names.push_back(std::to_string(n)));
                ASSERT_EQ(names_manager::Status::ok, names.push_back({next, last}));
            }
        });
    }
    for (std::thread &thread : threads) { thread.join(); }
    EXPECT_EQ(kThreads * kNames, names.size());
    for (int32_t n = 0; n < kThreads * kNames; ++n) {
        ASSERT_LE(0, names.find(std::to_string(n))) << n;
    }
}

// A lock is free only once it was given back as often as it was taken.
TEST(Threads, WaitForALockThatIsHeldOnceMore) {
    constexpr int32_t kTimes = 20000;
    HostLock lock;
    ASSERT_EQ(0, HostLock_Init(&lock));
    HostLock_Acquire(&lock);
    int32_t nCount = 0;
    const auto addOften = [&] {
        for (int32_t n = 0; n < kTimes; ++n) {
            HostLock_Acquire(&lock);
            HostLock_Acquire(&lock);
            HostLock_Release(&lock);
            ++nCount;
            HostLock_Release(&lock);
        }
    };
    std::thread one(addOften), another(addOften);
    HostLock_Acquire(&lock);
    HostLock_Release(&lock);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(0, nCount);
    HostLock_Release(&lock);
    one.join();
    another.join();
    EXPECT_EQ(2 * kTimes, nCount);
    HostLock_Destroy(&lock);
}

// While one manager is held another one can be used.
TEST(Threads, OfTwoManagersNeverWaitForEachOther) {
    NamesManager *held = NamesManager_Create(nullptr, nullptr);
    HostLock_Acquire(&held->lock);
    std::thread([] {
        EXPECT_EQ("", loaded::faultIn(NamesManager_Create(nullptr, nullptr),
                                      NamesManager_Create(nullptr, nullptr),
                                      histories::randomChoices(1), 30));
    }).join();
    HostLock_Release(&held->lock);
    NamesManager_Destroy(held);
}

// Each with a reader of its own, threads read one list without its lock, in either storage mode.
TEST(Threads, ReadAtOnce) {
    constexpr int32_t kNames = 3000, kAtOnce = 20;
    for (const bool bPositions : {false, true}) {
        NamesManager *mgr = NamesManager_Create(nullptr, "s%d");
        ASSERT_EQ(0, NamesManager_GenerateNames(mgr, kNames));
        ASSERT_EQ(0, bPositions ? NamesManager_StoreIndividualNamePositions(mgr) : 0);
        NamesReader opened;
        ASSERT_EQ(0, NamesReader_Open(&opened, mgr, 1));
        std::vector<std::thread> threads;
        for (int32_t t = 0; t < kThreads; ++t) {
            threads.emplace_back([reader = opened, t]() mutable {
                std::mt19937 random(static_cast<uint32_t>(t));
                const char *apNames[kAtOnce];
                int32_t aFound[kAtOnce], nLength = 0;
                for (int32_t k = 0; k < kNames; ++k) {
                    const int32_t i = static_cast<int32_t>(random() % (kNames - kAtOnce));
                    ASSERT_EQ("s" + std::to_string(k + 1), NamesReader_Name(&reader, k));
                    const char *szName = NamesReader_GetName(&reader, k, 0, &nLength);
                    ASSERT_EQ(nLength, static_cast<int32_t>(std::strlen(szName)));
                    ASSERT_EQ(k, NamesReader_FindName(&reader, szName, 0));
                    if (k % 5 != 0) { continue; }
                    ASSERT_EQ(0, NamesReader_GetNameViews(&reader, i, i + kAtOnce - 1, 0, apNames,
                                                          nullptr));
                    NamesReader_FindNames(&reader, apNames, kAtOnce, -1, 0, aFound);
                    ASSERT_EQ(i + kAtOnce - 1, aFound[kAtOnce - 1]);
                }
            });
        }
        for (std::thread &thread : threads) { thread.join(); }
        NamesManager_Destroy(mgr);
    }
}

}  // namespace
