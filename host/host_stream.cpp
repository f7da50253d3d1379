#include "host/host_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "host/byte_buffer.hpp"
#include "host/host_memory.h"
#include "host/platform.hpp"

namespace {

constexpr uint64_t kSourceTag = 0x686f73747374726d;  // "hoststrm"
constexpr uint64_t kFileBuffer =
    64 * 1024;  // bytes; larger pieces pass a file stream without being copied

// Closes a descriptor whose owner could not be made, and keeps errno.
void closeQuietly(int nDescriptor) {
    const int nError = errno;
    (void)host::closeFile(nDescriptor);
    errno = nError;
}

// ---- Memory output ----

struct MemoryOutput {
    HostOutputStream stream;
    host::ByteBuffer buffer;
};

int32_t writeToMemory(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    host::ByteBuffer &buffer = reinterpret_cast<MemoryOutput *>(pStream)->buffer;
    if (nBytes == 0) { return 0; }
    if (!host::growByteBuffer(buffer, nBytes)) { return HostStreamError_Memory; }
    std::memcpy(buffer.pBytes + buffer.nUsed, pData, nBytes);
    buffer.nUsed += nBytes;
    return 0;
}

constexpr HostOutputStreamOps kMemoryOps = {writeToMemory};

// ---- File output ----

struct FileOutput {
    HostOutputStream stream;
    int nDescriptor;
    int nError;          // errno of the first failure, 0 so far
    uint64_t nBuffered;  // bytes in buffer that are not written yet
    char buffer[kFileBuffer];
};

// Writes all of pData to the descriptor; the first failure stays with the file.
void writeOut(FileOutput &file, const char *pData, uint64_t nBytes) {
    while (nBytes > 0 && file.nError == 0) {
        const int64_t nWritten = host::writeSome(file.nDescriptor, pData, nBytes);
        if (nWritten < 0) {
            file.nError = errno;
            return;
        }
        pData += nWritten;
        nBytes -= static_cast<uint64_t>(nWritten);
    }
}

void flush(FileOutput &file) {
    writeOut(file, file.buffer, file.nBuffered);
    file.nBuffered = 0;
}

int32_t writeToFile(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    FileOutput &file = *reinterpret_cast<FileOutput *>(pStream);
    const char *pBytes = static_cast<const char *>(pData);
    if (nBytes > kFileBuffer - file.nBuffered) { flush(file); }
    if (nBytes > kFileBuffer) {
        writeOut(file, pBytes, nBytes);
    } else if (nBytes > 0) {
        std::memcpy(file.buffer + file.nBuffered, pBytes, nBytes);
        file.nBuffered += nBytes;
    }
    if (file.nError == 0) { return 0; }
    errno = file.nError;
    return HostStreamError_IO;
}

constexpr HostOutputStreamOps kFileOps = {writeToFile};

// Frees the stream; its result is what closing it answers.
int32_t closeOutput(FileOutput *pFile, bool bSync) {
    flush(*pFile);
    if (bSync && pFile->nError == 0) { pFile->nError = host::syncFile(pFile->nDescriptor); }
    const int nClosed = host::closeFile(pFile->nDescriptor);
    const int nError = pFile->nError != 0 ? pFile->nError : nClosed;
    HostMem_Free(pFile, kSourceTag, __LINE__);
    if (nError == 0) { return 0; }
    errno = nError;
    return HostStreamError_IO;
}

}  // namespace

// ---- Output streams ----

