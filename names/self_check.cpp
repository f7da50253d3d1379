// The built-in self-check. Its scenarios are examples of use that can be read in order: calls, each
// followed by the names that are then held and, where it is given, the layout of their storage: the
// segments, then bytes used and size of each block. A bar ends each name of a list; "x*300|" is a
// name of 300 characters, "one..five|" the words from one to five, and "00000..00299/2|" every
// second number of five digits in that range.
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
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/host_problem.h"
#include "host/host_report.h"
#include "names/audit.hpp"

namespace names {

namespace {

using Names = std::vector<const char *>;

// The text with a number in place of each %.
std::string filledIn(const char *szText, std::initializer_list<int64_t> numbers) {
    std::string text;
    const int64_t *pNext = numbers.begin();
    for (const char *p = szText; *p != '\0'; ++p) {
        text += *p == '%' ? std::to_string(*pNext++) : std::string(1, *p);
    }
    return text;
}

// What a name of a list stands for, with bars between several: itself, a repeated character, a
// range of numbers or of words.
std::string expanded(const std::string &item) {
    static constexpr std::string_view kWords = "one|two|three|four|five|six|seven|eight|nine|ten|"
                                               "eleven|twelve|thirteen|fourteen|fifteen|";
    const size_t nDots = item.find("..");
    char c = 0;
    int n = 0, nLast = 0, nStep = 1;
    if (std::sscanf(item.c_str(), "%c*%d", &c, &n) == 2) {
        return std::string(static_cast<size_t>(n), c);
    }
    if (std::sscanf(item.c_str(), "%d..%d/%d", &n, &nLast, &nStep) >= 2) {
        std::string numbers = item.substr(0, nDots);
        while ((n += nStep) <= nLast) {
            const std::string digits = std::to_string(n);
            numbers.append(1, '|').append(nDots - std::min(nDots, digits.size()), '0') += digits;
        }
        return numbers;
    }
    if (nDots == std::string::npos) { return item; }
    const size_t nFirst = kWords.find(item.substr(0, nDots));
    const size_t nEnd = kWords.find('|', kWords.find(item.substr(nDots + 2)));
    return std::string(kWords.substr(nFirst, nEnd - nFirst));
}

// The names of a list back to back, each with its NUL, and what follows the last bar as it is.
std::string textFrom(std::string_view list) {
    std::string text;
    for (size_t nBar = 0; (nBar = list.find('|')) != std::string::npos;
         list.remove_prefix(nBar + 1)) {
        text.append(expanded(std::string(list.substr(0, nBar)))).append(1, '|');
    }
    std::replace(text.begin(), text.end(), '|', '\0');
    return text.append(list);
}

// A list as operations take it.
struct List {
    std::string text;
    Names names = {};
    std::vector<int32_t> lengths = {};
    int32_t nNames = 0;

