// Every version of the walk from name to name finds the starts that the names were written at, and
// none reads beyond the memory. The source is included, so that each version can be called whatever
// this processor has.
#include "names/storage/text_walk.cpp"  // NOLINT(bugprone-suspicious-include)

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Walk = int32_t (*)(const names::TextSpan &, int32_t, int32_t *);

std::vector<Walk> versions() {
    std::vector<Walk> walks = {names::findStarts};
#if NAMES_BEYOND_BASELINE
    if (__builtin_cpu_supports("bmi")) { walks.push_back(names::findStartsByBits); }
    if (__builtin_cpu_supports("avx512vbmi2")) { walks.push_back(names::findStartsByVectors); }
#endif
    return walks;
}

TEST(TextWalk, FindsTheSameStartsInEveryVersion) {
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        const int32_t nNames = static_cast<int32_t>(random() % 140), nLongest = 1 << random() % 8;
        std::vector<char> memory;
        std::vector<int32_t> starts = {0};
        for (int32_t i = 0; i < nNames; ++i) {
            memory.insert(memory.end(), random() % static_cast<uint32_t>(nLongest), 'x');
            memory.push_back(0);
            starts.push_back(static_cast<int32_t>(memory.size()));
        }
        // What is beyond the text holds NULs, too, and must not count.
        memory.resize(memory.size() + random() % 2 * (random() % 130));
        memory.shrink_to_fit();
        const char *pText = memory.data();
        const names::TextSpan text = {pText, pText + starts.back(), pText + memory.size()};
        const int32_t nWanted = static_cast<int32_t>(random() % 128),
                      nFound = std::min(nNames, nWanted);
        for (size_t k = 1; k < starts.size(); ++k) {
            const char *pName = pText + starts[k - 1];
            ASSERT_EQ(pText + starts[k] - pName, names::lengthOfName(pName, text.pMemoryEnd) + 1);
        }
        starts.resize(static_cast<size_t>(nFound) + 1);
        for (const Walk walk : versions()) {
            std::vector<int32_t> found(static_cast<size_t>(names::roomForStarts(nWanted)), -1);
            ASSERT_EQ(nFound, walk(text, nWanted, found.data()));
            found.resize(starts.size());
            ASSERT_EQ(starts, found);
        }
    }
}

}  // namespace
