// The C++ face: what it adds to the C calls, and that its range is what the standard library takes
// for one.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include "files/names_file.hpp"

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
using Views = std::vector<std::string_view>;
using Indices = std::vector<int32_t>;

// Two names in braces must not become one view between two pointers.
template <typename M>
concept FindsBraces = requires(const M &names) {
    names.find({"one", "two"});
};
static_assert(!FindsBraces<Manager>);
static_assert(std::is_nothrow_move_assignable_v<Manager>);

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
    EXPECT_EQ(Status::ok, unmakeable.add(0, {"a", "b", "c", "d", "e"}));
    EXPECT_EQ((Strings{"a", "b", "c", "d", "e"}), listed(unmakeable.names(0, 9)));

    const char *apNames[2];
    int32_t aLengths[2];
    char text[16];
    EXPECT_EQ(Status::ok, fixed.views(8, 9, apNames, aLengths));
    EXPECT_TRUE(apNames[1] == std::string("row10") && aLengths[0] == 4 && aLengths[1] == 5);
    EXPECT_EQ(Status::failed, fixed.views(301, 302, apNames, nullptr));
    EXPECT_EQ(Status::failed, fixed.copyOut(301, 302, text, sizeof text));
    EXPECT_EQ(Status::failed, unmakeable.addCopy(0, fixed, 302));

    // Where names are removed, a walk ends early.
    const NameRange range = names.names(), later = fixed.names(200, 301);
    NameRange::Iterator kept = range.begin();
    EXPECT_EQ(Status::ok, names.remove(100, 250));
    for (size_t n = 0; n < 151; ++n, ++kept) { EXPECT_NE(kept, range.end()) << n; }
    EXPECT_EQ(kept, range.end());
    EXPECT_EQ(151, std::distance(range.begin(), range.end()));
    EXPECT_EQ(later.begin(), later.end());
    EXPECT_EQ(151, names.size());
}

// Of the first nCut names every nStep-th is replaced, so that it is a segment, and so is what lies
// between two of them. Two walks in turn search for the next name at each step.
TEST(Face, WalksNeverSwitchToPositions) {
    const int32_t aCuts[][2] = {{1, 0}, {2, 700}, {4, 1500}, {25, 1500}, {100, 1500}};
    for (const auto &[nStep, nCut] : aCuts) {
        Manager names;
        Strings all;
        EXPECT_EQ(Status::ok, names.generate(1500));
        for (int32_t i = 0; i < 1500; ++i) {
            all.push_back((i < nCut && i % nStep == 0 ? "new" : "nm") + std::to_string(i + 1));
            if (all.back()[1] == 'e') { EXPECT_EQ(Status::ok, names.add(i, all.back())); }
        }
        const Manager &fixed = names;
        for (const int32_t i : {900, 300, 1200, 600}) { EXPECT_EQ(all[size_t(i)], fixed.name(i)); }
        ASSERT_TRUE(names.get()->pSegments != nullptr && names.get()->nCursorMisses == 4);
        const NameRange lower = fixed.names(0, 1299), upper = fixed.names(200, 1499);
        NameRange::Iterator one = lower.begin(), other = upper.begin();
        for (size_t i = 0; i < 1300; ++i, ++one, ++other) {
            ASSERT_TRUE(*one == all[i] && *other == all[i + 200]) << i;
        }
        EXPECT_TRUE(one == lower.end() && other == upper.end() && names.get()->pSegments != nullptr)
            << nStep;
    }
}