    explicit List(std::string_view list) : text(textFrom(list)) {
        for (size_t nAt = 0; nAt < text.size(); nAt += static_cast<size_t>(lengths.back()) + 1) {
            names.push_back(text.data() + nAt);
            lengths.push_back(static_cast<int32_t>(std::strlen(names.back())));
            ++nNames;
        }
    }
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    int32_t lastFrom(int32_t first) const { return first + nNames - 1; }
};

// What the record says, between commas: the layout, its blocks alone, cursor, longest name, index.
std::string stateOf(const NamesManager *mgr) {
    std::string text = mgr->pSegments == nullptr ? "positions" : "";
    for (int32_t s = 0; mgr->pSegments != nullptr && s < mgr->nSegments; ++s) {
        text += filledIn("%-% ", {mgr->pSegments[s].iFirst, mgr->pSegments[s].iLast});
    }
    std::string blocks;
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        blocks += filledIn("+%/%", {mgr->pBlocks[b].nUsed, mgr->pBlocks[b].nSize});
    }
    text.append(blocks).append(", ").append(blocks);
    text += filledIn(
        ", cursor %, misses %, longest % of %, ",
        {mgr->iCursorName, mgr->nCursorMisses, mgr->nMaxNameLength, mgr->nMaxNameLengthCount});
    return text.append(mgr->pLookupIndex == nullptr ? "no index," : "an index,");
}

// An output stream that keeps what is written and fails at the write where nLeft has come to 0.
struct KeptImage {
    HostOutputStream stream;  // first, so that its address is the record's
    int32_t nLeft, nBytes;
    char aBytes[1024];
};

constexpr int32_t kWriteError = -77;

int32_t keepBytes(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    KeptImage *pImage = reinterpret_cast<KeptImage *>(pStream);
    const int32_t nBefore = pImage->nBytes;
    if (pImage->nLeft-- == 0 || nBytes > sizeof pImage->aBytes - static_cast<size_t>(nBefore)) {
        return kWriteError;
    }
    std::memcpy(pImage->aBytes + nBefore, pData, nBytes);
    pImage->nBytes += static_cast<int32_t>(nBytes);
    return 0;
}

// Saves, failing at the first write, then at the second and so on until all succeed. Returns status
// and size and, after its offset, each word of four bytes that is not 0, as text or as a number.
std::string imageOf(NamesManager *mgr) {
    constexpr HostOutputStreamOps kKeeping = {keepBytes};
    KeptImage image = {{&kKeeping}, 0, 0, {}};
    int32_t nStatus = kWriteError;
    for (int32_t nWrites = 0; nStatus == kWriteError && nWrites < 100; ++nWrites) {
        image.nLeft = nWrites, image.nBytes = 0;
        nStatus = NamesManager_Save(mgr, nullptr, &image.stream);
    }
    std::string text = filledIn("%, % bytes:", {nStatus, image.nBytes});
    for (int32_t nAt = 0, n = 0; nAt < image.nBytes; nAt += 4) {
        std::memcpy(&n, image.aBytes + nAt, sizeof n);
        if (n > 4096) { text += filledIn(" %=", {nAt}).append(image.aBytes + nAt, sizeof n); }
        if (n <= 4096 && n != 0) { text += filledIn(" %=%", {nAt, n}); }
    }
    return text;
}

// One run of a scenario. Each step audits both managers and counts; what is not as expected is
// reported with its number.
struct Check {
    const char *szTitle;
    bool bPositions;  // managers are switched to individual positions
    bool bIndexed;    // names held are looked up, so that the next change meets an index; they are
                      // given in buffers where arrays are taken, too
    NamesManager *mgr = nullptr, *other = nullptr;
    int32_t nFailed = 0, nSteps = 0;

    // At most 300 bytes of each text are reported, from shortly before they differ.
    Check &compare(const char *szWhat, std::string_view text, std::string_view found) {
        ++nSteps;
        nFailed += countViolations(mgr) + countViolations(other);
        if (text == found) { return *this; }
        ++nFailed;
        const auto at = std::mismatch(text.begin(), text.end(), found.begin(), found.end()).first;
        const size_t nAt = static_cast<size_t>(std::max<ptrdiff_t>(at - text.begin() - 50, 0));
        std::string aShown[] = {filledIn(", step %, ", {nSteps}), ""};
        aShown[0].insert(0, szTitle).insert(0, "self-check, ").append(szWhat).append(": ");
        (aShown[1] = aShown[0]) += found.substr(std::min(nAt, found.size()), 300);
        aShown[0] += text.substr(nAt, 300);
        for (std::string &shown : aShown) { std::replace(shown.begin(), shown.end(), '\0', '|'); }
        Host_AssertStringsEqual(kSourceTag, __LINE__, aShown[0].c_str(), aShown[1].c_str());
        return *this;
    }
    Check &equal(const char *szWhat, int32_t nExpected, int32_t nFound) {
        return compare(szWhat, std::to_string(nExpected), std::to_string(nFound));
    }
    Check &done(int32_t nStatus, int32_t nExpected = 0) {
        return equal("status", nExpected, nStatus);
    }
    Check &same(std::string_view list, const std::string &found) {
        return compare("text", textFrom(list), found);
    }

    // What stateOf() says after a comma and up to another.
    Check &shows(const std::string &part) {
        const std::string state = stateOf(mgr);
        const bool bShown = state.find(", " + part + ",") != std::string::npos;
        return compare("record", part, bShown ? part : state);
    }

    // All names, whichever way they are read, and in segment mode a layout that begins so.
    Check &holds(std::string_view names, std::string_view layout = "") {
        const List list(names);
        const int32_t iLast = list.lastFrom(0);
        std::vector<int32_t> lengths(list.names.size()), indices(lengths), expected(lengths);
        std::iota(expected.begin(), expected.end(), 0);
        const std::string state = bPositions ? std::string(layout) : stateOf(mgr);
        compare("layout", layout, state.substr(0, layout.size()));
        equal("number of names", list.nNames, NamesManager_GetNumNames(mgr));
        compare("fields", list.text, fields(0, iLast, list.text.size()));
        compare("names", list.text, pointed(0, iLast));
        NamesManager_GetNameLengths(mgr, 0, iLast, 0, lengths.data());
        equal("right lengths", 1, lengths == list.lengths ? 1 : 0);
        if (!bIndexed) { return *this; }
        NamesManager_FindNameList(mgr, list.names.data(), list.nNames, 0, indices.data());
        return equal("right indices", 1, indices == expected ? 1 : 0);
    }

