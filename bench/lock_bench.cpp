// What the shipped host's lock costs, beside the C library's recursive mutex: a pair of acquire and
// release, the end of a bias, two threads on one lock, and a thread that wants a lock which another
// one takes again and again. lock_bench [SECONDS]: how long the last measurement takes (8).
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include "host/host_lock.h"
#include "host/platform.hpp"

namespace {

using Clock = std::chrono::steady_clock;

double nanosecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

// The shipped host's lock with the face of a mutex.
struct ShippedLock {
    ShippedLock() { (void)HostLock_Init(&lock_); }
    ShippedLock(const ShippedLock &) = delete;
    ShippedLock &operator=(const ShippedLock &) = delete;
    ~ShippedLock() { HostLock_Destroy(&lock_); }
    void lock() { HostLock_Acquire(&lock_); }
    void unlock() { HostLock_Release(&lock_); }

private:
    HostLock lock_;
};

// Best of several rounds.
template <typename Lock>
double pairTime(Lock &lock) {
    constexpr int kRounds = 1000, kPairs = 20000;
    double best = 1e9;
    for (int iRound = 0; iRound < kRounds; ++iRound) {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < kPairs; ++i) {
            lock.lock();
            lock.unlock();
        }
        best = std::min(best, nanosecondsSince(start) / kPairs);
    }
    return best;
}

void measurePairs() {
    ShippedLock biased, revoked;
    revoked.lock();
    revoked.unlock();
    std::thread([&revoked] {
        revoked.lock();
        revoked.unlock();
    }).join();
    const bool bGranted = host::g_bBarrierGranted;
    host::g_bBarrierGranted = false;
    ShippedLock ordinary;
    host::g_bBarrierGranted = bGranted;
    std::recursive_mutex mutex;
    std::printf("acquire and release, ns: biased %.2f, bias ended %.2f, never biased %.2f, "
                "recursive mutex %.2f\n",
                pairTime(biased), pairTime(revoked), pairTime(ordinary), pairTime(mutex));
}

// Ends biases of other threads' locks. The first quarter of them is measured: were more of them
// ended, the host would no longer make biased ones.
void measureEnds(const char *szOwner, std::vector<ShippedLock> &locks) {
    std::vector<double> times;
    for (size_t i = 0; i < locks.size() / 4; ++i) {
        const Clock::time_point start = Clock::now();
        locks[i].lock();
        times.push_back(nanosecondsSince(start));
        locks[i].unlock();
    }
    std::sort(times.begin(), times.end());
    std::printf("end of a bias, its owner %s, us: median %.2f, shortest %.2f, longest %.2f\n",
                szOwner, times[times.size() / 2] / 1e3, times.front() / 1e3, times.back() / 1e3);
}

void takeAll(std::vector<ShippedLock> &locks) {
    for (ShippedLock &lock : locks) {
        lock.lock();
        lock.unlock();
    }
}

void measureRevocations() {
    constexpr size_t kLocks = 4000;
    std::vector<ShippedLock> ofEnded(kLocks), ofSleeping(kLocks), ofRunning(kLocks);
    std::thread([&ofEnded] { takeAll(ofEnded); }).join();
    measureEnds("gone (one thread)", ofEnded);

    std::mutex mutex;
    std::condition_variable changed;
    bool bReady = false, bDone = false;
    std::thread sleeping([&] {
        takeAll(ofSleeping);
        std::unique_lock hold(mutex);
        bReady = true;
        changed.notify_all();
        changed.wait(hold, [&bDone] { return bDone; });
    });
    {
        std::unique_lock hold(mutex);
        changed.wait(hold, [&bReady] { return bReady; });
    }
    measureEnds("asleep (two threads)", ofSleeping);
    {
        const std::scoped_lock hold(mutex);
        bDone = true;
        changed.notify_all();
    }
    sleeping.join();

    std::atomic<bool> bRunning = false, bEnough = false;
    std::thread running([&] {
        ShippedLock own;
        takeAll(ofRunning);
        for (bRunning = true; !bEnough;) {
            own.lock();
            own.unlock();
        }
    });
    while (!bRunning) { std::this_thread::yield(); }
    measureEnds("running (two threads)", ofRunning);
    bEnough = true;
    running.join();
}

// Two threads that take one lock again and again for as long as one counter takes to reach its end.
template <typename Lock>
void measureHammer(const char *szName) {
    constexpr int64_t kPairs = 10000000;
    double best = 1e9, share = 0;
    for (int iRound = 0; iRound < 5; ++iRound) {
        Lock lock;
        std::atomic<int> nReady = 0;
        int64_t nTaken = 0, aTaken[2] = {};
        const auto take = [&](int64_t *pnMine) {
            for (++nReady; nReady < 2;) {}
            for (bool bGoOn = true; bGoOn;) {
                lock.lock();
                bGoOn = nTaken < kPairs;
                if (bGoOn) { ++nTaken, ++*pnMine; }
                lock.unlock();
            }
        };
        const Clock::time_point start = Clock::now();
        std::thread one(take, &aTaken[0]), other(take, &aTaken[1]);
        one.join();
        other.join();
        const double time = nanosecondsSince(start) / kPairs;
        if (time < best) {
            best = time;
            share = 100.0 * static_cast<double>(std::min(aTaken[0], aTaken[1])) / kPairs;
        }
    }
    std::printf("two threads, %s: %.1f ns a pair, the lesser one's share %.0f %%\n", szName, best,
                share);
}

void work(std::chrono::microseconds time) {
    for (const Clock::time_point start = Clock::now(); Clock::now() - start < time;) {}
}

// One thread holds the lock for 200 us at a time, again and again. Another one wants it every
// 20 us: how often it gets it, and how long it waits.
template <typename Lock>
void measureStarvation(const char *szName, int nSeconds) {
    Lock lock;
    std::atomic<bool> bEnough = false;
    std::thread greedy([&] {
        while (!bEnough) {
            lock.lock();
            work(std::chrono::microseconds(200));
            lock.unlock();
        }
    });
    double longest = 0;
    int nTaken = 0;
    for (const Clock::time_point start = Clock::now();
         Clock::now() - start < std::chrono::seconds(nSeconds);) {
        const Clock::time_point wanted = Clock::now();
        lock.lock();
        longest = std::max(longest, nanosecondsSince(wanted));
        ++nTaken;
        lock.unlock();
        work(std::chrono::microseconds(20));
    }
    bEnough = true;
    greedy.join();
    std::printf("beside a thread that holds it for 200 us at a time, %s: %d times in %d s, longest "
                "wait %.1f ms\n",
                szName, nTaken, nSeconds, longest / 1e6);
}

}  // namespace

int main(int nArguments, char **arguments) {
    const int nSeconds = nArguments > 1 ? std::atoi(arguments[1]) : 8;
    measureRevocations();
    measurePairs();
    measureHammer<ShippedLock>("shipped lock");
    measureHammer<std::recursive_mutex>("recursive mutex");
    measureStarvation<ShippedLock>("shipped lock", nSeconds);
    measureStarvation<std::recursive_mutex>("recursive mutex", nSeconds);
}
