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
    if (g_foreignHost.nFailAt == 0 || --g_foreignHost.nFailAt > 0) { return false; }
    if (g_foreignHost.bFailFromThere) { g_foreignHost.nFailAt = 1; }
    const std::string file = szFile;
    g_foreignHost.failedSites.insert(file.substr(file.rfind('/') + 1) + ':' +
                                     std::to_string(nLine));
    return true;
}

void refuse(bool bRefused, const char *szWhat) {
    if (bRefused && g_foreignHost.refusals.size() < 1000) {
        g_foreignHost.refusals.append(szWhat).append(". ");
    }
}

// Whoever asks gives one source tag, always the same, and a line.
void expectCaller(uint64_t nSourceTag, int32_t nLine) {
    static const uint64_t nFirstTag = nSourceTag;
    refuse(nSourceTag != nFirstTag, "Another source tag");
    refuse(nLine <= 0, "No source line");
}

constexpr uint64_t kMarked = 64 * 1024;  // bytes of an allocation that are overwritten at most
constexpr uint64_t kPoolTag = 1, kProblemTag = 2;
#if defined(__SANITIZE_ADDRESS__)
constexpr uint64_t kFence = 0;  // the sanitizer has its own
#else
constexpr uint64_t kFence = 8;
#endif

// Lies before each allocation; a fence that must stay as it is follows it.
struct alignas(16) Header {
    uint64_t nBytes, nTag;
};

Header &headerOf(void *pMemory) {
    return static_cast<Header *>(pMemory)[-1];
}

std::string_view fenceOf(void *pMemory) {
    return {static_cast<char *>(pMemory) + headerOf(pMemory).nBytes, kFence};
}

// New memory holds no zero bytes, and memory given back is overwritten.
void *obtain(uint64_t nBytes, uint64_t nTag, const char *szFile, int32_t nLine) {
    auto *pHeader = isMemoryToFail(szFile, nLine)
                        ? nullptr
                        : static_cast<Header *>(std::malloc(sizeof(Header) + nBytes + kFence));
    if (pHeader == nullptr) { return nullptr; }
    *pHeader = {nBytes, nTag};
    void *pMemory = std::memset(pHeader + 1, 0xa5, std::min(nBytes, kMarked));
    std::memset(static_cast<char *>(pMemory) + nBytes, '|', kFence);
    ++g_foreignHost.nLive;
    return pMemory;
}

void giveBack(void *pMemory, uint64_t nTag) {
    if (pMemory == nullptr) { return; }
    refuse(headerOf(pMemory).nTag != nTag, "Memory of another tag given back");
    refuse(fenceOf(pMemory).find_first_not_of('|') != std::string_view::npos,
           "Bytes written behind an allocation");
    std::memset(pMemory, 0x5a, std::min(headerOf(pMemory).nBytes, kMarked));
    --g_foreignHost.nLive;
    std::free(&headerOf(pMemory));
}

// Holds one entry for each text: an equal key is reported, not added. A key's text must stay what
// it was.
struct Entry {
    int32_t nValue;
    size_t nHash;
};
struct RefusingMap {
    HostHashMap host;
    std::unordered_map<std::string_view, Entry> entries;
};
std::set<HostHashMap *> g_liveMaps;

auto &entriesOf(HostHashMap *pMap) {
    if (!g_liveMaps.contains(pMap)) { std::abort(); }
    return reinterpret_cast<RefusingMap *>(pMap)->entries;
}

size_t hashOf(std::string_view text) {
    return std::hash<std::string_view>()(text);
}

auto findEntry(HostHashMap *pMap, const char *szKey) {
    const auto found = entriesOf(pMap).find(szKey);
    refuse(found != entriesOf(pMap).end() && hashOf(found->first) != found->second.nHash,
           "A key changed in the map");
    return found;
}

int32_t append(HostText *pText, const std::string &more) {
    if (more.size() > pText->nRoom) { return -6; }
    pText->text += more;
    pText->nRoom -= more.size();
    return 0;
}

void noteLock(const HostLock *pLock, bool bTaken) {
    if (g_foreignHost.heldLocks.size() < 20) {
        g_foreignHost.heldLocks.emplace_back(pLock, bTaken);
    }
}

uintptr_t thisThread() {
    static thread_local char cMark;
    return reinterpret_cast<uintptr_t>(&cMark);
}

}  // namespace

void *HostMem_Alloc(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine, const char *szFile) {
    expectCaller(nSourceTag, nLine);
    return obtain(nBytes, nSourceTag, szFile, nLine);
}

void *HostMem_AllocRecord(uint64_t nBytes, uint64_t nSourceTag, int32_t nLine, const char *szFile) {
    return HostMem_Alloc(nBytes, nSourceTag, nLine, szFile);
}

// Always moves.
void *HostMem_Realloc(void *pMemory, uint64_t nBytes, uint64_t nSourceTag, int32_t nLine,
                      const char *szFile) {
    void *pMoved = HostMem_Alloc(nBytes, nSourceTag, nLine, szFile);
    if (pMoved == nullptr || pMemory == nullptr) { return pMoved; }
    std::memcpy(pMoved, pMemory, std::min(nBytes, headerOf(pMemory).nBytes));
    giveBack(pMemory, nSourceTag);
    return pMoved;
}

void HostMem_Free(void *pMemory, uint64_t nSourceTag, int32_t nLine) {
    expectCaller(nSourceTag, nLine);
    giveBack(pMemory, nSourceTag);
}

static std::atomic<uintptr_t> &ownerOf(HostLock *pLock) {
    return *reinterpret_cast<std::atomic<uintptr_t> *>(&pLock->nOwner);
}

