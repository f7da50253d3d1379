// The built-in self-check. Its scenarios are examples of use that can be read in order: calls, each
// followed by the names that are then held and, where it is given, the layout of their storage: the
// segments, then bytes used and size of each block. A bar ends each name of a list; "x*300|" is a
// name of 300 characters, and "00..99/2|" every second number of two digits.
//
// All of it holds on any host: names are never repeated, because maps differ in what they do with
// equal keys, and NamesManager_WriteNameToText and NamesManager_Load are left out, because only a
// host can make the text buffer and the input stream that they take.
#include <climits>
#include <cstdio>
#include <cstring>

#include <algorithm>
#include <exception>
#include <initializer_list>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/host_problem.h"
#include "host/host_report.h"
#include "names/audit.hpp"

namespace names {

namespace {

// The text with a number in place of each %.
std::string filledIn(std::string_view text, std::initializer_list<int64_t> numbers) {
    std::string filled;
    const int64_t *pNext = numbers.begin();
    for (const char c : text) { filled += c == '%' ? std::to_string(*pNext++) : std::string(1, c); }
    return filled;
}

// The names of a list back to back, each with its NUL, and what follows the last bar as it is.
std::string textFrom(std::string_view list) {
    std::string text;
    for (size_t nEnd = 0; (nEnd = list.find('|') + 1) != 0; list.remove_prefix(nEnd)) {
        std::string item(list.substr(0, nEnd - 1));
        const int nWidth = static_cast<int>(item.find('.'));
        char c = 0, szNumber[32];
        int n = 0, nLast = 0, nStep = 1;
        if (std::sscanf(item.c_str(), "%c*%d", &c, &n) == 2) {
            item.assign(static_cast<size_t>(n), c);
        }
        const bool bRange = std::sscanf(item.c_str(), "%d..%d/%d", &n, &nLast, &nStep) >= 2;
        if (!bRange) { text.append(item) += '\0'; }
        for (; bRange && n <= nLast; n += nStep) {
            std::snprintf(szNumber, sizeof szNumber, "%0*d", nWidth, n);
            text.append(szNumber) += '\0';
        }
    }
    return text.append(list);
}

// A list as operations take it.
struct List {
    const std::string text;
    std::vector<const char *> names = {};
    int32_t nNames = 0;

    explicit List(std::string_view list) : text(textFrom(list)) {
        for (size_t n = 0; n < text.size(); n = text.find('\0', n) + 1) {
            names.push_back(text.data() + n);
        }
        nNames = static_cast<int32_t>(names.size());
    }
    List(const List &) = delete;
};

// What the record says, between commas: the layout, its blocks alone, cursor, longest name, index.
std::string stateOf(const NamesManager *mgr) {
    std::string text = mgr->pSegments == nullptr ? "positions" : "", blocks;
    for (int32_t s = 0; s < mgr->nSegments; ++s) {
        text += filledIn("%-% ", {mgr->pSegments[s].iFirst, mgr->pSegments[s].iLast});
    }
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        blocks += filledIn("+%/%", {mgr->pBlocks[b].nUsed, mgr->pBlocks[b].nSize});
    }
    text += blocks + ", " + blocks;
    text += filledIn(", cursor %, misses %", {mgr->iCursorName, mgr->nCursorMisses});
    text += filledIn(", longest % of %", {mgr->nMaxNameLength, mgr->nMaxNameLengthCount});
    return text + (mgr->pLookupIndex == nullptr ? ", no index," : ", an index,");
}

// An output stream into memory.
struct KeptImage {
    HostOutputStream stream;  // first, so that its address is the record's
    size_t nBytes;
    char aBytes[1024];
};

int32_t keepBytes(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    KeptImage *pImage = reinterpret_cast<KeptImage *>(pStream);
    if (nBytes > sizeof pImage->aBytes - pImage->nBytes) { return 1; }
    std::memcpy(pImage->aBytes + pImage->nBytes, pData, nBytes);
    pImage->nBytes += nBytes;
    return 0;
}

// Status and size of an image and each word of four bytes that is not 0, as text or as a number.
std::string imageOf(NamesManager *mgr) {
    constexpr HostOutputStreamOps kKeeping = {keepBytes};
    KeptImage image = {{&kKeeping}, 0, {}};
    const int32_t nStatus = NamesManager_Save(mgr, nullptr, &image.stream);
    std::string text = filledIn("%, % bytes:", {nStatus, static_cast<int64_t>(image.nBytes)});
    for (size_t nAt = 0; nAt < image.nBytes; nAt += 4) {
        const std::string word(image.aBytes + nAt, 4);
        int32_t n = 0;
        std::memcpy(&n, word.data(), sizeof n);
        if (n != 0) { text.append(" ").append(n > 4096 ? word : std::to_string(n)); }
    }
    return text;
}

// One run of a scenario. Each step audits both managers and counts; what is not as expected is
// reported with its number.
struct Check {
    const char *szTitle;
    bool bPositions;  // managers are switched to individual positions
    bool bIndexed;    // names held are looked up, and several are stored from a buffer
    NamesManager *mgr, *other;
    int32_t nFailed = 0, nSteps = 0;

