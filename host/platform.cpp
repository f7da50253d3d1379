#include "host/platform.hpp"

#include <chrono>

#include <algorithm>
#include <thread>

#ifndef _WIN32
#include <unistd.h>
#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif
#if __has_include(<sys/random.h>)
#include <sys/random.h>
#endif
#endif

// How threads wait for each other. HOST_NO_FUTEX makes every system one that has nothing of its
// own.
#if defined(__linux__) && !defined(HOST_NO_FUTEX)
#define HOST_LINUX_FUTEX
#include <ctime>
#include <linux/futex.h>
#elif defined(_WIN32) && !defined(HOST_NO_FUTEX)
#define HOST_WINDOWS_WAIT
#else
#include <condition_variable>
#include <mutex>
#endif

// Whether there can be a process-wide barrier.
#if defined(HOST_THREAD_SANITIZER)
#elif defined(__linux__) && __has_include(<linux/membarrier.h>)
#define HOST_LINUX_BARRIER
#include <linux/membarrier.h>
#elif defined(_WIN32)
#define HOST_WINDOWS_BARRIER
#endif
#ifdef __linux__
#include <sys/syscall.h>
#endif

namespace host {

uint64_t randomNumber() {
    uint64_t nNumber = 0;
    if (randomBytes(&nNumber, sizeof nNumber)) { return nNumber; }
    const auto nTime = std::chrono::steady_clock::now().time_since_epoch().count();
    return static_cast<uint64_t>(nTime) ^ reinterpret_cast<uintptr_t>(&nNumber);
}

#ifdef _WIN32

// Documented as RtlGenRandom; its own header would bring in all of the system's.
extern "C" __declspec(dllimport) unsigned char __stdcall SystemFunction036(void *pBytes,
                                                                           unsigned long nBytes);

bool randomBytes(void *pBytes, size_t nBytes) {
    return SystemFunction036(pBytes, static_cast<unsigned long>(nBytes)) != 0;
}

// Large pages need a privilege there that few programs have.
void adviseLargePages(void * /*pMemory*/, uint64_t /*nBytes*/) {}

#else

bool randomBytes([[maybe_unused]] void *pBytes, [[maybe_unused]] size_t nBytes) {
#ifdef GRND_NONBLOCK
    return ::getrandom(pBytes, nBytes, GRND_NONBLOCK) == static_cast<ssize_t>(nBytes);
#else
    return false;
#endif
}

void adviseLargePages([[maybe_unused]] void *pMemory, [[maybe_unused]] uint64_t nBytes) {
#ifdef MADV_HUGEPAGE
    const auto nPage = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
    const uint64_t nSkipped = (nPage - reinterpret_cast<uintptr_t>(pMemory) % nPage) % nPage;
    if (nBytes <= nSkipped) { return; }
    (void)::madvise(static_cast<char *>(pMemory) + nSkipped, (nBytes - nSkipped) / nPage * nPage,
                    MADV_HUGEPAGE);
#endif
}

#endif

// ---- Threads ----

static_assert(sizeof(std::atomic<int32_t>) == sizeof(int32_t) &&
              std::atomic<int32_t>::is_always_lock_free);

namespace {

// Gives errno its value back at the end of a scope.
struct KeptErrno {
    KeptErrno() = default;
    KeptErrno(const KeptErrno &) = delete;
    KeptErrno &operator=(const KeptErrno &) = delete;
    ~KeptErrno() { errno = nErrno; }