    // Names read through pointers.
    std::string pointed(int32_t first, int32_t last) const {
        Names names(static_cast<size_t>(last - first + 1), "");
        std::vector<int32_t> lengths(names.size());
        const int32_t nStatus =
            NamesManager_GetNameViews(mgr, first, last, 0, names.data(), lengths.data());
        std::string text = nStatus == 0 ? "" : "refused: ";
        for (size_t i = 0; i < names.size(); ++i) {
            text.append(names[i], static_cast<size_t>(lengths[i]) + 1);
        }
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

    // Indices of names that nWidth delimits, as a list; "?" where a single lookup finds another.
    std::string found(std::string_view names, int32_t nWidth = -1, int32_t bOneBased = 0) const {
        const List list(names);
        Names::const_iterator at = list.names.begin();
        std::vector<int32_t> indices(list.names.size(), -7);
        NamesManager_FindNames(mgr, &*at, list.nNames, nWidth, bOneBased, indices.data());
        std::string answer;
        for (const int32_t i : indices) {
            const char *pName = *at++;
            const bool bSame =
                i == (nWidth == -1 ? NamesManager_FindName(mgr, pName, bOneBased)
                                   : NamesManager_FindNameInField(mgr, pName, nWidth, bOneBased));
            answer += filledIn(bSame ? "%|" : "%?|", {i});
        }
        return textFrom(answer);
    }

    // Indices of names found or, where they are not held, added, as a list.
    std::string foundOrAdded(std::string_view names) const {
        const List list(names);
        std::vector<int32_t> indices(list.names.size(), -7);
        NamesManager_FindOrAddNames(mgr, list.names.data(), list.nNames, 0, indices.data());
        std::string answer;
        for (const int32_t i : indices) { answer += filledIn("%|", {i}); }
        return textFrom(answer);
    }

    // Status, whether storing the list would repeat a name, and that one's indices and text. "~"
    // stands for NULL.
    std::string repeated(int32_t first, std::string_view names, int32_t bOneBased = 0,
                         int32_t nRoom = 20) const {
        List list(names);
        std::replace_if(
            list.names.begin(), list.names.end(), [](auto p) { return *p == '~'; }, nullptr);
        const bool bBuffer = bIndexed && list.text.find('~') == std::string::npos;
        const int32_t last = list.lastFrom(first);
        int32_t a[3] = {-7, -7, -7};
        char szName[64] = "-";
        const int32_t nStatus =
            bBuffer ? NamesManager_CheckDuplicateNamesInBuffer(mgr, first, last, bOneBased,
                                                               list.text.c_str(), a, a + 1, a + 2,
                                                               szName, nRoom)
                    : NamesManager_CheckDuplicateNames(mgr, first, last, bOneBased,
                                                       list.names.data(), list.lengths.data(), a,
                                                       a + 1, a + 2, szName, nRoom);
        return filledIn("% % % % ", {nStatus, a[0], a[1], a[2]}).append(szName);
    }

    // Stores one name singly, several through an array or, in an indexed run, a buffer.
    Check &store(int32_t first, std::string_view names, int32_t bOneBased = 0,
                 int32_t nStatus = 0) {
        const List list(names);
        const int32_t last = list.lastFrom(first);
        const char *pText = list.text.c_str();
        return done(first == last ? NamesManager_AddName(mgr, first, bOneBased, pText)
                    : bIndexed
                        ? NamesManager_AddNamesFromBuffer(mgr, first, last, bOneBased, pText)
                        : NamesManager_AddNames(mgr, first, last, bOneBased, list.names.data()),
                    nStatus);
    }

    // A new list, in the storage mode of the run.
    Check &start(std::string_view list, int32_t bOneBased = 0) {
        done(NamesManager_Clear(mgr)).store(bOneBased, list, bOneBased);
        done(bPositions ? NamesManager_StoreIndividualNamePositions(mgr) : 0);
        return holds(list);
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

// ---- Scenarios ----

void storing(Check &c) {
    c.start("one..five|", 1).holds("one..five|", "0-4 +24/4096");
    c.store(6, "six..ten|", 1).holds("one..ten|", "0-9 +49/4096");
    c.start("one..five|").store(2, "six..ten|", 1).holds("one|six..ten|", "0-5 +29/4096");
    c.store(2, "eleven|twelve|13|fourteen|", 1);
    c.holds("one|eleven|twelve|13|fourteen|ten|", "0-0 1-4 5-5 +55/4096");
    c.store(0, "one..fifteen|").holds("one..fifteen|").store(15, "").holds("one..fifteen|");

    const char *szField = "hello world   ";
    c.start("a|b|c|").store(0, "hello world   |   |  in  side\t |");
    c.holds("hello world||  in  side\t|");
    c.store(0, "hello world   |   |  in  side\t |").holds("hello world||  in  side\t|").start("x|");
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 0, 0, szField, 14)).holds("hello world|");
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 0, 0, szField, 5)).holds("hello|");
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 0, 0, szField, 0)).holds("|");
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 2, 1, szField, 40)).holds("|hello world|");
    c.done(NamesManager_AddNamesFromBuffer(c.mgr, 2, 2, 1, "one ")).holds("|one|");
    c.done(NamesManager_AddNamesFromBuffer(c.mgr, 2, 1, 1, "")).holds("|one|");
    const char *aParts[] = {szField + 6, szField};
    const int32_t aLengths[] = {5, 7};
    c.done(NamesManager_AddNamesWithLengths(c.mgr, 1, 2, 0, aParts, aLengths));
    c.holds("|world|hello w|");
}

