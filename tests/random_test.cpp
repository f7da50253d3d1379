// Random histories, and the shortest one that still fails. NAMES_TEST_SEED and NAMES_TEST_STEPS (per profile) change the run.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/histories.hpp"

namespace {

using namespace histories;

// The operations of a failing history that it takes to fail.
History shortened(History history) {
    size_t nPlayed = 0;
    for (ptrdiff_t i = std::ssize(history.operations) - 1; i >= 0; --i) {
        History shorter = history;
        shorter.operations.erase(shorter.operations.begin() + i);
        std::ostringstream told;
        if (!play(shorter, nPlayed, told).empty()) history = std::move(shorter);
    }
    return history;
}

uint32_t setting(const char *szName, uint32_t nDefault) {
    const char *szValue = std::getenv(szName);
    return szValue == nullptr ? nDefault : static_cast<uint32_t>(std::strtoul(szValue, nullptr, 10));
}

TEST(Random, EveryOperationLeavesTheRecordOfTheModel) {
    constexpr uint32_t kSteps = 250;
    const HostReportHandlers handlers = {nullptr, countReport, countReport};
    const HostReportHandlers *pBefore = Host_SetReportHandlers(&handlers);
    const size_t nHistories = setting("NAMES_TEST_STEPS", 5000) / kSteps * kProfiles;
    for (size_t i = 0, nPlayed = 0; i < nHistories && !HasFailure(); ++i) {
        History history = {setting("NAMES_TEST_SEED", 1) + static_cast<uint32_t>(i / kProfiles), i % kProfiles, {}};
        std::mt19937 random(history.nSeed);
        std::vector<int32_t> chances;
        for (const auto &kind : kKinds)
            chances.push_back(kind.chances[history.iProfile]);
        std::discrete_distribution<size_t> anyKind(chances.begin(), chances.end());
        while (history.operations.size() < kSteps)
            history.operations.push_back({anyKind(random), random() % 4 == 0, static_cast<uint32_t>(random())});
        std::ostringstream all, told;
        if (play(history, nPlayed, all).empty()) continue;
        history.operations.resize(nPlayed);
        const std::string wrong = play(shortened(history), nPlayed, told);
        ADD_FAILURE() << "profile " << history.iProfile << ", NAMES_TEST_SEED=" << history.nSeed << '\n' << told.str() << wrong;
    }
    Host_SetReportHandlers(pBefore);
}

}  // namespace
