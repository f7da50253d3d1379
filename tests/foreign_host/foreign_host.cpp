#include "foreign_host.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <thread>
#include <unordered_map>

#include "host/host_hash_map.h"
#include "host/host_lock.h"
#include "host/host_memory.h"
#include "host/host_pool.h"
#include "host/host_problem.h"
#include "host/host_report.h"

ForeignHost g_foreignHost;
struct HostHashMapKeyKind {
    int nUnused;
};
const HostHashMapKeyKind HostHashMap_StringKeys = {1};
struct HostPool {
    int nUnused;
};

namespace {

bool isMemoryToFail(const char *szFile, int32_t nLine) {
    if (g_foreignHost.nFailAt == 0 || --g_foreignHost.nFailAt > 0) return false;
    if (g_foreignHost.bFailFromThere) g_foreignHost.nFailAt = 1;
    const std::string file = szFile;
    g_foreignHost.failedSites.insert(file.substr(file.rfind('/') + 1) + ':' + std::to_string(nLine));
    return true;
}

constexpr uint64_t kHeader = 16;         // bytes before each allocation; they hold its size
constexpr uint64_t kMarked = 64 * 1024;  // bytes of an allocation that are overwritten at most

uint64_t &sizeOf(void *pMemory) {
    return *reinterpret_cast<uint64_t *>(static_cast<char *>(pMemory) - kHeader);
}

// Holds one entry for each text: an equal key is reported, not added.
struct RefusingMap {
    HostHashMap host;
    std::unordered_map<std::string_view, int32_t> entries;
};

auto &entriesOf(HostHashMap *pMap) {
    return reinterpret_cast<RefusingMap *>(pMap)->entries;
}

int32_t write(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    auto *pOutput = reinterpret_cast<ForeignOutput *>(pStream);
    const uint64_t nTaken = std::min(nBytes, pOutput->nRoom);
    pOutput->written.append(static_cast<const char *>(pData), nTaken);
    pOutput->nRoom -= nTaken;
    return nTaken == nBytes ? 0 : kForeignWriteError;
}

constexpr HostOutputStreamOps kOutputOps = {write};

int32_t append(HostText *pText, const std::string &more) {
    if (more.size() > pText->nRoom) return -6;
    pText->text += more;
    pText->nRoom -= more.size();
    return 0;
}

uintptr_t thisThread() {
    static thread_local char cMark;
    return reinterpret_cast<uintptr_t>(&cMark);
}

}  // namespace

// New memory holds no zero bytes, resizing always moves, and memory given back is overwritten.
void *HostMem_Alloc(uint64_t nBytes, uint64_t /*nSourceTag*/, int32_t nLine, const char *szFile) {
    auto *pBytes = isMemoryToFail(szFile, nLine) ? nullptr : static_cast<char *>(std::malloc(nBytes + kHeader));
    if (pBytes == nullptr) return nullptr;
    void *pMemory = std::memset(pBytes + kHeader, 0xa5, std::min(nBytes, kMarked));
    sizeOf(pMemory) = nBytes;
    ++g_foreignHost.nLive;
    return pMemory;
}

void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine, const char *szFile) {
    return HostMem_Alloc(nBytes, nSourceTag, nLine, szFile);
}

void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t nSourceTag, int32_t nLine, const char *szFile) {
    void *pMoved = HostMem_Alloc(nBytes, nSourceTag, nLine, szFile);
    if (pMoved == nullptr || pMemory == nullptr) return pMoved;
    std::memcpy(pMoved, pMemory, std::min(nBytes, sizeOf(pMemory)));
    HostMem_Free(pMemory, nSourceTag, nLine);
    return pMoved;
}

void HostMem_Free(void *pMemory, uint64_t /*nSourceTag*/, int32_t /*nLine*/) {
    if (pMemory == nullptr) return;
    std::memset(pMemory, 0x5a, std::min(sizeOf(pMemory), kMarked));
    --g_foreignHost.nLive;
    std::free(static_cast<char *>(pMemory) - kHeader);
}

static std::atomic<uintptr_t> &ownerOf(HostLock *pLock) {
    return *reinterpret_cast<std::atomic<uintptr_t> *>(&pLock->nOwner);
}

int32_t HostLock_Init(HostLock *pLock, const char *szFile, int32_t nLine) {
    if (isMemoryToFail(szFile, nLine)) return -9;
    *pLock = {};
    new (&pLock->nOwner) std::atomic<uintptr_t>(0);
    ++g_foreignHost.nLive;
    return 0;
}

