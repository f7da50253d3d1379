// The C++ face: what it adds to the C calls, and that its range is what the standard library takes
// for one.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <iterator>
#include <string>
#include <vector>

#include "files/names_file.hpp"

namespace {

using names_manager::Manager;
using names_manager::NameRange;
using names_manager::Status;
using Strings = std::vector<std::string>;
using Views = std::vector<std::string_view>;
using Indices = std::vector<int32_t>;

#ifdef __cpp_lib_ranges
static_assert(std::ranges::view<NameRange> && std::ranges::sized_range<NameRange>);
static_assert(std::ranges::input_range<NameRange> && std::ranges::common_range<NameRange>);
static_assert(std::ranges::borrowed_range<NameRange>);
#endif

// Two names in braces must not become one view between two pointers.
template <typename M>
concept FindsBraces = requires(const M &names) {
    names.find({"one", "two"});
};
static_assert(!FindsBraces<Manager>);

bool all(Status expected, std::initializer_list<Status> found) {
    return std::count(found.begin(), found.end(), expected) == std::ssize(found);
}

Strings listed(const NameRange &range) {
    EXPECT_EQ(range.size(), size_t(std::distance(range.begin(), range.end())));
    EXPECT_EQ(range.size(), size_t(range.end() - range.begin()));
    return {range.begin(), range.end()};
}

TEST(Face, ConstManagersShowTheNamesThatExist) {
    Manager names("row%d");
    EXPECT_EQ(Status::ok, names.generate(300));
    const Manager &fixed = names;
    Strings rows;
    for (int i = 1; i <= 302; ++i) { rows.push_back("row" + std::to_string(i)); }
    EXPECT_EQ(Strings(rows.begin(), rows.end() - 2), listed(names.names()));
    EXPECT_EQ(Strings(rows.begin() + 100, rows.end() - 2), listed(fixed.names(100, 400)));
    EXPECT_TRUE(fixed.name(300).data() == nullptr && names.name(-1).data() == nullptr &&
                fixed.name(299) == "row300" && names.name(300) == "row301");
    EXPECT_EQ(Strings(rows.begin() + 299, rows.end()), listed(names.names(299, 301)));
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
    EXPECT_TRUE(apNames[1] == rows[9] && aLengths[0] == 4 && aLengths[1] == 5);
    EXPECT_TRUE(all(Status::failed, {fixed.views(301, 302, apNames, nullptr),
                                     fixed.copyOut(301, 302, text, sizeof text),
                                     unmakeable.addCopy(0, fixed, 302)}));
    // Where names are removed, a walk ends early.
    const NameRange range = names.names(), later = fixed.names(200, 301);
    NameRange::Iterator kept = range.begin();
    EXPECT_EQ(Status::ok, names.remove(100, 250));
    for (int32_t n = 0; n < 151; ++n, ++kept) { EXPECT_NE(kept, range.end()) << n; }
    EXPECT_TRUE(kept == range.end() && later.begin() == later.end());
    EXPECT_TRUE(std::distance(range.begin(), range.end()) == 151 && names.size() == 151);
}

// Of the first nCut names every nStep-th is replaced, so that it is a segment, and so is what lies
// between two of them. Two walks in turn search for the next name at each step.
TEST(Face, WalksNeverSwitchToPositions) {
    const int32_t aCuts[][2] = {{1, 0}, {2, 700}, {4, 1500}, {25, 1500}, {100, 1500}};
    for (const auto &[nStep, nCut] : aCuts) {
        Manager names;
        Strings expected;
        EXPECT_EQ(Status::ok, names.generate(1500));
        for (int32_t i = 0; i < 1500; ++i) {
            const bool bNew = i < nCut && i % nStep == 0;
            expected.push_back((bNew ? "new" : "nm") + std::to_string(i + 1));
            if (bNew) { EXPECT_EQ(Status::ok, names.add(i, expected.back())); }
        }
        for (const int32_t i : {900, 300, 1200, 600}) { EXPECT_NE("", names.name(i)); }
        const NamesManager *mgr = names.get();
        ASSERT_TRUE(mgr->pSegments != nullptr && mgr->nCursorMisses == 4);
        const NameRange lower = names.names(0, 1299), upper = std::as_const(names).names(200, 1499);
        NameRange::Iterator one = lower.begin(), other = upper.begin();
        for (size_t i = 0; i < 1300; ++i, ++one, ++other) {
            ASSERT_TRUE(*one == expected[i] && *other == expected[i + 200]) << i;
        }
        EXPECT_TRUE(one == lower.end() && other == upper.end() && mgr->pSegments) << nStep;
    }
}

TEST(Face, TakesPointersViewsStringsAndFiles) {
    Manager names;
    const Strings strings = {"one", "two  ", ""};
    const std::vector<char> text = {'t', 'h', 'r', 'e', 'e', 'f', 'o', 'u', 'r'};  // without a NUL
    const Views views = {{text.data(), 5}, {text.data() + 5, 4}, {}};
    EXPECT_TRUE(
        all(Status::ok, {names.push_back("zero"), names.add(1, strings),
                         names.push_back({views.data(), 3}), names.push_back(views[1].substr(1)),
                         names.addCopy(8, names, 0, "pre-"), names.push_back({"nine", "ten"})}));
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
    const char *const apGaps[] = {"new", nullptr, "nine", nullptr};
    const auto clash = names.findDuplicate(11, strings), inside = names.findDuplicate(4, views);
    EXPECT_TRUE(all(Status::ok, {clash.status, inside.status}) && clash.found && inside.found);
    EXPECT_TRUE(clash.iFirst == 1 && clash.iSecond == 11 && inside.iFirst == 3);
    EXPECT_EQ(9, names.findDuplicate(11, apGaps).iFirst);
    EXPECT_TRUE(all(Status::ok, {names.usePositions(), names.remove({8, 3, 9, 6}),
                                 names.findOrAdd({"two", "new", "new"}, found)}));
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
    Indices found(4, 7);
    EXPECT_TRUE(
        all(Status::failed, {names.add(0, cut), names.push_back({"one", cut}),
                             names.add(INT32_MAX, {padded}), names.findOrAdd({"one", cut}, found),
                             names.findDuplicate(0, {"one", "one", cut}).status}));
    EXPECT_EQ((Indices{-1, -1, 7, 7}), found);
    EXPECT_TRUE(all(Status::tooLong, {names.add(0, tooLong), names.add(0, {"one", tooLong}),
                                      names.findOrAdd({"one", tooLong}, found)}));
    EXPECT_TRUE(names.empty() && names.add(0, {"one", padded, ""}) == Status::ok);
    EXPECT_EQ("long", names.name(1));
    EXPECT_EQ(Status::ok, names.find({padded, cut, tooLong, "one"}, found));
    EXPECT_TRUE(found == (Indices{1, -1, -1, 0}) && names.find(cut) == -1);
    // More than there can be: refused before any of them is looked at.
    constexpr size_t kMany = size_t{INT32_MAX} + 1;
    const names_manager::Names many(&tooLong, kMany);
    EXPECT_TRUE(
        all(Status::failed,
            {names.add(0, many), names.find(many, {found.data(), kMany}),
             names.findOrAdd(many, {found.data(), kMany}), names.findDuplicate(0, many).status,
             names.findDuplicate(-1, {"one"}).status, names.remove({found.data(), kMany})}));
}

}  // namespace
