// Random histories, and the shortest one that still fails. NAMES_TEST_SEED and NAMES_TEST_STEPS
// (per profile) change what is played.
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
std::string play(History &history, std::ostream *pLog) {
    const uint32_t nSeed = history.nSeed;
    const int64_t nLive = HostMem_GetNumLive();
    const Habits habits = {.nDistinct = nSeed % 6 == 0   ? 1
                                        : nSeed % 3 == 0 ? 9
                                                         : 0,
                           .nLong = nSeed % 4 == 1 ? 40
                                    : kTiny        ? 12
                                                   : 0,
                           .nStray = history.iProfile == kOutside ? 77 : 1,
                           .nShort = nSeed % 4 >= 2 ? 40 : 0,
                           .nAudited = 128};
    Game game = {habits, {newPair(nSeed), newPair(nSeed / 9)}};
    std::string wrong;
    size_t nPlayed = 0;
    while (nPlayed < history.operations.size() && wrong.empty()) {
        const auto [iKind, iManager, nChoices] = history.operations[nPlayed++];
        wrong = game.play(iKind, iManager, randomChoices(nChoices), pLog);
    }
    if (!wrong.empty()) { history.operations.resize(nPlayed); }
    wrong += game.end();
    return HostMem_GetNumLive() == nLive ? wrong : wrong + "Memory was lost. ";
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
    return szValue == nullptr ? nDefault : uint32_t(std::strtoul(szValue, nullptr, 10));
}

TEST(Random, EveryOperationLeavesTheRecordOfTheModel) {
    constexpr uint32_t kSteps = kTiny ? 100 : 250, kUsual = steered::kIsStrict ? 500 : 1500;
    const uint32_t nFirstSeed = setting("NAMES_TEST_SEED", 1),
                   nHistories = setting("NAMES_TEST_STEPS", kTiny ? 20000 : kUsual) / kSteps;
    for (uint32_t i = 0; i < nHistories * kProfiles && !HasFailure(); ++i) {
        History history = {nFirstSeed + i / uint32_t(kProfiles), i % kProfiles, {}};
        std::mt19937 random(history.nSeed);
        std::vector<int32_t> chances;
        for (const auto &kind : kKinds) { chances.push_back(kind.chances[history.iProfile]); }
        std::discrete_distribution<size_t> anyKind(chances.begin(), chances.end());
        while (history.operations.size() < kSteps) {
            history.operations.push_back({anyKind(random), random() % 4 == 0, uint32_t(random())});
        }
        if (play(history, nullptr).empty()) { continue; }
        std::ostringstream log;
        History shortest = shortened(history);
        const std::string wrong = play(shortest, &log);
        ADD_FAILURE() << "profile " << history.iProfile << ", NAMES_TEST_SEED=" << history.nSeed
                      << log.str() << '\n'
                      << wrong;
    }
}

}  // namespace