    // At most 300 bytes of each text are reported, from shortly before they differ.
    Check &compare(const char *szWhat, std::string_view text, std::string_view found) {
        ++nSteps;
        nFailed += countViolations(mgr) + countViolations(other);
        if (text == found) { return *this; }
        ++nFailed;
        const auto at = std::mismatch(text.begin(), text.end(), found.begin(), found.end()).first;
        const size_t nFrom = static_cast<size_t>(std::max<ptrdiff_t>(at - text.begin() - 50, 0));
        std::string aShown[2];
        for (std::string &shown : aShown) {
            shown.append("self-check, ").append(szTitle).append(filledIn(", step %, ", {nSteps}));
            shown.append(szWhat).append(": ").append(text.substr(nFrom, 300));
            std::replace(shown.begin(), shown.end(), '\0', '|');
            text = found;
        }
        Host_AssertStringsEqual(kSourceTag, __LINE__, aShown[0].c_str(), aShown[1].c_str());
        return *this;
    }
    Check &equal(const char *szWhat, int32_t nExpected, int32_t nFound) {
        return compare(szWhat, std::to_string(nExpected), std::to_string(nFound));
    }
    Check &done(int32_t nStatus, int32_t nWanted = 0) { return equal("status", nWanted, nStatus); }
    Check &same(std::string_view list, std::string_view found) {
        return compare("text", textFrom(list), found);
    }

    // What stateOf() says after a comma and up to another.
    Check &shows(const std::string &part) {
        const std::string state = stateOf(mgr);
        return compare("record", part, state.find(", " + part + ",") < state.size() ? part : state);
    }

    // All names, whichever way they are read, and in segment mode a layout that begins so.
    Check &holds(std::string_view names, std::string_view layout = "") {
        const std::string text = textFrom(names);
        const int32_t iLast = NamesManager_GetNumNames(mgr) - 1;
        const std::string state = bPositions ? std::string(layout) : stateOf(mgr);
        compare("layout", layout, state.substr(0, layout.size()));
        compare("fields", text, fields(0, iLast, text.size()));
        compare("names", text, pointed(0, iLast));
        return bIndexed ? same(filledIn("0..%|", {iLast}), found(text)) : *this;
    }

    // Names read through pointers, as many bytes of each as its length says.
    std::string pointed(int32_t first, int32_t last) const {
        std::vector<const char *> names(static_cast<size_t>(last - first + 1), "");
        std::vector<int32_t> lengths(names.size());
        const int32_t *p = lengths.data();
        std::string text;
        NamesManager_GetNamePointers(mgr, first, last, 0, names.data());
        NamesManager_GetNameLengths(mgr, first, last, 0, lengths.data());
        for (const char *pName : names) { text.append(pName, pName + *p++ + 1); }
        return text;
    }

