// What differs between systems, but for files (host/file_system.hpp). Internal to the shipped host,
// whose other sources use the C++ standard library alone.
#ifndef HOST_PLATFORM_HPP
#define HOST_PLATFORM_HPP

#include <cstddef>
#include <cstdint>

namespace host {

// Fills pBytes with random bytes of the system. False if it has none (yet).
bool randomBytes(void *pBytes, size_t nBytes);

// A random number; without random bytes of the system, one made of the time and an address.
uint64_t randomNumber();

// Advises the system to back memory with large pages; only advice.
void adviseLargePages(void *pMemory, uint64_t nBytes);

// A number that no other running thread has, never 0.
#ifdef _WIN32
extern "C" __declspec(dllimport) unsigned long __stdcall GetCurrentThreadId();
inline uint64_t thisThread() {
    return GetCurrentThreadId();
}
#else
inline uint64_t thisThread() {
    [[gnu::tls_model("initial-exec")]] static thread_local char cOwn;  // its address is the number
    return reinterpret_cast<uintptr_t>(&cOwn);
}
#endif

}  // namespace host

#endif
