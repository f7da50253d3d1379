// Many threads on one manager and on pairs of managers; two managers on two threads.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

#include "tests/loaded_manager.hpp"

namespace {

using loaded::Strings;

constexpr int32_t kThreads = 4, kOwned = 400, kSteps = 1500;

std::string readName(NamesManager *mgr, int32_t index) {
    char szName[200] = "";
    return NamesManager_GetNameIntoBuffer(mgr, index, 0, 0, 0, 0, szName, sizeof szName, nullptr) ==
                   0
               ? szName
               : "none";
}

// One operation of any kind on a manager that all threads use. Of its first kOwned names each
// thread changes only every kThreads-th, which are those in mine; what moves names keeps to those
// behind. The status, or 1 where what was read is not what it has to be.
int32_t useShared(NamesManager *mgr, NamesManager *source, std::mt19937 &random, int32_t iThread,
                  Strings &mine) {
    std::string &name = mine[random() % mine.size()];
    const int32_t index = static_cast<int32_t>(&name - mine.data()) * kThreads + iThread,
                  nLength = static_cast<int32_t>(name.size());
    const int32_t iBehind = kOwned + static_cast<int32_t>(random() % 100),
                  aIndices[] = {iBehind + 5, iBehind, iBehind + 1};
    const char *const apNames[] = {"behind", "them", name.c_str()};
    int32_t aNumbers[3], bFound = 0;
    switch (random() % 16) {
    case 0: return NamesManager_AddNames(mgr, iBehind, iBehind + 1, 0, apNames);
    case 1: return NamesManager_AddNamesFromBuffer(mgr, iBehind, iBehind + 1, 0, "from\0buffer");
    case 2: return NamesManager_RemoveNames(mgr, iBehind, INT32_MAX, 0);
    case 3: return NamesManager_RemoveNamesByIndices(mgr, aIndices, 3);
    case 4: return NamesManager_GenerateNames(mgr, iBehind);
    case 5:
        return NamesManager_FindNames(mgr, apNames, 3, -1, 0, aNumbers) == 0 && aNumbers[2] == index
                   ? 0
                   : 1;
    case 6: return NamesManager_GetMaxNameLength(mgr) >= nLength ? 0 : 1;
    case 7:
        return NamesManager_GetNameLengths(mgr, index, index, 0, aNumbers),
               aNumbers[0] == nLength ? 0 : 1;
    case 8:
        return NamesManager_CheckDuplicateNames(mgr, index, index, 0, apNames + 2, &nLength,
                                                &bFound, aNumbers, aNumbers, nullptr, 0);
    case 9:
        return NamesManager_GetNumNames(mgr) >= kOwned ? NamesManager_ReleaseEmptyBlocks(mgr) : 1;
    case 10: return loaded::save(mgr).empty() ? 1 : 0;
    case 11: return random() % 50 == 0 ? NamesManager_StoreIndividualNamePositions(mgr) * 0 : 0;
    case 12: return readName(mgr, index) == name ? 0 : 1;
    case 13:
        name = "from " + readName(source, index);
        return NamesManager_CopyNameWithPrefix(mgr, index, 0, source, index, 0, "from ");
    default:
        name = "name " + std::to_string(index) + std::string(random() % 30, 'x');
        return NamesManager_AddName(mgr, index, 0, name.c_str());
    }
}

// One operation on a manager that copies are made into.
int32_t useCopy(NamesManager *mgr, NamesManager *source, std::mt19937 &random) {
    const int32_t index = static_cast<int32_t>(random() % kOwned);
    switch (random() % 8) {
    case 0: return NamesManager_Copy(mgr, source);
    case 1: return loaded::load(mgr, loaded::save(source));
    case 2: return NamesManager_Clear(mgr);
    case 3: return NamesManager_CopyName(mgr, index, 0, source, index, 0);
    case 4: return NamesManager_RemoveNames(mgr, index, index + 3, 0);
    case 5:
        return NamesManager_FindName(source, ("s" + std::to_string(index)).c_str(), 0) == index ? 0
                                                                                                : 1;
    default: return readName(mgr, index).empty() ? 1 : 0;
    }
}

TEST(Threads, DoEverythingToOneManagerAndToPairs) {
    std::vector<NamesManager *> managers(
        5);  // the shared one, then two copies and what they are copied from
    std::generate(managers.begin(), managers.end(),
                  [] { return NamesManager_Create(nullptr, nullptr); });
    std::vector<Strings> owned(kThreads);
    for (int32_t i = 0; i < kOwned; ++i) {
        owned[static_cast<size_t>(i % kThreads)].push_back("s" + std::to_string(i));
        for (NamesManager *mgr : {managers[0], managers[3], managers[4]}) {
            EXPECT_EQ(0, NamesManager_AddName(mgr, i, 0, ("s" + std::to_string(i)).c_str()));
        }
    }
    std::vector<std::thread> threads;
    for (int32_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&managers, &owned, t] {
            std::mt19937 random(static_cast<uint32_t>(t));
            for (int32_t n = 0; n < kSteps; ++n) {
                EXPECT_EQ(0, useShared(managers[0], managers[3], random, t,
                                       owned[static_cast<size_t>(t)]));
                EXPECT_EQ(0, useCopy(managers[1], managers[3], random));
                EXPECT_EQ(0, useCopy(managers[2], managers[4], random));
            }
        });
    }
    for (std::thread &thread : threads) { thread.join(); }
    for (int32_t i = 0; i < kOwned; ++i) {
        EXPECT_EQ(owned[static_cast<size_t>(i % kThreads)][static_cast<size_t>(i / kThreads)],
                  readName(managers[0], i));
    }
    for (NamesManager *mgr : managers) {
        EXPECT_EQ(0, NamesManager_RemoveNames(
                         mgr, kOwned, INT32_MAX,
                         0));  // among them equal ones, which an audited index must not hold
        EXPECT_EQ("", loaded::faultIn(mgr, histories::randomChoices(1), 30));
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
    NamesManager *held = NamesManager_Create(nullptr, nullptr),
                 *used = NamesManager_Create(nullptr, nullptr);
    HostLock_Acquire(&held->lock);
    std::thread([used] {
        EXPECT_EQ("", loaded::faultIn(used, histories::randomChoices(1), 30));
    }).join();
    HostLock_Release(&held->lock);
    NamesManager_Destroy(held);
}

}  // namespace