    // Names copied into nRoom bytes, after status and bytes needed if these are not 0 and nRoom.
    std::string fields(int32_t first, int32_t last, size_t nRoom, int32_t bPad = 0,
                       int32_t bCut = 0, int32_t nWidth = 0) const {
        std::string text(nRoom, '#');
        uint64_t nSize = 0;
        const int32_t nStatus =
            first == last ? NamesManager_GetNameIntoBuffer(mgr, first, 0, bPad, bCut, nWidth,
                                                           text.data(), nRoom, &nSize)
                          : NamesManager_GetNames(mgr, first, last, 0, bPad, bCut, nWidth,
                                                  text.data(), nRoom, &nSize);
        if (nStatus == 0 && nSize == nRoom) { return text; }
        return filledIn("%, % bytes: ", {nStatus, static_cast<int64_t>(nSize)}).append(text);
    }

    // Indices of names that nWidth delimits, as a list; after "?" what only a single lookup finds.
    std::string found(std::string_view names, int32_t nWidth = -1, int32_t bOneBased = 0) const {
        const List list(names);
        std::vector<int32_t> indices(list.names.size(), -7);
        int32_t *p = indices.data();
        std::string answer;
        NamesManager_FindNames(mgr, list.names.data(), list.nNames, nWidth, bOneBased, p);
        for (const char *pName : list.names) {
            const int32_t i = NamesManager_FindNameInField(mgr, pName, nWidth, bOneBased);
            answer += filledIn(i == *p++ ? "%|" : "?%|", {i});
        }
        return textFrom(answer);
    }

    // Status, whether storing the list would repeat a name, and that one's indices, counted from 1,
    // and its text.
    std::string repeated(int32_t first, std::string_view names, int32_t nRoom = 20) const {
        const List list(names);
        const int32_t last = first + list.nNames - 1;
        int32_t bFound = -7, i = -7, j = -7;
        char szName[64] = "-";
        const int32_t nStatus = NamesManager_CheckDuplicateNamesInBuffer(
            mgr, first, last, 1, list.text.c_str(), &bFound, &i, &j, szName, nRoom);
        return filledIn("% % % % ", {nStatus, bFound, i, j}).append(szName);
    }

    // Stores one name singly, several through an array or, in an indexed run, a buffer.
    Check &store(int32_t first, std::string_view names, int32_t bOneBased = 0, int32_t nCode = 0) {
        const List list(names);
        const int32_t last = first + list.nNames - 1;
        const char *p = list.text.c_str();
        return done(first == last ? NamesManager_AddName(mgr, first, bOneBased, p)
                    : bIndexed
                        ? NamesManager_AddNamesFromBuffer(mgr, first, last, bOneBased, p)
                        : NamesManager_AddNames(mgr, first, last, bOneBased, list.names.data()),
                    nCode);
    }

    // A new list, in the storage mode of the run.
    Check &start(std::string_view list) {
        done(NamesManager_Clear(mgr)).store(0, list);
        return done(bPositions ? NamesManager_StoreIndividualNamePositions(mgr) : 0).holds(list);
    }
    Check &remove(int32_t first, int32_t last, int32_t bOneBased = 0) {
        return done(NamesManager_RemoveNames(mgr, first, last, bOneBased));
    }
    Check &removeListed(const std::vector<int32_t> &indices) {
        const int32_t nCount = static_cast<int32_t>(indices.size());
        return done(NamesManager_RemoveNamesByIndices(mgr, indices.data(), nCount));
    }

