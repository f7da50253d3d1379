// The hash index over the stored texts.
#include "names/storage/lookup_index.hpp"

#include "names/storage/key_lists.hpp"
#include "names/storage/reading.hpp"

namespace names {

void dropIndex(NamesManager *mgr) {
    if (mgr->pLookupIndex != nullptr) {
        HostHashMap_Release(mgr->pLookupIndex);
        mgr->pLookupIndex = nullptr;
    }
}

namespace {

void buildIndex(NamesManager *mgr) {
    mgr->pLookupIndex = HostHashMap_Create(&HostHashMap_StringKeys, mgr->nNames);
    const char *apNames[kMaxSegmentNames];
    NameReader reader = startReading(mgr, {0, mgr->nNames - 1});
    for (int32_t i = 0; mgr->pLookupIndex != nullptr && i < mgr->nNames;) {
        const int32_t nNames = readNames(&reader, apNames, nullptr);
        if (insertKeys(mgr->pLookupIndex, apNames, nNames, i, nullptr) < nNames) { dropIndex(mgr); }
        i += nNames;
    }
}

}  // namespace

NameLookupIndex *currentIndex(NamesManager *mgr) {
    if (isIndexCurrent(mgr)) { return mgr->pLookupIndex; }
    dropIndex(mgr);
    if (mgr->nNames > 0) { buildIndex(mgr); }
    return mgr->pLookupIndex;
}

void indexTexts(NamesManager *mgr, const char *pText, const int32_t *lengths, int32_t nNames,
                int32_t iFirst) {
    if (mgr->pLookupIndex == nullptr) { return; }
    if (nNames == 1) {
        if (HostHashMap_Insert(mgr->pLookupIndex, pText, iFirst, nullptr) != 0) { dropIndex(mgr); }
        return;
    }
    const char *apNames[kMaxSegmentNames];
    for (int32_t k = 0; k < nNames; ++k) {
        apNames[k] = pText;
        pText += lengths[k] + 1;
    }
    if (insertKeys(mgr->pLookupIndex, apNames, nNames, iFirst, nullptr) < nNames) {
        dropIndex(mgr);
    }
}

// Takes the old texts out of the index before any of them changes: they are its keys.
void unindexNames(NamesManager *mgr, IndexRange range) {
    if (mgr->pLookupIndex == nullptr) { return; }
    const char *apNames[kMaxSegmentNames];
    NameReader reader = startReading(mgr, range);
    while (const int32_t nNames = readNames(&reader, apNames, nullptr)) {
        for (int32_t k = 0; k < nNames; ++k) { HostHashMap_Remove(mgr->pLookupIndex, apNames[k]); }
    }
}

}  // namespace names
