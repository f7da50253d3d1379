// What differs between systems, but for files (host/file_system.hpp). Internal to the shipped host,
// whose other sources use the C++ standard library alone.
#ifndef HOST_PLATFORM_HPP
#define HOST_PLATFORM_HPP

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace host {

// Fills pBytes with random bytes of the system. False if it has none (yet).
bool randomBytes(void *pBytes, size_t nBytes);

// A random number; without random bytes of the system, one made of the time and an address.
uint64_t randomNumber();

// Advises the system to back memory with large pages; only advice.
void adviseLargePages(void *pMemory, uint64_t nBytes);

// ---- Threads: none of this changes errno ----

// A number that no other living thread has, never 0 and never 1: the thread pointer, where it can
// be had. A thread may get the number of one that has ended.
#if defined(__linux__) && (defined(__x86_64__) || defined(__aarch64__))
inline uint64_t thisThread() {
    return reinterpret_cast<uintptr_t>(__builtin_thread_pointer());
}
#elif defined(_WIN32) && defined(__x86_64__)
inline uint64_t thisThread() {
    uint64_t nBlock = 0;  // address of the thread's environment block, which holds it itself
    __asm__("movq %%gs:0x30, %0" : "=r"(nBlock));
    return nBlock;
}
#elif defined(_WIN32)
extern "C" __declspec(dllimport) unsigned long __stdcall GetCurrentThreadId();
inline uint64_t thisThread() {
    return GetCurrentThreadId();  // a multiple of 4
}
#else
inline uint64_t thisThread() {
    [[gnu::tls_model("initial-exec")]] static thread_local char cOwn;  // its address is the number
    return reinterpret_cast<uintptr_t>(&cOwn);
}
#endif

// Lets the processor wait a moment before a loop looks at a word again.
inline void pauseBriefly() {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    __asm__ volatile("yield");
#endif
}

// Sleeps while the word is nValue, until a wakeOne for it; it may also return for no reason. The
// second one sleeps 1 ms at most.
void waitOn(const std::atomic<int32_t> &word, int32_t nValue);
void waitBrieflyOn(const std::atomic<int32_t> &word, int32_t nValue);

// Wakes up a thread that waits on the word, if there is one; may wake more. Uses nothing of the
// word but its address, so its memory may have been freed.
void wakeOne(const std::atomic<int32_t> *pWord);

// ThreadSanitizer cannot see the barrier below, so there is none in its builds.
#if defined(__SANITIZE_THREAD__)
#define HOST_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define HOST_THREAD_SANITIZER
#endif
#endif

// Whether the system grants processBarrier; settled while the library is loaded. Tests change it.
extern bool g_bBarrierGranted;

// Set by tests: the system refuses from then on what it granted.
extern std::atomic<bool> g_bBarrierRefused;

// Each other thread of the process passes a full memory barrier somewhere between call and return.
// If the system refuses what it granted, 20 ms pass instead, in which every store of a running
// thread has long become visible. Not called where it was not granted.
void processBarrier();

}  // namespace host

#endif