    // What follows is about the other manager.
    Check &swap() {
        std::swap(mgr, other);
        return *this;
    }
};

// ---- Scenarios; each begins with no names, in the storage mode of the run ----

void storing(Check &c) {
    c.store(1, "01..05|", 1).holds("01..05|", "0-4 +15/4096");
    c.store(6, "06..10|", 1).holds("01..10|", "0-9 +30/4096");
    c.start("one|two|three|four|five|").store(2, "06..10|", 1).holds("one|06..10|", "0-5 +19/4096");
    c.store(2, "seven|eight|9|ten|", 1).holds("one|seven|eight|9|ten|10|", "0-0 1-4 5-5 +37/4096");
    c.store(0, "10..24|").holds("10..24|").store(15, "").holds("10..24|");
    c.store(14, "hello world   |   |  in  side\t |").holds("10..23|hello world||  in  side\t|");
    c.start("")
        .done(NamesManager_AddNameWithMaxLength(c.mgr, 0, 0, "hello you", 7))
        .holds("hello y|");
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 0, 0, "hello you", 0)).holds("|");
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 2, 1, "hello ", 40)).holds("|hello|");
    c.done(NamesManager_AddNamesFromBuffer(c.mgr, 1, 1, 1, "one ")).holds("one|hello|");
    const char *szTwo = "two times";
    const int32_t nLength = 4;
    c.done(NamesManager_AddNamesWithLengths(c.mgr, 1, 1, 0, &szTwo, &nLength)).holds("one|two|");

    c.start("00..09|").store(5, "xx|").holds("00..04|xx|06..09|", "0-9 +30/4096");
    c.store(5, "x|").holds("00..04|x|06..09|", "0-5 6-9 +30/4096");
    c.start("00..09|").store(6, "xxx|", 1).holds("00..04|xxx|06..09|", "0-4 5-5 6-9 +34/4096");
    c.same("-1|5|", c.found("05|xxx|"));
    c.start("00..09|").store(9, "x9x|").holds("00..08|x9x|", "0-9 +31/4096");
    c.store(1, "x1x|").holds("00|x1x|02..08|x9x|", "0-0 1-1 2-9 +35/4096").store(3, "x3x|");
    c.store(5, "x5x|").holds("00|x1x|02|x3x|04|x5x|06..08|x9x|", "positions+43/4096");
}

void generating(Check &c) {
    c.done(NamesManager_GenerateNames(c.mgr, 3)).holds("name 1|name 2|name 3|");
    c.done(NamesManager_GenerateNames(c.mgr, 2)).holds("name 1|name 2|name 3|").start("name 2|");
    c.done(NamesManager_GetNamePointers(c.mgr, 3, 3, 1, nullptr)).holds("name 2|name 3|name 4|");
    c.done(NamesManager_Clear(c.mgr)).holds("", "+0/4096").store(2, "given|");
    c.same("name 4|", c.fields(3, 3, 7)).same("name 5|name 6|", c.fields(4, 5, 14));
    c.holds("name 1|name 2|given|name 4|name 5|name 6|").start("");
    NamesManager_SetFirstGeneratedName(c.mgr, "Hello World");
    c.done(NamesManager_GenerateNames(c.mgr, 2)).holds("Hello World|name 2|");
    c.remove(0, 1).done(NamesManager_GenerateNames(c.mgr, 1)).holds("name 2|");
}

void reading(Check &c) {
    c.start("one|name5|fourteen chars||").same("0, 26 bytes: ", c.fields(0, 3, 0));
    c.same("3, 26 bytes: #########################", c.fields(0, 3, 25));
    c.same("name5|", c.fields(1, 1, 6)).same("o|n|f||", c.fields(0, 3, 7, 0, 1, 2));
    c.same("one       |name5     |fourteen c|          |", c.fields(0, 3, 44, 1, 1, 11));
    c.same("one       |name5     |fourteen chars|          |", c.fields(0, 3, 48, 1, 0, 11));
}

void readingInOrder(Check &c) {
    c.start("000..299|").holds("000..299|", "0-127 128-255 256-299 +1200/4096");
    c.same("000..009|", c.pointed(0, 9)).shows("cursor 10, misses 0");
    c.same("010..127|", c.fields(10, 127, 472)).shows("cursor -1, misses 0");
    c.same("128..130|", c.fields(128, 130, 12)).shows("cursor 131, misses 1");
    c.same("0, 8 bytes: ", c.fields(7, 8, 0)).shows("cursor 131, misses 1");
    c.same("050|", c.pointed(50, 50)).same("000|", c.pointed(0, 0)).shows("cursor 1, misses 0");
    c.same("050|", c.pointed(50, 50)).same("040..049|", c.fields(40, 49, 40));
    c.same("030|", c.pointed(30, 30))
        .same("020|", c.fields(20, 20, 4))
        .shows("cursor 21, misses 4");
    c.same("010..019|", c.fields(10, 19, 40)).shows("cursor -1, misses 5");
    c.holds("000..299|", "positions+1200/4096");
}

