#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>

#include "host/host_hash_map.h"
#include "host/host_pool.h"
#include "host/host_problem.h"
#include "host/host_report.h"
#include "tests/steered_host.hpp"

struct HostHashMapKeyKind {};
const HostHashMapKeyKind HostHashMap_StringKeys = {};
struct HostPool {};

namespace {

constexpr uint64_t kModuleTag = 0x6e616d65735f6d67;  // "names_mg"
constexpr uint64_t kPoolTag = 1, kProblemTag = 2, kLockTag = 3, kMapTag = 4;

// A report comes from the module, from a line of it, and has no code.
void expectReporter(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText) {
    HostMem_Refuse(nSourceTag != kModuleTag || nLine <= 0, "A report without its source");
    HostMem_Refuse(nCode != 0 || szText == nullptr, "A report with a code or without a text");
}

// Holds one entry for each text: an equal key is reported, not added. A key's own text must stay
// what it was.
struct Entry {
    const char *szKey;
    int32_t nValue;
};
struct RefusingMap {
    HostHashMap host;
    std::unordered_map<std::string, Entry> entries;
};

auto &entriesOf(HostHashMap *pMap) {
    return reinterpret_cast<RefusingMap *>(pMap)->entries;
}

auto findEntry(HostHashMap *pMap, const char *szKey) {
    const auto found = entriesOf(pMap).find(szKey);
    HostMem_Refuse(found != entriesOf(pMap).end() && found->first != found->second.szKey,
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
    if (steered::g_locks.size() < 20) { steered::g_locks.emplace_back(pLock, bTaken); }
}

std::recursive_mutex *mutexOf(HostLock *pLock) {
    return static_cast<std::recursive_mutex *>(pLock->pMutex);
}

}  // namespace

int32_t HostLock_Init(HostLock *pLock) {
    void *pMemory = HostMem_Alloc(sizeof(std::recursive_mutex), kLockTag, __LINE__);
    if (pMemory == nullptr) { return -9; }
    *pLock = {new (pMemory) std::recursive_mutex, "", 0};
    return 0;
}

void HostLock_Acquire(HostLock *pLock) {
    mutexOf(pLock)->lock();
    if (++pLock->nDepth == 1) { noteLock(pLock, true); }
}

void HostLock_Release(HostLock *pLock) {
    if (pLock->nDepth < 1) { std::abort(); }
    if (--pLock->nDepth == 0) { noteLock(pLock, false); }
    mutexOf(pLock)->unlock();
}

void HostLock_Destroy(HostLock *pLock) {
    if (pLock->nDepth != 0) { std::abort(); }
    mutexOf(pLock)->~recursive_mutex();
    HostMem_Free(pLock->pMutex, kLockTag, __LINE__);
}

void Host_ReportError(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szText) {
    expectReporter(nSourceTag, nLine, nCode, szText);
    ++steered::g_reports.nErrors;
}

void Host_ReportAssertion(uint64_t nSourceTag, int32_t nLine, int32_t nCode, const char *szFormat,
                          ...) {
    expectReporter(nSourceTag, nLine, nCode, szFormat);
    ++steered::g_reports.nAssertions;
}

void Host_AssertStringsEqual(uint64_t nSourceTag, int32_t nLine, const char *szExpected,
                             const char *szActual) {
    if (std::strcmp(szExpected, szActual) == 0) { return; }
    Host_ReportAssertion(nSourceTag, nLine, 0, "%s", szActual);
}

HostHashMap *HostHashMap_Create(const HostHashMapKeyKind *pKeyKind, int64_t nExpected) {
    HostMem_Refuse(pKeyKind != &HostHashMap_StringKeys || nExpected < 1, "A map of none");
    if (!steered::hasMaps()) { return nullptr; }
    void *pMemory = HostMem_Alloc(sizeof(RefusingMap), kMapTag, __LINE__);
    if (pMemory == nullptr) { return nullptr; }
    auto *pMap = new (pMemory) RefusingMap{{0}, {}};
    pMap->entries.reserve(uint64_t(nExpected));
    return &pMap->host;
}

int32_t HostHashMap_Find(HostHashMap *pMap, const char *szKey) {
    const auto found = findEntry(pMap, szKey);
    return found == entriesOf(pMap).end() ? -1 : found->second.nValue;
}

int32_t HostHashMap_Insert(HostHashMap *pMap, const char *szKey, int32_t nValue,
                           int32_t *pnExisting) {
    HostMem_Refuse(nValue < 0, "A negative value");
    if (!HostMem_MayObtain(0)) { return -5; }
    const auto [at, bNew] = entriesOf(pMap).try_emplace(szKey, Entry{szKey, nValue});
    if (pnExisting != nullptr) { *pnExisting = bNew ? -1 : at->second.nValue; }
    pMap->nEntries += bNew ? 1 : 0;
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
    reinterpret_cast<RefusingMap *>(pMap)->~RefusingMap();
    HostMem_Free(pMap, kMapTag, __LINE__);
}

HostPool *HostPool_Get(void) {
    static HostPool pool;
    return &pool;
}

void *HostPool_Alloc(HostPool *pPool, uint64_t nBytes, int32_t nReserved1, int32_t nReserved2) {
    HostMem_Refuse(pPool != HostPool_Get() || nReserved1 + nReserved2 != 0, "Another pool");
    return HostMem_Alloc(nBytes, kPoolTag, __LINE__);
}

void HostPool_Free(HostPool *pPool, void *pMemory, int32_t nReserved1, int32_t nReserved2) {
    HostMem_Refuse(pPool != HostPool_Get() || nReserved1 + nReserved2 != 0, "Another pool");
    HostMem_Free(pMemory, kPoolTag, __LINE__);
}

int32_t HostText_Append(HostText *pText, const char *szString) {
    return append(pText, szString);
}

int32_t HostText_AppendPadded(HostText *pText, const char *szString, int64_t nCharacters) {
    HostMem_Refuse(nCharacters < 0, "A negative width");
    std::string field = szString;
    field.resize(uint64_t(nCharacters), ' ');
    return append(pText, field);
}

int32_t HostText_AppendRepeated(HostText *pText, int64_t nCount, char cCharacter) {
    HostMem_Refuse(nCount < 0, "A negative count");
    return append(pText, std::string(uint64_t(nCount), cCharacter));
}

int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes) {
    const uint64_t nTaken = std::min(nBytes, pStream->nLeft);
    if (nTaken > 0) { std::memcpy(pBuffer, pStream->pNext, nTaken); }
    pStream->pNext += nTaken;
    pStream->nLeft -= nTaken;
    return nTaken == nBytes ? 0 : steered::kEndOfInput;
}

int32_t ZOLTcreateprob(ZOLTprob *pProb) {
    *pProb = static_cast<ZOLTprob>(HostMem_Alloc(1, kProblemTag, __LINE__));
    return *pProb == nullptr ? 5 : 0;
}

int32_t ZOLTdestroyprob(ZOLTprob prob) {
    HostMem_Free(prob, kProblemTag, __LINE__);
    return 0;
}