TEST(Face, TakesPointersViewsStringsAndFiles) {
    Manager names;
    const Strings strings = {"one", "two  ", ""};
    const std::vector<char> text = {'t', 'h', 'r', 'e', 'e',
                                    'f', 'o', 'u', 'r'};  // no NUL after it
    const Views views = {{text.data(), 5}, {text.data() + 5, 4}, {}};
    EXPECT_EQ(Status::ok, names.push_back("zero"));
    EXPECT_EQ(Status::ok, names.add(1, strings));
    EXPECT_EQ(Status::ok, names.push_back({views.data(), 3}));
    EXPECT_EQ(Status::ok, names.push_back(views[1].substr(1)));
    EXPECT_EQ(Status::ok, names.addCopy(8, names, 0, "pre-"));
    EXPECT_EQ(Status::ok, names.push_back({"nine", "ten"}));
    EXPECT_EQ(
        (Strings{"zero", "one", "two", "", "three", "four", "", "our", "pre-zero", "nine", "ten"}),
        listed(names.names()));
    const auto repeated = names.findRepeated();
    EXPECT_TRUE(repeated.index == 6 && repeated.iEarlier == 3 && names.findRepeated(7).index == -1);
    Indices found(3);
    EXPECT_EQ(Status::ok, names.find(views, found));
    EXPECT_EQ((Indices{4, 5, 3}), found);
    EXPECT_EQ(Status::ok, names.find({strings.data(), 3}, {found.data(), 3}));
    EXPECT_EQ((Indices{1, 2, 3}), found);
    EXPECT_EQ(Status::tooSmall, names.find(std::array{"a", "b", "c", "d"}, found));
    EXPECT_TRUE(names.find(views[0]) == 4 && names.find("ten") == 10);
    const auto clash = names.findDuplicate(names.size(), strings),
               none = names.findDuplicate(4, views);
    EXPECT_TRUE(clash.status == Status::ok && clash.found && clash.iFirst == 1 &&
                clash.iSecond == 11);
    EXPECT_TRUE(none.status == Status::ok && none.found && none.iFirst == 3);
    const char *const apGaps[] = {"new", nullptr, "nine", nullptr};
    EXPECT_EQ(9, names.findDuplicate(names.size(), apGaps).iFirst);
    EXPECT_EQ(Status::ok, names.usePositions());
    EXPECT_EQ(Status::ok, names.remove({8, 3, 9, 6}));
    EXPECT_EQ(Status::ok, names.findOrAdd({"two", "new", "new"}, found));
    EXPECT_EQ((Indices{2, 7, 7}), found);
    EXPECT_EQ(Status::ok, names.findOrAdd(Views{views[1].substr(2), views[0], views[1]}, found));
    EXPECT_EQ((Indices{8, 3, 4}), found);
    EXPECT_TRUE(names.findOrAdd("last") == 9 && names.findOrAdd(std::string("last ")) == 9);
    const std::string path = testing::TempDir() + "face_test.names";
    Manager loaded;
    EXPECT_TRUE(saveToFile(names, path.c_str()).ok() && loadFromFile(loaded, path.c_str()).ok());
    EXPECT_EQ((Strings{"zero", "one", "two", "three", "four", "our", "ten", "new", "ur", "last"}),
              listed(loaded.names()));
    std::remove(path.c_str());
    EXPECT_EQ(1, loadFromFile(loaded, path.c_str()).code());
}

TEST(Face, RefusesWhatIsNoName) {
    Manager names;
    const std::string tooLong(1048576, 'x'), padded = "long" + std::string(2000000, ' '),
                                             cut("one\0b", 5);
    EXPECT_EQ(Status::tooLong, names.add(0, tooLong));
    EXPECT_EQ(Status::tooLong, names.add(0, {"one", tooLong}));
    EXPECT_EQ(Status::failed, names.add(0, cut));
    EXPECT_EQ(Status::failed, names.push_back({"one", cut}));
    EXPECT_EQ(Status::failed, names.add(INT32_MAX, {padded}));
    Indices found(4);
    EXPECT_EQ(Status::tooLong, names.findOrAdd({"one", tooLong}, found));
    EXPECT_EQ(Status::failed, names.findOrAdd({"one", cut}, found));
    EXPECT_EQ((Indices{-1, -1, 0, 0}), found);
    EXPECT_EQ(Status::failed, names.findDuplicate(0, {"one", "one", cut}).status);
    EXPECT_EQ(0, names.size());
    EXPECT_EQ(Status::ok, names.add(0, {"one", padded, ""}));
    EXPECT_EQ("long", names.name(1));
    EXPECT_EQ(Status::ok, names.find({padded, cut, tooLong, "one"}, found));
    EXPECT_EQ((Indices{1, -1, -1, 0}), found);
    EXPECT_EQ(-1, names.find(cut));
    // More than there can be: refused before any of them is looked at.
    constexpr size_t kMany = size_t{INT32_MAX} + 1;
    const names_manager::Names many(&tooLong, kMany);
    EXPECT_EQ(Status::failed, names.add(0, many));
    EXPECT_EQ(Status::failed, names.find(many, {found.data(), kMany}));
    EXPECT_EQ(Status::failed, names.findOrAdd(many, {found.data(), kMany}));
    EXPECT_EQ(Status::failed, names.findDuplicate(0, many).status);
    EXPECT_EQ(Status::failed, names.findDuplicate(-1, {"one"}).status);
    EXPECT_EQ(Status::failed, names.remove({found.data(), kMany}));
}

}  // namespace
