// Every operation with the first, the second, the n-th allocation failing, alone and with all later
// ones, and with no map to be had. A failed operation must leave what its contract says, and both
// managers sound and good for more. In lists a bar ends each name.
#include <gtest/gtest.h>

#include "tests/loaded_manager.hpp"

namespace {

using namespace names;
using model::Record;
using model::Strings;

const std::string kBefore = "aa|bb|cc|dd|ee|ff|gg|hh|ii|jj|kk|ll|mm|nn|oo|pp|";
const std::string kLong(kLocalTextBytes, 'x');  // too long to be put together without an allocation

Strings namesIn(const std::string &list) {
    std::istringstream from(list);
    Strings names;
    for (std::string name; std::getline(from, name, '|');) { names.push_back(name); }
    return names;
}

// Default names are long, too.
std::string made(int32_t nNumber) {
    const std::string digits = std::to_string(nNumber);
    return 'x' + std::string(kLong.size() - digits.size(), ' ') + digits + '|';
}

// Names that together are larger than a new block and than a segment.
std::string manyNames() {
    std::string list;
    for (int32_t i = 0; i < kMaxSegmentNames * 3 / 2; ++i) {
        list +=
            std::to_string(i) + std::string(size_t(std::min(kMaxNameBytes - 9, 700)), 'x') + '|';
    }
    return list;
}

// The image of a manager whose blocks have no room and whose tables have no spare records.
std::string tightImage(const std::string &list, bool bPositions) {
    Record record(("x%" + std::to_string(kLong.size()) + 'd').c_str());
    const Strings names = namesIn(list);
    record.blocks.assign(4, {15, 0, ""});
    record.storeNames({0, Record::toInt(names.size()) - 1, 0}, names.data());
    EXPECT_EQ(list != kBefore ? "" : "0-4 5-9 10-14 15-15 3/15 15/15 15/15 15/15 ",
              list != kBefore ? "" : record.layout());
    record.releaseEmptyBlocks();
    if (bPositions) { record.storeIndividualNamePositions(); }
    for (model::Block &block : record.blocks) { block.nSize = block.nUsed(); }
    record.nBlocksAlloc = record.nBlocks();
    record.nSegmentsAlloc = record.nSegments();
    return loaded::imageOf(record);
}

// One run of a scenario: mgr works, other is what it takes names from.
struct Case {
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr),
                 *other = NamesManager_Create(nullptr, nullptr);
    std::string otherImage, read = {}, image = {};  // read: with a '#' for what was not had

    explicit Case(bool bPositions, bool bIndexed)
        : otherImage(tightImage("other|others|", bPositions)) {
        EXPECT_EQ(0, loaded::load(mgr, tightImage(kBefore, bPositions)));
        EXPECT_EQ(0, loaded::load(other, otherImage));
        EXPECT_EQ(2, NamesManager_GetMaxNameLength(mgr));
        EXPECT_EQ(-1, bIndexed ? NamesManager_FindName(mgr, "none", 0) : -1);
    }
    int32_t store(int32_t first, const std::string &list) {
        const Strings names = namesIn(list);
        std::vector<const char *> pointers;
        for (const std::string &name : names) { pointers.push_back(name.c_str()); }
        const int32_t last = first + Record::toInt(names.size()) - 1;
        return NamesManager_AddNames(mgr, first, last, 0, pointers.data());
    }
    int32_t find(const std::string &one, const std::string &another) {
        const char *const apNames[] = {"cc", one.c_str(), another.c_str(), "pp "};
        int32_t aFound[] = {-7, -7, -7, -7};
        const int32_t nStatus = NamesManager_FindNames(mgr, apNames, 4, -1, 0, aFound);
        for (const int32_t i : aFound) { read += i < 0 ? "#" : std::to_string(i); }
        return nStatus;
    }
    int32_t removeEvery(int32_t nStep) {
        std::vector<int32_t> indices;
        for (int32_t i = 15; i > 0; i -= nStep) { indices.push_back(i); }
        return NamesManager_RemoveNamesByIndices(mgr, indices.data(), int32_t(indices.size()));
    }
    int32_t prefix(const char *szPrefix) {
        return NamesManager_CopyNameWithPrefix(mgr, 1, 0, other, 1, 0, szPrefix);
    }
    int32_t usePositions() {
        return mgr->pSegments == nullptr ? 0 : NamesManager_StoreIndividualNamePositions(mgr);
    }
    int32_t create() {
        NamesManager *made = NamesManager_Create(nullptr, nullptr);
        NamesManager_Destroy(made);
        return made == nullptr ? 1 : 0;
    }
    int32_t save() { return (image = loaded::save(mgr)).empty() ? 1 : 0; }
};

