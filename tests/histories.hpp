// Random histories of operations on two managers, each answer and each resulting record compared with tests/record_model.hpp. A history is
// a list of kinds and seeds: every operation draws its arguments from its own seed and the names that are there, so any of them can be left
// out. Shared by the randomised test and the fuzzing of operations.
#pragma once

#include <random>
#include <sstream>

#include "host/host_report.h"
#include "tests/counted_host/counted_memory.h"
#include "tests/record_model.hpp"

namespace histories {

using model::Field;
using model::Range;
using model::Record;
using model::Strings;

struct Pair {
    NamesManager *pReal;
    Record twin;
};

inline std::string joined(const Strings &texts, const std::string &end) {
    std::string all;
    for (const std::string &text : texts)
        all += text + end;
    return all;
}

// One operation under way: where its arguments come from, what they are, and what the real manager and its twin answered.
struct Call {
    std::mt19937 random;
    int32_t nDistinct;  // of that many texts most names are made, 1: of the empty one, 0: no limit
    int32_t nLong;      // names in a thousand that are very long
    int32_t nStray;     // arguments in a thousand outside the contract
    Pair &mine, &other;
    NamesManager *pReal = mine.pReal;
    Record &twin = mine.twin;
    std::ostringstream told = {}, real = {}, expected = {};

    int32_t pick(int32_t nLow, int32_t nHigh) { return std::uniform_int_distribution(nLow, nHigh)(random); }
    template <typename T>
    T pick(std::initializer_list<T> from) {
        return from.begin()[pick(1, Record::toInt(from.size())) - 1];
    }
    bool chance(int32_t nInThousand) { return pick(1, 1000) <= nInThousand; }

    template <typename T>
    T tell(const char *szWhat, T argument) {
        told << ' ' << szWhat << ' ' << argument;
        return argument;
    }
    template <typename T>
    void answer(const T &ofReal, const T &ofTwin) {
        real << ofReal << '|';
        expected << ofTwin << '|';
    }

    // A name to be stored at an index: often the one that is there, as it is, shorter, longer or of the same length.
    std::string text(int32_t iName) {
        std::string made = iName < twin.nNames() && chance(500) ? twin.name(iName) + '.' : "";
        if (!made.empty()) {
            made.pop_back();
            if (chance(300)) made.resize(made.size() / 2);
            if (chance(300)) made.append(pick<size_t>({1, 5, 9}), 'l');
            if (!made.empty() && chance(300)) made[0] = static_cast<char>(pick('a', 'z'));
        } else if (chance(nDistinct > 0 ? 900 : 50)) {
            if (nDistinct != 1) made = pick({"nm", "name"}) + std::to_string(pick(1, nDistinct > 0 ? nDistinct : twin.nNames() + 5));
        } else if (chance(nLong) && twin.nNames() < 300) {
            made.assign(pick<size_t>({2000, 4095, 70000, 131071, 131072, 140000, 1048575, 1048576}), 'L');
        } else {
            made.resize(static_cast<size_t>(chance(970) ? pick(0, 40) : pick({127, 128, 129, 254, 255, 256, 257})));
            for (char &c : made)
                c = "abcdefgh \t\xE9"[pick(0, 10)];
        }
        return made + (chance(200) ? pick({" ", "  ", "   ", "\t"}) : "");
    }

    Strings texts(size_t nTexts, int32_t iFirst) {
        Strings made;
        const bool bTrimmed = chance(500);  // long ranges without a trailing blank are stored in another way
        while (made.size() < nTexts) {
            made.push_back(text(iFirst + Record::toInt(made.size())));
            if (bTrimmed) made.back().erase(made.back().find_last_not_of(' ') + 1);
        }
        tell("of", nTexts);
        for (size_t i = 0; i < std::min<size_t>(nTexts, 8); ++i)
            told << " \"" << made[i].substr(0, 40) << "\" (" << made[i].size() << ')';
        return made;
    }
    Strings texts(Range range) {
        const auto [first, last, bOneBased] = Record::boundsOf(range).value_or(Range{0, 3, 0});
        return texts(static_cast<size_t>(last) + 1 - static_cast<size_t>(first), first);
    }

