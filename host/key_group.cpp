// The keys of a group lie in a tree, ordered by address, which removals want; each node knows the
// lowest value below it, which lookups want. The groups of a hash lie in another tree, ordered by
// text. Both are heaps of random priorities as well (treaps), which keeps them balanced:
//
//                  m 9                        every node lies behind all nodes on its left and
//                  before all on its right,
//                /     \                      and has no lower priority than those below it
//             d 4       s 7
//               \      /
//               f 1   p 2
#include "host/key_group.hpp"

#include <cstring>

#include <algorithm>
#include <functional>

#include "host/host_memory.h"

namespace host {

namespace {

constexpr uint64_t kSourceTag = 0x686f737468617368;  // "hosthash"

enum Order { kByAddress, kByText };

struct Node {
    const char *szKey;
    int32_t nValue;
    int32_t nLowest;  // of its own value and all below it
    uint32_t nPriority;
    Node *pBefore;
    Node *pBehind;
};

bool isBefore(Order order, const Node &one, const Node &other) {
    if (order == kByText) { return std::strcmp(one.szKey, other.szKey) < 0; }
    if (one.szKey != other.szKey) { return std::less<>()(one.szKey, other.szKey); }
    // An address may come several times, even with one value: the nodes' own addresses decide then.
    return one.nValue != other.nValue ? one.nValue < other.nValue : std::less<>()(&one, &other);
}

// Priorities have nothing to do with any order; where the memory lies is chance enough, well mixed.
Node makeNode(const void *pMemory, const char *szKey, int32_t nValue) {
    uint64_t n = reinterpret_cast<uintptr_t>(pMemory);
    n = (n ^ (n >> 31)) * 0xbf58476d1ce4e5b9;
    n = (n ^ (n >> 27)) * 0x94d049bb133111eb;
    return {szKey, nValue, nValue, static_cast<uint32_t>(n >> 32), nullptr, nullptr};
}

void noteLowest(Node *pNode) {
    pNode->nLowest = pNode->nValue;
    for (const Node *pBelow : {pNode->pBefore, pNode->pBehind}) {
        if (pBelow != nullptr) { pNode->nLowest = std::min(pNode->nLowest, pBelow->nLowest); }
    }
}

// Parts a tree into what comes before a node and what comes behind it.
void split(Order order, Node *pTree, const Node &at, Node **ppBefore, Node **ppBehind) {
    if (pTree == nullptr) {
        *ppBefore = nullptr;
        *ppBehind = nullptr;
        return;
    }
    if (isBefore(order, *pTree, at)) {
        split(order, pTree->pBehind, at, &pTree->pBehind, ppBehind);
        *ppBefore = pTree;
    } else {
        split(order, pTree->pBefore, at, ppBefore, &pTree->pBefore);
        *ppBehind = pTree;
    }
    noteLowest(pTree);
}

// One tree of two, all nodes of the one before those of the other.
Node *join(Node *pBefore, Node *pBehind) {
    if (pBefore == nullptr || pBehind == nullptr) { return pBefore != nullptr ? pBefore : pBehind; }
    Node *pTop = pBefore->nPriority > pBehind->nPriority ? pBefore : pBehind;
    if (pTop == pBefore) {
        pTop->pBehind = join(pTop->pBehind, pBehind);
    } else {
        pTop->pBefore = join(pBefore, pTop->pBefore);
    }
    noteLowest(pTop);
    return pTop;
}

void insertNode(Order order, Node **ppRoot, Node *pNew) {
    while (*ppRoot != nullptr && (*ppRoot)->nPriority > pNew->nPriority) {
        Node *pAbove = *ppRoot;
        pAbove->nLowest = std::min(pAbove->nLowest, pNew->nValue);
        ppRoot = isBefore(order, *pNew, *pAbove) ? &pAbove->pBefore : &pAbove->pBehind;
    }
    split(order, *ppRoot, *pNew, &pNew->pBefore, &pNew->pBehind);
    noteLowest(pNew);
    *ppRoot = pNew;
}

// insertNode for a node behind all others, which need not be compared then.
void appendNode(Node **ppRoot, Node *pNew) {
    while (*ppRoot != nullptr && (*ppRoot)->nPriority > pNew->nPriority) {
        (*ppRoot)->nLowest = std::min((*ppRoot)->nLowest, pNew->nValue);
        ppRoot = &(*ppRoot)->pBehind;
    }
    pNew->pBefore = *ppRoot;
    noteLowest(pNew);
    *ppRoot = pNew;
}

void removeNode(Order order, Node **ppRoot, const Node *pOld) {
    Node *pAbove = *ppRoot;
    if (pAbove == pOld) {
        *ppRoot = join(pOld->pBefore, pOld->pBehind);
    } else if (pAbove != nullptr) {
        removeNode(order, isBefore(order, *pOld, *pAbove) ? &pAbove->pBefore : &pAbove->pBehind,
                   pOld);
        if (pAbove->nLowest == pOld->nValue) { noteLowest(pAbove); }
    }
}

void *allocNode(uint64_t nBytes) {
    return HostMem_Alloc(nBytes, kSourceTag, __LINE__);
}

void freeNode(void *pNode) {
    HostMem_Free(pNode, kSourceTag, __LINE__);
}

}  // namespace

struct KeyGroup {
    Node inTexts;  // first; its key is one of the group's
    Node *pKeys;
    Node
        *pLast;  // keys mostly come in the order of their addresses, so that the end is tried first
};

namespace {

KeyGroup *groupOf(Node *pInTexts) {
    return reinterpret_cast<KeyGroup *>(pInTexts);
}

void addToGroup(KeyGroup *pGroup, Node *pNew) {
    if (pGroup->pKeys == nullptr || isBefore(kByAddress, *pGroup->pLast, *pNew)) {
        appendNode(&pGroup->pKeys, pNew);
        pGroup->pLast = pNew;
    } else {
        insertNode(kByAddress, &pGroup->pKeys, pNew);
    }
}

void removeFromGroup(KeyGroup *pGroup, Node *pOld) {
    removeNode(kByAddress, &pGroup->pKeys, pOld);
    if (pGroup->pLast == pOld && pGroup->pKeys != nullptr) {
        for (pGroup->pLast = pGroup->pKeys; pGroup->pLast->pBehind != nullptr;) {
            pGroup->pLast = pGroup->pLast->pBehind;
        }
    }
}

// The key of this address with the lowest value, NULL if there is none.
Node *findAddress(const KeyGroup &group, const char *szKey) {
    Node *pFound = nullptr;
    for (Node *pNode = group.pKeys; pNode != nullptr;) {
        if (std::less<>()(pNode->szKey, szKey)) {
            pNode = pNode->pBehind;
        } else {
            pFound = pNode->szKey == szKey ? pNode : pFound;
            pNode = pNode->pBefore;
        }
    }
    return pFound;
}

Node *findLowest(const KeyGroup &group) {
    const int32_t nLowest = group.pKeys->nLowest;
    Node *pNode = group.pKeys;
    while (pNode != nullptr && pNode->nValue != nLowest) {
        Node *pBefore = pNode->pBefore;
        pNode = pBefore != nullptr && pBefore->nLowest == nLowest ? pBefore : pNode->pBehind;
    }
    return pNode;
}

// ---- The groups of a hash ----

KeyGroup *findGroup(KeyGroup *pGroups, const char *szKey) {
    Node *pNode = &pGroups->inTexts;
    while (pNode != nullptr) {
        const int nOrder = std::strcmp(szKey, pNode->szKey);
        if (nOrder == 0) { return groupOf(pNode); }
        pNode = nOrder < 0 ? pNode->pBefore : pNode->pBehind;
    }
    return nullptr;
}

// A group without keys for a text. NULL without memory: nothing has changed.
KeyGroup *addGroup(KeyGroup **ppGroups, const char *szKey) {
    KeyGroup *pGroup = static_cast<KeyGroup *>(allocNode(sizeof(KeyGroup)));
    if (pGroup != nullptr) {
        *pGroup = {makeNode(pGroup, szKey, 0), nullptr, nullptr};
        Node *pRoot = *ppGroups != nullptr ? &(*ppGroups)->inTexts : nullptr;
        insertNode(kByText, &pRoot, &pGroup->inTexts);
        *ppGroups = groupOf(pRoot);
    }
    return pGroup;
}

void removeGroup(KeyGroup **ppGroups, KeyGroup *pGroup) {
    Node *pRoot = &(*ppGroups)->inTexts;
    removeNode(kByText, &pRoot, &pGroup->inTexts);
    *ppGroups = groupOf(pRoot);
    freeNode(pGroup);
}

void freeTree(Order order, Node *pTree) {
    while (pTree != nullptr) {
        Node *pBehind = pTree->pBehind;
        freeTree(order, pTree->pBefore);
        if (order == kByText) { freeTree(kByAddress, groupOf(pTree)->pKeys); }
        freeNode(pTree);
        pTree = pBehind;
    }
}

}  // namespace

void destroyGroups(KeyGroup *pGroups) {
    freeTree(kByText, &pGroups->inTexts);
}

bool addKey(KeyGroup **ppGroups, const char *szKey, int32_t nValue) {
    Node *pNew = static_cast<Node *>(allocNode(sizeof(Node)));
    KeyGroup *pGroup = *ppGroups != nullptr ? findGroup(*ppGroups, szKey) : nullptr;
    if (pNew != nullptr && pGroup == nullptr) { pGroup = addGroup(ppGroups, szKey); }
    if (pNew == nullptr || pGroup == nullptr) {
        freeNode(pNew);
        return false;
    }
    *pNew = makeNode(pNew, szKey, nValue);
    addToGroup(pGroup, pNew);
    return true;
}

int32_t lowestValue(KeyGroup *pGroups, const char *szKey) {
    const KeyGroup *pGroup = findGroup(pGroups, szKey);
    return pGroup != nullptr ? pGroup->pKeys->nLowest : -1;
}

bool removeKey(KeyGroup **ppGroups, const char *szKey) {
    KeyGroup *pGroup = findGroup(*ppGroups, szKey);
    if (pGroup == nullptr) { return false; }
    Node *pOld = findAddress(*pGroup, szKey);
    pOld = pOld != nullptr ? pOld : findLowest(*pGroup);
    removeFromGroup(pGroup, pOld);
    freeNode(pOld);
    if (pGroup->pKeys != nullptr) {
        pGroup->inTexts.szKey = pGroup->pKeys->szKey;
    } else {
        removeGroup(ppGroups, pGroup);
    }
    return true;
}

bool hasOneKey(const KeyGroup *pGroups, const char **pszKey, int32_t *pnValue) {
    const Node &root = pGroups->inTexts;
    const Node &key = *pGroups->pKeys;
    if (root.pBefore != nullptr || root.pBehind != nullptr || key.pBefore != nullptr ||
        key.pBehind != nullptr) {
        return false;
    }
    *pszKey = key.szKey;
    *pnValue = key.nValue;
    return true;
}

}  // namespace host