HostOutputStream *HostOutputStream_CreateInMemory(void) {
    auto *pMemory = static_cast<MemoryOutput *>(
        HostMem_AllocRecord(sizeof(MemoryOutput), kSourceTag, __LINE__));
    if (pMemory == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    *pMemory = {{&kMemoryOps}, {}};
    return &pMemory->stream;
}

const void *HostOutputStream_GetMemory(const HostOutputStream *pStream, uint64_t *pnBytes) {
    const host::ByteBuffer &buffer = reinterpret_cast<const MemoryOutput *>(pStream)->buffer;
    *pnBytes = buffer.nUsed;
    return buffer.pBytes == nullptr ? "" : buffer.pBytes;
}

HostOutputStream *HostOutputStream_CreateForFile(const char *szPath) {
    const int nDescriptor = host::openForWriting(szPath);
    if (nDescriptor < 0) { return nullptr; }
    HostOutputStream *pStream = HostOutputStream_CreateForDescriptor(nDescriptor);
    if (pStream == nullptr) { closeQuietly(nDescriptor); }
    return pStream;
}

HostOutputStream *HostOutputStream_CreateForDescriptor(int32_t nDescriptor) {
    auto *pFile =
        static_cast<FileOutput *>(HostMem_AllocRecord(sizeof(FileOutput), kSourceTag, __LINE__));
    if (pFile == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    host::passBytesAsTheyAre(nDescriptor);
    pFile->stream.pOps = &kFileOps;
    pFile->nDescriptor = nDescriptor;
    pFile->nError = 0;
    pFile->nBuffered = 0;
    return &pFile->stream;
}

int32_t HostOutputStream_Close(HostOutputStream *pStream, int32_t bSync) {
    if (pStream == nullptr) { return 0; }
    if (pStream->pOps == &kFileOps) {
        return closeOutput(reinterpret_cast<FileOutput *>(pStream), bSync != 0);
    }
    auto *pMemory = reinterpret_cast<MemoryOutput *>(pStream);
    host::freeByteBuffer(pMemory->buffer);
    HostMem_Free(pMemory, kSourceTag, __LINE__);
    return 0;
}

// ---- Input streams ----

// Both kinds serve reads from the bytes at hand: all there is of a memory; of a file what was read
// ahead into the buffer behind the record.
struct HostInputStream {
    const char *pNext;  // the next byte at hand
    uint64_t nAtHand;   // bytes at hand
    int nDescriptor;    // -1 for a memory
};

namespace {

constexpr int kNoDescriptor = -1;

// Reads up to nBytes of the file, at least one; otherwise the stream's error code.
int32_t readIn(const HostInputStream &stream, char *pBuffer, uint64_t nBytes, uint64_t *pnRead) {
    const int64_t nRead = host::readSome(stream.nDescriptor, pBuffer, nBytes);
    if (nRead < 0) { return HostStreamError_IO; }
    if (nRead == 0) { return HostStreamError_End; }
    *pnRead = static_cast<uint64_t>(nRead);
    return 0;
}

// Moves nBytes of those at hand.
void take(HostInputStream &stream, char *pBuffer, uint64_t nBytes) {
    if (nBytes > 0) { std::memcpy(pBuffer, stream.pNext, nBytes); }
    stream.pNext += nBytes;
    stream.nAtHand -= nBytes;
}

int32_t readFile(HostInputStream *pStream, char *pBuffer, uint64_t nBytes) {
    char *pOwnBuffer = reinterpret_cast<char *>(pStream + 1);
    while (true) {
        const uint64_t nTaken = std::min(nBytes, pStream->nAtHand);
        take(*pStream, pBuffer, nTaken);
        pBuffer += nTaken;
        nBytes -= nTaken;
        if (nBytes == 0) { return 0; }
        const bool bDirect = nBytes >= kFileBuffer;
        uint64_t nRead = 0;
        const int32_t nError = readIn(*pStream, bDirect ? pBuffer : pOwnBuffer,
                                      bDirect ? nBytes : kFileBuffer, &nRead);
        if (nError != 0) { return nError; }
        if (bDirect) {
            pBuffer += nRead;
            nBytes -= nRead;
        } else {
            pStream->pNext = pOwnBuffer;
            pStream->nAtHand = nRead;
        }
    }
}

HostInputStream *createInput(uint64_t nBufferBytes, const HostInputStream &content) {
    auto *pStream = static_cast<HostInputStream *>(
        HostMem_AllocRecord(sizeof(HostInputStream) + nBufferBytes, kSourceTag, __LINE__));
    if (pStream == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    *pStream = content;
    return pStream;
}

}  // namespace

int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes) {
    if (pStream->nDescriptor != kNoDescriptor) {
        return readFile(pStream, static_cast<char *>(pBuffer), nBytes);
    }
    if (nBytes > pStream->nAtHand) { return HostStreamError_End; }
    take(*pStream, static_cast<char *>(pBuffer), nBytes);
    return 0;
}

HostInputStream *HostInputStream_CreateInMemory(const void *pData, uint64_t nBytes) {
    return createInput(0, {static_cast<const char *>(pData), nBytes, kNoDescriptor});
}

HostInputStream *HostInputStream_CreateForFile(const char *szPath) {
    const int nDescriptor = host::openForReading(szPath);
    if (nDescriptor < 0) { return nullptr; }
    HostInputStream *pStream = HostInputStream_CreateForDescriptor(nDescriptor);
    if (pStream == nullptr) { closeQuietly(nDescriptor); }
    return pStream;
}

HostInputStream *HostInputStream_CreateForDescriptor(int32_t nDescriptor) {
    host::passBytesAsTheyAre(nDescriptor);
    return createInput(kFileBuffer, {nullptr, 0, nDescriptor});
}

void HostInputStream_Close(HostInputStream *pStream) {
    if (pStream == nullptr) { return; }
    if (pStream->nDescriptor != kNoDescriptor) { (void)host::closeFile(pStream->nDescriptor); }
    HostMem_Free(pStream, kSourceTag, __LINE__);
}