int32_t storeScattered(Case &c) {
    int32_t nStatus = 0;
    for (int32_t i = 1; i < 16 && nStatus == 0; i += 2) {
        nStatus = c.store(i, "longer" + std::to_string(i));
    }
    return nStatus;
}

// The ends of its own names: a map that refuses equal keys would be stale where names change places
// one by one.
int32_t reverse(Case &c) {
    std::vector<const char *> names(16);
    NamesManager_GetNamePointers(c.mgr, 0, 15, 0, names.data());
    std::reverse(names.begin(), names.end());
    for (const char *&szName : names) { ++szName; }
    return NamesManager_AddNames(c.mgr, 0, 15, 0, names.data());
}

// Some that end in blanks, and one of its own.
int32_t storeWithLengths(Case &c) {
    const char *apNames[] = {"P  ", "Qx", "R ", NamesManager_GetName(c.mgr, 3, 0)};
    const int32_t aLengths[] = {3, 1, 2, 1};
    return NamesManager_AddNamesWithLengths(c.mgr, 14, 17, 0, apNames, aLengths);
}

// Without memory the indices up to some point are those of the names, and the others -1.
int32_t findOrAdd(Case &c) {
    const std::string longer = kLong + ' ';
    const char *const apNames[] = {"cc", "new", longer.c_str(), "pp ", "newer", "new  ", "newest"};
    int32_t aFound[7];
    const int32_t nStatus = NamesManager_FindOrAddNames(c.mgr, apNames, 7, 0, aFound);
    const Strings names = loaded::namesOf(c.mgr);
    const auto end = std::find(aFound, aFound + 7, -1);
    for (auto p = aFound; p < end; ++p) {
        EXPECT_EQ(Record::trimmed(apNames[p - aFound]), names[size_t(*p)]);
        c.read += nStatus == 0 ? std::to_string(*p) + ' ' : "";
    }
    EXPECT_EQ(aFound + 7 - end, std::count(end, aFound + 7, -1));
    EXPECT_EQ(std::ssize(names), std::max(*std::max_element(aFound, aFound + 7), 15) + 1);
    return nStatus;
}

int32_t readBeyond(Case &c) {
    c.read.assign(20, '#');
    return NamesManager_GetNames(c.mgr, 14, 17, 0, 1, 1, 5, c.read.data(), c.read.size(), nullptr);
}

int32_t readBackwards(Case &c) {
    for (const int32_t i : {14, 12, 10, 8, 6, 4, 15}) {
        c.read += NamesManager_GetName(c.mgr, i, 0);
    }
    return 0;
}

int32_t checkDuplicates(Case &c) {
    int32_t bFound = 0, iFirst = -7, iSecond = -7;
    char szName[10] = "";
    const int32_t nStatus = NamesManager_CheckDuplicateNamesInBuffer(
        c.mgr, 17, 19, 0, "new\t\0newer\0gg\n", &bFound, &iFirst, &iSecond, szName, sizeof szName);
    c.read = bFound != 0 ? szName + std::to_string(iFirst) + '/' + std::to_string(iSecond) : "#";
    return nStatus;
}

// What a failed operation leaves: new names up to some point and old ones from there on; the old
// ones; none at all; of those to be removed, some. Or it cannot fail, or not for one allocation
// alone.
enum Left { kSteps, kOld, kNone, kSome, kCannotFail, kStepsUnlessOnce };
enum Fault { kNoFault, kOnce, kFromThereOn, kNoMaps };