void HostLock_Acquire(HostLock *pLock) {
    std::atomic<uintptr_t> &owner = ownerOf(pLock);
    for (uintptr_t nNobody = 0; owner != thisThread() && !owner.compare_exchange_weak(nNobody, thisThread()); nNobody = 0) {
        std::this_thread::yield();
    }
    ++pLock->nDepth;
    ++g_foreignHost.nLockDepth;
}

void HostLock_Release(HostLock *pLock) {
    std::atomic<uintptr_t> &owner = ownerOf(pLock);
    if (owner != thisThread()) std::abort();
    --g_foreignHost.nLockDepth;
    if (--pLock->nDepth == 0) owner = 0;
}

void HostLock_Destroy(HostLock *pLock) {
    if (pLock->nDepth != 0) std::abort();
    --g_foreignHost.nLive;
}

void Host_ReportError(uint64_t /*nSourceTag*/, int32_t /*nLine*/, int32_t /*nCode*/, const char * /*szText*/) {
    ++g_foreignHost.nErrors;
}

void Host_ReportAssertion(uint64_t /*nSourceTag*/, int32_t /*nLine*/, int32_t /*nCode*/, const char * /*szFormat*/, ...) {
    ++g_foreignHost.nAssertions;
}

void Host_AssertStringsEqual(uint64_t /*nSourceTag*/, int32_t /*nLine*/, const char *szExpected, const char *szActual) {
    if (std::strcmp(szExpected, szActual) != 0) ++g_foreignHost.nAssertions;
}

HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t /*nExpected*/, const char *szFile, int32_t nLine) {
    if (pKeyKind != &HostHashMap_StringKeys || g_foreignHost.bFailMaps || isMemoryToFail(szFile, nLine)) return nullptr;
    ++g_foreignHost.nLive;
    return &(new RefusingMap{{0}, {}})->host;
}

int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey) {
    const auto found = entriesOf(pMap).find(szKey);
    return found == entriesOf(pMap).end() ? -1 : found->second;
}

int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue, int32_t *pnExisting, const char *szFile, int32_t nLine) {
    if (isMemoryToFail(szFile, nLine)) return -5;
    const auto [entry, bNew] = entriesOf(pMap).emplace(szKey, nValue);
    if (pnExisting != nullptr) *pnExisting = bNew ? -1 : entry->second;
    pMap->nEntries += bNew ? 1 : 0;
    return 0;
}

int32_t HostHashMap_Remove(HostHashMap *pMap, const char *szKey) {
    const auto nRemoved = static_cast<int32_t>(entriesOf(pMap).erase(szKey));
    pMap->nEntries -= nRemoved;
    return nRemoved == 0 ? 1 : 0;
}

void HostHashMap_Release(HostHashMap *pMap) {
    --g_foreignHost.nLive;
    delete reinterpret_cast<RefusingMap *>(pMap);
}

HostPool *HostPool_Get(void) {
    static HostPool pool;
    return &pool;
}

void *HostPool_Alloc(HostPool *pPool, uint64_t nBytes, int32_t nReserved1, int32_t nReserved2, const char *szFile, int32_t nLine) {
    if (pPool != HostPool_Get() || nReserved1 != 0 || nReserved2 != 0) std::abort();
    return HostMem_Alloc(nBytes, 0, nLine, szFile);
}

void HostPool_Free(HostPool * /*pPool*/, void *pMemory, int32_t /*nReserved1*/, int32_t /*nReserved2*/) {
    HostMem_Free(pMemory, 0, 0);
}

int32_t HostText_Append(HostText *pText, const char *szString) {
    return append(pText, szString);
}

int32_t HostText_AppendPadded(HostText *pText, const char *szString, int64_t nCharacters) {
    std::string field = szString;
    field.resize(static_cast<uint64_t>(nCharacters), ' ');
    return append(pText, field);
}

int32_t HostText_AppendRepeated(HostText *pText, int64_t nCount, char cCharacter) {
    return append(pText, std::string(static_cast<uint64_t>(nCount), cCharacter));
}

ForeignOutput::ForeignOutput(uint64_t nGiven) : stream{&kOutputOps}, nRoom(nGiven) {}

int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes) {
    const uint64_t nTaken = std::min(nBytes, pStream->nLeft);
    if (nTaken > 0) std::memcpy(pBuffer, pStream->pNext, nTaken);
    pStream->pNext += nTaken;
    pStream->nLeft -= nTaken;
    return nTaken == nBytes ? 0 : kForeignReadError;
}

int32_t ZOLTcreateprob(ZOLTprob *pProb) {
    *pProb = static_cast<ZOLTprob>(HostMem_AllocRecord(1, 0, 0));
    return *pProb == nullptr ? 5 : 0;
}

int32_t ZOLTdestroyprob(ZOLTprob prob) {
    HostMem_Free(prob, 0, 0);
    return 0;
}
