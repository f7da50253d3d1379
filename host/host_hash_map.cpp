#include "host/host_hash_map.h"

#include <boost/intrusive/set.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <chrono>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "host/host_memory.h"
#include "host/platform.hpp"

// One open-addressing table holds an entry for each different text. The entry keeps 32 bits of the text's hash, so that growing hashes no
// text again and a text is read only to confirm that it is the one sought. From the second equal key on the entry refers to a group, whose
// members are ordered by value (what lookups answer) and by address (what removal asks for).
//
//     Entry { szKey,  nValue >= 0, nHash }    the only entry of its text
//     Entry { pGroup, kIsGroup,    nHash } -> EqualKeys { byValue, byAddress } -> two or more Members, each in both orders

struct HostHashMapKeyKind {
    char cUnused;
};

const HostHashMapKeyKind HostHashMap_StringKeys = {'\0'};

namespace {

constexpr uint64_t kSourceTag = 0x686f737468617368;      // "hosthash"
constexpr uint64_t kLargePagesFrom = 128 * 1024 * 1024;  // bytes of a table; smaller ones lose more in getting the pages than they gain
constexpr int64_t kMaxExpected = int64_t{1} << 40;       // entries; no machine has the memory for more
constexpr int32_t kIsGroup = -1;                         // in an entry, in place of a value

// ---- Memory ----

// Brings the table's memory from the host's service.
template <typename T>
struct HostAllocator {
    using value_type = T;
    HostAllocator() = default;
    template <typename U>
    HostAllocator(const HostAllocator<U> & /*other*/) {}
    T *allocate(size_t nCount) {
        if (nCount > std::numeric_limits<size_t>::max() / sizeof(T)) throw std::bad_alloc();
        void *pMemory = HostMem_Alloc(nCount * sizeof(T), kSourceTag, __LINE__);
        if (pMemory == nullptr) throw std::bad_alloc();
        // Lookups hit the pages of a huge table at random; with large pages the processor keeps the addresses of all of them at hand.
        if (nCount * sizeof(T) >= kLargePagesFrom) host::adviseLargePages(pMemory, nCount * sizeof(T));
        return static_cast<T *>(pMemory);
    }
    void deallocate(T *pMemory, size_t /*nCount*/) { HostMem_Free(pMemory, kSourceTag, __LINE__); }
    bool operator==(const HostAllocator & /*other*/) const { return true; }
};

// ---- Hashing ----

struct HashSecret {
    unsigned char bytes[XXH_SECRET_DEFAULT_SIZE];
};

// The time and an address have to do on a system that has no random bytes to give yet.
HashSecret drawSecret() {
    HashSecret secret;
    if (!host::randomBytes(secret.bytes, sizeof secret.bytes)) {
        const auto nTime = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        XXH3_generateSecret_fromSeed(secret.bytes, nTime ^ reinterpret_cast<uintptr_t>(&secret));
    }
    return secret;
}

// What makes hashes unforeseeable, drawn once per process.
const HashSecret &processSecret() {
    static const HashSecret secret = drawSecret();
    return secret;
}

uint32_t hashText(const HashSecret &secret, const char *szText) {
    return static_cast<uint32_t>(XXH3_64bits_withSecret(szText, std::strlen(szText), secret.bytes, sizeof secret.bytes));
}

// ---- Equal keys ----

using OrderHook =
    boost::intrusive::set_member_hook<boost::intrusive::optimize_size<true>, boost::intrusive::link_mode<boost::intrusive::normal_link>>;

struct Member {
    const char *szKey;
    int32_t nValue;
    OrderHook valueHook;
    OrderHook addressHook;
};

struct LowerValue {
    bool operator()(const Member &one, const Member &other) const { return one.nValue < other.nValue; }
};

// The lowest value comes first among the members of one address.
struct LowerAddress {
    bool operator()(const Member &one, const Member &other) const {
        return one.szKey == other.szKey ? one.nValue < other.nValue : std::less<>()(one.szKey, other.szKey);
    }
};

using ByValue = boost::intrusive::multiset<Member, boost::intrusive::compare<LowerValue>, boost::intrusive::constant_time_size<false>,
                                           boost::intrusive::member_hook<Member, OrderHook, &Member::valueHook>>;
using ByAddress = boost::intrusive::multiset<Member, boost::intrusive::compare<LowerAddress>, boost::intrusive::constant_time_size<false>,
                                             boost::intrusive::member_hook<Member, OrderHook, &Member::addressHook>>;

struct EqualKeys {
    ByValue byValue;
    ByAddress byAddress;
};

Member *createMember(const char *szKey, int32_t nValue) {
    void *pMemory = HostMem_Alloc(sizeof(Member), kSourceTag, __LINE__);
    return pMemory == nullptr ? nullptr : new (pMemory) Member{szKey, nValue, {}, {}};
}

void freeMember(Member *pMember) {
    HostMem_Free(pMember, kSourceTag, __LINE__);
}

// Indices mostly come in ascending order, and so do addresses: the end is the place to try first.
void linkMember(EqualKeys &group, Member &member) {
    group.byValue.insert(group.byValue.end(), member);
    group.byAddress.insert(group.byAddress.end(), member);
}

void unlinkMember(EqualKeys &group, Member &member) {
    group.byValue.erase(group.byValue.iterator_to(member));
    group.byAddress.erase(group.byAddress.iterator_to(member));
}

// The member that a removal of szKey takes: the one of this very address, else the one of the lowest value.
Member &memberToRemove(EqualKeys &group, const char *szKey) {
    const auto found = group.byAddress.lower_bound(Member{szKey, 0, {}, {}});
    return found != group.byAddress.end() && found->szKey == szKey ? *found : *group.byValue.begin();
}

void destroyGroup(EqualKeys *pGroup) {
    pGroup->byAddress.clear();
    pGroup->byValue.clear_and_dispose(freeMember);
    pGroup->~EqualKeys();
    HostMem_Free(pGroup, kSourceTag, __LINE__);
}

// ---- Entries ----

// What an entry refers to may change while it lies in the table, its text may not. It is copied field by field: 16 bytes read at once where
// smaller pieces have just been written would have to wait for all stores under way, those to the far ends of the table included.
struct Entry {
    Entry(const char *szNewKey, int32_t nNewValue, uint32_t nNewHash) : szKey(szNewKey), nValue(nNewValue), nHash(nNewHash) {}
    Entry(const Entry &other) : szKey(other.szKey), nValue(other.nValue), nHash(other.nHash) {}
    Entry &operator=(const Entry &other) = default;
    union {
        const char *szKey;
        EqualKeys *pGroup;
    };
    int32_t nValue;
    uint32_t nHash;
};

const char *textOf(const Entry &entry) {
    return entry.nValue != kIsGroup ? entry.szKey : entry.pGroup->byValue.begin()->szKey;
}

int32_t lowestValue(const Entry &entry) {
    return entry.nValue != kIsGroup ? entry.nValue : entry.pGroup->byValue.begin()->nValue;
}

// Spreads the 32 bits kept over those that the table uses: it finds a place by the high ones and tells neighbours apart by the low ones.
struct EntryHash {
    using is_avalanching = void;
    size_t operator()(const Entry &entry) const { return (static_cast<uint64_t>(entry.nHash) << 32) | entry.nHash; }
};

struct SameText {
    bool operator()(const Entry &one, const Entry &other) const {
        return one.nHash == other.nHash && std::strcmp(textOf(one), textOf(other)) == 0;
    }
};

using Entries = boost::unordered_flat_set<Entry, EntryHash, SameText, HostAllocator<Entry>>;

struct StringMap {
    HostHashMap host;  // first: callers hold its address
    int64_t nGroups;
    const HashSecret *pSecret;
    Entries entries;
};

StringMap &stringMap(HostHashMap *pMap) {
    return *reinterpret_cast<StringMap *>(pMap);
}

Entry entryFor(const StringMap &map, const char *szKey, int32_t nValue) {
    return {szKey, nValue, hashText(*map.pSecret, szKey)};
}

// The set hands out constant entries; see Entry for what may change.
Entry &changeable(const Entry &entry) {
    return const_cast<Entry &>(entry);
}

// Makes the entry a group of its one member. False when there is no memory: it is then as it was.
bool turnIntoGroup(StringMap &map, Entry &entry) {
    void *pMemory = HostMem_Alloc(sizeof(EqualKeys), kSourceTag, __LINE__);
    Member *pFirst = createMember(entry.szKey, entry.nValue);
    if (pMemory == nullptr || pFirst == nullptr) {
        HostMem_Free(pMemory, kSourceTag, __LINE__);
        freeMember(pFirst);
        return false;
    }
    entry.pGroup = new (pMemory) EqualKeys;
    entry.nValue = kIsGroup;
    linkMember(*entry.pGroup, *pFirst);
    ++map.nGroups;
    return true;
}

// The way back, once one member is left.
void turnIntoSingle(StringMap &map, Entry &entry) {
    EqualKeys *pGroup = entry.pGroup;
    const Member &last = *pGroup->byValue.begin();
    entry.nValue = last.nValue;
    entry.szKey = last.szKey;
    destroyGroup(pGroup);
    --map.nGroups;
}

bool addEqualKey(StringMap &map, Entry &entry, const char *szKey, int32_t nValue) {
    Member *pMember = createMember(szKey, nValue);
    if (pMember == nullptr) return false;
    if (entry.nValue != kIsGroup && !turnIntoGroup(map, entry)) {
        freeMember(pMember);
        return false;
    }
    linkMember(*entry.pGroup, *pMember);
    return true;
}

void removeEqualKey(StringMap &map, Entry &entry, const char *szKey) {
    EqualKeys &group = *entry.pGroup;
    Member &member = memberToRemove(group, szKey);
    unlinkMember(group, member);
    freeMember(&member);
    if (std::next(group.byValue.begin()) == group.byValue.end()) turnIntoSingle(map, entry);
}

// ---- Operations ----

int32_t findValue(HostHashMap *pMap, const char *szKey) {
    const StringMap &map = stringMap(pMap);
    const auto found = map.entries.find(entryFor(map, szKey, 0));
    return found == map.entries.end() ? -1 : lowestValue(*found);
}

int32_t insertValue(HostHashMap *pMap, const char *szKey, int32_t nValue, int32_t *pnExisting) {
    if (nValue < 0) return 1;
    StringMap &map = stringMap(pMap);
    int32_t nExisting = -1;
    try {
        const auto [place, bNew] = map.entries.insert(entryFor(map, szKey, nValue));
        if (!bNew) {
            nExisting = lowestValue(*place);
            if (!addEqualKey(map, changeable(*place), szKey, nValue)) return 1;
        }
    } catch (...) {
        return 1;
    }
    ++map.host.nEntries;
    if (pnExisting != nullptr) *pnExisting = nExisting;
    return 0;
}

int32_t removeKey(HostHashMap *pMap, const char *szKey) {
    StringMap &map = stringMap(pMap);
    const auto found = map.entries.find(entryFor(map, szKey, 0));
    if (found == map.entries.end()) return 1;
    if (found->nValue == kIsGroup) {
        removeEqualKey(map, changeable(*found), szKey);
    } else {
        map.entries.erase(found);
    }
    --map.host.nEntries;
    return 0;
}

void doNothing(HostHashMap * /*pMap*/) {}

void releaseMap(HostHashMap *pMap) {
    StringMap &map = stringMap(pMap);
    if (map.nGroups > 0) {
        for (const Entry &entry : map.entries) {
            if (entry.nValue == kIsGroup) destroyGroup(entry.pGroup);
        }
    }
    map.~StringMap();
    HostMem_Free(&map, kSourceTag, __LINE__);
}

constexpr HostHashMapOps kOps = {findValue, insertValue, removeKey, doNothing, releaseMap};

}  // namespace

HostHashMap *HostHashMap_Create(const HostHashMapKeyKind * /*pKeyKind*/, int64_t nExpected) {
    if (nExpected > kMaxExpected) return nullptr;
    void *pMemory = HostMem_AllocRecord(sizeof(StringMap), kSourceTag, __LINE__);
    if (pMemory == nullptr) return nullptr;
    auto *pMap = new (pMemory) StringMap{{&kOps, 0}, 0, &processSecret(), {}};
    try {
        if (nExpected > 0) pMap->entries.reserve(static_cast<size_t>(nExpected));
    } catch (...) {
        releaseMap(&pMap->host);
        return nullptr;
    }
    return &pMap->host;
}
