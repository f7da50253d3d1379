#include "host/host_lock.h"

#include <atomic>

// Every operation of a manager takes its lock, so that the free lock counts: one compare-and-swap to take it, one exchange to give it back,
// a third of the instructions that a recursive mutex of the C library spends. Only a thread that finds it held asks the system.

namespace {

constexpr int32_t kFree = 0;
constexpr int32_t kHeld = 1;
constexpr int32_t kAwaited = 2;

// What tells threads apart: the address of something that each has of its own.
uint64_t thisThread() {
    [[gnu::tls_model("initial-exec")]] static thread_local char cOwn;
    return reinterpret_cast<uintptr_t>(&cOwn);
}

// Marks the lock as awaited before each sleep, so that its owner knows to wake someone up.
[[gnu::noinline]] void waitAndTake(HostLock *pLock) {
    const std::atomic_ref<int32_t> state(pLock->nState);
    while (state.exchange(kAwaited, std::memory_order_acquire) != kFree) {
        state.wait(kAwaited, std::memory_order_relaxed);
    }
    std::atomic_ref<uint64_t>(pLock->nOwner).store(thisThread(), std::memory_order_relaxed);
    pLock->nDepth = 1;
}

[[gnu::noinline]] void wakeOne(HostLock *pLock) {
    std::atomic_ref<int32_t>(pLock->nState).notify_one();
}

}  // namespace

int32_t HostLock_Init(HostLock *pLock) {
    *pLock = {0, kFree, 0};
    return 0;
}

// Nobody but this thread itself ever writes its own number into nOwner, so reading it without the lock tells whether this thread holds it.
void HostLock_Acquire(HostLock *pLock) {
    const std::atomic_ref<uint64_t> owner(pLock->nOwner);
    const uint64_t nThread = thisThread();
    if (owner.load(std::memory_order_relaxed) == nThread) {
        ++pLock->nDepth;
        return;
    }
    int32_t nState = kFree;
    if (!std::atomic_ref<int32_t>(pLock->nState)
             .compare_exchange_strong(nState, kHeld, std::memory_order_acquire, std::memory_order_relaxed)) {
        waitAndTake(pLock);
        return;
    }
    owner.store(nThread, std::memory_order_relaxed);
    pLock->nDepth = 1;
}

void HostLock_Release(HostLock *pLock) {
    if (--pLock->nDepth > 0) {
        return;
    }
    std::atomic_ref<uint64_t>(pLock->nOwner).store(0, std::memory_order_relaxed);
    if (std::atomic_ref<int32_t>(pLock->nState).exchange(kFree, std::memory_order_release) == kAwaited) {
        wakeOne(pLock);
    }
}

void HostLock_Destroy(HostLock * /*pLock*/) {}
