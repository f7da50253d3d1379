#include "host/host_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "host/byte_buffer.hpp"
#include "host/file_system.hpp"
#include "host/host_memory.h"

// Reads are served from the bytes at hand: all there are of a memory stream; of a file, what was
// read ahead into the buffer after this record.
struct HostInputStream {
    const char *pNext;  // the next byte at hand
    uint64_t nAtHand;   // bytes at hand
    int nDescriptor;    // kNoDescriptor for a memory stream
};

namespace host {
namespace {

constexpr uint64_t kStreamSourceTag = 0x686f73747374726d;  // "hoststrm"
constexpr uint64_t kFileBuffer = 64 * 1024;  // bytes; longer reads and writes are not copied
constexpr int kNoDescriptor = -1;

// ---- Memory output ----

struct MemoryOutput {
    HostOutputStream stream;
    ByteBuffer buffer;
};

int32_t writeToMemory(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    ByteBuffer &buffer = reinterpret_cast<MemoryOutput *>(pStream)->buffer;
    if (nBytes == 0) { return 0; }
    if (!growByteBuffer(buffer, nBytes)) { return HostStreamError_Memory; }
    std::memcpy(buffer.pBytes + buffer.nUsed, pData, nBytes);
    buffer.nUsed += nBytes;
    return 0;
}

constexpr HostOutputStreamOps kMemoryStreamOps = {writeToMemory};

// ---- File output ----

struct FileOutput {
    HostOutputStream stream;
    int nDescriptor;
    int nError;          // errno of the first failure, 0 so far
    uint64_t nBuffered;  // bytes in buffer that are not written yet
    char buffer[kFileBuffer];
};

// Writes all of pData to the descriptor, unless a write has failed before. One that moves no bytes
// fails, too: trying again might go on for ever.
void writeOut(FileOutput &file, const char *pData, uint64_t nBytes) {
    while (nBytes > 0 && file.nError == 0) {
        const int64_t nWritten = writeSome(file.nDescriptor, pData, nBytes);
        if (nWritten <= 0) {
            file.nError = nWritten < 0 ? errno : EIO;
            return;
        }
        pData += nWritten;
        nBytes -= static_cast<uint64_t>(nWritten);
    }
}

void flushFile(FileOutput &file) {
    writeOut(file, file.buffer, file.nBuffered);
    file.nBuffered = 0;
}

int32_t ioResult(int nError) {
    if (nError == 0) { return 0; }
    errno = nError;
    return HostStreamError_IO;
}

int32_t writeToFile(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    FileOutput &file = *reinterpret_cast<FileOutput *>(pStream);
    const char *pBytes = static_cast<const char *>(pData);
    if (nBytes > kFileBuffer - file.nBuffered) { flushFile(file); }
    if (nBytes > kFileBuffer) {
        writeOut(file, pBytes, nBytes);
    } else if (nBytes > 0) {
        std::memcpy(file.buffer + file.nBuffered, pBytes, nBytes);
        file.nBuffered += nBytes;
    }
    return ioResult(file.nError);
}

constexpr HostOutputStreamOps kFileStreamOps = {writeToFile};

// Returns the errno of the first failure, 0 if there was none.
int endFile(FileOutput &file, bool bSync) {
    flushFile(file);
    if (bSync && file.nError == 0) { file.nError = syncFile(file.nDescriptor); }
    const int nClosed = closeFile(file.nDescriptor);
    return file.nError != 0 ? file.nError : nClosed;
}

// ---- Input ----

void takeAtHand(HostInputStream &stream, char *pBuffer, uint64_t nBytes) {
    if (nBytes > 0) { std::memcpy(pBuffer, stream.pNext, nBytes); }
    stream.pNext += nBytes;
    stream.nAtHand -= nBytes;
}

// What the buffer could not hold is read directly to where it is wanted.
int32_t readFile(HostInputStream *pStream, char *pBuffer, uint64_t nBytes) {
    char *pOwnBuffer = reinterpret_cast<char *>(pStream + 1);
    while (true) {
        const uint64_t nTaken = std::min(nBytes, pStream->nAtHand);
        takeAtHand(*pStream, pBuffer, nTaken);
        pBuffer += nTaken;
        nBytes -= nTaken;
        if (nBytes == 0) { return 0; }
        const bool bDirect = nBytes >= kFileBuffer;
        const int64_t nRead = readSome(pStream->nDescriptor, bDirect ? pBuffer : pOwnBuffer,
                                       bDirect ? nBytes : kFileBuffer);
        if (nRead <= 0) { return nRead == 0 ? HostStreamError_End : HostStreamError_IO; }
        if (bDirect) {
            pBuffer += nRead;
            nBytes -= static_cast<uint64_t>(nRead);
        } else {
            pStream->pNext = pOwnBuffer;
            pStream->nAtHand = static_cast<uint64_t>(nRead);
        }
    }
}

// ---- Makers ----

// Memory for a stream. NULL without memory, with errno set.
void *allocStream(uint64_t nBytes) {
    void *pStream = HostMem_AllocRecord(nBytes, kStreamSourceTag, __LINE__);
    if (pStream == nullptr) { errno = ENOMEM; }
    return pStream;
}

HostInputStream *createInput(uint64_t nBufferBytes, const HostInputStream &content) {
    void *pStream = allocStream(sizeof(HostInputStream) + nBufferBytes);
    return pStream != nullptr ? new (pStream) HostInputStream(content) : nullptr;
}

}  // namespace
}  // namespace host