    Range anyRange(bool bGrow, bool bSingle) {
        constexpr int32_t kMin = INT32_MIN, kMax = INT32_MAX;
        if (chance(nStray / 2)) return pick<Range>({{-1, -1, 0}, {0, 0, 1}, {kMax, kMax, 0}, {kMin, kMin, 1}, {-9, -9, 1}});
        if (chance(nStray / 2) && !bSingle) return pick<Range>({{5, 3, 0}, {-3, 2, 0}, {0, kMax, 0}, {3, kMin, 1}, {-3, -4, 0}});
        const int32_t nNames = twin.nNames(), nSize = bSingle ? 0 : pick(0, 99), bOneBased = pick(0, 1);
        int32_t n = nSize < 60 ? 1 : nSize < 85 ? pick(2, 20) : nSize < 90 ? 0 : pick({127, 128, 129, 256, 257, 700, 1000});
        int32_t first = chance(500) ? nNames : pick(0, nNames + (chance(100) ? 5 : 0));
        if (!bGrow || nNames > 3000) {
            n = bSingle ? 1 : chance(20) ? nNames : std::min(n, nNames);
            first = pick(0, std::max(nNames - n, 0));
        }
        if (chance(200)) first = std::max(pick({0, twin.cursor.iName}), 0);
        return {first + bOneBased, first + n - 1 + bOneBased, bOneBased};
    }
    Range range(bool bGrow, bool bSingle = false) {
        const Range drawn = anyRange(bGrow, bSingle);
        told << ' ' << drawn.first << ".." << drawn.last << (drawn.bOneBased != 0 ? " one-based" : "");
        return drawn;
    }

