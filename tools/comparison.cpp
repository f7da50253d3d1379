#include "tools/comparison.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <tuple>

#include "host/host_hash_map.h"
#include "tools/tool.hpp"

namespace tool {
namespace {

using Positions = std::vector<int32_t>;

// ---- Names that are not the same at the same index ----

// Memory that is reserved and not needed is never touched.
void reserve(const NamesManager *mgr, Rest *pRest) {
    pRest->indices.reserve(static_cast<size_t>(mgr->nNames));
    pRest->names.reserve(static_cast<size_t>(mgr->nNames));
}

void add(int32_t index, const char *szName, Rest *pRest) {
    pRest->indices.push_back(index);
    pRest->names.push_back(szName);
}

// Reads both lists side by side.
void collectRests(NamesManager *a, NamesManager *b, Comparison *pComparison) {
    reserve(a, &pComparison->a);
    reserve(b, &pComparison->b);
    NamePointers namesA, namesB;
    int32_t nEither = -1;
    for (int32_t first = 0; nEither != 0; first += nEither) {
        const int32_t nA = readNames(a, first, &namesA);
        const int32_t nB = readNames(b, first, &namesB);
        nEither = std::max(nA, nB);
        for (int32_t i = 0; i < nEither; ++i) {
            const char *szA = i < nA ? namesA[static_cast<size_t>(i)] : nullptr;
            const char *szB = i < nB ? namesB[static_cast<size_t>(i)] : nullptr;
            if (szA && szB && std::strcmp(szA, szB) == 0) {
                ++pComparison->nSame;
                continue;
            }
            if (szA) { add(first + i, szA, &pComparison->a); }
            if (szB) { add(first + i, szB, &pComparison->b); }
        }
    }
    pComparison->partners.assign(pComparison->a.names.size(), -1);
}

// ---- Pairs ----

struct MapReleaser {
    void operator()(HostHashMap *pMap) const { HostHashMap_Release(pMap); }
};
using Map = std::unique_ptr<HostHashMap, MapReleaser>;

// Maps the names to their positions; NULL is passed over. pEarlier, unless NULL, is set to the
// lowest position of an equal name before each name, or -1.
Map mapNames(const std::vector<const char *> &names, int64_t nExpected, Positions *pEarlier) {
    const auto nNames = static_cast<int64_t>(names.size());
    if (pEarlier) { pEarlier->resize(names.size()); }
    Map map(HostHashMap_Create(&HostHashMap_StringKeys, nExpected));
    if (!map || HostHashMap_InsertList(map.get(), names.data(), nNames, 0,
                                       pEarlier ? pEarlier->data() : nullptr) < nNames) {
        throw std::bad_alloc();
    }
    return map;
}

void pair(size_t iA, size_t iB, Comparison *pComparison) {
    pComparison->partners[iA] = pComparison->b.indices[iB];
    pComparison->b.names[iB] = nullptr;
    ++pComparison->nMoved;
}

// Pairs the names at the two positions if there are two, if they are equal, and if they have no
// partners yet. Returns whether they are paired.
bool pairIfEqual(size_t iA, size_t iB, Comparison *pComparison) {
    if (iA >= pComparison->partners.size() || pComparison->partners[iA] >= 0) { return false; }
    const char *szB = iB < pComparison->b.names.size() ? pComparison->b.names[iB] : nullptr;
    if (!szB || std::strcmp(pComparison->a.names[iA], szB) != 0) { return false; }
    pair(iA, iB, pComparison);
    return true;
}

// Pairs equal names from the two positions on, and backwards before them. Returns the position in A
// after the last one, at least iA + 1.
size_t pairAround(size_t iA, size_t iB, Comparison *pComparison) {
    size_t nPaired = 0;
    while (pairIfEqual(iA + nPaired, iB + nPaired, pComparison)) { ++nPaired; }
    if (nPaired == 0) { return iA + 1; }
    for (size_t i = 1; i <= std::min(iA, iB) && pairIfEqual(iA - i, iB - i, pComparison);) { ++i; }
    return iA + nPaired;
}

// Pairs names that follow each other in both lists, as most do where names were inserted, removed
// or moved: some names of B are looked for in A, and where one is found its neighbours are
// compared. Stops when there have been many more lookups than pairs, as in lists of another order.
void pairInOrder(Comparison *pComparison) {
    constexpr size_t kStep = 16;
    std::vector<const char *> samples;
    for (size_t i = 0; i < pComparison->b.names.size(); i += kStep) {
        samples.push_back(pComparison->b.names[i]);
    }
    const Map map = mapNames(samples, static_cast<int64_t>(samples.size()), nullptr);
    const std::vector<const char *> &names = pComparison->a.names;
    const auto nInVain = static_cast<int64_t>(names.size() / 16 + kStep);
    int64_t nLookups = 0;
    for (size_t i = 0; i < names.size() && nLookups < nInVain + pComparison->nMoved; ++nLookups) {
        const int32_t iSample = HostHashMap_Find(map.get(), names[i]);
        i = iSample < 0 ? i + 1 : pairAround(i, static_cast<size_t>(iSample) * kStep, pComparison);
    }
}

// Returns for each name the position of the next equal one, or -1; nothing if no names are equal.
Positions linkEqualNames(const Positions &earlier) {
    if (std::all_of(earlier.begin(), earlier.end(), [](int32_t i) { return i < 0; })) { return {}; }
    Positions next(earlier.size(), -1);
    Positions last(earlier.size());  // by the lowest position of a name: the last equal one so far
    for (size_t i = 0; i < earlier.size(); ++i) {
        const size_t iLowest = earlier[i] < 0 ? i : static_cast<size_t>(earlier[i]);
        if (iLowest != i) { next[static_cast<size_t>(last[iLowest])] = static_cast<int32_t>(i); }
        last[iLowest] = static_cast<int32_t>(i);
    }
    return next;
}

// Pairs a name of A with the first equal one of B that has no partner. iLowest: the position of the
// first of all that were left. *pNext: as linkEqualNames returns it; what it holds for that
// position moves on as names get partners.
void pairWithNext(size_t iA, size_t iLowest, Positions *pNext, Comparison *pComparison) {
    size_t iB = iLowest;
    if (!pComparison->b.names[iLowest]) {
        const int32_t iNext = pNext->empty() ? -1 : (*pNext)[iLowest];
        if (iNext < 0) { return; }
        iB = static_cast<size_t>(iNext);
        (*pNext)[iLowest] = (*pNext)[iB];
    }
    pair(iA, iB, pComparison);
}

// Pairs what is left: many names of A at once are looked up among those of B.
void pairByLookup(Comparison *pComparison) {
    const std::vector<const char *> &names = pComparison->a.names;
    const auto nLeft = static_cast<int64_t>(pComparison->b.names.size()) - pComparison->nMoved;
    if (nLeft == 0 || pComparison->nMoved == static_cast<int64_t>(names.size())) { return; }
    Positions earlier;
    const Map map = mapNames(pComparison->b.names, nLeft, &earlier);
    Positions next = linkEqualNames(earlier);
    NamePointers sought;
    std::array<int32_t, std::tuple_size_v<NamePointers>> found;
    for (size_t first = 0; first < names.size(); first += sought.size()) {
        const size_t count = std::min(names.size() - first, sought.size());
        for (size_t i = 0; i < count; ++i) {
            sought[i] = pComparison->partners[first + i] < 0 ? names[first + i] : nullptr;
        }
        HostHashMap_FindList(map.get(), sought.data(), static_cast<int64_t>(count), found.data());
        for (size_t i = 0; i < count; ++i) {
            if (found[i] < 0) { continue; }
            pairWithNext(first + i, static_cast<size_t>(found[i]), &next, pComparison);
        }
    }
}

}  // namespace

Comparison compareNames(NamesManager *a, NamesManager *b) {
    Comparison comparison;
    collectRests(a, b, &comparison);
    pairInOrder(&comparison);
    pairByLookup(&comparison);
    comparison.nOnlyInA = static_cast<int64_t>(comparison.a.names.size()) - comparison.nMoved;
    comparison.nOnlyInB = static_cast<int64_t>(comparison.b.names.size()) - comparison.nMoved;
    return comparison;
}

void visitMoved(const Comparison &comparison, const DifferenceVisitor &visit) {
    const Rest &a = comparison.a;
    for (size_t i = 0; i < a.names.size(); ++i) {
        if (comparison.partners[i] < 0) { continue; }
        visit({a.indices[i], comparison.partners[i], a.names[i]});
    }
}

void visitOnlyInA(const Comparison &comparison, const DifferenceVisitor &visit) {
    const Rest &a = comparison.a;
    for (size_t i = 0; i < a.names.size(); ++i) {
        if (comparison.partners[i] < 0) { visit({a.indices[i], -1, a.names[i]}); }
    }
}

void visitOnlyInB(const Comparison &comparison, const DifferenceVisitor &visit) {
    const Rest &b = comparison.b;
    for (size_t i = 0; i < b.names.size(); ++i) {
        if (b.names[i]) { visit({-1, b.indices[i], b.names[i]}); }
    }
}

}  // namespace tool
