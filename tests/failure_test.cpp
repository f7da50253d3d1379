// Every operation with the first, the second, the n-th allocation failing, alone and with all later
// ones, and with no map to be had. A failed operation must leave what its contract says, and both
// managers sound and good for more.
#include <gtest/gtest.h>

#include "tests/loaded_manager.hpp"
#include "tests/starve.hpp"

namespace {

using namespace histories;

// A manager whose blocks have no room and whose tables have no spare records. Its longest name is
// known. Variants: with positions, with an index, about to switch to positions.
Pair tightPair(const Strings &names, uint32_t nVariant) {
    const std::string longNames = "x%" + std::to_string(kLocalTextBytes) + 'd';
    Pair made = {NamesManager_Create(nullptr, nullptr), Record(longNames.c_str())};
    Record &record = made.twin;
    record.blocks.assign(4, {15, 0, ""});
    record.storeNames({0, Record::toInt(names.size()) - 1, 0}, names.data());
    record.releaseEmptyBlocks();
    if ((nVariant & 1) != 0) { record.storeIndividualNamePositions(); }
    for (model::Block &block : record.blocks) { block.nSize = block.nUsed(); }
    if ((nVariant & 4) != 0) {
        for (const int32_t i : {2, 3, 7, 12}) { record.cutBefore(i); }
        record.cursor.nMisses = kMaxFreeMisses;
    }
    record.nBlocksAlloc = record.nBlocks();
    record.nSegmentsAlloc = record.nSegments();
    EXPECT_EQ(0, loaded::load(made.pReal, loaded::imageOf(record)));
    EXPECT_EQ(record.getMaxNameLength(), NamesManager_GetMaxNameLength(made.pReal));
    if ((nVariant & 2) != 0) {
        EXPECT_EQ(-1, NamesManager_FindName(made.pReal, "none", 0));
        record.buildIndex();
    }
    return made;
}

Game tightGame(uint32_t nVariant) {
    Strings names;
    for (char c = 'a'; c <= 'p'; ++c) { names.emplace_back(2, c); }
    const bool bHuge = nVariant % 5 == 0;  // copying such names is what takes longest
    return {
        {.nDistinct = 0, .nLong = 20, .nStray = 1, .nShort = 1, .nAudited = 256, .bHuge = bHuge},
        {tightPair(names, nVariant), tightPair({"other", "others"}, nVariant & 3)}};
}

// Whether an allocation was made to fail.
bool playShort(size_t iKind, uint32_t nSeed, const Shortage &shortage) {
    const int64_t nLive = HostMem_GetNumLive();
    Game game = tightGame(nSeed);
    Call c = {randomChoices(nSeed), game.habits, game.pairs[0], game.pairs[1], nullptr};
    std::string wrong = game.playShort(c, iKind, shortage);
    const bool bFailed = game.bFailed;
    for (int32_t n = 2; n > 0 && wrong.empty(); --n) {
        wrong = game.playShort(c, c.choose(uint32_t(std::size(kKinds))), {0, false, false});
    }
    wrong += game.end();
    EXPECT_EQ(nLive, HostMem_GetNumLive());
    EXPECT_EQ("", wrong) << kKinds[iKind].szName << ", seed " << nSeed << ", failing at "
                         << shortage.n << ", from there on " << shortage.bFromThereOn;
    return bFailed;
}

TEST(Failure, OfAnyAllocationLeavesWhatTheContractSays) {
    constexpr uint32_t kSeeds = kMaxSegmentNames < 10 ? 120 : 40;
    for (size_t iKind = 0; iKind < std::size(kKinds); ++iKind) {
        for (uint32_t nSeed = 0; nSeed < kSeeds && !HasFailure(); ++nSeed) {
            playShort(iKind, nSeed, {0, false, true});
            for (const bool bFromThereOn : {false, true}) {
                // Late ones are much like those before them.
                for (int32_t n = 1; playShort(iKind, nSeed, {n, bFromThereOn, false});) {
                    n += 1 + n / 8;
                }
            }
        }
    }
}

TEST(Failure, OfAnyAllocationIsAnsweredByCreate) {
    starve([] { NamesManager_Destroy(NamesManager_Create(nullptr, nullptr)); });
}

// Work memory makes it faster, that is all.
TEST(Failure, OfWorkMemoryDoesNotStopAReplacement) {
    std::vector<const char *> shorter(16, "x");
    for (uint32_t nVariant = 0; nVariant < 4; ++nVariant) {
        Game game = tightGame(nVariant);
        HostMem_FailAt(1, 0);
        EXPECT_EQ(0, NamesManager_AddNames(game.pairs[0].pReal, 0, 15, 0, shorter.data()));
        HostMem_FailAt(0, 0);
        EXPECT_EQ(Strings(16, "x"), loaded::namesOf(game.pairs[0].pReal));
        for (const Pair &pair : game.pairs) { NamesManager_Destroy(pair.pReal); }
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
