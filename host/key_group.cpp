// The keys of a group are a binary tree ordered by address, as removals need it, and each node
// knows the lowest value in its subtree, as lookups need it. The groups of a hash are a tree
// ordered by text. Both are treaps, that is, heaps of random priorities as well, which keeps them
// balanced:
//
//                  m 9                 every node comes after all nodes on its left and before all
//                /     \               on its right, and has no lower priority than those below
//             d 4       s 7
//               \      /
//               f 1   p 2
#include "host/key_group.hpp"

#include <algorithm>
#include <cstring>
#include <functional>

#include "host/hash_table.hpp"
#include "host/host_memory.h"

namespace host {

struct KeyNode {
    const char *szKey;
    int32_t nValue;
    int32_t nLowest;  // of the values in its subtree, itself included
    uint32_t nPriority;
    KeyNode *pLeft;
    KeyNode *pRight;
};

struct KeyGroup {
    KeyNode inTexts;  // first; its key is one of the group's, its value the group's lowest
    KeyNode *pKeys;
    KeyNode *pLast;  // most keys come in ascending order of their addresses and are appended
};

namespace {

enum KeyOrder { kByAddress, kByText };

// ---- Trees ----

bool isBefore(KeyOrder order, const KeyNode &one, const KeyNode &other) {
    if (order == kByText) { return std::strcmp(one.szKey, other.szKey) < 0; }
    if (one.szKey != other.szKey) { return std::less<>()(one.szKey, other.szKey); }
    // An address may occur several times, even with equal values: then the nodes' addresses decide.
    return one.nValue != other.nValue ? one.nValue < other.nValue : std::less<>()(&one, &other);
}

// The priority is the address of the node's memory, well mixed, which is random enough.
KeyNode makeNode(const void *pMemory, const char *szKey, int32_t nValue) {
    uint64_t n = reinterpret_cast<uintptr_t>(pMemory);
    n = (n ^ (n >> 31)) * 0xbf58476d1ce4e5b9;
    n = (n ^ (n >> 27)) * 0x94d049bb133111eb;
    return {szKey, nValue, nValue, static_cast<uint32_t>(n >> 32), nullptr, nullptr};
}

void noteLowest(KeyNode *pNode) {
    pNode->nLowest = pNode->nValue;
    for (const KeyNode *pBelow : {pNode->pLeft, pNode->pRight}) {
        if (pBelow != nullptr) { pNode->nLowest = std::min(pNode->nLowest, pBelow->nLowest); }
    }
}

// Splits a tree into the nodes before a node and those after it.
void splitTree(KeyOrder order, KeyNode *pTree, const KeyNode &at, KeyNode **ppLeft,
               KeyNode **ppRight) {
    if (pTree == nullptr) {
        *ppLeft = nullptr;
        *ppRight = nullptr;
        return;
    }
    if (isBefore(order, *pTree, at)) {  // the root goes left with its left subtree
        splitTree(order, pTree->pRight, at, &pTree->pRight, ppRight);
        *ppLeft = pTree;
    } else {
        splitTree(order, pTree->pLeft, at, ppLeft, &pTree->pLeft);
        *ppRight = pTree;
    }
    noteLowest(pTree);
}

// Joins two trees, all nodes of the one before those of the other.
KeyNode *joinTrees(KeyNode *pLeft, KeyNode *pRight) {
    if (pLeft == nullptr || pRight == nullptr) { return pLeft != nullptr ? pLeft : pRight; }
    KeyNode *pTop = pLeft->nPriority > pRight->nPriority ? pLeft : pRight;
    if (pTop == pLeft) {
        pTop->pRight = joinTrees(pTop->pRight, pRight);
    } else {
        pTop->pLeft = joinTrees(pLeft, pTop->pLeft);
    }
    noteLowest(pTop);
    return pTop;
}

// Goes down past all nodes of higher priority, then takes the place of a subtree, which it splits.
void insertNode(KeyOrder order, KeyNode **ppRoot, KeyNode *pNew) {
    while (*ppRoot != nullptr && (*ppRoot)->nPriority > pNew->nPriority) {
        KeyNode *pAbove = *ppRoot;
        pAbove->nLowest = std::min(pAbove->nLowest, pNew->nValue);
        ppRoot = isBefore(order, *pNew, *pAbove) ? &pAbove->pLeft : &pAbove->pRight;
    }
    splitTree(order, *ppRoot, *pNew, &pNew->pLeft, &pNew->pRight);
    noteLowest(pNew);
    *ppRoot = pNew;
}

// The same for a node after all others, without comparing it with any.
void appendNode(KeyNode **ppRoot, KeyNode *pNew) {
    while (*ppRoot != nullptr && (*ppRoot)->nPriority > pNew->nPriority) {
        (*ppRoot)->nLowest = std::min((*ppRoot)->nLowest, pNew->nValue);
        ppRoot = &(*ppRoot)->pRight;
    }
    pNew->pLeft = *ppRoot;
    noteLowest(pNew);
    *ppRoot = pNew;
}

void removeNode(KeyOrder order, KeyNode **ppRoot, const KeyNode *pOld) {
    KeyNode *pAbove = *ppRoot;
    if (pAbove == pOld) {
        *ppRoot = joinTrees(pOld->pLeft, pOld->pRight);
    } else if (pAbove != nullptr) {
        removeNode(order, isBefore(order, *pOld, *pAbove) ? &pAbove->pLeft : &pAbove->pRight, pOld);
        if (pAbove->nLowest == pOld->nValue) { noteLowest(pAbove); }
    }
}

void *allocNode(uint64_t nBytes) {
    return HostMem_Alloc(nBytes, kHashSourceTag, __LINE__);
}

void freeNode(void *pNode) {
    HostMem_Free(pNode, kHashSourceTag, __LINE__);
}

// ---- The keys of a group ----

KeyGroup *groupOf(KeyNode *pInTexts) {
    return reinterpret_cast<KeyGroup *>(pInTexts);
}

void addToGroup(KeyGroup *pGroup, KeyNode *pNew) {
    if (pGroup->pKeys == nullptr || isBefore(kByAddress, *pGroup->pLast, *pNew)) {
        appendNode(&pGroup->pKeys, pNew);
        pGroup->pLast = pNew;
    } else {
        insertNode(kByAddress, &pGroup->pKeys, pNew);
    }
}

void removeFromGroup(KeyGroup *pGroup, KeyNode *pOld) {
    removeNode(kByAddress, &pGroup->pKeys, pOld);
    if (pGroup->pLast == pOld && pGroup->pKeys != nullptr) {  // a new last node: the rightmost
        for (pGroup->pLast = pGroup->pKeys; pGroup->pLast->pRight != nullptr;) {
            pGroup->pLast = pGroup->pLast->pRight;
        }
    }
}

// The key of this address with the lowest value, NULL if there is none.
KeyNode *findAddress(const KeyGroup &group, const char *szKey) {
    KeyNode *pFound = nullptr;
    for (KeyNode *pNode = group.pKeys; pNode != nullptr;) {
        if (std::less<>()(pNode->szKey, szKey)) {
            pNode = pNode->pRight;
        } else {  // this one, or one of the same address and a lower value on its left
            pFound = pNode->szKey == szKey ? pNode : pFound;
            pNode = pNode->pLeft;
        }
    }
    return pFound;
}

// A key of the group's lowest value: goes down into a subtree that has it.
KeyNode *findLowest(const KeyGroup &group) {
    const int32_t nLowest = group.pKeys->nLowest;
    KeyNode *pNode = group.pKeys;
    while (pNode != nullptr && pNode->nValue != nLowest) {
        KeyNode *pLeft = pNode->pLeft;
        pNode = pLeft != nullptr && pLeft->nLowest == nLowest ? pLeft : pNode->pRight;
    }
    return pNode;
}

// ---- The groups of a hash ----

// The group of a text, NULL if there is none.
KeyGroup *findGroup(KeyGroup *pGroups, const char *szKey) {
    KeyNode *pNode = &pGroups->inTexts;
    while (pNode != nullptr) {
        const int nOrder = std::strcmp(szKey, pNode->szKey);
        if (nOrder == 0) { return groupOf(pNode); }
        pNode = nOrder < 0 ? pNode->pLeft : pNode->pRight;
    }
    return nullptr;
}

// A group without keys for a text. NULL without memory: nothing has changed.
KeyGroup *addGroup(KeyGroup **ppGroups, const char *szKey) {
    KeyGroup *pGroup = static_cast<KeyGroup *>(allocNode(sizeof(KeyGroup)));
    if (pGroup != nullptr) {
        *pGroup = {makeNode(pGroup, szKey, 0), nullptr, nullptr};
        KeyNode *pRoot = *ppGroups != nullptr ? &(*ppGroups)->inTexts : nullptr;
        insertNode(kByText, &pRoot, &pGroup->inTexts);
        *ppGroups = groupOf(pRoot);
    }
    return pGroup;
}

void removeGroup(KeyGroup **ppGroups, KeyGroup *pGroup) {
    KeyNode *pRoot = &(*ppGroups)->inTexts;
    removeNode(kByText, &pRoot, &pGroup->inTexts);
    *ppGroups = groupOf(pRoot);
    freeNode(pGroup);
}

void freeTree(KeyOrder order, KeyNode *pTree) {
    while (pTree != nullptr) {
        KeyNode *pRight = pTree->pRight;
        freeTree(order, pTree->pLeft);
        if (order == kByText) { freeTree(kByAddress, groupOf(pTree)->pKeys); }
        freeNode(pTree);
        pTree = pRight;
    }
}

}  // namespace

void destroyGroups(KeyGroup *pGroups) {
    freeTree(kByText, &pGroups->inTexts);
}

KeyGroup *addKey(KeyGroup **ppGroups, const char *szKey, int32_t nValue) {
    KeyNode *pNew = static_cast<KeyNode *>(allocNode(sizeof(KeyNode)));
    KeyGroup *pGroup = *ppGroups != nullptr ? findGroup(*ppGroups, szKey) : nullptr;
    if (pNew != nullptr && pGroup == nullptr) { pGroup = addGroup(ppGroups, szKey); }
    if (pNew == nullptr || pGroup == nullptr) {
        freeNode(pNew);
        return nullptr;
    }
    *pNew = makeNode(pNew, szKey, nValue);
    addToGroup(pGroup, pNew);
    pGroup->inTexts.nValue = pGroup->pKeys->nLowest;
    return pGroup;
}

const char *anyText(const KeyGroup *pGroups) {
    return pGroups->inTexts.szKey;
}

int32_t lowestValue(const KeyGroup &group) {
    return group.inTexts.nValue;
}

int32_t lowestValue(KeyGroup *pGroups, const char *szKey) {
    const KeyGroup *pGroup = findGroup(pGroups, szKey);
    return pGroup != nullptr ? lowestValue(*pGroup) : -1;
}

bool removeKey(KeyGroup **ppGroups, const char *szKey, int32_t *pnRepeat) {
    KeyGroup *pGroup = findGroup(*ppGroups, szKey);
    if (pGroup == nullptr) { return false; }
    KeyNode *pOld = findAddress(*pGroup, szKey);
    pOld = pOld != nullptr ? pOld : findLowest(*pGroup);
    const int32_t nOld = pOld->nValue;
    removeFromGroup(pGroup, pOld);
    freeNode(pOld);
    *pnRepeat = -1;
    if (pGroup->pKeys != nullptr) {  // the text removed may be gone soon: order by one that stays
        *pnRepeat = std::max(nOld, pGroup->pKeys->nLowest);
        pGroup->inTexts.szKey = pGroup->pKeys->szKey;
        pGroup->inTexts.nValue = pGroup->pKeys->nLowest;
    } else {
        removeGroup(ppGroups, pGroup);
    }
    return true;
}

bool hasOneKey(const KeyGroup *pGroups, const char **pszKey, int32_t *pnValue) {
    const KeyNode &root = pGroups->inTexts;
    const KeyNode &key = *pGroups->pKeys;
    if (root.pLeft != nullptr || root.pRight != nullptr || key.pLeft != nullptr ||
        key.pRight != nullptr) {
        return false;
    }
    *pszKey = key.szKey;
    *pnValue = key.nValue;
    return true;
}

}  // namespace host
