#include "host/host_lock.h"

#include <atomic>
#include <new>

#include "host/platform.hpp"

// Every operation of a manager takes its lock, so that the free lock counts: one compare-and-swap
// to take it, one exchange to give it back, a third of the instructions that a recursive mutex of
// the C library spends. Only a thread that finds it held asks the system.

namespace {

constexpr int32_t kFree = 0;
constexpr int32_t kHeld = 1;
constexpr int32_t kAwaited = 2;

// What HostLock_Init makes in the storage that the header declares for C programs.
struct AtomicLock {
    std::atomic<uint64_t> nOwner;
    std::atomic<int32_t> nState;
    int32_t nDepth;
};
static_assert(sizeof(AtomicLock) <= sizeof(HostLock));
static_assert(alignof(AtomicLock) <= alignof(HostLock));

AtomicLock &atomicLock(HostLock *pLock) {
    return *reinterpret_cast<AtomicLock *>(pLock);
}

// Marks the lock as awaited before each sleep, so that its owner knows to wake someone up.
[[gnu::noinline]] void waitAndTake(AtomicLock &lock) {
    while (lock.nState.exchange(kAwaited, std::memory_order_acquire) != kFree) {
        lock.nState.wait(kAwaited, std::memory_order_relaxed);
    }
    lock.nOwner.store(host::thisThread(), std::memory_order_relaxed);
    lock.nDepth = 1;
}

[[gnu::noinline]] void wakeOne(AtomicLock &lock) {
    lock.nState.notify_one();
}

}  // namespace

int32_t HostLock_Init(HostLock *pLock) {
    new (pLock) AtomicLock{0, kFree, 0};
    return 0;
}

// Nobody but this thread itself ever writes its own number into nOwner, so reading it without the
// lock tells whether this thread holds it.
void HostLock_Acquire(HostLock *pLock) {
    AtomicLock &lock = atomicLock(pLock);
    const uint64_t nThread = host::thisThread();
    if (lock.nOwner.load(std::memory_order_relaxed) == nThread) {
        ++lock.nDepth;
        return;
    }
    int32_t nState = kFree;
    if (!lock.nState.compare_exchange_strong(nState, kHeld, std::memory_order_acquire,
                                             std::memory_order_relaxed)) {
        waitAndTake(lock);
        return;
    }
    lock.nOwner.store(nThread, std::memory_order_relaxed);
    lock.nDepth = 1;
}

void HostLock_Release(HostLock *pLock) {
    AtomicLock &lock = atomicLock(pLock);
    if (--lock.nDepth > 0) { return; }
    lock.nOwner.store(0, std::memory_order_relaxed);
    if (lock.nState.exchange(kFree, std::memory_order_release) == kAwaited) { wakeOne(lock); }
}

void HostLock_Destroy(HostLock * /*pLock*/) {}