void findingTheLongest(Check &c) {
    const auto longest = [&c] { return NamesManager_GetMaxNameLength(c.mgr); };
    c.equal("longest", 0, longest()).shows("longest 0 of 0").start("one|two|three|four|five|");
    c.shows("longest -1 of 0").equal("longest", 5, longest()).shows("longest 5 of 1");
    c.store(6, "six|seven|eight|nine|ten|", 1).shows("longest 5 of 3");
    c.store(11, "eleven|twelve|thirteen|fourteen|fifteen|", 1).shows("longest 8 of 2");
    c.remove(12, 12).shows("longest 8 of 1").removeListed({12}).equal("longest", 7, longest());
    c.store(0, "0..12|").equal("longest", 2, longest()).shows("longest 2 of 3");
    c.store(0, "longer|").shows("longest 6 of 1").store(0, "x|").shows("longest -1 of 0");
}

void lookingUp(Check &c) {
    c.same("-1|-1|", c.found("one||")).shows("no index").store(0, "00..14|").shows("no index");
    c.same("1|-1|-1|9|", c.found("00|15|0|08  |", -1, 1)).shows("an index");
    c.remove(15, 20).shows("an index").remove(0, 4).shows("no index");
    c.same("0..9|", c.found("05..14|")).store(0, "20..34|").shows("an index").holds("20..34|");
    c.same("14|0|-1|9|", c.found("34|20|05|29|")).start("hello world|name 3||");
    c.done(NamesManager_FindNameList(c.mgr, nullptr, 0, 0, nullptr)).shows("an index");
    c.same("0|2|", c.found("hello world   |   |")).same("3|", c.found("whatever|", 0, 1));
    c.same("-1|1|", c.found("hello world   |name 3|", -2));
    c.same("2|2|-1|", c.found("name 345|name 3|hello world|", 6, 1)).start("0..2|");
    const char *aNames[] = {"3", "1", "3  "};
    int32_t a[] = {-7, -7, -7};
    c.done(NamesManager_FindOrAddNames(c.mgr, aNames, 3, 0, a)).holds("0..3|");
    c.same("3 1 3", filledIn("% % %", {a[0], a[1], a[2]})).start("");

    c.same("0 1 1 3 a", c.repeated(1, "a|b|a|")).same("0 1 1 2 a", c.repeated(1, "a|a \t|"));
    c.same("0 1 1 2 hel", c.repeated(1, "hello world|hello world|", 4)).start("1..10|");
    c.same("0 0 -7 -7 -", c.repeated(1, "")).same("0 1 2 6 2", c.repeated(6, "2|"));
    c.same("0 0 -7 -7 -", c.repeated(6, "6|")).same("0 0 -7 -7 -", c.repeated(1, "1..10|"));
    c.same("0 1 12 13 name 12", c.repeated(13, "name 12|"));
    c.equal("repeated", -1, NamesManager_FindRepeatedName(c.mgr, 0, 0, nullptr));
}

void removing(Check &c) {
    c.start("00..14|").remove(0, 4).holds("05..14|").remove(6, 10, 1).holds("05..09|",
                                                                            "0-4 +30/4096");
    c.start("00..14|").remove(6, 10, 1).holds("00..04|10..14|", "0-4 5-9 +45/4096");
    c.start("00..14|").remove(4, 5, 1).holds("00..02|05..14|");
    c.remove(13, 13, 1).holds("00..02|05..13|", "0-2 3-11 +42/4096");
    c.remove(10, INT_MAX).holds("00..02|05..11|", "0-2 3-9 +36/4096");
    c.remove(10, INT_MAX).holds("00..02|05..11|").remove(0, 9).holds("", "+0/4096");
    c.start("0..4|").removeListed({1, 3, 4}).holds("0|2|").removeListed({}).holds("0|2|");
    c.start("0..4|").removeListed({4, 3, 1}).holds("0|2|").start("0..4|");
    c.removeListed({5, -1, 99}).holds("0..4|").removeListed({2, 2}).holds("0..1|3..4|");
    c.removeListed({3, 0, 2, 1, 0}).holds("", "+0/4096");
}

