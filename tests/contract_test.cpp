// Promises of single declarations that random histories do not come across.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "names/names_manager.h"

namespace {

struct Contract : testing::TestWithParam<bool> {
    Contract() { EXPECT_EQ(0, GetParam() ? NamesManager_StoreIndividualNamePositions(mgr) : 0); }
    ~Contract() override {
        NamesManager_AssertConsistency(mgr);
        NamesManager_Destroy(mgr);
    }
    std::vector<const char *> pointers() {
        std::vector<const char *> names(static_cast<size_t>(mgr->nNames));
        EXPECT_EQ(0, NamesManager_GetNamePointers(mgr, 0, mgr->nNames - 1, 0, names.data()));
        return names;
    }
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
};
INSTANTIATE_TEST_SUITE_P(Modes, Contract, testing::Bool());

// In any order, once more than there are, and beside names of the caller's.
TEST_P(Contract, GivesItsOwnNamesTheirNewPlaces) {
    const std::vector<std::string> before = {
        "one", "two", "", "a name that is longer than the others", "five", "six"};
    std::vector<int32_t> order = {-1, 5, 4, 3, 3, 0, -1, 1};
    do {
        ASSERT_EQ(0, NamesManager_RemoveNames(mgr, 0, INT32_MAX, 0));
        for (size_t i = 0; i < before.size(); ++i) {
            ASSERT_EQ(0, NamesManager_AddName(mgr, static_cast<int32_t>(i), 0, before[i].c_str()));
        }
        std::vector<const char *> given = pointers();
        std::vector<std::string> expected = {"one"};
        std::transform(order.begin(), order.end(), std::back_inserter(expected),
                       [&](int i) { return i < 0 ? "mine" : before[size_t(i)]; });
        std::vector<const char *> names;
        std::transform(order.begin(), order.end(), std::back_inserter(names),
                       [&](int i) { return i < 0 ? "mine" : given[size_t(i)]; });
        ASSERT_EQ(
            0, NamesManager_AddNames(mgr, 1, static_cast<int32_t>(order.size()), 0, names.data()));
        given = pointers();
        ASSERT_EQ(expected, std::vector<std::string>(given.begin(), given.end()));
    } while (std::next_permutation(order.begin(), order.begin() + 5));
}

TEST_P(Contract, TakesAFirstDefaultNameFromItsOwnField) {
    NamesManager_SetFirstGeneratedName(mgr, "Hello World");
    NamesManager_SetFirstGeneratedName(mgr, mgr->szFirstGeneratedName + 6);
    EXPECT_EQ(std::string("World") + std::string(27, '\0'),
              std::string(mgr->szFirstGeneratedName, sizeof mgr->szFirstGeneratedName));
}

}  // namespace
