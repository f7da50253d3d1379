// The C++ face: what it adds to the C calls, and that its range is what the standard library takes
// for one.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <string>
#include <vector>

#include "names/names_manager.hpp"

#ifdef __cpp_lib_ranges
static_assert(std::ranges::view<names_manager::NameRange> &&
              std::ranges::sized_range<names_manager::NameRange>);
static_assert(std::ranges::input_range<names_manager::NameRange> &&
              std::ranges::common_range<names_manager::NameRange>);
static_assert(std::ranges::borrowed_range<names_manager::NameRange>);
#endif

namespace {

using names_manager::Manager;
using names_manager::NameRange;
using names_manager::Status;
using Strings = std::vector<std::string>;

Strings listed(const NameRange &range) {
    EXPECT_EQ(range.size(), size_t(std::distance(range.begin(), range.end())));
    EXPECT_EQ(range.size(), size_t(range.end() - range.begin()));
    return {range.begin(), range.end()};
}

TEST(Face, ConstManagersShowTheNamesThatExist) {
    Manager names("row%d");
    EXPECT_EQ(Status::ok, names.generate(300));
    const Manager &fixed = names;
    Strings all;
    for (int i = 1; i <= 300; ++i) { all.push_back("row" + std::to_string(i)); }
    EXPECT_EQ(all, listed(names.names()));
    EXPECT_EQ(Strings(all.begin() + 100, all.end()), listed(fixed.names(100, 400)));
    EXPECT_TRUE(fixed.name(300).data() == nullptr && names.name(-1).data() == nullptr &&
                fixed.name(299) == "row300");
    EXPECT_EQ("row301", names.name(300));
    all.push_back("row301");
    all.push_back("row302");
    EXPECT_EQ(Strings(all.begin() + 299, all.end()), listed(names.names(299, 301)));
    const int32_t kMax = INT32_MAX,
                  aNone[][2] = {{-1, kMax}, {0, kMax}, {-1, 5}, {5, 4}, {9, 3}, {302, 400}};
    for (const auto &[first, last] : aNone) {
        EXPECT_TRUE(listed(fixed.names(first, last)).empty()) << first << ' ' << last;
    }
    EXPECT_TRUE(listed(names.names(-1, INT32_MAX)).empty() && NameRange().empty());
    Manager unmakeable("x%2147483647d");
    const char *const aLetters[] = {"a", "b", "c", "d", "e"};
    EXPECT_EQ(Status::ok, unmakeable.add(0, aLetters, 5));
    EXPECT_EQ((Strings{"a", "b", "c", "d", "e"}), listed(unmakeable.names(0, 9)));
}

TEST(Face, TakesPointersViewsStringsAndFiles) {
    Manager names;
    const Strings strings = {"one", "two  ", ""};
    const std::vector<std::string_view> views = {
        std::string_view("threeandmore").substr(0, 5), "four", {}};
    EXPECT_EQ(Status::ok, names.push_back("zero"));
    EXPECT_EQ(Status::ok, names.add(1, strings.data(), strings.size()));
    EXPECT_EQ(Status::ok, names.add(names.size(), views.data(), views.size()));
    EXPECT_EQ(Status::ok, names.push_back(views[1].substr(1)));
    EXPECT_EQ(Status::ok, names.addCopy(8, names, 0, "pre-"));
    EXPECT_EQ((Strings{"zero", "one", "two", "", "three", "four", "", "our", "pre-zero"}),
              listed(names.names()));
    std::vector<int32_t> found(3);
    EXPECT_EQ(Status::ok, names.find(views.data(), views.size(), found.data()));
    EXPECT_EQ((std::vector<int32_t>{4, 5, 3}), found);
    EXPECT_EQ(Status::ok, names.find(strings.data(), strings.size(), found.data()));
    EXPECT_EQ((std::vector<int32_t>{1, 2, 3}), found);
    EXPECT_EQ(4, names.find(views[0]));
    const auto clash = names.findDuplicate(names.size(), strings.data(), strings.size());
    EXPECT_TRUE(clash.status == Status::ok && clash.found && clash.iFirst == 1 &&
                clash.iSecond == 9);
    EXPECT_EQ(Status::failed, names.findDuplicate(-1, strings.data(), strings.size()).status);
    EXPECT_EQ(Status::ok, names.remove(8));
    EXPECT_EQ(Status::ok, names.usePositions());
    const std::string path = testing::TempDir() + "face_test.names";
    Manager loaded;
    EXPECT_EQ(0, names.save(path.c_str()) + loaded.load(path.c_str()));
    EXPECT_EQ(listed(names.names()), listed(loaded.names()));
    std::remove(path.c_str());
#ifdef __cpp_lib_span
    EXPECT_EQ(Status::ok, names.add(0, std::span(views)));
    EXPECT_EQ(Status::ok, names.find(std::span(views), found));
    EXPECT_EQ(Status::tooSmall, names.find(std::span(views), std::span(found).first(2)));
#endif
}

TEST(Face, RefusesViewsAsItRefusesText) {
    Manager names;
    const std::string tooLong(1048576, 'x'), padded = "long" + std::string(2000000, ' '),
                                             cut("a\0b", 3);
    EXPECT_EQ(Status::tooLong, names.add(0, std::string_view(tooLong)));
    EXPECT_EQ(Status::tooLong, names.add(0, &tooLong, 1));
    EXPECT_EQ(Status::failed, names.add(0, std::string_view(cut)));
    EXPECT_EQ(Status::failed, names.add(0, &cut, 1));
    EXPECT_EQ(Status::failed, names.add(INT32_MAX, &padded, 1));
    EXPECT_EQ(-1, names.find(std::string_view(cut)));
    EXPECT_EQ(0, names.size());
    EXPECT_EQ(Status::ok, names.push_back(std::string_view(padded)));
    EXPECT_EQ("long", names.name(0));
}

}  // namespace