const struct Scenario {
    const char *szName;
    Left left;
    int32_t (*pfnRun)(Case &c);
    std::string after;
    std::string read = "";
} kScenarios[] = {
    {"create", kOld, [](Case &c) { return c.create(); }, kBefore},
    {"append", kSteps, [](Case &c) { return c.store(16, manyNames()); }, kBefore + manyNames()},
    {"store in a buffer", kSteps,
     [](Case &c) { return NamesManager_AddNamesFromBuffer(c.mgr, 15, 20, 0, "P\0Q\0R\0S\0T\0U"); },
     "aa|bb|cc|dd|ee|ff|gg|hh|ii|jj|kk|ll|mm|nn|oo|P|Q|R|S|T|U|"},
    {"store after a gap", kSteps,
     [](Case &c) { return NamesManager_AddNameWithMaxLength(c.mgr, 18, 0, "name and more", 9); },
     kBefore + made(17) + made(18) + "name and|"},
    {"replace by longer names", kSteps,
     [](Case &c) { return c.store(3, "DDD|EEE|FFF|GGG|HHH|III|JJJ|KKK|LLL|"); },
     "aa|bb|cc|DDD|EEE|FFF|GGG|HHH|III|JJJ|KKK|LLL|mm|nn|oo|pp|"},
    {"replace by shorter names", kStepsUnlessOnce,
     [](Case &c) { return c.store(0, "a|b|c|d|e|f|g|h|i|j|k|l|m|n|o|p|"); },
     "a|b|c|d|e|f|g|h|i|j|k|l|m|n|o|p|"},
    {"replace here and there", kSteps, storeScattered,
     "aa|longer1|cc|longer3|ee|longer5|gg|longer7|ii|longer9|kk|longer11|mm|longer13|oo|longer15|"},
    {"replace by names of its own", kSteps, reverse, "p|o|n|m|l|k|j|i|h|g|f|e|d|c|b|a|"},
    {"store with lengths", kSteps, storeWithLengths,
     "aa|bb|cc|dd|ee|ff|gg|hh|ii|jj|kk|ll|mm|nn|P|Q|R|d|"},
    {"find or add", kSteps, findOrAdd, kBefore + "new|" + kLong + "|newer|newest|",
     "2 16 17 15 18 16 19 "},
    {"generate", kSteps, [](Case &c) { return NamesManager_GenerateNames(c.mgr, 18); },
     kBefore + made(17) + made(18)},
    {"copy a name", kSteps,
     [](Case &c) { return NamesManager_CopyName(c.mgr, 17, 0, c.other, 3, 0); },
     kBefore + made(17) + made(4)},
    {"prefix a name", kSteps, [](Case &c) { return c.prefix(kLong.c_str()); },
     "aa|" + kLong + "others" + kBefore.substr(5)},
    {"read beyond the names", kSteps, readBeyond, kBefore + made(17) + made(18),
     std::string("oo  \0pp  \0x   \0x   \0", 20)},
    {"read backwards", kCannotFail, readBackwards, kBefore, "oommkkiiggeepp"},
    {"find a long name", kOld, [](Case &c) { return c.find(kLong + " ", "dd"); }, kBefore, "2#315"},
    {"find without copying a long name", kCannotFail,
     [](Case &c) { return c.find("missing", kLong.substr(1) + ' '); }, kBefore, "2##15"},
    {"check for duplicates", kSteps, checkDuplicates, kBefore + made(17), "gg6/19"},
    {"remove a range", kOld, [](Case &c) { return NamesManager_RemoveNames(c.mgr, 4, 12, 0); },
     "aa|bb|cc|dd|nn|oo|pp|"},
    {"remove by indices", kSome, [](Case &c) { return c.removeEvery(7); },
     "aa|cc|dd|ee|ff|gg|hh|jj|kk|ll|mm|nn|oo|"},
    {"remove until segments do not pay", kSome, [](Case &c) { return c.removeEvery(2); },
     "aa|cc|ee|gg|ii|kk|mm|oo|"},
    {"clear", kNone, [](Case &c) { return NamesManager_Clear(c.mgr); }, ""},
    {"copy", kNone, [](Case &c) { return NamesManager_Copy(c.mgr, c.other); }, "other|others|"},
    {"switch to positions", kOld, [](Case &c) { return c.usePositions(); }, kBefore},
    {"save", kCannotFail, [](Case &c) { return c.save(); }, kBefore},
    {"load", kNone, [](Case &c) { return -loaded::load(c.mgr, c.otherImage); }, "other|others|"},
};

// In sorted lists, seen is allowed between before and after a removal.
bool isAllowed(Left left, const Strings &after, const Strings &seen) {
    const Strings before = namesIn(kBefore);
    const auto [seenEnd, afterEnd] =
        std::mismatch(seen.begin(), seen.end(), after.begin(), after.end());
    Strings steps(seen.begin(), seenEnd);
    steps.insert(steps.end(), before.begin() + std::min(std::ssize(steps), std::ssize(before)),
                 before.end());
    switch (left) {
    case kSteps: return seen == steps;
    case kOld: return seen == before;
    case kNone: return seen.empty();
    case kSome:
        return std::includes(before.begin(), before.end(), seen.begin(), seen.end()) &&
               std::includes(seen.begin(), seen.end(), after.begin(), after.end());
    default: return false;
    }
}

