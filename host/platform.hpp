// What differs between systems, with what does instead where a system has nothing of the kind.
// Internal to the shipped host, whose other sources use the C++ standard library alone.
#ifndef HOST_PLATFORM_HPP
#define HOST_PLATFORM_HPP

#include <cstddef>
#include <cstdint>

namespace host {

// Fills pBytes with random bytes of the system. False where there are none to be had (yet).
bool randomBytes(void *pBytes, size_t nBytes);

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

// ---- Files by their descriptors: what they answer for a failure is an errno ----

// Open a file for its bytes as they are; programs that this one starts do not inherit it. -1 and
// errno if it cannot be opened. Writing creates the file (mode 0666 less the umask) or empties it.
int openForReading(const char *szPath);
int openForWriting(const char *szPath);

// Makes a descriptor from elsewhere deliver and take bytes as they are, without any translation of
// line ends.
void passBytesAsTheyAre(int nDescriptor);

// Reads or writes up to nBytes at once: how many, 0 at the end of the file; -1 and errno on
// failure.
int64_t readSome(int nDescriptor, void *pBuffer, uint64_t nBytes);
int64_t writeSome(int nDescriptor, const void *pBytes, uint64_t nBytes);

// Waits until the file is on its device. 0, also where there is nothing to wait for, as with pipes
// and terminals; else the errno.
int syncFile(int nDescriptor);

// Closes the descriptor, which is gone in any case. 0 or the errno.
int closeFile(int nDescriptor);

}  // namespace host

#endif