    const int nErrno = errno;
};

constexpr std::chrono::milliseconds kBriefly(1), kInsteadOfBarrier(20);

}  // namespace

#if defined(HOST_LINUX_FUTEX)

namespace {

void callFutex(const std::atomic<int32_t> *pWord, int nOperation, int32_t nValue,
               const timespec *pLimit) {
    const KeptErrno kept;
    (void)::syscall(SYS_futex, pWord, nOperation, nValue, pLimit, nullptr, 0);
}

}  // namespace

void waitOn(const std::atomic<int32_t> &word, int32_t nValue) {
    callFutex(&word, FUTEX_WAIT_PRIVATE, nValue, nullptr);
}

void waitBrieflyOn(const std::atomic<int32_t> &word, int32_t nValue) {
    const timespec limit = {0, std::chrono::nanoseconds(kBriefly).count()};
    callFutex(&word, FUTEX_WAIT_PRIVATE, nValue, &limit);
}

void wakeOne(const std::atomic<int32_t> *pWord) {
    callFutex(pWord, FUTEX_WAKE_PRIVATE, 1, nullptr);
}

#elif defined(HOST_WINDOWS_WAIT)

// Of the library "synchronization"; their own header would bring in all of the system's.
extern "C" __declspec(dllimport) int __stdcall WaitOnAddress(const volatile void *pWord,
                                                             void *pValue, size_t nBytes,
                                                             unsigned long nMilliseconds);
extern "C" __declspec(dllimport) void __stdcall WakeByAddressSingle(void *pWord);

void waitOn(const std::atomic<int32_t> &word, int32_t nValue) {
    const KeptErrno kept;
    constexpr unsigned long kForEver = 0xFFFFFFFF;
    (void)WaitOnAddress(&word, &nValue, sizeof nValue, kForEver);
}

void waitBrieflyOn(const std::atomic<int32_t> &word, int32_t nValue) {
    const KeptErrno kept;
    (void)WaitOnAddress(&word, &nValue, sizeof nValue, kBriefly.count());
}

void wakeOne(const std::atomic<int32_t> *pWord) {
    const KeptErrno kept;
    WakeByAddressSingle(const_cast<std::atomic<int32_t> *>(pWord));
}

#else

namespace {

// Where threads sleep; words whose addresses have the same remainder share one.
struct SleepingPlace {
    std::mutex mutex;
    std::condition_variable woken;
};

SleepingPlace &sleepingPlaceOf(const std::atomic<int32_t> *pWord) {
    constexpr size_t kPlaces = 61;
    // Never destroyed: a thread may use it after main has returned.
    union Places {
        Places() : aPlaces() {}
        ~Places() {}
        SleepingPlace aPlaces[kPlaces];
    };
    static Places places;
    return places.aPlaces[reinterpret_cast<uintptr_t>(pWord) / sizeof *pWord % kPlaces];
}

}  // namespace

// A wake comes after its change of the word: it finds this thread asleep, or this thread finds the
// change.
void waitOn(const std::atomic<int32_t> &word, int32_t nValue) {
    const KeptErrno kept;
    SleepingPlace &place = sleepingPlaceOf(&word);
    std::unique_lock hold(place.mutex);
    if (word.load(std::memory_order_relaxed) == nValue) { place.woken.wait(hold); }
}

void waitBrieflyOn(const std::atomic<int32_t> &word, int32_t nValue) {
    const KeptErrno kept;
    SleepingPlace &place = sleepingPlaceOf(&word);
    std::unique_lock hold(place.mutex);
    if (word.load(std::memory_order_relaxed) == nValue) { place.woken.wait_for(hold, kBriefly); }
}

// All, as some of them may wait on another word.
void wakeOne(const std::atomic<int32_t> *pWord) {
    const KeptErrno kept;
    SleepingPlace &place = sleepingPlaceOf(pWord);
    const std::scoped_lock hold(place.mutex);
    place.woken.notify_all();
}

#endif

bool g_bBarrierGranted = false;
std::atomic<bool> g_bBarrierRefused = false;

#if defined(HOST_LINUX_BARRIER)

namespace {

bool callMembarrier(int nCommand) {
    const KeptErrno kept;
    return ::syscall(SYS_membarrier, nCommand, 0, 0) == 0;
}

bool registerForBarrier() {
    return callMembarrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED);
}

bool tryBarrier() {
    return callMembarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED);
}

}  // namespace

#elif defined(HOST_WINDOWS_BARRIER)

extern "C" __declspec(dllimport) void __stdcall FlushProcessWriteBuffers();
extern "C" __declspec(dllimport) void *__stdcall GetModuleHandleA(const char *szName);
extern "C" __declspec(dllimport) long long(
    __stdcall *__stdcall GetProcAddress(void *pModule, const char *szName))();

namespace {

// Wine has the function, but in it a barrier that does nothing (as of version 8).
bool registerForBarrier() {
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") == nullptr;
}

bool tryBarrier() {
    FlushProcessWriteBuffers();
    return registerForBarrier();
}

}  // namespace

#else

namespace {

bool registerForBarrier() {
    return false;
}

bool tryBarrier() {
    return false;
}

}  // namespace

#endif

namespace {

// Before the constructors of a program's own static objects, which may make locks.
[[gnu::constructor(101)]] void askForBarrier() {
    g_bBarrierGranted = registerForBarrier();
}

}  // namespace

void processBarrier() {
    const bool bRefused = g_bBarrierRefused.load(std::memory_order_relaxed);
    if (!bRefused && (tryBarrier() || (registerForBarrier() && tryBarrier()))) { return; }
    const KeptErrno kept;
    std::this_thread::sleep_for(kInsteadOfBarrier);
}

}  // namespace host
