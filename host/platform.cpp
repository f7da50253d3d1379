#include "host/platform.hpp"

#include <cerrno>
#include <fcntl.h>

#include <algorithm>

#ifdef _WIN32
#include <io.h>
#include <sys/stat.h>
#else
#include <unistd.h>
#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif
#if __has_include(<sys/random.h>)
#include <sys/random.h>
#endif
#endif

namespace host {

namespace {

constexpr uint64_t kMaxTransfer = 1U << 30;  // bytes that one system call is asked for

}  // namespace

#ifdef _WIN32

// Documented as RtlGenRandom; its own header would bring in all of the system's.
extern "C" __declspec(dllimport) unsigned char __stdcall SystemFunction036(void *pBytes,
                                                                           unsigned long nBytes);

bool randomBytes(void *pBytes, size_t nBytes) {
    return SystemFunction036(pBytes, static_cast<unsigned long>(nBytes)) != 0;
}

// Large pages take a privilege there that few programs have.
void adviseLargePages(void * /*pMemory*/, uint64_t /*nBytes*/) {}

int openForReading(const char *szPath) {
    return ::_open(szPath, _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

int openForWriting(const char *szPath) {
    return ::_open(szPath, _O_WRONLY | _O_CREAT | _O_TRUNC | _O_BINARY | _O_NOINHERIT,
                   _S_IREAD | _S_IWRITE);
}

void passBytesAsTheyAre(int nDescriptor) {
    (void)::_setmode(nDescriptor, _O_BINARY);
}

int64_t readSome(int nDescriptor, void *pBuffer, uint64_t nBytes) {
    return ::_read(nDescriptor, pBuffer, static_cast<unsigned>(std::min(nBytes, kMaxTransfer)));
}

int64_t writeSome(int nDescriptor, const void *pBytes, uint64_t nBytes) {
    return ::_write(nDescriptor, pBytes, static_cast<unsigned>(std::min(nBytes, kMaxTransfer)));
}

// Pipes and terminals answer that the descriptor is a bad one.
int syncFile(int nDescriptor) {
    return ::_commit(nDescriptor) == 0 || errno == EBADF ? 0 : errno;
}

int closeFile(int nDescriptor) {
    return ::_close(nDescriptor) == 0 ? 0 : errno;
}

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
    // There is nothing to do when the system does not take the advice.
    (void)::madvise(static_cast<char *>(pMemory) + nSkipped, (nBytes - nSkipped) / nPage * nPage,
                    MADV_HUGEPAGE);
#endif
}

namespace {

#ifdef O_CLOEXEC
constexpr int kNotInherited = O_CLOEXEC;
#else
constexpr int kNotInherited = 0;
#endif
constexpr mode_t kFileMode = 0666;

// Again when a signal interrupts, as with all calls below.
int openFile(const char *szPath, int nFlags) {
    int nDescriptor = -1;
    do {
        nDescriptor = ::open(szPath, nFlags | kNotInherited, kFileMode);
    } while (nDescriptor < 0 && errno == EINTR);
    return nDescriptor;
}

}  // namespace

int openForReading(const char *szPath) {
    return openFile(szPath, O_RDONLY);
}

int openForWriting(const char *szPath) {
    return openFile(szPath, O_WRONLY | O_CREAT | O_TRUNC);
}

void passBytesAsTheyAre(int /*nDescriptor*/) {}

int64_t readSome(int nDescriptor, void *pBuffer, uint64_t nBytes) {
    ssize_t nRead = -1;
    do {
        nRead = ::read(nDescriptor, pBuffer, std::min(nBytes, kMaxTransfer));
    } while (nRead < 0 && errno == EINTR);
    return nRead;
}

int64_t writeSome(int nDescriptor, const void *pBytes, uint64_t nBytes) {
    ssize_t nWritten = -1;
    do {
        nWritten = ::write(nDescriptor, pBytes, std::min(nBytes, kMaxTransfer));
    } while (nWritten < 0 && errno == EINTR);
    return nWritten;
}

int syncFile(int nDescriptor) {
    while (::fsync(nDescriptor) != 0) {
        if (errno == EINVAL || errno == ENOTSUP) { return 0; }
        if (errno != EINTR) { return errno; }
    }
    return 0;
}

int closeFile(int nDescriptor) {
    return ::close(nDescriptor) == 0 || errno == EINTR ? 0 : errno;
}

#endif

}  // namespace host
