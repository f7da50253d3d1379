#include "host/platform.hpp"

#include <chrono>

#ifndef _WIN32
#include <unistd.h>
#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif
#if __has_include(<sys/random.h>)
#include <sys/random.h>
#endif
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

}  // namespace host