void replacing(Check &c) {
    c.start("one..ten|").store(5, "SIX|").holds("one..five|SIX|seven..ten|", "0-9 +49/4096");
    c.store(5, "S|").holds("one..five|S|seven..ten|", "0-5 6-9 +49/4096");
    c.start("one..ten|").store(6, "sixth|", 1);
    c.holds("one..five|sixth|seven..ten|", "0-4 5-5 6-9 +55/4096");
    c.same("-1|5|", c.found("six|sixth|"));
    c.start("one..ten|").store(9, "tenth|").holds("one..nine|tenth|", "0-9 +51/4096");
    c.store(1, "second|").holds("one|second|three..nine|tenth|", "0-0 1-1 2-9 +58/4096");
    c.store(3, "fourth|");
    c.holds("one|second|three|fourth|five..nine|tenth|", "0-0 1-1 2-2 3-3 4-9 +65/4096");
    c.store(5, "sixth|");
    c.holds("one|second|three|fourth|five|sixth|seven..nine|tenth|", "positions+71/4096");
}

void generating(Check &c) {
    c.done(NamesManager_GenerateNames(c.mgr, 3)).holds("name1|name2|name3|");
    c.done(NamesManager_GenerateNames(c.mgr, 2)).holds("name1|name2|name3|");
    c.start("name2|").done(NamesManager_GenerateNames(c.mgr, 2)).holds("name2|name3|");
    c.done(NamesManager_GetNamePointers(c.mgr, 3, 3, 1, nullptr)).holds("name2|name3|name4|");
    c.done(NamesManager_Clear(c.mgr)).holds("", "+0/4096");
    c.store(4, "given|").holds("name1|name2|name3|name4|given|");
    const char *szName = NamesManager_GetName(c.mgr, 6, 1);
    c.same("name6", szName != nullptr ? szName : "none").same("name7|name8|", c.fields(6, 7, 12));
    NamesManager_SetFirstGeneratedName(c.mgr, "Hello World");
    c.holds("name1|name2|name3|name4|given|name6|name7|name8|");
    c.done(NamesManager_Clear(c.mgr)).holds("", "+0/4096");
    c.done(NamesManager_GenerateNames(c.mgr, 2)).holds("Hello World|name2|");
    c.remove(0, 1).holds("", "+0/4096");
    c.done(NamesManager_GenerateNames(c.mgr, 1)).holds("name2|");
}

void copyingFields(Check &c) {
    c.start("one|name5|fourteen chars||").same("0, 26 bytes: ", c.fields(0, 3, 0));
    c.same("3, 26 bytes: #########################", c.fields(0, 3, 25));
    c.same("0, 21 bytes: name5|fourteen chars|#", c.fields(1, 2, 22));
    c.same("name5|", c.fields(1, 1, 6)).same("o|n|f||", c.fields(0, 3, 7, 0, 1, 2));
    c.same("one       |name5     |fourteen c|          |", c.fields(0, 3, 44, 1, 1, 11));
    c.same("one       |name5     |fourteen chars|          |", c.fields(0, 3, 48, 1, 0, 11));
    c.same("0, 0 bytes: ###", c.fields(2, 1, 3));
}

