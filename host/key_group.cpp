#include "host/key_group.hpp"

#include <string.h>

#include <functional>

#include "host/host_memory.h"

namespace host {

namespace {

constexpr uint64_t kSourceTag = 0x686f737468617368;  // "hosthash"

enum Order { kByText, kByAddress, kOrders };

struct Member {
    const char *szKey;
    int32_t nValue;
    uint32_t nPriority;
    Member *apBefore[kOrders];  // in each order, what lies below it in the tree
    Member *apBehind[kOrders];
};

// Negative, 0 or positive: szKey comes before the member's key, equals it as far as the order looks, comes behind it.
int32_t compareKeys(Order order, const char *szKey, const Member &member) {
    if (szKey == member.szKey) {
        return 0;
    }
    if (order == kByText) {
        return strcmp(szKey, member.szKey);
    }
    return std::less<>()(szKey, member.szKey) ? -1 : 1;
}

// Of equal keys and values, which may come several times, the members' own addresses decide.
bool isBefore(Order order, const Member &one, const Member &other) {
    const int32_t nKeys = compareKeys(order, one.szKey, other);
    if (nKeys != 0) {
        return nKeys < 0;
    }
    return one.nValue != other.nValue ? one.nValue < other.nValue : std::less<>()(&one, &other);
}

// Priorities that have nothing to do with either order; where the memory lies is chance enough, mixed well.
uint32_t priorityOf(const Member *pMember) {
    uint64_t n = reinterpret_cast<uintptr_t>(pMember);
    n = (n ^ (n >> 31)) * 0xbf58476d1ce4e5b9;
    n = (n ^ (n >> 27)) * 0x94d049bb133111eb;
    return static_cast<uint32_t>(n >> 32);
}

// Parts a tree into what comes before the new member and what comes behind it, and puts both below it.
void splitBelow(Order order, Member *pTree, Member *pNew) {
    Member **ppBefore = &pNew->apBefore[order];
    Member **ppBehind = &pNew->apBehind[order];
    while (pTree != nullptr) {
        if (isBefore(order, *pTree, *pNew)) {
            *ppBefore = pTree;
            ppBefore = &pTree->apBehind[order];
            pTree = *ppBefore;
        } else {
            *ppBehind = pTree;
            ppBehind = &pTree->apBefore[order];
            pTree = *ppBehind;
        }
    }
    *ppBefore = nullptr;
    *ppBehind = nullptr;
}

// Puts the two trees below a member, the members of the one before those of the other, in its place.
void joinInto(Order order, Member **ppPlace, Member *pBefore, Member *pBehind) {
    while (pBefore != nullptr && pBehind != nullptr) {
        if (pBefore->nPriority > pBehind->nPriority) {
            *ppPlace = pBefore;
            ppPlace = &pBefore->apBehind[order];
            pBefore = *ppPlace;
        } else {
            *ppPlace = pBehind;
            ppPlace = &pBehind->apBefore[order];
            pBehind = *ppPlace;
        }
    }
    *ppPlace = pBefore != nullptr ? pBefore : pBehind;
}

void link(Order order, Member **ppPlace, Member *pNew) {
    while (*ppPlace != nullptr && (*ppPlace)->nPriority > pNew->nPriority) {
        ppPlace = isBefore(order, *pNew, **ppPlace) ? &(*ppPlace)->apBefore[order] : &(*ppPlace)->apBehind[order];
    }
    splitBelow(order, *ppPlace, pNew);
    *ppPlace = pNew;
}

void unlink(Order order, Member **ppPlace, const Member *pOld) {
    while (*ppPlace != pOld) {
        ppPlace = isBefore(order, *pOld, **ppPlace) ? &(*ppPlace)->apBefore[order] : &(*ppPlace)->apBehind[order];
    }
    joinInto(order, ppPlace, pOld->apBefore[order], pOld->apBehind[order]);
}

// The first member whose key is szKey as far as the order looks, the one of the lowest value; NULL if there is none.
Member *findFirst(Order order, Member *pTree, const char *szKey) {
    Member *pFound = nullptr;
    while (pTree != nullptr) {
        const int32_t nKeys = compareKeys(order, szKey, *pTree);
        pFound = nKeys == 0 ? pTree : pFound;
        pTree = nKeys > 0 ? pTree->apBehind[order] : pTree->apBefore[order];
    }
    return pFound;
}

void freeMember(Member *pMember) {
    HostMem_Free(pMember, kSourceTag, __LINE__);
}

void freeTree(Member *pTree) {
    while (pTree != nullptr) {
        Member *pBehind = pTree->apBehind[kByAddress];
        freeTree(pTree->apBefore[kByAddress]);
        freeMember(pTree);
        pTree = pBehind;
    }
}

}  // namespace

struct KeyGroup {
    Member *apTrees[kOrders];
};

KeyGroup *createGroup() {
    KeyGroup *pGroup = static_cast<KeyGroup *>(HostMem_Alloc(sizeof(KeyGroup), kSourceTag, __LINE__));
    if (pGroup != nullptr) {
        *pGroup = {{nullptr, nullptr}};
    }
    return pGroup;
}

void destroyGroup(KeyGroup *pGroup) {
    freeTree(pGroup->apTrees[kByAddress]);
    HostMem_Free(pGroup, kSourceTag, __LINE__);
}

bool addKey(KeyGroup *pGroup, const char *szKey, int32_t nValue) {
    Member *pNew = static_cast<Member *>(HostMem_Alloc(sizeof(Member), kSourceTag, __LINE__));
    if (pNew == nullptr) {
        return false;
    }
    *pNew = {szKey, nValue, priorityOf(pNew), {nullptr, nullptr}, {nullptr, nullptr}};
    for (const Order order : {kByText, kByAddress}) {
        link(order, &pGroup->apTrees[order], pNew);
    }
    return true;
}

int32_t lowestValue(const KeyGroup &group, const char *szKey) {
    const Member *pFound = findFirst(kByText, group.apTrees[kByText], szKey);
    return pFound != nullptr ? pFound->nValue : -1;
}

bool removeKey(KeyGroup *pGroup, const char *szKey) {
    Member *pOld = findFirst(kByAddress, pGroup->apTrees[kByAddress], szKey);
    if (pOld == nullptr) {
        pOld = findFirst(kByText, pGroup->apTrees[kByText], szKey);
    }
    if (pOld == nullptr) {
        return false;
    }
    for (const Order order : {kByText, kByAddress}) {
        unlink(order, &pGroup->apTrees[order], pOld);
    }
    freeMember(pOld);
    return true;
}

bool hasOneKey(const KeyGroup &group, const char **pszKey, int32_t *pnValue) {
    const Member *pMember = group.apTrees[kByText];
    if (pMember->apBefore[kByText] != nullptr || pMember->apBehind[kByText] != nullptr) {
        return false;
    }
    *pszKey = pMember->szKey;
    *pnValue = pMember->nValue;
    return true;
}

}  // namespace host