void copying(Check &c) {
    c.start("0..9|").done(NamesManager_Copy(c.other, c.mgr)).swap().holds("0..9|", "0-9 +20/4096");
    c.remove(1, 8).holds("0|9|").swap().holds("0..9|").swap();
    c.done(NamesManager_CopyName(c.mgr, 1, 1, c.other, 3, 1)).holds("2|9|");
    c.done(NamesManager_CopyNameWithPrefix(c.mgr, 2, 0, c.other, 2, 0, "4")).holds("2|9|42|");
    c.done(NamesManager_CopyName(c.mgr, 0, 0, c.other, 10, 0)).holds("name 11|9|42|");
    const char *aOwn[3] = {};
    c.done(NamesManager_GetNamePointers(c.mgr, 0, 2, 0, aOwn)).holds("name 11|9|42|");
    std::swap(aOwn[0], aOwn[2]);
    c.done(NamesManager_AddNames(c.mgr, 0, 2, 0, aOwn)).holds("42|9|name 11|");
    c.swap().holds("0..9|name 11|").done(NamesManager_Copy(c.other, c.mgr)).swap();
    c.remove(1, 10).done(NamesManager_GenerateNames(c.mgr, 2)).holds("0|name 11|");
}

void saving(Check &c) {
    const char *szEmpty = "0, 136 bytes: 1 16 16 nm%d 4096 -1";
    c.same(szEmpty, imageOf(c.mgr)).same("0, 4 bytes: -1", imageOf(nullptr));
    c.store(0, "000..004|").remove(1, 1).holds("000|002..004|", "0-0 1-3 +20/4096");
    c.same("0, 196 bytes: 4 1 16 2 16 nm%d 4096 20 4 4 1 3 8 12 000| 001| 002| 003| 004| -1",
           imageOf(c.mgr));
    c.done(NamesManager_StoreIndividualNamePositions(c.mgr)).holds("000|002..004|", "positions");
    c.same("0, 188 bytes: 4 1 16 4 nm%d 4096 20 4 8 12 16 000| 001| 002| 003| 004| -1",
           imageOf(c.mgr));
    c.done(NamesManager_StoreIndividualNamePositions(c.mgr), 1);
    c.done(NamesManager_Clear(c.mgr)).holds("", "+0/4096").same(szEmpty, imageOf(c.mgr));
    c.done(NamesManager_StoreIndividualNamePositions(c.mgr)).holds("", "positions+0/4096");
}

void storingLongNames(Check &c) {
    c.store(0, "a*100000|b*100001|c*100002|").done(NamesManager_ReleaseEmptyBlocks(c.mgr));
    c.done(NamesManager_Copy(c.other, c.mgr)).swap().holds("a*100000|b*100001|c*100002|");
    c.shows("+100001/131072+100002/131072+100003/131072");
    c.remove(1, 1).holds("a*100000|c*100002|").shows("+100001/131072+100003/131072");
    c.remove(0, 1).holds("").shows("+0/131072").swap().holds("a*100000|b*100001|c*100002|");

    const std::string field(1048576, 'y'), prefix(300, 'p');
    c.start("x*1048575|").store(1, "y*1048576|", 0, 2).store(1, "a|y*1048576|", 0, 2);
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 1, 0, field.c_str(), 1048576));
    c.store(2, "z*200000|").holds("x*1048575|y*1048576|z*200000|");
    c.shows("+1048576/1048576+1048577/1048577+200001/200001").start("b*127|c*128|e*255|g*300|");
    c.same("0|3|3|1|3|", c.found("b*127|g*301|g*302|c*128|g*300|", 300));
    c.done(NamesManager_CopyNameWithPrefix(c.mgr, 0, 0, c.mgr, 3, 0, prefix.c_str()));
    c.same(prefix + textFrom("g*300|"), c.fields(0, 0, 601));
}

void holdingManyNames(Check &c) {
    const std::string text = textFrom("d*5000|001..998|");
    c.done(NamesManager_AddNamesFromBuffer(c.mgr, 0, 998, 0, text.c_str()));
    c.store(999, "999|").shows("+0/4096+8997/131072");
    c.store(1000, "1000|").holds("d*5000|001..1000|").shows("+9002/131072");
    c.start("00000..14999|").remove(127, 127).remove(0, 0).holds("00001..00126|00128..14999|");
    c.store(0, "00000..14999|").holds("00000..14999|", "0-125 126-253 ");
    int32_t nStatus = 0;
    for (int32_t i = 1; i < 7500; ++i) { nStatus += NamesManager_RemoveNames(c.mgr, i, i, 0); }
    c.done(nStatus).remove(7500, 7500).holds("00000..14998/2|", "positions");
    c.remove(0, 9).holds("00020..14998/2|").remove(2, 7490, 1).holds("00020|");
}

