// Every operation with the first, the second, the n-th call that needs memory failing, alone and
// with all later ones, and with no map to be had. A failed operation must leave what its contract
// says, and the manager sound and usable.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>

#include "foreign_host.h"
#include "tests/loaded_manager.hpp"

namespace {

using namespace names;
using loaded::load;
using loaded::namesOf;
using model::Record;
using model::Strings;

constexpr int32_t kNames = 40, kLongName = 39;
const std::string kLong =
    std::string(kLocalTextBytes, 'x');  // a byte more than is put together without an allocation

// The image of a manager whose blocks have no room and whose tables have no spare records.
std::string tightImage(bool bPositions, const std::string &prefix, size_t nBlocks,
                       int32_t nBlockSize) {
    Record record(("x%0" + std::to_string(kLong.size()) + 'd').c_str());
    record.blocks.assign(nBlocks, {nBlockSize, 0, ""});
    for (std::string text; record.nNames() < kNames;) {
        text = record.nNames() == kLongName ? kLong : prefix + std::to_string(record.nNames());
        record.storeNames({record.nNames(), record.nNames(), 0}, &text);
    }
    if (bPositions) { record.storeIndividualNamePositions(); }
    for (model::Block &block : record.blocks) { block.nSize = std::max(block.nUsed(), 1); }
    record.nBlocksAlloc = record.nBlocks();
    record.nSegmentsAlloc = record.nSegments();
    return loaded::imageOf(record);
}

// One run of a scenario: mgr works, other is what it takes names from. Then what came of it: the
// status, the names, and in answers what was read, with a '#' for whatever was not had.
struct Case {
    const std::string image, otherImage;
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr),
                 *other = NamesManager_Create(nullptr, nullptr);
    Strings before = {}, names = {};
    std::string answers = {};
    int32_t nStatus = load(mgr, image) + load(other, otherImage);
};

Case startRun(bool bPositions, bool bIndexed) {
    Case c = {tightImage(bPositions, "name", 6, 70), tightImage(bPositions, "other", 2, 180)};
    EXPECT_EQ(0, c.nStatus);
    NamesManager_GetMaxNameLength(c.mgr);
    if (bIndexed) { NamesManager_FindName(c.mgr, "none", 0); }
    c.before = namesOf(c.mgr);
    return c;
}

// Stores names of at least nBytes bytes, given one by one or in one buffer.
int32_t add(NamesManager *mgr, int32_t first, int32_t last, size_t nBytes, bool bBuffer = false) {
    std::string buffer;
    std::vector<const char *> pointers;
    for (int32_t i = first; i <= last; ++i) {
        const std::string text = 't' + std::to_string(i);
        buffer += text + std::string(std::max(nBytes, text.size()) - text.size(), 'x') + '\0';
    }
    for (size_t at = 0; at < buffer.size(); at = buffer.find('\0', at) + 1) {
        pointers.push_back(&buffer[at]);
    }
    return bBuffer ? NamesManager_AddNamesFromBuffer(mgr, first, last, 0, buffer.data())
                   : NamesManager_AddNames(mgr, first, last, 0, pointers.data());
}

int32_t storeScattered(Case &c) {
    int32_t nStatus = 0;
    for (int32_t i = 1; i < kNames && nStatus == 0; i += 2) { nStatus = add(c.mgr, i, i, 12); }
    return nStatus;
}

// Their first letters are cut off: a map that refuses equal keys would be stale where names change
// places one by one.
int32_t reverse(Case &c) {
    std::vector<const char *> names(kNames);
    NamesManager_GetNamePointers(c.mgr, 0, kNames - 1, 0, names.data());
    std::reverse(names.begin(), names.end());
    for (const char *&szName : names) { ++szName; }
    return NamesManager_AddNames(c.mgr, 0, kNames - 1, 0, names.data());
}

int32_t readBeyond(Case &c) {
    c.answers.assign(5000, '#');
    return NamesManager_GetNames(c.mgr, 38, 43, 0, 1, 1, 200, c.answers.data(), c.answers.size(),
                                 nullptr);
}

int32_t readBackwards(Case &c) {
    for (const int32_t i : {33, 27, 21, 15, 9, 3, 36}) {
        c.answers += NamesManager_GetName(c.mgr, i, 0);
    }
    return 0;
}

int32_t find(Case &c, const std::string &one, const std::string &another) {
    const char *const apNames[] = {"name3", one.c_str(), another.c_str(), "name38 "};
    int32_t aFound[] = {-7, -7, -7, -7};
    const int32_t nStatus = NamesManager_FindNames(c.mgr, apNames, 4, -1, 0, aFound);
    for (const int32_t iFound : aFound) { c.answers += iFound < 0 ? "#" : std::to_string(iFound); }
    return nStatus;
}

