#include "host/host_lock.h"

#include <atomic>
#include <new>

#include "host/platform.hpp"

// Every operation of a manager takes its lock, and most managers are used by one thread for ever.
// So the first thread that takes a lock gets its bias: from then on it takes and releases it with
// plain loads and stores. The first other thread that wants the lock ends the bias for good, and it
// becomes an ordinary lock: one compare-and-swap to take it, one exchange to release it, a word to
// sleep on.
//
// Why no two threads are inside. The biased thread stores nInside and then loads nState; the thread
// that ends the bias stores nState, makes every thread pass a memory barrier, and then loads
// nInside. The barrier falls at one point of the biased thread's program. A store of nInside before
// that point is seen; a load of nState after it sees kRevoking. So one of the two sees the other.
//
// A thread that was stopped between its look at nBias and its store of nInside, and goes on long
// after the bias has ended, only touches nInside, which nobody reads any more, and is turned away
// by nState. This is why a bias is never given out again.
//
// tests/lock_model/lock.pml is a model of this source, with its names, for a model checker.

namespace {

// nState. kBiased -> kRevoking -> kAwaited once, never back.
constexpr int32_t kFree = 0;
constexpr int32_t kHeld = 1;
constexpr int32_t kAwaited = 2;  // held, and perhaps somebody sleeps
constexpr int32_t kBiased = 3;
constexpr int32_t kRevoking = 4;  // nBias's thread may still be inside

// nBias, but for threads. kNoneYet -> thread -> kNoneAnyMore.
constexpr uint64_t kNoneYet = 0;
constexpr uint64_t kNoneAnyMore = 1;

// What HostLock_Init makes in the storage that the header declares for C programs.
struct BiasedLock {
    std::atomic<uint64_t> nBias;
    std::atomic<uint64_t> nOwner;
    std::atomic<int32_t> nState;
    std::atomic<int32_t> nInside;  // only nBias's thread ever writes it
    int32_t nDepth;
};
static_assert(sizeof(BiasedLock) <= sizeof(HostLock));
static_assert(alignof(BiasedLock) <= alignof(HostLock));

BiasedLock &biasedLock(HostLock *pLock) {
    return *reinterpret_cast<BiasedLock *>(pLock);
}

// A program that hands most managers from one thread to another pays for the end of each bias and
// gains nothing. Once more than a quarter of at least kJudged biases have ended, none is given out.
constexpr int64_t kJudged = 256;
constexpr int64_t kEndedOf = 4;
std::atomic<int64_t> g_nBiasesMade = 0;
std::atomic<int64_t> g_nBiasesEnded = 0;

bool biasPays() {
    const int64_t nMade = g_nBiasesMade.load(std::memory_order_relaxed);
    return nMade < kJudged || g_nBiasesEnded.load(std::memory_order_relaxed) * kEndedOf <= nMade;
}

void own(BiasedLock &lock, uint64_t nThread) {
    lock.nOwner.store(nThread, std::memory_order_relaxed);
    lock.nDepth = 1;
}

// Takes a lock that is biased to this thread and that it does not hold. False if the bias has
// ended, or is about to; the thread that ends it may sleep until this one is outside.
bool enterBiased(BiasedLock &lock) {
    lock.nInside.store(1, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (lock.nState.load(std::memory_order_relaxed) != kBiased) { return false; }
    std::atomic_signal_fence(std::memory_order_acquire);
    return true;
}

// Gives back one taking of the thread that the lock is biased to. Returns how many are left.
int32_t leaveBiased(BiasedLock &lock) {
    const int32_t nInside = lock.nInside.load(std::memory_order_relaxed) - 1;
    lock.nInside.store(nInside, std::memory_order_release);
    return nInside;
}

// Undoes an enterBiased that failed.
void stepBack(BiasedLock &lock) {
    lock.nInside.store(0, std::memory_order_release);
    host::wakeOne(&lock.nInside);
}

// Waits until the biased thread is outside and takes the lock. nState is kRevoking, by this thread.
void revokeAndTake(BiasedLock &lock, uint64_t nThread) {
    constexpr int32_t kPauses = 100;
    host::processBarrier();
    int32_t nPauses = 0;
    for (int32_t nInside = 0; (nInside = lock.nInside.load(std::memory_order_acquire)) != 0;) {
        if (nPauses++ < kPauses) {
            host::pauseBriefly();
        } else {
            // The release that looked at nState before it became kRevoking wakes nobody.
            host::waitBrieflyOn(lock.nInside, nInside);
        }
    }
    lock.nBias.store(kNoneAnyMore, std::memory_order_relaxed);
    own(lock, nThread);
    lock.nState.store(kAwaited, std::memory_order_release);
    g_nBiasesEnded.fetch_add(1, std::memory_order_relaxed);
}

// Marks the lock as awaited before each sleep, so that its owner knows to wake someone up.
void waitAndTake(BiasedLock &lock, uint64_t nThread) {
    while (lock.nState.load(std::memory_order_relaxed) == kRevoking) {
        host::waitOn(lock.nState, kRevoking);
    }
    while (lock.nState.exchange(kAwaited, std::memory_order_acquire) != kFree) {
        host::waitOn(lock.nState, kAwaited);
    }
    own(lock, nThread);
}

// Takes a lock that could not be taken at once.
[[gnu::noinline]] void takeSlowly(BiasedLock &lock, uint64_t nThread) {
    if (lock.nState.load(std::memory_order_relaxed) == kBiased) {
        uint64_t nBias = kNoneYet;
        if (lock.nBias.compare_exchange_strong(nBias, nThread, std::memory_order_relaxed)) {
            if (enterBiased(lock)) { return; }
            stepBack(lock);
        }
        int32_t nState = kBiased;
        if (lock.nState.compare_exchange_strong(nState, kRevoking)) {
            revokeAndTake(lock, nThread);
            return;
        }
    }
    waitAndTake(lock, nThread);
}

[[gnu::noinline]] void stepBackAndTake(BiasedLock &lock, uint64_t nThread) {
    stepBack(lock);
    takeSlowly(lock, nThread);
}

// Takes a lock that is not biased to this thread. Nobody but this thread itself ever writes its own
// number into nOwner, so reading it without the lock tells whether this thread holds it.
[[gnu::noinline]] void acquireUnbiased(BiasedLock &lock, uint64_t nThread) {
    if (lock.nOwner.load(std::memory_order_relaxed) == nThread) {
        ++lock.nDepth;
        return;
    }
    int32_t nState = kFree;
    if (lock.nState.compare_exchange_strong(nState, kHeld, std::memory_order_acquire,
                                            std::memory_order_relaxed)) {
        own(lock, nThread);
    } else {
        takeSlowly(lock, nThread);
    }
}

// Releases a lock whose nState was not kBiased just now.
[[gnu::noinline]] void releaseUnbiased(BiasedLock &lock, int32_t nState) {
    if (nState == kRevoking) {
        if (leaveBiased(lock) == 0) { host::wakeOne(&lock.nInside); }
        return;
    }
    if (--lock.nDepth > 0) { return; }
    lock.nOwner.store(0, std::memory_order_relaxed);
    if (lock.nState.exchange(kFree, std::memory_order_release) == kAwaited) {
        host::wakeOne(&lock.nState);
    }
}

}  // namespace

int32_t HostLock_Init(HostLock *pLock) {
    if (host::g_bBarrierGranted && biasPays()) {
        new (pLock) BiasedLock{kNoneYet, 0, kBiased, 0, 0};
        g_nBiasesMade.fetch_add(1, std::memory_order_relaxed);
    } else {
        new (pLock) BiasedLock{kNoneAnyMore, 0, kFree, 0, 0};
    }
    return 0;
}

void HostLock_Acquire(HostLock *pLock) {
    BiasedLock &lock = biasedLock(pLock);
    const uint64_t nThread = host::thisThread();
    if (lock.nBias.load(std::memory_order_relaxed) != nThread) [[unlikely]] {
        acquireUnbiased(lock, nThread);
        return;
    }
    const int32_t nInside = lock.nInside.load(std::memory_order_relaxed);
    if (nInside != 0) [[unlikely]] {
        lock.nInside.store(nInside + 1, std::memory_order_relaxed);
    } else if (!enterBiased(lock)) [[unlikely]] {
        stepBackAndTake(lock, nThread);
    }
}

// Looks at nState before its last store and touches nothing of the lock after it: whoever takes the
// lock next may destroy it and free its memory.
void HostLock_Release(HostLock *pLock) {
    BiasedLock &lock = biasedLock(pLock);
    const int32_t nState = lock.nState.load(std::memory_order_relaxed);
    if (nState == kBiased) [[likely]] {
        leaveBiased(lock);
    } else {
        releaseUnbiased(lock, nState);
    }
}

void HostLock_Destroy(HostLock * /*pLock*/) {}
