// lock_stress [FACTOR]: thousands of records, one after the other, each with a lock that one thread
// has the bias of and others want at a certain moment. Plain counters show whether two are ever
// inside; the last user frees the record, for AddressSanitizer to see who touches it afterwards.
// Once as the system has it, once with the barrier refused after it was granted, once without one.
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif
#ifdef __linux__
#include <linux/membarrier.h>
#include <sys/syscall.h>
#endif

#include "host/host_lock.h"
#include "host/platform.hpp"

namespace {

constexpr int kThreads = 3, kErrno = 4711;
constexpr int32_t kBiased = 3;  // HostLock::nState

std::atomic<int64_t> g_nUses = 0;  // counted in records that are gone, since they were last printed

void require(bool bTrue, const char *szWhat) {
    if (bTrue) { return; }
    std::printf("FAILED: %s\n", szWhat);
    std::fflush(stdout);
    std::_Exit(1);
}

// Of four locks made one loses its bias at most, or the host would end up making none that are
// biased.
struct Record {
    Record() {
        require(HostLock_Init(&lock) == 0, "a lock is made");
        for (HostLock &spare : aSpare) { (void)HostLock_Init(&spare); }
    }
    Record(const Record &) = delete;
    Record &operator=(const Record &) = delete;
    ~Record() { HostLock_Destroy(&lock); }