    Field field() {
        const int32_t nWidth = tell("width", chance(nStray) ? pick(-1, 0) : pick({1, 2, 11, 24, 300}));
        return {tell("pad", pick(0, 1)), tell("cut", pick(0, 1)), nWidth};
    }
};

// Each text where no byte can be read beyond its field of nWidth bytes, or its NUL when nWidth is negative.
struct Fields {
    std::vector<std::vector<char>> copies;
    std::vector<const char *> pointers;
    Fields(const Strings &texts, int32_t nWidth) {
        for (const std::string &text : texts) {
            const size_t nBytes = nWidth < 0 ? text.size() + 1 : std::min(text.size() + 1, static_cast<size_t>(std::max(nWidth, 1)));
            copies.emplace_back(text.c_str(), text.c_str() + nBytes);
            pointers.push_back(copies.back().data());
        }
    }
};

// ---- The operations

inline void store(Call &c) {
    const int32_t nHow = c.tell("manner", c.pick(0, 9)), nWidth = c.tell("width", nHow < 8 ? -1 : c.pick({0, 1, 5, 40, 3000}));
    const auto [first, last, bOneBased] = c.range(true, nHow >= 6);
    const Strings texts = c.texts({first, last, bOneBased});
    const Fields fields(texts, nWidth);
    const char *const *ppNames = fields.pointers.data();
    const Range at = {first, last, bOneBased};
    if (nHow < 4) {
        c.answer(NamesManager_AddNames(c.pReal, first, last, bOneBased, ppNames), c.twin.addNames(at, texts.data()));
    } else if (nHow < 6) {
        const std::string all = joined(texts, std::string(1, '\0'));
        const std::vector<char> buffer(all.begin(), all.end());  // no byte can be read beyond it
        c.answer(NamesManager_AddNamesFromBuffer(c.pReal, first, last, bOneBased, buffer.data()),
                 c.twin.addNamesFromBuffer(at, texts.data()));
    } else if (nHow < 8) {
        c.answer(NamesManager_AddName(c.pReal, first, bOneBased, ppNames[0]), c.twin.addNames(at, texts.data()));
    } else {
        const int32_t nMax = nWidth == 0 ? c.pick(-1, 0) : nWidth;
        c.answer(NamesManager_AddNameWithMaxLength(c.pReal, first, bOneBased, ppNames[0], nMax),
                 c.twin.addNameWithMaxLength(at, texts[0], nMax));
    }
}

inline void copyName(Call &c) {
    Pair &from = c.tell("of the other", c.chance(500)) ? c.other : c.mine;
    const Range to = c.range(true, true), at = c.range(true, true);
    const std::string prefix = c.chance(500) ? "" : c.texts(1, 0)[0];
    c.answer(prefix.empty()
                 ? NamesManager_CopyName(c.pReal, to.first, to.bOneBased, from.pReal, at.first, at.bOneBased)
                 : NamesManager_CopyNameWithPrefix(c.pReal, to.first, to.bOneBased, from.pReal, at.first, at.bOneBased, prefix.c_str()),
             c.twin.copyName(to, from.twin, at, prefix));
}

inline void generate(Call &c) {
    const int32_t nCount = c.tell("up to", c.twin.nNames() + (c.twin.nNames() > 3000 ? 0 : c.pick({-1, 0, 1, 2, 5, 300})));
    if (c.chance(200)) {
        const std::string first = c.texts(1, 0)[0].substr(0, 50);
        NamesManager_SetFirstGeneratedName(c.pReal, first.c_str());
        c.twin.setFirstGeneratedName(first);
    }
    c.answer(NamesManager_GenerateNames(c.pReal, nCount), c.twin.generateNames(nCount));
}

inline void read(Call &c) {
    const int32_t nHow = c.tell("manner", c.pick(0, 9));
    const Range at = c.range(c.chance(30), nHow >= 6);
    const size_t nSlots = nHow == 1 ? 0 : 4096;
    Strings expected;
    if (nHow == 0) {
        std::vector<int32_t> lengths(nSlots, -7), expectedLengths = c.twin.getNameLengths(at);
        NamesManager_GetNameLengths(c.pReal, at.first, at.last, at.bOneBased, lengths.data());
        expectedLengths.resize(nSlots, -7);
        c.answer(lengths == expectedLengths, true);
    } else if (nHow < 6) {
        std::vector<const char *> pointers(nSlots, "untouched");
        c.answer(NamesManager_GetNamePointers(c.pReal, at.first, at.last, at.bOneBased, nSlots == 0 ? nullptr : pointers.data()),
                 c.twin.getNamePointers(at, nSlots == 0 ? nullptr : &expected));
        expected.resize(nSlots, "untouched");
        c.answer(joined(Strings(pointers.begin(), pointers.end()), "|"), joined(expected, "|"));
    } else {
        const char *szName = NamesManager_GetName(c.pReal, at.first, at.bOneBased);
        c.answer<std::string>(szName == nullptr ? "none" : szName, c.twin.getNamePointers(at, &expected) != 0 ? "none" : expected[0]);
    }
}

inline void readIntoBuffer(Call &c) {
    const bool bSingle = c.tell("single", c.chance(300)), bAsk = c.chance(800);
    const Range at = c.range(c.chance(30), bSingle);
    const Field field = c.field();
    uint64_t nReal = 7, nTwin = 7;
    std::string bytes;
    const auto get = [&](char *p, uint64_t nSize, uint64_t *pnRequired) {
        const auto [first, last, bOneBased] = at;
        const auto [bPad, bCut, nWidth] = field;
        c.answer(bSingle ? NamesManager_GetNameIntoBuffer(c.pReal, first, bOneBased, bPad, bCut, nWidth, p, nSize, pnRequired)
                         : NamesManager_GetNames(c.pReal, first, last, bOneBased, bPad, bCut, nWidth, p, nSize, pnRequired),
                 p == nullptr && nSize > 0 ? 1 : c.twin.getNames(at, field, nSize, nTwin, bytes));
    };
    get(nullptr, 0, bAsk ? &nReal : nullptr);
    c.answer(nReal, bAsk ? nTwin : 7);
    std::string buffer(nTwin + static_cast<uint64_t>(c.pick(nTwin > 0 ? -1 : 0, 1)), '#');
    get(buffer.data(), buffer.size(), nullptr);
    bytes.resize(buffer.size(), '#');
    c.answer(buffer, bytes);
    if (c.chance(c.nStray)) get(nullptr, 9, nullptr);
}

inline void readOther(Call &c) {
    const Range at = c.range(false, true);
    const Field field = c.field();
    if (c.tell("longest", c.chance(500))) c.answer(NamesManager_GetMaxNameLength(c.pReal), c.twin.getMaxNameLength());
    HostText *pText = HostText_Create();
    std::string text;
    c.answer(NamesManager_WriteNameToText(c.pReal, at.first, at.bOneBased, field.bTruncate, field.bPad, field.nWidth, pText),
             c.twin.writeNameToText(at, field.bTruncate != 0, field, text));
    c.answer<std::string>(HostText_GetString(pText), text);
    HostText_Destroy(pText);
}

inline void find(Call &c) {
    const Strings texts = c.texts(c.pick<size_t>({1, 2, 8}), c.pick(0, c.twin.nNames()));
    const int32_t nHow = c.tell("manner", c.pick(0, 3)), bOneBased = c.pick(0, 1);
    const int32_t nWidth = c.tell("width", nHow % 3 == 0 ? -1 : c.pick({-1, -2, 0, 1, 4, 8, 300}));
    const int32_t nCount = c.tell("count", nHow > 1 ? 1 : c.chance(100) ? c.pick(-1, 0) : Record::toInt(texts.size()));
    const Fields fields(texts, nWidth);
    const char *const *ppNames = fields.pointers.data();
    std::vector<int32_t> indices(texts.size(), -7);
    int32_t *pIndices = nHow > 1 || c.chance(950) ? indices.data() : nullptr;
    if (nHow == 0) c.answer(NamesManager_FindNameList(c.pReal, ppNames, nCount, bOneBased, pIndices), 0);
    if (nHow == 1) c.answer(NamesManager_FindNames(c.pReal, ppNames, nCount, nWidth, bOneBased, pIndices), 0);
    if (nHow == 2) indices[0] = NamesManager_FindNameInField(c.pReal, ppNames[0], nWidth, bOneBased);
    if (nHow == 3) indices[0] = NamesManager_FindName(c.pReal, ppNames[0], bOneBased);
    c.twin.buildIndex();
    for (int32_t k = 0; k < Record::toInt(texts.size()); ++k)
        c.answer(indices.data()[k], k < nCount && pIndices != nullptr ? c.twin.findName(texts.data()[k], nWidth, bOneBased) : -7);
}

inline void checkDuplicates(Call &c) {
    const auto [first, last, bOneBased] = c.range(true);
    const bool bBuffer = c.tell("in a buffer", c.chance(500));
    const Strings texts = c.texts({first, last, bOneBased});
    const std::string end = bBuffer ? std::string(1, '\0') : c.pick({"\t\n", "z"}), buffer = joined(texts, end);
    std::vector<std::optional<std::string>> given(texts.begin(), texts.end());
    std::vector<const char *> pointers;
    std::vector<int32_t> lengths;
    for (const char *p = buffer.data(); auto &text : given) {
        pointers.push_back(p);
        lengths.push_back(Record::lengthOf(*text));
        p += text->size() + end.size();
        if (bBuffer ? text->size() <= 1048575 : c.chance(950)) continue;
        text.reset();
        pointers.back() = nullptr;
    }
    std::string real(20, '#'), twin = real;
    const int32_t nSize = c.pick({-1, 0, 1, 4, 20});
    model::Clash seen = {Record::boundsOf({first, last, bOneBased}) ? 7 : 0, -7, -7, ""}, clash = {0, -7, -7, ""};
    auto &[bSeen, iSeen, iSecond, none] = seen;
    c.answer(bBuffer ? NamesManager_CheckDuplicateNamesInBuffer(c.pReal, first, last, bOneBased, buffer.data(), &bSeen, &iSeen, &iSecond,
                                                                real.data(), nSize)
                     : NamesManager_CheckDuplicateNames(c.pReal, first, last, bOneBased, pointers.data(), lengths.data(), &bSeen, &iSeen,
                                                        &iSecond, real.data(), nSize),
             c.twin.checkDuplicateNames({first, last, bOneBased}, given, clash));
    if (clash.bDuplicate != 0 && nSize > 0)
        twin.replace(0, std::min(clash.szName.size() + 1, static_cast<size_t>(nSize)),
                     clash.szName.substr(0, static_cast<size_t>(nSize - 1)) + '\0');
    c.answer(Record::bytesOf({bSeen, iSeen, iSecond}) + real, Record::bytesOf({clash.bDuplicate, clash.iFirst, clash.iSecond}) + twin);
}

inline void remove(Call &c) {
    Range at = c.range(false);
    if (c.chance(100) && at.last >= at.first) at.last = c.tell("to", c.pick({c.twin.nNames() + 500, INT32_MAX}));
    c.answer(NamesManager_RemoveNames(c.pReal, at.first, at.last, at.bOneBased), c.twin.removeNames(at));
}

inline void removeListed(Call &c) {
    std::vector<int32_t> indices;
    for (int32_t i = -2, nDensity = c.tell("density", c.pick({5, 50, 500, 980})); i < c.twin.nNames() + 2; ++i) {
        if (c.chance(nDensity)) indices.insert(indices.end(), c.chance(50) ? 2 : 1, i);
    }
    if (c.chance(100)) indices.push_back(INT32_MAX);
    if (c.chance(300)) std::shuffle(indices.begin(), indices.end(), c.random);
    const int32_t nCount = c.tell("count", Record::toInt(indices.size()));
    c.answer(NamesManager_RemoveNamesByIndices(c.pReal, indices.data(), nCount), c.twin.removeNamesByIndices(indices));
}

inline void copy(Call &c) {
    const bool bSelf = c.tell("itself", c.chance(100));
    c.answer(NamesManager_Copy(c.pReal, (bSelf ? c.mine : c.other).pReal), bSelf ? 1 : c.twin.copy(c.other.twin));
}

inline void wholeManager(Call &c) {
    const int32_t nHow = c.tell("switch 0, release 1, clear 2:", c.pick({0, 0, 1, 1, 2}));
    if (nHow == 0) c.answer(NamesManager_StoreIndividualNamePositions(c.pReal), c.twin.storeIndividualNamePositions());
    if (nHow == 1) c.answer(NamesManager_ReleaseEmptyBlocks(c.pReal), c.twin.releaseEmptyBlocks());
    if (nHow == 2) c.answer(NamesManager_Clear(c.pReal), c.twin.clear());
}

// Other capacities, small blocks and spare ones: a state that a manager can be in, but rarely gets to.
inline void tighten(Call &c, Record &saved) {
    for (model::Block &block : saved.blocks)
        block.nSize = std::max(block.nUsed(), 1) + c.pick(0, 60);
    for (int32_t n = c.pick(0, 4); n > 0; --n)
        saved.blocks.push_back({c.pick(1, 600), 0, ""});
    saved.nBlocksAlloc = saved.nBlocks() + c.pick(0, 3);
    saved.nSegmentsAlloc = saved.bSegments ? saved.nSegments() + c.pick(1, 4) : 0;
    saved.nPositionsAlloc = saved.bSegments ? 0 : saved.nNames() + c.pick(0, 40);
    saved.nGeneratedNameBase = c.pick(0, saved.nNames() + 5);
    saved.cursor.nMisses = c.pick(0, 6);
}

inline void load(Call &c) {
    Record saved = (c.tell("of the other", c.chance(500)) ? c.other : c.mine).twin;
    if (c.tell("tightened", c.chance(600))) tighten(c, saved);
    const bool bNone = c.chance(50);
    const std::string image = bNone ? std::string(4, '\xFF') : joined(saved.save(), "");
    const int32_t nImage = Record::lengthOf(image), nBytes = c.tell("bytes", c.chance(900) ? nImage : c.pick(0, nImage - 1));
    const std::vector<char> copied(image.begin(), image.begin() + nBytes);
    HostInputStream *pStream = HostInputStream_CreateInMemory(copied.data(), copied.size());
    c.answer<int32_t>(NamesManager_Load(c.pReal, nullptr, pStream), nBytes < nImage ? HostStreamError_End : 0);
    HostInputStream_Close(pStream);
    c.twin.clear();
    if (!bNone && nBytes == nImage) c.twin.load(saved);
}

// ---- Histories

// The chances of each kind in the profiles: appending, replacing, removing, reading, all alike, arguments outside the contract.
constexpr size_t kProfiles = 6, kOutside = 5;
constexpr struct {
    const char *szName;
    void (*pfnRun)(Call &c);
    int32_t chances[kProfiles];
} kKinds[] = {{"store", store, {60, 60, 25, 15, 20, 20}},
              {"copy name", copyName, {3, 10, 2, 2, 6, 10}},
              {"generate", generate, {4, 2, 4, 4, 5, 2}},
              {"read", read, {8, 8, 8, 40, 15, 15}},
              {"read into buffer", readIntoBuffer, {4, 4, 4, 20, 8, 10}},
              {"write to text", readOther, {4, 6, 6, 5, 6, 8}},
              {"find", find, {4, 6, 4, 8, 8, 8}},
              {"check duplicates", checkDuplicates, {3, 2, 2, 3, 6, 10}},
              {"remove", remove, {2, 2, 25, 1, 8, 10}},
              {"remove listed", removeListed, {1, 1, 12, 1, 5, 2}},
              {"whole", wholeManager, {1, 1, 2, 1, 4, 2}},
              {"copy", copy, {1, 1, 2, 1, 3, 3}},
              {"load", load, {2, 2, 3, 2, 5, 4}}};

struct Operation {
    size_t iKind, iManager;
    uint32_t nSeed;
};

struct History {
    uint32_t nSeed;
    size_t iProfile;
    std::vector<Operation> operations;
};

struct Writes {
    HostOutputStream stream;
    Strings pieces;
};

inline int32_t keepWrite(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
    reinterpret_cast<Writes *>(pStream)->pieces.push_back(Record::bytesOf(pData, nBytes));
    return 0;
}

inline int32_t nReports = 0;
inline void countReport(void *, uint64_t, int32_t, int32_t, const char *) {
    ++nReports;
}

// Where a manager and its twin differ, empty if nowhere: in the writes of the image, to which what it leaves out and the audit's reports
// are added as a last one.
inline std::string difference(const Pair &pair) {
    static constexpr HostOutputStreamOps kOps = {keepWrite};
    const auto &[pReal, twin] = pair;
    Writes writes = {{&kOps}, {}};
    Strings expected = twin.save();
    nReports = NamesManager_Save(pReal, nullptr, &writes.stream);
    NamesManager_AssertConsistency(pReal);
    const int64_t nEntries = pReal->pLookupIndex != nullptr ? pReal->pLookupIndex->nEntries : -1;
    writes.pieces.push_back(Record::bytesOf({pReal->nMaxNameLength, pReal->nMaxNameLengthCount, pReal->pSegments != nullptr,
                                             pReal->pPositions != nullptr, static_cast<int32_t>(nEntries), nReports}));
    expected.push_back(Record::bytesOf({twin.nMaxNameLength, twin.nMaxNameLengthCount, twin.bSegments, !twin.bSegments,
                                        twin.bLookupIndex ? twin.nNames() : -1, twin.owedReports()}));
    const auto [real, ours] = std::mismatch(writes.pieces.begin(), writes.pieces.end(), expected.begin(), expected.end());
    if (real == writes.pieces.end() && ours == expected.end()) return "";
    if (real == writes.pieces.end() || ours == expected.end()) return "The number of writes differs. ";
    const auto nAt = static_cast<size_t>(std::mismatch(real->begin(), real->end(), ours->begin(), ours->end()).first - real->begin());
    std::array<int32_t, 2> numbers = {};
    real->copy(reinterpret_cast<char *>(&numbers[0]), sizeof numbers[0], nAt / 4 * 4);
    ours->copy(reinterpret_cast<char *>(&numbers[1]), sizeof numbers[1], nAt / 4 * 4);
    std::ostringstream text;
    text << "Write " << ours - expected.begin() << " of " << expected.size() << " has at byte " << nAt << ' ' << numbers[0] << ", not "
         << numbers[1];
    return text.str();
}

// Plays a history and returns what went wrong first. nPlayed counts the operations up to there; told tells them.
inline std::string play(const History &history, size_t &nPlayed, std::ostream &told) {
    static constexpr const char *kFormats[] = {"nm%d", "name%d", "%-6d|", "x%+05i%%", "%u ", "%#X"};
    const int64_t nLive = HostMem_GetNumLive();
    std::vector<Pair> pairs;
    for (const char *szFormat : {kFormats[history.nSeed % 6], kFormats[history.nSeed / 6 % 6]})
        pairs.push_back({NamesManager_Create(nullptr, szFormat), Record(szFormat)});
    const int32_t nDistinct = history.nSeed % 6 == 0 ? 1 : history.nSeed % 3 == 0 ? 9 : 0, nLong = history.nSeed % 4 == 1 ? 60 : 1;
    std::string wrong;
    for (nPlayed = 0; nPlayed < history.operations.size() && wrong.empty(); ++nPlayed) {
        const auto [iKind, iManager, nSeed] = history.operations[nPlayed];
        Call c = {std::mt19937(nSeed), nDistinct, nLong, history.iProfile == kOutside ? 300 : 5, pairs[iManager], pairs[1 - iManager]};
        nReports = 0;
        kKinds[iKind].pfnRun(c);
        told << "manager " << iManager << ": " << kKinds[iKind].szName << c.told.str() << '\n';
        if (nReports != 0) wrong += "An error was reported. ";
        if (c.real.str() != c.expected.str())
            wrong += "Answered " + c.real.str().substr(0, 300) + " not " + c.expected.str().substr(0, 300);
        for (const Pair &pair : pairs)
            wrong += difference(pair);
    }
    for (const Pair &pair : pairs)
        NamesManager_Destroy(pair.pReal);
    return HostMem_GetNumLive() == nLive ? wrong : wrong + "Memory was lost. ";
}

}  // namespace histories