void readingInOrder(Check &c) {
    c.store(0, "00000..00299|").holds("00000..00299|", "0-127 128-255 256-299 +1800/4096");
    c.same("00000..00009|", c.pointed(0, 9)).shows("cursor 10, misses 0");
    c.same("00010..00127|", c.fields(10, 127, 708)).shows("cursor -1, misses 0");
    c.same("00128..00130|", c.fields(128, 130, 18)).shows("cursor 131, misses 1");
    c.same("00131..00260|", c.fields(131, 260, 780)).shows("cursor 261, misses 0");
    c.same("00200|", c.pointed(200, 200)).shows("cursor 201, misses 1");
    c.same("0, 12 bytes: ", c.fields(7, 8, 0)).same("3, 12 bytes: ##", c.fields(7, 8, 2));
    c.same("00050|", c.pointed(50, 50)).shows("cursor 51, misses 2");
    c.same("00000|", c.pointed(0, 0)).shows("cursor 1, misses 0");
    c.same("00050..00059|", c.pointed(50, 59)).shows("cursor 60, misses 1");
    c.same("00040..00049|", c.fields(40, 49, 60)).shows("cursor 50, misses 2");
    c.same("00030..00039|", c.pointed(30, 39)).shows("cursor 40, misses 3");
    c.same("00020..00029|", c.fields(20, 29, 60)).shows("cursor 30, misses 4");
    c.same("00010..00019|", c.fields(10, 19, 60)).shows("cursor -1, misses 5");
    c.holds("00000..00299|", "positions+1800/4096");
}

void findingTheLongest(Check &c) {
    const auto longest = [&c] { return NamesManager_GetMaxNameLength(c.mgr); };
    c.equal("longest", 0, longest()).shows("longest 0 of 0").start("one..five|", 1);
    c.shows("longest -1 of 0").equal("longest", 5, longest()).shows("longest 5 of 1");
    c.store(6, "six..ten|", 1).holds("one..ten|").shows("longest 5 of 3");
    c.store(11, "eleven..fifteen|", 1).holds("one..fifteen|").shows("longest 8 of 2");
    c.remove(12, 12).holds("one..twelve|fourteen..fifteen|").shows("longest 8 of 1");
    c.removeListed({12}).equal("longest", 7, longest()).shows("longest 7 of 1");
    c.holds("one..twelve|fifteen|").store(0, "0..14|").holds("0..14|");
    c.equal("longest", 2, longest()).shows("longest 2 of 5").store(0, "longer|");
    c.holds("longer|1..14|").shows("longest 6 of 1").store(0, "x|");
    c.holds("x|1..14|").shows("longest -1 of 0");
}

void findingRepeatedNames(Check &c) {
    c.same("0 1 0 2 name1", c.repeated(0, "name1|name2|name1|"));
    c.same("0 1 1 3 name1", c.repeated(1, "name1|name2|name1|", 1));
    c.same("0 1 0 1 name1", c.repeated(0, "name1|name1 \t|"));
    c.same("0 1 0 1 hel", c.repeated(0, "hello world|hello world|", 0, 4));
    c.same("0 0 -7 -7 -", c.repeated(0, "~|a|~|")).same("0 0 -7 -7 -", c.repeated(0, ""));
    c.start("one..ten|").same("0 1 1 5 two", c.repeated(5, "two|"));
    c.same("0 0 -7 -7 -", c.repeated(6, "six|", 1)).same("0 0 -7 -7 -", c.repeated(0, "one..ten|"));
    c.same("0 1 11 12 name12", c.repeated(12, "name12|"));
}