int32_t findLong(Case &c) {
    return find(c, kLong + "missing ", c.before[kLongName] + ' ');
}

int32_t findWithinLocalText(Case &c) {
    return find(c, "missing", std::string(kLocalTextBytes - 1, 'x') + ' ');
}

int32_t checkDuplicates(Case &c) {
    int32_t bFound = 0, iFirst = -7, iSecond = -7;
    char szName[10] = "";
    const int32_t nStatus =
        NamesManager_CheckDuplicateNamesInBuffer(c.mgr, 42, 44, 0, "new\t\0newer\0name7\n", &bFound,
                                                 &iFirst, &iSecond, szName, sizeof szName);
    c.answers = bFound != 0 ? szName + std::to_string(iFirst) + '/' + std::to_string(iSecond) : "#";
    return nStatus;
}

int32_t remove(Case &c, int32_t iFirst, int32_t iEnd, int32_t iStep) {
    std::vector<int32_t> indices;
    for (int32_t i = iFirst; i != iEnd; i += iStep) { indices.push_back(i); }
    return NamesManager_RemoveNamesByIndices(c.mgr, indices.data(), Record::toInt(indices.size()));
}

int32_t save(Case &c) {
    const std::string image = loaded::save(c.mgr);
    g_foreignHost.nFailAt = 0;  // what is written must load, also where addresses went out with it
    EXPECT_EQ(0, load(c.other, image));
    EXPECT_EQ(c.before, namesOf(c.other));
    return 0;
}

int32_t create(Case &) {
    NamesManager *made = NamesManager_Create(nullptr, nullptr);
    NamesManager_Destroy(made);
    return made == nullptr ? 1 : 0;
}

// What a failed operation leaves: new names up to some point and old ones from there on; the old
// ones; none at all; of those to be removed, some. Or it cannot fail, or not for one allocation
// alone.
enum Left { kSteps, kOld, kNone, kSome, kCannotFail, kStepsUnlessOnce };
enum Fault { kNoFault, kOnce, kFromThereOn, kNoMaps, kFaults };

struct Scenario {
    const char *szName;
    Left left;
    int32_t (*pfnRun)(Case &c);
};

constexpr size_t kAppended =
    std::min(kMaxNameBytes, 700);  // bytes of each name; together more than a new block has

const Scenario kScenarios[] = {
    {"create", kOld, create},
    {"append", kSteps,
     [](Case &c) { return add(c.mgr, kNames, kNames + kMaxSegmentNames * 3 / 2, kAppended); }},
    {"store in a buffer", kSteps, [](Case &c) { return add(c.mgr, 35, 60, 20, true); }},
    {"store behind a gap", kSteps,
     [](Case &c) { return NamesManager_AddNameWithMaxLength(c.mgr, 43, 0, "name and more", 9); }},
    {"replace by longer names", kSteps, [](Case &c) { return add(c.mgr, 3, 37, 50); }},
    {"replace by shorter names", kStepsUnlessOnce,
     [](Case &c) { return add(c.mgr, 0, kNames - 1, 1); }},
    {"replace here and there", kSteps, storeScattered},
    {"replace by names of its own", kSteps, reverse},
    {"generate", kSteps, [](Case &c) { return NamesManager_GenerateNames(c.mgr, 45); }},
    {"copy a name", kSteps,
     [](Case &c) { return NamesManager_CopyName(c.mgr, 41, 0, c.other, 42, 0); }},
    {"prefix a name", kSteps,
     [](Case &c) {
         return NamesManager_CopyNameWithPrefix(c.mgr, 7, 0, c.other, 41, 0, kLong.c_str());
     }},
    {"read beyond the names", kSteps, readBeyond},
    {"read backwards", kCannotFail, readBackwards},
    {"find a long name", kOld, findLong},
    {"find without copying a long name", kCannotFail, findWithinLocalText},
    {"check for duplicates", kSteps, checkDuplicates},
    {"remove a range", kOld, [](Case &c) { return NamesManager_RemoveNames(c.mgr, 4, 31, 0); }},
    {"remove by indices", kSome, [](Case &c) { return remove(c, 1, 37, 6); }},
    {"remove until segments do not pay", kSome, [](Case &c) { return remove(c, 39, -1, -2); }},
    {"clear", kNone, [](Case &c) { return NamesManager_Clear(c.mgr); }},
    {"copy", kNone, [](Case &c) { return NamesManager_Copy(c.mgr, c.other); }},
    {"switch to positions", kOld,
     [](Case &c) { return NamesManager_StoreIndividualNamePositions(c.mgr); }},
    {"save", kCannotFail, save},
    {"load", kNone, [](Case &c) { return -load(c.mgr, c.otherImage); }},
};

