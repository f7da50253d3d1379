// Images, and what must hold of a manager after a load, whatever the image was. Shared by the loader's tests and its fuzzing.
#pragma once

#include "host/host_report.h"
#include "tests/record_model.hpp"

namespace loaded {

using model::Record;
using model::Strings;

inline int32_t g_nReports = 0;
constexpr HostReportHandlers kCounting = {nullptr, [](void *, uint64_t, int32_t, int32_t, const char *) { ++g_nReports; },
                                          [](void *, uint64_t, int32_t, int32_t, const char *) { ++g_nReports; }};

inline std::string imageOf(const Record &record) {
    const Strings writes = record.save();
    return std::accumulate(writes.begin(), writes.end(), std::string());
}

// Sixteen names in two blocks, dead bytes among them, and a cursor in segment mode.
inline Record recordWithNames(bool bPositions) {
    Record record("%d. name");
    record.blocks.assign(3, {60, 0, ""});
    record.generateNames(18);
    const std::string longer = "a longer name", same = "5. Name";
    record.storeNames({2, 2, 0}, &longer);
    record.storeNames({4, 4, 0}, &same);
    record.removeNames({9, 10, 0});
    if (bPositions) record.storeIndividualNamePositions();
    Strings read;
    record.getNamePointers({0, 5, 0}, &read);
    return record;
}

// Of every kind that an image can be: without names and with, in both storage modes.
inline std::vector<Record> soundRecords() {
    std::vector<Record> records = {Record("nm%d"), Record("nm%d"), recordWithNames(false), recordWithNames(true)};
    records[1].bSegments = false;
    records[1].nSegmentsAlloc = 0;
    return records;
}

inline int32_t load(NamesManager *mgr, const std::string &image) {
    const std::vector<char> bytes(image.begin(), image.end());  // so that a sanitizer sees the end
    HostInputStream *pStream = HostInputStream_CreateInMemory(bytes.data(), bytes.size());
    const int32_t nStatus = NamesManager_Load(mgr, nullptr, pStream);
    HostInputStream_Close(pStream);
    return nStatus;
}

inline std::string save(NamesManager *mgr) {
    HostOutputStream *pStream = HostOutputStream_CreateInMemory();
    uint64_t nBytes = 0;
    const bool bSaved = NamesManager_Save(mgr, nullptr, pStream) == 0;
    const void *pBytes = HostOutputStream_GetMemory(pStream, &nBytes);
    const std::string image = bSaved ? Record::bytesOf(pBytes, nBytes) : "";
    HostOutputStream_Close(pStream, 0);
    return image;
}

inline Strings namesOf(NamesManager *mgr) {
    std::vector<const char *> pointers(static_cast<size_t>(mgr->nNames));
    NamesManager_GetNamePointers(mgr, 0, mgr->nNames - 1, 0, pointers.data());
    return {pointers.begin(), pointers.end()};
}

// An image that a save could have written: no addresses, nothing in the padding.
inline std::string normalized(std::string image, int32_t nBlocks) {
    for (size_t at = 92; nBlocks > 0; --nBlocks, at += 24)
        image.replace(at, 8, 8, '\0').replace(at + 20, 4, 4, '\0');
    return image;
}

// What is wrong with a manager after its load answered nStatus, empty if nothing is. It goes on with the manager and changes it. From here
// on reports are counted, not printed.
inline std::string faultAfterLoad(NamesManager *mgr, const std::string &image, int32_t nStatus) {
    const bool bCleared = mgr->nNames == 0 && mgr->nBlocks == 1 && mgr->pSegments != nullptr && mgr->pPositions == nullptr;
    if (nStatus != 0 && !bCleared) return "A failed load left more than a cleared manager.";
    const bool bNoState = image.empty() || image.starts_with("\xff\xff\xff\xff");
    if (nStatus == 0 && !bNoState && !normalized(image, mgr->nBlocks).starts_with(save(mgr))) return "It saves other bytes.";
    Host_SetReportHandlers(&kCounting);
    g_nReports = 0;
    NamesManager_AssertConsistency(mgr);
    Strings names = namesOf(mgr);
    size_t nLongest = 0;
    for (const std::string &name : names) {
        const int32_t iFound = NamesManager_FindName(mgr, name.c_str(), 0);
        if (iFound < 0 || names.at(static_cast<size_t>(iFound)) != name) return "A name is not found.";
        nLongest = std::max(nLongest, name.size());
    }
    if (NamesManager_GetMaxNameLength(mgr) != static_cast<int32_t>(nLongest)) return "The longest name has another length.";
    names.emplace_back("appended");
    names[0] = std::string(5000, 'x');
    names[names.size() / 2] = "s";
    int32_t nFailed = NamesManager_AddName(mgr, mgr->nNames, 0, "appended") + NamesManager_AddName(mgr, 0, 0, names[0].c_str()) +
                      NamesManager_AddName(mgr, mgr->nNames / 2, 0, "s");
    const int32_t nReports = g_nReports;
    NamesManager_GenerateNames(mgr, mgr->nNames + 2);  // fails with a report where the image has a format or a number that ends there
    g_nReports = nReports;
    const Strings grown = namesOf(mgr);
    if (std::mismatch(names.begin(), names.end(), grown.begin(), grown.end()).first != names.end()) return "It does not store names.";
    const int32_t aGone[] = {mgr->nNames - 1, 0};
    nFailed += NamesManager_RemoveNamesByIndices(mgr, aGone, 2);
    names.assign(grown.begin() + 1, grown.end() - (grown.size() > 1 ? 1 : 0));
    NamesManager_AssertConsistency(mgr);
    if (nFailed != 0 || namesOf(mgr) != names) return "It does not remove names.";
    NamesManager *again = NamesManager_Create(nullptr, nullptr);
    const bool bAgain = load(again, save(mgr)) == 0 && namesOf(again) == names;
    NamesManager_Destroy(again);
    return g_nReports != 0 ? "The audit reports." : bAgain ? "" : "Saved again it does not load.";
}

}  // namespace loaded
