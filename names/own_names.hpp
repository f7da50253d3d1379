// Given names that lie in the manager itself, where a store would overwrite some before it reads
// them.
#ifndef NAMES_OWN_NAMES_HPP
#define NAMES_OWN_NAMES_HPP

#include "names/storage/record.hpp"

namespace names {

constexpr int32_t kMostLocalNames = kMaxSegmentNames;
constexpr size_t kLocalNamesBytes = size_t{16} * kLocalTextBytes;  // of their texts, NULs included

// Names that no store overwrites: those given, or copies of them.
struct StableNames {
    StableNames() : ppNames(nullptr), ppHeap(nullptr) {}
    ~StableNames() {
        if (ppHeap != nullptr) { freeMemory(ppHeap); }
    }
    StableNames(const StableNames &) = delete;
    StableNames &operator=(const StableNames &) = delete;
    const char *const *ppNames;
    const char **ppHeap;
    const char *apLocal[kMostLocalNames];
    char aLocalTexts[kLocalNamesBytes];
};

// pLengths is NULL for NUL-terminated names. False without memory for copies.
bool makeStable(const NamesManager *mgr, const char *const *ppNames, const int32_t *pLengths,
                int32_t nNames, StableNames *pStable);

}  // namespace names

#endif