bool isPart(const Strings &part, const Strings &whole) {
    auto next = whole.begin();
    return std::all_of(part.begin(), part.end(), [&](auto &name) {
        return (next = std::find(next, whole.end(), name)) != whole.end();
    });
}

bool isAllowed(Left left, const Strings &before, const Strings &complete, const Strings &seen) {
    const auto nNew =
        std::mismatch(seen.begin(), seen.end(), complete.begin(), complete.end()).first -
        seen.begin();
    Strings steps(seen.begin(), seen.begin() + nNew);
    steps.insert(steps.end(), before.begin() + std::min(nNew, std::ssize(before)), before.end());
    const bool bSome = isPart(complete, seen) && isPart(seen, before);
    return left == kSteps  ? seen == steps
           : left == kOld  ? seen == before
           : left == kNone ? seen.empty()
                           : left == kSome && bSome;
}

// Of what the tables have to spare no record is as this host hands out memory.
bool hasSetSpareRecords(const NamesManager *mgr) {
    const auto isSet = [](auto &record) {
        return record.iBlock != static_cast<int32_t>(0xa5a5a5a5);
    };
    return std::all_of(mgr->pSegments + mgr->nSegments, mgr->pSegments + mgr->nSegmentsAlloc,
                       isSet) &&
           (mgr->pPositions == nullptr ||
            std::all_of(mgr->pPositions + mgr->nNames, mgr->pPositions + mgr->nPositionsAlloc,
                        isSet));
}

bool hasNoTables(const NamesManager *mgr) {
    return mgr->pSegments == nullptr && mgr->pPositions == nullptr;
}

// Audited, the longest name true or unknown, every name found, by scanning too.
void expectSound(NamesManager *mgr, const Strings &names) {
    g_foreignHost.nAssertions = 0;
    NamesManager_AssertConsistency(mgr);
    EXPECT_EQ(hasNoTables(mgr) ? 1 : 0, g_foreignHost.nAssertions);
    EXPECT_EQ(0, g_foreignHost.nLockDepth);
    EXPECT_TRUE(Record::isMaximum(*mgr, names));
    for (const int32_t nStep : {17, 1}) {
        g_foreignHost.bFailMaps = nStep > 1;
        for (int32_t i = 0; i < std::ssize(names); i += nStep) {
            EXPECT_EQ(i, NamesManager_FindName(mgr, names[static_cast<size_t>(i)].c_str(), 0));
        }
    }
    EXPECT_EQ(-1, NamesManager_FindName(mgr, "missing", 0));
}

// Goes on with a manager, after a clear where it has lost its tables: stores, and saves an image
// that another one accepts.
void expectUsable(NamesManager *mgr, NamesManager *other, Strings names) {
    if (hasNoTables(mgr)) {
        EXPECT_EQ(2, NamesManager_AddName(mgr, 0, 0, "refused") +
                         NamesManager_StoreIndividualNamePositions(mgr));
        EXPECT_EQ(0, NamesManager_Clear(mgr));
    }
    names.push_back("last");
    names[0] = "replaced";
    EXPECT_EQ(0, NamesManager_AddName(mgr, mgr->nNames, 0, "last") +
                     NamesManager_AddName(mgr, 0, 0, "replaced"));
    EXPECT_EQ(0, load(other, loaded::save(mgr)));
    EXPECT_EQ(names, namesOf(other));
    expectSound(other, names);
    expectSound(mgr, names);
}

