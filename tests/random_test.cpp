// Random histories, and the shortest one that still fails. NAMES_TEST_SEED and NAMES_TEST_STEPS
// (per profile) change the run.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/histories.hpp"

namespace {

using namespace histories;

constexpr bool kTiny = kMaxSegmentNames < 10;

struct Operation {
    size_t iKind, iManager;
    uint32_t nSeed;
};

struct History {
    uint32_t nSeed;
    size_t iProfile;
    std::vector<Operation> operations;
};

// What went wrong first; the operations that it came to are left in the history.
std::string play(History &history, std::ostream *pTold) {
    const uint32_t nSeed = history.nSeed;
    const int64_t nLive = steered::nLive();
    const Habits habits = {.nDistinct = nSeed % 6 == 0   ? 1
                                        : nSeed % 3 == 0 ? 9
                                                         : 0,
                           .nLong = nSeed % 4 == 1 ? 40
                                    : kTiny        ? 12
                                                   : 0,
                           .nStray = history.iProfile == kOutside ? 77 : 1,
                           .nShort = steered::kIsStrict && nSeed % 4 >= 2 ? 40 : 0,
                           .nAudited = 128};
    Game game(habits, newPair(nSeed), newPair(nSeed / 9));
    std::string wrong;
    size_t nPlayed = 0;
    while (nPlayed < history.operations.size() && wrong.empty()) {
        const auto [iKind, iManager, nChoices] = history.operations[nPlayed++];
        wrong = game.play(iKind, iManager, randomChoices(nChoices), pTold);
    }
    if (!wrong.empty()) { history.operations.resize(nPlayed); }
    wrong += game.end();
    return steered::nLive() == nLive ? wrong : wrong + "Memory was lost. ";
}

// The operations of a failing history that it takes to fail.
History shortened(History history) {
    for (ptrdiff_t i = std::ssize(history.operations) - 1; i >= 0; --i) {
        History shorter = history;
        shorter.operations.erase(shorter.operations.begin() + i);
        if (!play(shorter, nullptr).empty()) {
            history = shorter, i = std::min(i, std::ssize(history.operations));
        }
    }
    return history;
}

uint32_t setting(const char *szName, uint32_t nDefault) {
    const char *szValue = std::getenv(szName);
    return szValue == nullptr ? nDefault
                              : static_cast<uint32_t>(std::strtoul(szValue, nullptr, 10));
}

TEST(Random, EveryOperationLeavesTheRecordOfTheModel) {
    constexpr uint32_t kSteps = kTiny ? 100 : 250;
    const size_t nHistories = setting("NAMES_TEST_STEPS", kTiny                ? 20000
                                                          : steered::kIsStrict ? 500
                                                                               : 1500) /
                              kSteps * kProfiles;
    for (size_t i = 0; i < nHistories && !HasFailure(); ++i) {
        History history = {setting("NAMES_TEST_SEED", 1) + static_cast<uint32_t>(i / kProfiles),
                           i % kProfiles,
                           {}};
        std::mt19937 random(history.nSeed);
        std::vector<int32_t> chances;
        for (const auto &kind : kKinds) { chances.push_back(kind.chances[history.iProfile]); }
        std::discrete_distribution<size_t> anyKind(chances.begin(), chances.end());
        while (history.operations.size() < kSteps) {
            history.operations.push_back(
                {anyKind(random), random() % 4 == 0, static_cast<uint32_t>(random())});
        }
        if (play(history, nullptr).empty()) { continue; }
        std::ostringstream told;
        History shortest = shortened(history);
        const std::string wrong = play(shortest, &told);
        ADD_FAILURE() << "profile " << history.iProfile << ", NAMES_TEST_SEED=" << history.nSeed
                      << '\n'
                      << told.str() << wrong;
    }
}

}  // namespace