void holdingVeryManyNames(Check &c) {
    const std::string text = textFrom("0..500000|");
    for (int32_t i = 0; i < 2000000; i += 25000) { c.store(i, filledIn("%..%|", {i, i + 24999})); }
    std::string read;
    for (int32_t i = 0; i < 2000000; i += 250) { read += c.pointed(i, i + 249); }
    c.same("0..1999999|", read).same("89500..91499|", c.fields(89500, 91499, 12000));
    c.done(NamesManager_AddNamesFromBuffer(c.mgr, 0, 500000, 0, text.c_str()));
    c.holds("0..1999999|", "0-127 ");
    c.equal("index", 1234565, NamesManager_FindName(c.mgr, "1234565", 0));
    std::vector<int32_t> odd;
    for (int32_t i = 1; i < 2000000; i += 2) { odd.push_back(i); }
    c.removeListed(odd).holds("0..1999999/2|");
}

struct Scenario {
    const char *szTitle, *szFormat;
    void (*pfnPlay)(Check &c);
    int32_t nRuns;  // 1: in segment mode; 2: in both modes; 4: both again with bIndexed
};

const Scenario kScenarios[] = {
    {"storing", nullptr, storing, 4},
    {"default names", "name% d", generating, 4},
    {"fields", nullptr, reading, 4},
    {"reading in order", nullptr, readingInOrder, 1},
    {"longest names", nullptr, findingTheLongest, 4},
    {"looking up", "name% d", lookingUp, 2},
    {"removing", nullptr, removing, 4},
    {"copying", "name% d", copying, 4},
    {"images", nullptr, saving, 1},
    {"long names", nullptr, storingLongNames, 4},
    {"15,000 names", nullptr, holdingManyNames, 4},
    {"2,000,000 names", nullptr, holdingVeryManyNames, 2},
};

// The failed expectations. A run that lacks the memory to go on is one, too.
int32_t countFailures(const Scenario &scenario, void *pOwner) {
    int32_t nFailed = 0;
    std::printf("self-check: %s: ", scenario.szTitle);
    std::fflush(stdout);
    for (int32_t i = 0; i < scenario.nRuns; ++i) {
        NamesManager *mgr = NamesManager_Create(pOwner, scenario.szFormat);
        NamesManager *other = NamesManager_Create(pOwner, scenario.szFormat);
        Check check = {scenario.szTitle, (i & 1) != 0, (i & 2) != 0, mgr, other};
        try {
            if (mgr == nullptr || other == nullptr) { throw std::bad_alloc(); }
            check.equal("owner kept", 1, mgr->pOwner == pOwner ? 1 : 0);
            scenario.pfnPlay(check.start(""));
        } catch (const std::exception &) {
            ++check.nFailed;  // without memory for a text
            Host_ReportAssertion(kSourceTag, __LINE__, 0, "self-check, %s: no memory to go on",
                                 scenario.szTitle);
        }
        NamesManager_Destroy(mgr);
        NamesManager_Destroy(other);
        nFailed += check.nFailed;
    }
    std::printf("%d failed\n", nFailed);
    std::fflush(stdout);
    return nFailed;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_SelfCheck(void) {
    ZOLTprob prob = nullptr;
    int32_t nFailed = 0;
    const bool bMade = ZOLTcreateprob(&prob) == 0;
    for (const Scenario &scenario : kScenarios) {
        nFailed += bMade ? countFailures(scenario, prob) : 0;
    }
    NamesManager_Destroy(nullptr);
    if (bMade && ZOLTdestroyprob(prob) == 0) { return nFailed; }
    Host_ReportAssertion(kSourceTag, __LINE__, 0,
                         "self-check: expected the host to make and destroy a problem object");
    return nFailed + 1;
}