using namespace host;

// ---- Output streams ----

HostOutputStream *HostOutputStream_CreateInMemory(void) {
    auto *pMemory = static_cast<MemoryOutput *>(allocStream(sizeof(MemoryOutput)));
    if (pMemory == nullptr) { return nullptr; }
    *pMemory = {{&kMemoryStreamOps}, {}};
    return &pMemory->stream;
}

const void *HostOutputStream_GetMemory(const HostOutputStream *pStream, uint64_t *pnBytes) {
    const ByteBuffer &buffer = reinterpret_cast<const MemoryOutput *>(pStream)->buffer;
    *pnBytes = buffer.nUsed;
    return buffer.pBytes == nullptr ? "" : buffer.pBytes;
}

HostOutputStream *HostOutputStream_CreateForFile(const char *szPath) {
    const int nDescriptor = openForWriting(szPath);
    if (nDescriptor < 0) { return nullptr; }
    HostOutputStream *pStream = HostOutputStream_CreateForDescriptor(nDescriptor);
    if (pStream == nullptr) { closeQuietly(nDescriptor); }
    return pStream;
}

HostOutputStream *HostOutputStream_CreateForDescriptor(int32_t nDescriptor) {
    auto *pFile = static_cast<FileOutput *>(allocStream(sizeof(FileOutput)));
    if (pFile == nullptr) { return nullptr; }
    passBytesAsTheyAre(nDescriptor);
    pFile->stream.pOps = &kFileStreamOps;
    pFile->nDescriptor = nDescriptor;
    pFile->nError = 0;
    pFile->nBuffered = 0;
    return &pFile->stream;
}

int32_t HostOutputStream_Close(HostOutputStream *pStream, int32_t bSync) {
    if (pStream == nullptr) { return 0; }
    int nError = 0;
    if (pStream->pOps == &kFileStreamOps) {
        nError = endFile(*reinterpret_cast<FileOutput *>(pStream), bSync != 0);
    } else {
        freeByteBuffer(reinterpret_cast<MemoryOutput *>(pStream)->buffer);
    }
    HostMem_Free(pStream, kStreamSourceTag, __LINE__);
    return ioResult(nError);
}

// ---- Input streams ----

int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes) {
    if (pStream->nDescriptor != kNoDescriptor) {
        return readFile(pStream, static_cast<char *>(pBuffer), nBytes);
    }
    if (nBytes > pStream->nAtHand) { return HostStreamError_End; }
    takeAtHand(*pStream, static_cast<char *>(pBuffer), nBytes);
    return 0;
}

HostInputStream *HostInputStream_CreateInMemory(const void *pData, uint64_t nBytes) {
    return createInput(0, {static_cast<const char *>(pData), nBytes, kNoDescriptor});
}

HostInputStream *HostInputStream_CreateForFile(const char *szPath) {
    const int nDescriptor = openForReading(szPath);
    if (nDescriptor < 0) { return nullptr; }
    HostInputStream *pStream = HostInputStream_CreateForDescriptor(nDescriptor);
    if (pStream == nullptr) { closeQuietly(nDescriptor); }
    return pStream;
}

HostInputStream *HostInputStream_CreateForDescriptor(int32_t nDescriptor) {
    passBytesAsTheyAre(nDescriptor);
    return createInput(kFileBuffer, {nullptr, 0, nDescriptor});
}

void HostInputStream_Close(HostInputStream *pStream) {
    if (pStream == nullptr) { return; }
    if (pStream->nDescriptor != kNoDescriptor) { (void)closeFile(pStream->nDescriptor); }
    HostMem_Free(pStream, kStreamSourceTag, __LINE__);
}