// Of what the tables have to spare no record is as memory is handed out.
bool hasSetSpareRecords(const NamesManager *mgr) {
    const auto isSet = [](auto &segment) { return segment.iBlock != int32_t(0xa5a5a5a5); };
    return std::all_of(mgr->pSegments, mgr->pSegments + mgr->nSegmentsAlloc, isSet);
}

// Runs a scenario with a fault, at the n-th call where it is one of memory; whether that came to
// pass.
bool run(const Scenario &scenario, uint32_t nVariant, Fault fault, uint32_t n) {
    SCOPED_TRACE(testing::Message() << scenario.szName << ", variant " << nVariant << ", fault "
                                    << fault << " at " << n);
    const int64_t nLive = HostMem_GetNumLive();
    Case c((nVariant & 1) != 0, (nVariant & 2) != 0);
    steered::takeReports();
    steered::setMaps(fault != kNoMaps);
    HostMem_FailAt(fault == kOnce || fault == kFromThereOn ? n : 0, fault == kFromThereOn);
    const int32_t nStatus = scenario.pfnRun(c);
    const bool bFailed = HostMem_HasFailed();
    HostMem_FailAt(0, 0);
    steered::setMaps(true);
    const int32_t nErrors = steered::takeReports().nErrors;
    const Strings seen = loaded::namesOf(c.mgr), after = namesIn(scenario.after);
    if (nStatus == 0) {
        EXPECT_TRUE(seen == after && c.read == scenario.read && nErrors == 0)
            << model::joined(seen, "|");
    } else {
        const Left left = scenario.left != kStepsUnlessOnce ? scenario.left
                          : fault == kOnce                  ? kCannotFail
                                                            : kSteps;
        EXPECT_TRUE(nStatus == 1 && nErrors <= 1 && isAllowed(left, after, seen) &&
                    fault != kNoFault)
            << model::joined(seen, "|");
        EXPECT_EQ(std::string::npos, c.read.find_first_not_of('#'));
    }
    EXPECT_TRUE(scenario.left != kSome || (nVariant & 1) != 0 || hasSetSpareRecords(c.mgr));
    if (!c.image.empty()) {  // written in pieces without memory, but the same
        NamesManager *copy = NamesManager_Create(nullptr, nullptr);
        EXPECT_EQ(0, loaded::load(copy, c.image));
        EXPECT_EQ(seen, loaded::namesOf(copy));
        NamesManager_Destroy(copy);
    }
    if (c.mgr->pSegments == nullptr && c.mgr->pPositions == nullptr) {
        NamesManager_AssertConsistency(c.mgr);
        EXPECT_EQ(1, steered::takeReports().nAssertions);
        EXPECT_EQ(2, c.store(0, "refused|") + NamesManager_StoreIndividualNamePositions(c.mgr));
        EXPECT_EQ(0, NamesManager_Clear(c.mgr));
    }
    EXPECT_EQ("", loaded::faultIn(c.mgr, c.other, histories::randomChoices(n), 3));
    EXPECT_EQ(nLive, HostMem_GetNumLive());
    EXPECT_EQ("", HostMem_TakeRefusals());
    return bFailed;
}

TEST(Failure, OfAnyAllocationLeavesWhatTheContractSays) {
    for (const Scenario &scenario : kScenarios) {
        for (const uint32_t nVariant : {0U, 1U, 2U, 3U}) {
            for (const Fault fault : {kNoFault, kOnce, kFromThereOn, kNoMaps}) {
                for (uint32_t n = 1; run(scenario, nVariant, fault, n) && !HasFailure(); ++n) {}
            }
        }
    }
}

TEST(Failure, OfALargeBlockFallsBackToASmallerOne) {
    constexpr int32_t kMost = kFirstBlockBytes * 3 / 4, kHalf = kNewBlockBytes / 2;
    for (const auto &[nLength, nBlockSize] :
         {std::pair{kMost, kHalf}, {kHalf - 2, kHalf}, {kHalf - 1, 0}, {kNewBlockBytes + 9, 0}}) {
        NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
        EXPECT_EQ(0, NamesManager_AddName(mgr, 0, 0, std::string(kMost, 'x').c_str()));
        HostMem_FailAt(1, 0);
        EXPECT_EQ(nBlockSize == 0 ? 1 : 0,
                  NamesManager_AddName(mgr, 1, 0, std::string(size_t(nLength), 'x').c_str()))
            << nLength;
        HostMem_FailAt(0, 0);
        EXPECT_EQ(nBlockSize, mgr->nBlocks == 1 ? 0 : mgr->pBlocks[1].nSize);
        NamesManager_Destroy(mgr);
    }
}

}  // namespace