    HostLock lock, aSpare[3];
    volatile int nHolders = 0;  // threads inside
    volatile int64_t nUses = 0;
    volatile int nUsers = kThreads;
    int64_t nExpected = 0;
};

// What the lock's first thread does while the others come for it.
enum class Owner { first, entering, inside, nested, asleep, gone };
constexpr const char *kOwners[] = {
    "racing for the first take", "about to enter", "inside", "nested", "asleep", "gone"};

void spin(uint_fast32_t nTimes) {
    for (uint_fast32_t i = 0; i < nTimes; ++i) { host::pauseBriefly(); }
}

void enter(Record &record) {
    errno = kErrno;
    HostLock_Acquire(&record.lock);
    require(errno == kErrno, "errno stays");
    require(record.nHolders == 0, "nobody else is inside");
    record.nHolders = 1;
}

void leave(Record &record) {
    record.nUses = record.nUses + 1;
    record.nHolders = 0;
    errno = kErrno;
    HostLock_Release(&record.lock);
    require(errno == kErrno, "errno stays");
}

void useOften(Record &record, std::mt19937 &random) {
    for (unsigned n = 0; n < 20; ++n) {
        enter(record);
        HostLock_Acquire(&record.lock);
        spin(random() % 8);
        HostLock_Release(&record.lock);
        leave(record);
        spin(random() % 8);
    }
}

// Up to the moment at which the others come; go on says that they do.
void ownUntil(Record &record, Owner owner, std::mt19937 &random, const auto &goOn) {
    const auto use = [&record] {
        enter(record);
        leave(record);
    };
    if (owner == Owner::entering) {  // at any instruction of many short uses
        const auto nQuick = static_cast<int64_t>(random() % 2000);
        record.nExpected += nQuick;
        use();
        goOn();
        for (int64_t n = nQuick; n > 0; --n) { use(); }
        return;
    }
    if (owner == Owner::gone) { std::thread(use).join(); }
    if (owner == Owner::gone || owner == Owner::first) { return goOn(); }
    enter(record);
    if (owner == Owner::nested) { HostLock_Acquire(&record.lock); }
    goOn();
    spin(random() % 300);
    if (owner == Owner::asleep) { std::this_thread::sleep_for(std::chrono::milliseconds(2)); }
    if (owner == Owner::nested) {
        HostLock_Acquire(&record.lock);
        spin(random() % 100);
        HostLock_Release(&record.lock);
        HostLock_Release(&record.lock);
        spin(random() % 100);
    }
    leave(record);
}

// Counts what all threads have used; the last one frees the record.
void giveUp(Record *pRecord) {
    enter(*pRecord);
    const int nLeft = pRecord->nUsers - 1;
    pRecord->nUsers = nLeft;
    leave(*pRecord);
    if (nLeft > 0) { return; }
    require(pRecord->nUses == pRecord->nExpected, "no use is lost");
    g_nUses += pRecord->nUses;
    require(pRecord->lock.nState < kBiased, "the bias has ended");
    delete pRecord;
}

// Where the owner of a record hands it to the others.
using Meeting = std::atomic<Record *>;

void useAsOther(Meeting &meeting, std::mt19937 &random) {
    Record *pRecord = nullptr;
    while ((pRecord = meeting.load(std::memory_order_acquire)) == nullptr) {
        std::this_thread::yield();
    }
    spin(random() % 300);
    useOften(*pRecord, random);
    giveUp(pRecord);
}

void useAsOwner(Meeting &meeting, Owner owner, bool bBiased, std::mt19937 &random) {
    auto *pRecord = new Record;
    require((pRecord->lock.nState == kBiased) == bBiased, "a lock is biased where it can be");
    const int nOwn = owner == Owner::first ? 0 : 1;
    pRecord->nExpected = nOwn + kThreads * 21;
    ownUntil(*pRecord, owner, random, [&] { meeting.store(pRecord, std::memory_order_release); });
    useOften(*pRecord, random);
    giveUp(pRecord);
}

void stress(Owner owner, int nRecords, bool bBiased) {
    std::vector<Meeting> meetings(static_cast<size_t>(nRecords));
    std::vector<std::thread> threads;
    for (int iThread = 0; iThread < kThreads; ++iThread) {
        threads.emplace_back([&meetings, iThread, owner, bBiased] {
            std::mt19937 random(static_cast<unsigned>(iThread));
            for (size_t i = 0; i < meetings.size(); ++i) {
                if (iThread == static_cast<int>(i % kThreads)) {
                    useAsOwner(meetings[i], owner, bBiased, random);
                } else {
                    useAsOther(meetings[i], random);
                }
            }
        });
    }
    for (std::thread &thread : threads) { thread.join(); }
    std::printf("  owner %s: %d locks, %lld uses\n", kOwners[static_cast<int>(owner)], nRecords,
                static_cast<long long>(g_nUses.exchange(0)));
}

void stressAll(const char *szMode, int nRecords, int nAsleep, bool bBiased) {
    std::printf("%s\n", szMode);
    for (const Owner owner :
         {Owner::first, Owner::entering, Owner::inside, Owner::nested, Owner::gone}) {
        stress(owner, nRecords, bBiased);
    }
    stress(Owner::asleep, nAsleep, bBiased);
}

// A quarter of the biases that were made have ended. One more, and there are no new ones.
void endOneTooMany() {
    HostLock lock, next;
    require(HostLock_Init(&lock) == 0 && lock.nState == kBiased, "a bias in four may end");
    const auto take = [&lock] {
        HostLock_Acquire(&lock);
        HostLock_Release(&lock);
    };
    take();
    std::thread(take).join();
    require(lock.nState < kBiased, "a bias ends while its thread lives");
    require(HostLock_Init(&next) == 0 && next.nState < kBiased, "biases that end are given up");
}

// A child of fork has the forking thread's biases, and ends those of threads that it lacks.
void forkInside() {
#ifndef _WIN32
    HostLock own, lost;
    require(HostLock_Init(&own) == 0 && HostLock_Init(&lost) == 0, "locks are made");
    HostLock_Acquire(&own);
    std::thread([&lost] {
        HostLock_Acquire(&lost);
        HostLock_Release(&lost);
    }).join();
    const int32_t nState = own.nState;
    const pid_t nChild = fork();
    if (nChild == 0) {
        HostLock_Release(&own);
        HostLock_Acquire(&own);
        require(own.nState == nState, "a child keeps its thread's bias");
        HostLock_Acquire(&lost);
        HostLock_Release(&lost);
        require(lost.nState < kBiased, "a child ends a lost thread's bias");
#ifdef __linux__
        require(!host::g_bBarrierGranted ||
                    syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0,
                "a child is registered for the barrier");
#endif
        _exit(0);
    }
    int nStatus = -1;
    require(waitpid(nChild, &nStatus, 0) == nChild && nStatus == 0, "the child is content");
    HostLock_Release(&own);
#endif
}

}  // namespace

int main(int nArguments, char **arguments) {
    const int nFactor = nArguments > 1 ? std::atoi(arguments[1]) : 1;
    forkInside();
    const bool bGranted = host::g_bBarrierGranted;
    if (bGranted) {
        stressAll("barrier granted", 600 * nFactor, 60 * nFactor, true);
    } else {
        std::printf("barrier not granted\n");
    }
#ifndef HOST_THREAD_SANITIZER
    host::g_bBarrierGranted = true;
    host::g_bBarrierRefused = true;
    stressAll("barrier granted, then refused", 6 * nFactor, 6 * nFactor, true);
#endif
    host::g_bBarrierGranted = false;
    stressAll("no barrier", 300 * nFactor, 30 * nFactor, false);
    host::g_bBarrierGranted = bGranted;
    host::g_bBarrierRefused = false;
    if (bGranted) { endOneTooMany(); }
}
