// Images that nobody saved, and what comes out of images in general: the generated names of any
// format, numbers at the edge.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#if __has_include(<sys/resource.h>)
#include <sys/resource.h>
#endif

#include "tests/counted_host/counted_memory.h"
#include "tests/loaded_manager.hpp"

namespace {

using loaded::imageOf;
using loaded::soundRecords;
using model::Record;
using model::Strings;

// Loads an image into a manager that holds a name; the status. What must hold afterwards is
// checked.
int32_t offer(const std::string &image, int32_t nOperations = 8) {
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
    EXPECT_EQ(0, NamesManager_AddName(mgr, 0, 0, "before"));
    const int64_t nLive = HostMem_GetNumLive();
    const int32_t nStatus = loaded::load(mgr, image);
    EXPECT_TRUE(nStatus == 0 || nLive == HostMem_GetNumLive());
    EXPECT_EQ("", loaded::faultAfterLoad(mgr, image, nStatus, nOperations));
    return nStatus;
}

// Kilobytes; 0 on a system that does not say, where the test is left out.
int64_t peakResident() {
#ifdef RUSAGE_SELF
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
#else
    return 0;
#endif
}

// The first test, so that the peak is its own.
TEST(Loader, TouchesNoMemoryThatAnImageOnlyClaims) {
    [[maybe_unused]] const int64_t nBefore = peakResident();
    // In the header: counts alone and with capacities; in the block table: a size alone and with
    // the bytes used.
    const size_t aFields[][2] = {{4, 8},  {8, 8},   {12, 16},   {16, 16},
                                 {0, 20}, {20, 20}, {100, 100}, {100, 104}};
    for (const Record &record : soundRecords()) {
        for (const int32_t nClaim : {1000000, 80000000, INT32_MAX - 16, INT32_MAX}) {
            for (const auto &[one, other] : aFields) {
                std::string image = imageOf(record);
                std::memcpy(&image[one], &nClaim, sizeof nClaim);
                std::memcpy(&image[other], &nClaim, sizeof nClaim);
                offer(image, 0);  // a copy would touch the positions that there is room for
            }
        }
    }
#ifndef MEMORY_IS_WATCHED
    EXPECT_LT(peakResident() - nBefore, 4096);
#endif
}

TEST(Loader, SurvivesEveryTruncationAndEveryChangedByte) {
    HostMem_FailBeyond(1 << 24);  // no time is to go into memory that images only claim
    for (const Record &record : soundRecords()) {
        const std::string image = imageOf(record);
        EXPECT_EQ(0, offer(image));
        int32_t nAccepted = 0;
        for (size_t at = 0; at < image.size() && !HasFailure(); ++at) {
            EXPECT_EQ(HostStreamError_End, offer(image.substr(0, at))) << at;
            for (const int32_t nByte : {image[at] ^ 1, image[at] ^ 0x80, 0, 0xff, int32_t{' '}}) {
                std::string changed = image;
                changed[at] = char(nByte);
                const int32_t nStatus = offer(changed);
                EXPECT_TRUE(nStatus == 0 || nStatus == -1 || nStatus == HostStreamError_End)
                    << at << ' ' << nByte;
                nAccepted += nStatus == 0 ? 1 : 0;
            }
        }
        EXPECT_GT(nAccepted, 0);
    }
    HostMem_FailBeyond(INT64_MAX);
}

// tests/images holds what this version saved on machines of both byte orders.
TEST(Loader, TakesSavedImagesForEver) {
    size_t nTaken = 0;
    for (const auto &file : std::filesystem::recursive_directory_iterator(NAMES_TEST_IMAGES)) {
        if (file.path().has_extension() || file.is_directory()) { continue; }
        std::ostringstream image;
        image << std::ifstream(file.path(), std::ios::binary).rdbuf();
        const bool bNone = file.path().filename() == "no_manager";
        const bool bBig = file.path().parent_path().filename() == "big_endian";
        const bool bTaken = bNone || bBig == (std::endian::native == std::endian::big);
        EXPECT_EQ(bTaken, offer(image.str()) == 0) << file.path();
        if (bNone || !bTaken) { continue; }
        NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
        EXPECT_EQ(0, loaded::load(mgr, image.str())) << file.path();
        EXPECT_TRUE(image.str() == loaded::save(mgr)) << file.path();
        NamesManager_Destroy(mgr);
        ++nTaken;
    }
    EXPECT_EQ(6U, nTaken);
}

// An image in the parts that it is written in.
struct Image {
    Strings parts;
    explicit Image(const Record &record) : parts(record.save()) {}
    template <typename T>
    T *at(size_t iPart) {
        return reinterpret_cast<T *>(parts[iPart].data());
    }
    int32_t &number(size_t i) { return *at<int32_t>(i); }
    NameStorageBlock &block(size_t i) { return at<NameStorageBlock>(9)[i]; }
    NameSegment &segment(size_t i) { return at<NameSegment>(10)[i]; }
    NamePosition &position(size_t i) { return at<NamePosition>(10)[i]; }
    std::string &text(size_t iBlock) { return parts[11 + iBlock]; }
    model::Cursor &cursor() { return *at<model::Cursor>(parts.size() - 1); }
};

// Of loaded::soundRecords.
enum Sound { kEmpty = 0, kSegments = 2, kPositions = 3 };

const struct {
    const char *szWhat;
    Sound record;
    void (*pfnSpoil)(Image &i);
} kUnsound[] = {
    {"a name too many", kSegments, [](Image &i) { ++i.number(0); }},
    {"equal texts", kSegments,
     [](Image &i) { i.segment(3).nOffset = i.segment(0).nOffset, i.segment(3).iBlock = 0; }},
    {"overlapping segments", kSegments,
     [](Image &i) { --i.segment(1).nOffset, ++i.segment(1).nBytes; }},
    {"a segment without its last NUL", kSegments, [](Image &i) { --i.segment(0).nBytes; }},
    {"a segment before its block", kSegments,
     [](Image &i) { --i.segment(0).nOffset, ++i.segment(0).nBytes; }},
    {"a name of a segment that ends in a blank", kSegments,
     [](Image &i) { i.text(0)[size_t(i.segment(0).nOffset + i.segment(0).nBytes) - 2] = ' '; }},
    {"an end beyond 32 bits", kSegments,
     [](Image &i) { i.segment(0).nOffset = i.segment(0).nBytes = INT32_MAX; }},
    {"tables of both modes", kSegments, [](Image &i) { i.number(5) = 32; }},
    {"a cursor one name on", kSegments, [](Image &i) { ++i.cursor().iName; }},
    {"a cursor one byte on", kSegments, [](Image &i) { ++i.cursor().nOffset; }},
    {"a cursor in another block", kSegments, [](Image &i) { ++i.cursor().iBlock; }},
    {"equal positions", kPositions, [](Image &i) { i.position(1) = i.position(0); }},
    {"overlapping positions", kPositions,
     [](Image &i) { i.position(1) = i.position(0), ++i.position(1).nOffset; }},
    {"a cursor among positions", kPositions, [](Image &i) { i.cursor().iName = 1; }},
    {"no NUL at a block's end", kPositions, [](Image &i) { i.text(0).back() = 'x'; }},
    {"a name that ends in a blank", kPositions,
     [](Image &i) { i.text(1)[i.text(1).size() - 2] = ' '; }},
    {"a name in another block", kPositions,
     [](Image &i) { ++i.block(0).nNamesInBlock, --i.block(1).nNamesInBlock; }},
    {"a position after the last block", kPositions,
     [](Image &i) { i.position(1).iBlock = i.number(2) = i.number(1); }},
    {"a negative number", kPositions, [](Image &i) { i.number(7) = -1; }},
    {"a number that cannot grow", kPositions, [](Image &i) { i.number(7) = INT32_MAX; }},
    {"a format without its NUL", kPositions,
     [](Image &i) { i.parts[6] = "%d" + std::string(30, 'x'); }},
    {"a first name without its NUL", kPositions, [](Image &i) { i.parts[8].assign(32, 'x'); }},
    {"used bytes and a count that do not add up", kEmpty,
     [](Image &i) { i.block(0).nUsed = -1, i.block(0).nNamesInBlock = 1; }},
};

TEST(Loader, RefusesUnsoundImages) {
    for (const auto &[szWhat, record, pfnSpoil] : kUnsound) {
        Image image(soundRecords()[record]);
        pfnSpoil(image);
        EXPECT_EQ(-1, offer(model::joined(image.parts))) << szWhat;
    }
    Record many("%d"), mostMisses = soundRecords()[kSegments];
    many.generateNames(129);
    many.starts.pop_back();  // one segment of all
    EXPECT_EQ(-1, offer(imageOf(many)));
    mostMisses.cursor.nMisses = INT32_MAX;  // where counting stops
    EXPECT_EQ(0, offer(imageOf(mostMisses)));
}

// A manager without names whose next default name has the given number.
NamesManager *managerAt(const std::string &format, int32_t nNumber) {
    Record record(format.c_str());
    record.nGeneratedNameBase = nNumber - 1;
    NamesManager *mgr = NamesManager_Create(nullptr, nullptr);
    EXPECT_EQ(0, loaded::load(mgr, imageOf(record))) << format;
    return mgr;
}

TEST(Format, PrintsAsPrintfDoes) {
    const auto choose = histories::randomChoices(1);
    const auto pick = [&choose](const Strings &from) {
        return from[choose(uint32_t(from.size()))];
    };
    for (int32_t i = 0; i < 5000 && !HasFailure(); ++i) {
        const std::string flags =
            pick({"", "-"}) + pick({"", "+"}) + pick({"", " "}) + pick({"", "#"}) + pick({"", "0"});
        const std::string width =
            pick({"", "1", "9", "14", "300"}) + pick({"", ".", ".0", ".1", ".9", ".12", ".300"});
        const std::string format = pick({"", "a%%b"}) + '%' + flags + width +
                                   pick({"d", "i", "u", "o", "x", "X"}) + pick({"", "%% z "});
        for (const int32_t nNumber : {1, 8, 4095, 2147483640}) {
            NamesManager *mgr = managerAt(format, nNumber);
            char szExpected[700];
            std::snprintf(szExpected, sizeof szExpected, format.c_str(), nNumber);
            EXPECT_EQ(Record::trimmed(szExpected), NamesManager_GetName(mgr, 0, 0)) << format;
            NamesManager_Destroy(mgr);
        }
    }
}

TEST(Format, IsRefusedUnlessItPrintsOneNumber) {
    std::istringstream formats(
        "nm % %% %s %n %c %p %f %5 %. %- %d%d %d%n %d% %*d %.*d %1$d %ld %hhd %'d %.-1d %5:d %5/d "
        "%2147483648d "
        "%.2147483648d %99999999999999999999d %d3456789012345678901234567890x2");
    std::string format;
    do {  // the empty one first
        EXPECT_EQ(nullptr, NamesManager_Create(nullptr, format.c_str())) << format;
        EXPECT_EQ(-1, offer(imageOf(Record(format.c_str())))) << format;
    } while (formats >> format);
}

TEST(Format, EndsWithAReportWhereNoNameCanBeMade) {
    const std::tuple<const char *, int32_t, int32_t> cases[] = {
        // the format, the next number, how many of three names can be made
        {"%2147483647d", 1, 0},   {"%.2147483647u", 1, 0}, {"%01048576d", 1, 0},
        {"%-2147483647dx", 1, 0}, {"%-2147483647d", 1, 3}, {"%01048575d", 1, 3},
        {"%d", INT32_MAX - 1, 2}, {"%d", INT32_MAX, 1}};
    for (const auto &[szFormat, nNumber, nNames] : cases) {
        NamesManager *mgr = managerAt(szFormat, nNumber);
        steered::takeReports();
        const int32_t nStatus = NamesManager_GenerateNames(mgr, 3);
        EXPECT_TRUE(nStatus == (nNames < 3 ? 1 : 0) && NamesManager_GetNumNames(mgr) == nNames &&
                    steered::takeReports().nErrors == nStatus)
            << szFormat;
        EXPECT_EQ(nStatus, NamesManager_GenerateNames(mgr, 3)) << szFormat;
        NamesManager_Destroy(mgr);
    }
}

}  // namespace