int32_t HostLock_Init(HostLock *pLock, const char *szFile, int32_t nLine) {
    if (isMemoryToFail(szFile, nLine)) { return -9; }
    *pLock = {};
    new (&pLock->nOwner) std::atomic<uintptr_t>(0);
    ++g_foreignHost.nLive;
    return 0;
}

void HostLock_Acquire(HostLock *pLock) {
    std::atomic<uintptr_t> &owner = ownerOf(pLock);
    for (uintptr_t nNobody = 0;
         owner != thisThread() && !owner.compare_exchange_weak(nNobody, thisThread());
         nNobody = 0) {
        std::this_thread::yield();
    }
    if (++pLock->nDepth == 1) { noteLock(pLock, true); }
    ++g_foreignHost.nLockDepth;
}

void HostLock_Release(HostLock *pLock) {
    std::atomic<uintptr_t> &owner = ownerOf(pLock);
    if (owner != thisThread()) { std::abort(); }
    --g_foreignHost.nLockDepth;
    if (--pLock->nDepth > 0) { return; }
    noteLock(pLock, false);
    owner = 0;
}

void HostLock_Destroy(HostLock *pLock) {
    if (pLock->nDepth != 0) { std::abort(); }
    --g_foreignHost.nLive;
}

void Host_ReportError(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText) {
    expectCaller(nSourceTag, nLine);
    refuse(nCode != 0 || szText == nullptr, "An error with a code or without a text");
    ++g_foreignHost.nErrors;
}

void Host_ReportAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szFormat,
                          ...) {
    expectCaller(nSourceTag, nLine);
    refuse(nCode != 0 || szFormat == nullptr, "An assertion with a code or without a text");
    ++g_foreignHost.nAssertions;
}

void Host_AssertStringsEqual(uint64_t nSourceTag, int32_t nLine, const char *szExpected,
                             const char *szActual) {
    expectCaller(nSourceTag, nLine);
    if (std::strcmp(szExpected, szActual) != 0) { ++g_foreignHost.nAssertions; }
}

HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t nExpected,
                                const char *szFile, int32_t nLine) {
    refuse(pKeyKind != &HostHashMap_StringKeys || nExpected < 1, "A map of other keys or for none");
    if (g_foreignHost.bFailMaps || isMemoryToFail(szFile, nLine)) { return nullptr; }
    ++g_foreignHost.nLive;
    return *g_liveMaps.insert(&(new RefusingMap{{0}, {}})->host).first;
}

int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey) {
    const auto found = findEntry(pMap, szKey);
    return found == entriesOf(pMap).end() ? -1 : found->second.nValue;
}

int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue,
                           int32_t *pnExisting, const char *szFile, int32_t nLine) {
    refuse(nValue < 0, "A negative value");
    if (isMemoryToFail(szFile, nLine)) { return -5; }
    const auto found = findEntry(pMap, szKey);
    const bool bNew = found == entriesOf(pMap).end();
    if (pnExisting != nullptr) { *pnExisting = bNew ? -1 : found->second.nValue; }
    if (bNew) { entriesOf(pMap).emplace(szKey, Entry{nValue, hashOf(szKey)}), ++pMap->nEntries; }
    return 0;
}

int32_t HostHashMap_Remove(HostHashMap *pMap, const char *szKey) {
    const auto found = findEntry(pMap, szKey);
    if (found == entriesOf(pMap).end()) { return 1; }
    entriesOf(pMap).erase(found), --pMap->nEntries;
    return 0;
}

// The keys may be gone already.
void HostHashMap_Release(HostHashMap *pMap) {
    if (g_liveMaps.erase(pMap) == 0) { std::abort(); }
    --g_foreignHost.nLive;
    delete reinterpret_cast<RefusingMap *>(pMap);
}

HostPool *HostPool_Get(void) {
    static HostPool pool;
    return &pool;
}

void *HostPool_Alloc(HostPool *pPool, uint64_t nBytes, int32_t nReserved1, int32_t nReserved2,
                     const char *szFile, int32_t nLine) {
    refuse(pPool != HostPool_Get() || nReserved1 != 0 || nReserved2 != 0,
           "Another pool or reserved arguments");
    return obtain(nBytes, kPoolTag, szFile, nLine);
}

void HostPool_Free(HostPool *pPool, void *pMemory, int32_t nReserved1, int32_t nReserved2) {
    refuse(pPool != HostPool_Get() || nReserved1 != 0 || nReserved2 != 0,
           "Another pool or reserved arguments");
    giveBack(pMemory, kPoolTag);
}

int32_t HostText_Append(HostText *pText, const char *szString) {
    return append(pText, szString);
}

int32_t HostText_AppendPadded(HostText *pText, const char *szString, int64_t nCharacters) {
    refuse(nCharacters < 0, "A negative width");
    std::string field = szString;
    field.resize(static_cast<uint64_t>(nCharacters), ' ');
    return append(pText, field);
}

int32_t HostText_AppendRepeated(HostText *pText, int64_t nCount, char cCharacter) {
    refuse(nCount < 0, "A negative count");
    return append(pText, std::string(static_cast<uint64_t>(nCount), cCharacter));
}

int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes) {
    const uint64_t nTaken = std::min(nBytes, pStream->nLeft);
    if (nTaken > 0) { std::memcpy(pBuffer, pStream->pNext, nTaken); }
    pStream->pNext += nTaken;
    pStream->nLeft -= nTaken;
    return nTaken == nBytes ? 0 : kForeignReadError;
}

int32_t ZOLTcreateprob(ZOLTprob *pProb) {
    *pProb = static_cast<ZOLTprob>(obtain(1, kProblemTag, "", 0));
    return *pProb == nullptr ? 5 : 0;
}

int32_t ZOLTdestroyprob(ZOLTprob prob) {
    giveBack(prob, kProblemTag);
    return 0;
}