void lookingUp(Check &c) {
    c.same("-1|-1|", c.found("one||")).shows("no index").start("one..fifteen|").shows("no index");
    c.same("1|-1|-1|9|", c.found("one|zero|Nine|nine  |", -1, 1));
    c.remove(15, 20).holds("one..fifteen|").shows("an index");
    c.remove(0, 4).holds("six..fifteen|").shows("no index");
    c.same("0|1|2|3|4|5|6|7|8|9|", c.found("six..fifteen|"));
    c.store(0, "0..14|").shows("an index");
    c.holds("0..14|").same("14|0|-1|9|", c.found("14|0|six|9|"));
    c.start("hello world|name3||");
    c.done(NamesManager_FindNames(c.mgr, nullptr, 0, -1, 0, nullptr)).shows("an index");
    c.same("0|2|", c.found("hello world   |   |"));
    c.same("-1|1|", c.found("hello world   |name3|", -2)).same("3|", c.found("whatever|", 0, 1));
    c.same("2|2|-1|", c.found("name345|name3|hello world|", 5, 1));
    c.start("one..three|").same("3|1|3|4|", c.foundOrAdded("four|two|four  |five|"));
    c.holds("one..five|")
        .equal("repeated", -1, NamesManager_FindRepeatedName(c.mgr, 0, 0, nullptr));
}

void removing(Check &c) {
    c.start("one..fifteen|").remove(0, 4).holds("six..fifteen|");
    c.remove(6, 10, 1).holds("six..ten|", "0-4 +49/4096");
    c.start("one..fifteen|").remove(6, 10, 1);
    c.holds("one..five|eleven..fifteen|", "0-4 5-9 +89/4096");
    c.start("one..fifteen|").remove(4, 5, 1).holds("one..three|six..fifteen|");
    c.remove(13, 13, 1).holds("one..three|six..fourteen|", "0-2 3-11 +81/4096");
    c.remove(10, INT_MAX).holds("one..three|six..twelve|", "0-2 3-9 +63/4096");
    c.remove(10, INT_MAX).holds("one..three|six..twelve|").remove(0, 9).holds("", "+0/4096");
    c.start("one..five|").removeListed({1, 3, 4}).holds("one|three|");
    c.start("one..five|").removeListed({4, 3, 1}).holds("one|three|");
    c.start("one..five|").removeListed({}).holds("one..five|");
    c.removeListed({5, -1, 99}).holds("one..five|");
    c.removeListed({2, 2}).holds("one|two|four|five|");
    c.removeListed({3, 0, 2, 1, 0}).holds("", "+0/4096");
}

void copying(Check &c) {
    c.start("one..ten|").done(NamesManager_Copy(c.other, c.mgr)).swap();
    c.holds("one..ten|", "0-9 +49/4096").remove(1, 8).holds("one|ten|").swap().holds("one..ten|");
    for (const char *szList : {"ten|nine|eight|seven|six|five|four|three|two|one|", "one..ten|"}) {
        const char *aNames[10] = {};
        c.done(NamesManager_GetNamePointers(c.mgr, 0, 9, 0, aNames));
        std::reverse(std::begin(aNames), std::end(aNames));
        c.done(NamesManager_AddNames(c.mgr, 0, 9, 0, aNames)).holds(szList);
    }
    c.swap().done(NamesManager_CopyName(c.mgr, 1, 1, c.other, 3, 1)).holds("three|ten|");
    c.done(NamesManager_CopyNameWithPrefix(c.mgr, 2, 0, c.other, 2, 0, "twenty-"));
    c.holds("three|ten|twenty-three|");
    c.done(NamesManager_CopyName(c.mgr, 0, 0, c.other, 10, 0)).holds("name11|ten|twenty-three|");
    c.done(NamesManager_CopyName(c.mgr, 1, 0, c.mgr, 1, 0)).holds("name11|ten|twenty-three|");
    c.swap().holds("one..ten|name11|").done(NamesManager_Copy(c.other, c.mgr)).swap();
    c.holds("one..ten|name11|").remove(1, 10).holds("one|");
    c.done(NamesManager_GenerateNames(c.mgr, 2)).holds("one|name11|");
}