// Runs a scenario with a fault, at the n-th call where it is one of memory, and checks what comes
// of it against the run without any.
Case runScenario(const Scenario &scenario, int32_t nVariant, int32_t nFault, int64_t n,
                 const Case *pComplete) {
    Case c = startRun((nVariant & 1) != 0, (nVariant & 2) != 0);
    g_foreignHost.nErrors = 0;
    g_foreignHost.failedSites.clear();
    g_foreignHost.bFailMaps = nFault == kNoMaps;
    g_foreignHost.bFailFromThere = nFault == kFromThereOn;
    g_foreignHost.nFailAt = nFault == kOnce || nFault == kFromThereOn ? n : 0;
    c.nStatus = scenario.pfnRun(c);
    g_foreignHost.nFailAt = 0;
    g_foreignHost.bFailMaps = false;
    c.names = namesOf(c.mgr);
    if (pComplete == nullptr || c.nStatus == pComplete->nStatus) {
        EXPECT_EQ(pComplete == nullptr ? c.names : pComplete->names, c.names);
        EXPECT_EQ(pComplete == nullptr ? c.answers : pComplete->answers, c.answers);
        EXPECT_TRUE(g_foreignHost.nErrors == 0 && !hasNoTables(c.mgr));
    } else {
        const Left left = scenario.left != kStepsUnlessOnce ? scenario.left
                          : nFault == kOnce                 ? kCannotFail
                                                            : kSteps;
        EXPECT_TRUE(c.nStatus == 1 && isAllowed(left, c.before, pComplete->names, c.names))
            << c.names.size();
        EXPECT_EQ(std::string::npos, c.answers.find_first_not_of('#'));
        EXPECT_LE(g_foreignHost.nErrors, 1);
    }
    expectSound(c.mgr, c.names);
    expectSound(c.other, namesOf(c.other));
    EXPECT_TRUE(scenario.left != kSome || (nVariant & 1) != 0 || hasSetSpareRecords(c.mgr));
    expectUsable(c.mgr, c.other, c.names);
    NamesManager_Destroy(c.mgr);
    NamesManager_Destroy(c.other);
    EXPECT_EQ(0, g_foreignHost.nLive);
    EXPECT_EQ("", g_foreignHost.refusals);
    return c;
}

// The calls in the module's sources that may fail for want of memory; those for memory alone pass
// their line on.
std::set<std::string> allSites() {
    std::set<std::string> sites;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(NAMES_SOURCES)) {
        if (entry.is_directory()) { continue; }
        std::ifstream source(entry.path());
        std::string line;
        for (int32_t nLine = 1; std::getline(source, line); ++nLine) {
            const auto has = [&line](auto... words) {
                return ((line.find(words) != std::string::npos) || ...);
            };
            if (has("HostPool_Alloc(", "HostHashMap_Create(", "HostHashMap_Insert(",
                    "HostLock_Init(") ||
                (has("HostMem_Alloc", "HostMem_Realloc(", "resizeTable(") && has("__LINE__"))) {
                sites.insert(entry.path().filename().string() + ':' + std::to_string(nLine));
            }
        }
    }
    return sites;
}

TEST(Failure, OfAnyAllocationLeavesWhatTheContractSays) {
    std::set<std::string> reached;
    int64_t nRuns = 0;
    for (const Scenario &scenario : kScenarios) {
        for (const int32_t nVariant : {0, 1, 2, 3}) {
            const Case complete = runScenario(scenario, nVariant, kNoFault, 0, nullptr);
            for (int32_t nFault = kOnce; nFault < kFaults; ++nFault) {
                bool bFailed = true;
                for (int64_t n = 1; bFailed && !HasFailure(); ++n, ++nRuns) {
                    SCOPED_TRACE(testing::Message() << scenario.szName << ", variant " << nVariant
                                                    << ", fault " << nFault << " at " << n);
                    runScenario(scenario, nVariant, nFault, n, &complete);
                    bFailed = !g_foreignHost.failedSites.empty();
                    reached.merge(g_foreignHost.failedSites);
                }
            }
        }
    }
    const std::set<std::string> all = allSites();
    std::cout << nRuns << " runs reached " << reached.size() << " of " << all.size()
              << " allocation sites\n";
    EXPECT_EQ(all, reached);
}

TEST(Failure, OfALargeBlockFallsBackToASmallerOne) {
    constexpr int32_t kMost = kFirstBlockBytes * 3 / 4, kHalf = kNewBlockBytes / 2;
    for (const auto &[nLength, nBlockSize] :
         {std::pair{kMost, kHalf}, {kHalf - 2, kHalf}, {kHalf - 1, 0}, {kNewBlockBytes + 9, 0}}) {
        const auto nBytes = static_cast<size_t>(nLength);
        NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
        EXPECT_EQ(0, add(mgr, 0, 0, kMost));
        g_foreignHost.bFailFromThere = false;
        g_foreignHost.nFailAt = 1;
        EXPECT_EQ(nBlockSize == 0 ? 1 : 0, add(mgr, 1, 1, nBytes)) << nBytes;
        EXPECT_EQ(nBlockSize, mgr->nBlocks == 1 ? 0 : mgr->pBlocks[1].nSize);
        NamesManager_Destroy(mgr);
    }
}

}  // namespace