void saving(Check &c) {
    const char *szEmpty = "0, 136 bytes: 4=1 8=16 16=16 24=nm%d 100=4096 116=-1";
    c.same(szEmpty, imageOf(c.mgr)).same("0, 4 bytes: 0=-1", imageOf(nullptr));
    c.store(0, "one..five|").holds("one..five|").remove(1, 1);
    c.holds("one|three..five|", "0-0 1-3 +24/4096");
    c.same("0, 200 bytes: 0=4 4=1 8=16 12=2 16=16 24=nm%d 100=4096 104=24 108=4 132=4 136=1 140=3"
           " 148=8 152=16 156=one| 160=two| 164=thre 168=e|fo 172=ur|f 176=ive| 180=-1",
           imageOf(c.mgr));
    c.done(NamesManager_StoreIndividualNamePositions(c.mgr));
    c.holds("one|three..five|", "positions+24/4096");
    c.same("0, 192 bytes: 0=4 4=1 8=16 20=4 24=nm%d 100=4096 104=24 108=4 128=8 136=14 144=19"
           " 148=one| 152=two| 156=thre 160=e|fo 164=ur|f 168=ive| 172=-1",
           imageOf(c.mgr));
    c.done(NamesManager_StoreIndividualNamePositions(c.mgr), 1);
    c.holds("one|three..five|", "positions+24/4096");
    c.done(NamesManager_Clear(c.mgr)).holds("", "+0/4096").same(szEmpty, imageOf(c.mgr));
    c.done(NamesManager_StoreIndividualNamePositions(c.mgr)).holds("", "positions+0/4096");
}

void storingLongNames(Check &c) {
    c.store(0, "x*1048575|").holds("x*1048575|");
    c.store(1, "y*1048576|", 0, 2).store(1, "a|y*1048576|", 0, 2).holds("x*1048575|");
    const std::string field = textFrom("y*1048576|"), prefix = textFrom("g*300|");
    c.done(NamesManager_AddNameWithMaxLength(c.mgr, 1, 0, field.c_str(), 1048576));
    c.holds("x*1048575|y*1048576|").store(2, "z*200000|").holds("x*1048575|y*1048576|z*200000|");
    c.shows("+1048576/1048576+1048577/1048577+200001/200001");
    c.store(0, "a*1|b*127|c*128|d*129|e*255|f*256|g*300|");
    c.holds("a*1|b*127|c*128|d*129|e*255|f*256|g*300|");
    c.same("0|1|2|3|4|5|6|", c.found("a |b*127|c*128|d*129|e*255|f*256|g*300|"));
    c.same("1|6|6|2|6|", c.found("b*127|g*301|g*302|c*128|g*300|", 300));
    c.done(NamesManager_Copy(c.other, c.mgr)).swap();
    c.holds("a*1|b*127|c*128|d*129|e*255|f*256|g*300|").remove(1, 6).holds("a*1|");
    c.done(NamesManager_CopyNameWithPrefix(c.mgr, 1, 0, c.other, 6, 0, prefix.c_str()));
    c.holds("a*1|g*600|");
}

void emptyingBlocks(Check &c) {
    const std::string text = textFrom("d*5000|00001..00998|");
    c.done(NamesManager_AddNamesFromBuffer(c.mgr, 0, 998, 0, text.c_str())).holds(text);
    c.store(999, "00999|").holds("d*5000|00001..00999|").shows("+0/4096+10995/131072");
    c.store(1000, "01000|").holds("d*5000|00001..01000|").shows("+11001/131072");
    c.start("a*100000|b*100001|c*100002|").done(NamesManager_ReleaseEmptyBlocks(c.mgr));
    c.holds("a*100000|b*100001|c*100002|").shows("+100001/131072+100002/131072+100003/131072");
    c.done(NamesManager_Copy(c.other, c.mgr)).swap();
    c.holds("a*100000|b*100001|c*100002|").shows("+100001/131072+100002/131072+100003/131072");
    c.remove(1, 1).holds("a*100000|c*100002|").shows("+100001/131072+100003/131072");
    c.remove(0, 1).holds("").shows("+0/131072").swap().holds("a*100000|b*100001|c*100002|");
}

void holdingManyNames(Check &c) {
    c.start("00000..14999|").holds("00000..14999|", "0-127 128-255 ");
    c.shows("+4092/4096+85908/131072").remove(127, 127).holds("00000..00126|00128..14999|");
    c.remove(0, 0).holds("00001..00126|00128..14999|");
    c.store(0, "00000..14999|").holds("00000..14999|", "0-125 126-253 ");
    int32_t nStatus = 0;
    for (int32_t i = 1; i < NamesManager_GetNumNames(c.mgr); ++i) {
        nStatus += NamesManager_RemoveNames(c.mgr, i, i, 0);
    }
    c.done(nStatus).holds("00000..14998/2|", "positions").remove(0, 9).holds("00020..14998/2|");
    c.remove(2, 7490, 1).holds("00020|");
}

void holdingVeryManyNames(Check &c) {
    constexpr int32_t kNames = 2000000;
    const std::string text = textFrom("0000000..1999999|");
    for (int32_t i = 0; i < kNames; i += 25000) {
        const char *pBatch = text.c_str() + ptrdiff_t{8} * i;
        c.done(NamesManager_AddNamesFromBuffer(c.mgr, i, i + 24999, 0, pBatch));
    }
    std::string read;
    for (int32_t i = 0; i < kNames; i += 250) { read += c.pointed(i, i + 249); }
    c.same(text, read).equal("mode", c.bPositions ? 0 : 1, c.mgr->pSegments != nullptr ? 1 : 0);
    c.same("0089500..0091499|", c.fields(89500, 91499, 16000));
    c.done(NamesManager_AddNamesFromBuffer(c.mgr, 0, 500000, 0, text.c_str())).holds(text);
    if (c.bPositions) {  // each fills a map, and a host's may be slow
        c.equal("index", 1234565, NamesManager_FindName(c.mgr, "1234565", 0));
    } else {
        int32_t bFound = -1;
        c.done(NamesManager_CheckDuplicateNamesInBuffer(c.mgr, 0, kNames - 1, 0, text.c_str(),
                                                        &bFound, nullptr, nullptr, nullptr, 0));
        c.equal("repeated names", 0, bFound);
    }
    std::vector<int32_t> odd;
    for (int32_t i = 1; i < kNames; i += 2) { odd.push_back(i); }
    c.removeListed(odd).holds("0000000..1999999/2|");
}

struct Scenario {
    const char *szTitle;
    const char *szFormat;
    void (*pfnPlay)(Check &c);
    int32_t nRuns;  // 1: in segment mode; 2: in both modes; 4: both again with bIndexed
};

const Scenario kScenarios[] = {
    {"storing", nullptr, storing, 4},
    {"replacing", nullptr, replacing, 4},
    {"default names", "name%d", generating, 4},
    {"default names with blanks inside", "name% 8d",
     [](Check &c) {
         c.done(NamesManager_GenerateNames(c.mgr, 2)).holds("name       1|name       2|");
     },
     4},
    {"fields", nullptr, copyingFields, 4},
    {"reading in order", nullptr, readingInOrder, 1},
    {"longest names", nullptr, findingTheLongest, 4},
    {"repeated names", "name%d", findingRepeatedNames, 4},
    {"looking up", nullptr, lookingUp, 2},
    {"removing", nullptr, removing, 4},
    {"copying", "name%d", copying, 4},
    {"images", nullptr, saving, 1},
    {"long names", nullptr, storingLongNames, 4},
    {"blocks falling empty", nullptr, emptyingBlocks, 2},
    {"15,000 names", nullptr, holdingManyNames, 4},
    {"2,000,000 names", nullptr, holdingVeryManyNames, 2},
};

// The failed expectations. A run that lacks the memory to go on is one, too.
int32_t countFailures(const Scenario &scenario, void *pOwner) {
    int32_t nFailed = 0;
    std::printf("self-check: %s: ", scenario.szTitle);
    std::fflush(stdout);
    for (int32_t i = 0; i < scenario.nRuns; ++i) {
        Check check = {scenario.szTitle, (i & 1) != 0, (i & 2) != 0};
        try {
            check.mgr = NamesManager_Create(pOwner, scenario.szFormat);
            check.other = NamesManager_Create(pOwner, scenario.szFormat);
            if (check.mgr == nullptr || check.other == nullptr) { throw std::bad_alloc(); }
            check.equal("owner kept", 1, check.mgr->pOwner == pOwner ? 1 : 0);
            check.done(check.bPositions ? NamesManager_StoreIndividualNamePositions(check.mgr) : 0);
            scenario.pfnPlay(check);
        } catch (const std::exception &) {
            ++check.nFailed;  // without memory for a text
            Host_ReportAssertion(kSourceTag, __LINE__, 0, "self-check, %s: no memory to go on",
                                 scenario.szTitle);
        }
        NamesManager_Destroy(check.mgr);
        NamesManager_Destroy(check.other);
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
    int32_t nFailed = ZOLTcreateprob(&prob) == 0 ? 0 : 1;
    if (nFailed == 0) {
        for (const Scenario &scenario : kScenarios) { nFailed += countFailures(scenario, prob); }
        NamesManager_Destroy(nullptr);
        if (ZOLTdestroyprob(prob) == 0) { return nFailed; }
        ++nFailed;
    }
    Host_ReportAssertion(kSourceTag, __LINE__, 0,
                         "self-check: expected the host to make and destroy a problem object");
    return nFailed;
}
