// Histories of operations on two managers, each answer and each resulting record compared with
// tests/record_model.hpp. An operation draws its arguments from choices, numbers that come from a
// random generator or from the bytes of an input, and from what the managers hold, so that any
// operation of a history can be left out. Shared by the randomised tests and the fuzzing of
// operations.
#pragma once

#include <array>
#include <cstring>
#include <functional>
#include <random>
#include <sstream>

#include "names/names_reader.h"
#include "tests/record_model.hpp"

namespace histories {

using namespace names;
using model::Field;
using model::joined;
using model::Range;
using model::Record;
using model::Strings;

// A number below nBound, which is at least 1.
using Choices = std::function<uint32_t(uint32_t nBound)>;

inline Choices randomChoices(uint32_t nSeed) {
    return [random = std::minstd_rand(nSeed)](uint32_t nBound) mutable {
        return uint32_t(random()) % nBound;
    };
}

// A byte for each choice, two where it is among more than 256; zeros at the end.
inline Choices byteChoices(const uint8_t *pNext, const uint8_t *pEnd) {
    return [pNext, pEnd](uint32_t nBound) mutable {
        uint32_t n = pNext != pEnd && nBound > 1 ? *pNext++ : 0;
        if (nBound > 256) { n = n << 8 | (pNext != pEnd ? *pNext++ : 0); }
        return n % nBound;
    };
}

struct Pair {
    NamesManager *pReal;
    Record twin;
};

// What distinguishes histories. Chances are in 256.
struct Habits {
    int32_t nDistinct;  // most names are made of that many texts, 1: of the empty one; 0: of any
    int32_t nLong;      // chance of a name about as long as one of the module's sizes
    int32_t nStray;     // chance of an argument outside the contract
    int32_t nShort;     // chance that memory runs short
    int32_t nAudited;   // chance that a manager is audited after an operation; both are at the end
    bool bHuge = true;  // whether long names may take a block of their own
};

template <typename Numbers>
std::string shown(const Numbers &numbers) {
    std::string text;
    for (const auto n : numbers) { text += std::to_string(n) + ' '; }
    return text;
}

constexpr int32_t kMostNames = 12 * kMaxSegmentNames;  // where lists are no longer let grow

// One operation under way: what it draws from, a log of what was drawn, and what went wrong.
struct Call {
    Choices choose;
    Habits habits;
    Pair &mine, &other;
    std::ostream *pLog;  // or NULL
    NamesManager *pReal = mine.pReal;
    Record &twin = mine.twin;
    std::string wrong = {};   // answers and locks
    std::string broken = {};  // what is wrong even where memory runs short
    bool bTooLong = false;    // a name is, which may be seen only after others were stored
    bool bRefused = false;    // the twin's status is not 0

    int32_t pick(int32_t nLow, int32_t nHigh) {
        return nLow + int32_t(choose(uint32_t(nHigh - nLow) + 1));
    }
    template <typename T>
    T pick(std::initializer_list<T> from) {
        return from.begin()[choose(uint32_t(from.size()))];
    }
    bool chance(int32_t nIn256) { return nIn256 > 0 && pick(0, 255) > 255 - nIn256; }

    template <typename T>
    T log(const char *szWhat, T argument) {
        if (pLog != nullptr) { *pLog << ' ' << szWhat << ' ' << argument; }
        return argument;
    }

    // The answers of the real manager and of its twin to a call that took and gave back these
    // locks, or those instead.
    template <typename T>
    void answer(const T &real, const T &expected, const char *szLocks = "+mine-mine",
                const char *szInstead = nullptr) {
        compare(real, expected);
        if constexpr (std::is_same_v<T, int32_t>) {
            bRefused = bRefused || expected != 0;
            if (real != expected && real != 1 && real != -1) { broken += "An odd status. "; }
        }
        std::string seen;
        for (const auto &[pLock, bTaken] : steered::takeLocks()) {
            const bool bOther = pLock == &other.pReal->lock;
            seen += (bTaken ? "+" : "-");
            seen += bOther ? "other" : pLock == &pReal->lock ? "mine" : "none of them";
        }
        if (steered::kIsStrict && (szInstead == nullptr || seen != szInstead)) {
            compare<std::string>(seen, szLocks);
        }
    }
    template <typename T>
    void compare(const T &real, const T &expected) {
        if (real == expected) { return; }
        std::ostringstream text;
        text << "Answered " << real << ", not " << expected << ". ";
        wrong += text.str();
    }

    // A text of about the length of one of the module's sizes, of default names, of what is there,
    // or of a few letters.
    std::string anyText(int32_t iName) {
        const int32_t nDistinct = habits.nDistinct;
        if (nDistinct == 1 && chance(230)) { return ""; }
        if (chance(nDistinct > 0 ? 230 : 20)) {
            const std::string start = pick({"nm", "name"});
            return start + std::to_string(pick(1, nDistinct > 0 ? nDistinct : twin.nNames() + 5));
        }
        if (chance(habits.nLong) && twin.nNames() < 300) {
            static constexpr int32_t kSizes[] = {kLocalTextBytes, kFirstBlockBytes,
                                                 kNewBlockBytes / 2, kNewBlockBytes, kMaxNameBytes};
            const int32_t nAbout = kSizes[pick(0, habits.bHuge ? 4 : 2)];
            return std::string(size_t(nAbout + pick(-2, 1)), 'L');
        }
        std::string made = iName < twin.nNames() && chance(128) ? twin.name(iName) : "";
        if (made.empty()) { made.assign(size_t(pick(0, 40)), "abcdefgh \t\xE9"[pick(0, 10)]); }
        if (chance(80)) { made.resize(made.size() / 2); }
        if (chance(80)) { made.append(pick<size_t>({1, 5, 9}), 'l'); }
        if (!made.empty() && chance(80)) { made[0] = char(pick('a', 'z')); }
        return made;
    }

    // One that ends exactly where a block does, or a byte before or after, after others of nBytes
    // bytes.
    std::string fillingText(int32_t nBytes) {
        const int32_t nMost = habits.nLong > 0 ? kMaxNameBytes + 1 : 300,
                      nRoom = twin.block(pick(0, twin.nBlocks() - 1)).nRoom();
        return std::string(size_t(std::clamp(nRoom - nBytes + pick(-2, 0), 0, nMost)), 'F');
    }

    // Names to be stored from an index on.
    Strings texts(size_t nTexts, int32_t iFirst) {
        Strings made;
        const int32_t nManner = pick(0, 5), nLength = nManner > 2 ? pick(0, 30) : 0,
                      nStep = nManner > 2 ? pick(0, 3) : 0;
        const std::string end = pick({"", "", "", "", " ", "  ", "\t"});
        for (int32_t i = iFirst; made.size() < nTexts; ++i) {
            if (nManner < 3) {
                made.push_back(anyText(i) + (chance(50) ? end : ""));
            } else if (nManner == 3 && i < twin.nNames()) {
                made.push_back(twin.name(i) + std::string(size_t(nStep), 'm'));
            } else {
                const int32_t nSloping = (nLength + nStep * (i - iFirst)) % 40;
                made.push_back(std::string(size_t(nSloping), char('a' + i % 26)) + end);
            }
        }
        if (nManner == 5 && nTexts > 0) {
            made.back() = fillingText(Record::sizeOf(model::Texts(made).first(nTexts - 1)));
        }
        log("of", nTexts);
        for (size_t i = 0; i < nTexts; ++i) {
            bTooLong = bTooLong || made[i].size() > kMaxNameBytes;
            if (i < 8) { log(made[i].substr(0, 40).c_str(), made[i].size()); }
        }
        return made;
    }
    Strings texts(Range range) {
        const auto [first, last, bOneBased] = Record::boundsOf(range).value_or(Range{0, 3, 0});
        return texts(size_t(last) + 1 - size_t(first), first);
    }

    // Where lists, their segments and reads begin and end, or anywhere.
    int32_t anyIndex() {
        const int32_t nManner = pick(0, 6), nNames = twin.nNames();
        if (nManner == 1 || nManner == 2) { return nNames; }
        if (nManner == 3) { return std::max(twin.cursor.iName, 0); }
        if (nManner == 4) { return pick(0, nNames); }
        if (nManner == 0 || twin.starts.empty()) { return 0; }
        const NameSegment at = twin.segment(pick(0, twin.nSegments() - 1));
        return nManner == 5 ? at.iFirst : at.iLast;
    }
    int32_t anyCount(int32_t first) {
        const int32_t nManner = pick(0, 9);
        if (nManner < 4) { return 1; }
        if (nManner < 6) { return pick(2, 20); }
        if (nManner == 6) { return pick(0, 1); }
        if (nManner == 7) { return std::max(anyIndex() - first + 1, 1); }
        constexpr int32_t kMost = kMaxSegmentNames;
        return pick(
            {kMost - 1, kMost, kMost + 1, 2 * kMost + 1, std::min(kMaxBatchNames + 1, 4 * kMost)});
    }
    Range anyRange(bool bGrow, bool bSingle) {
        constexpr int32_t kMin = INT32_MIN, kMax = INT32_MAX;
        if (chance(habits.nStray / 2)) {
            return pick<Range>(
                {{-1, -1, 0}, {0, 0, 1}, {kMax, kMax, 0}, {kMin, kMin, 1}, {-9, -9, 1}});
        }
        if (!bSingle && chance(habits.nStray / 2)) {
            return pick<Range>({{5, 3, 0}, {-3, 2, 0}, {0, kMax, 0}, {3, kMin, 1}, {-3, -4, 0}});
        }
        int32_t first = anyIndex(), n = bSingle ? 1 : anyCount(first);
        if (bGrow && twin.nNames() <= kMostNames) {
            first += chance(15) ? pick(1, 5) : 0;
        } else {
            first = std::clamp(first, 0, std::max(twin.nNames() - 1, 0));
            n = bSingle ? 1 : std::min(n, twin.nNames() - first);
        }
        const int32_t bOneBased = pick(0, 1);
        return {first + bOneBased, first + n - 1 + bOneBased, bOneBased};
    }
    Range range(bool bGrow, bool bSingle = false) {
        const Range drawn = anyRange(bGrow, bSingle);
        log("from", drawn.first), log("to", drawn.last), log("one-based", drawn.bOneBased);
        return drawn;
    }

    Field field() {
        const int32_t nWidth = chance(habits.nStray) ? pick(-1, 0) : pick({1, 2, 11, 24, 300});
        return {log("pad", pick(0, 1)), log("cut", pick(0, 1)), log("width", nWidth)};
    }
};

// Texts as a caller may give them: NUL-terminated ones, back to back or not, when nWidth is
// negative, else fields of nWidth bytes, of their lengths where it is 0. No byte can be read beyond
// each field or the last NUL.
struct Fields {
    std::vector<std::vector<char>> copies;
    std::vector<const char *> pointers;
    std::vector<int32_t> lengths;
    Fields(const Strings &texts, int32_t nWidth, bool bTogether) {
        const std::string all = bTogether && nWidth < 0 ? joined(texts, std::string(1, '\0')) : "";
        copies.emplace_back(all.begin(), all.end());
        const char *pNext = copies[0].data();
        for (const std::string &text : texts) {
            const size_t nMost = nWidth < 0    ? SIZE_MAX
                                 : nWidth == 0 ? text.size()
                                               : size_t(nWidth),
                         nBytes = std::min(text.size() + 1, nMost);
            if (all.empty()) {
                std::vector<char> &copy = copies.emplace_back(1, '#');  // not NULL if empty
                copy.insert(copy.end(), text.c_str(), text.c_str() + nBytes);
                pNext = copy.data() + 1;
            }
            pointers.push_back(pNext);
            lengths.push_back(Record::lengthOf(text));
            pNext += nBytes;
        }
    }
};

// One of the texts, if there is any, gets a NUL, which is refused where lengths are given.
inline bool spoil(Call &c, Strings &texts) {
    const bool bNul = c.log("NUL", !texts.empty() && c.chance(30));
    if (bNul) { texts.back().insert(texts.back().size() / 2, 1, '\0'); }
    return bNul;
}

// ---- The operations

inline void store(Call &c) {
    const int32_t nHow = c.log("manner", c.pick(0, 9)),
                  nWidth = nHow < 8 ? -1 : c.log("width", c.pick({1, 5, 40, 3000}));
    const Range at = c.range(true, nHow >= 6);
    const auto [first, last, bOneBased] = at;
    const Strings texts = c.texts(at);
    const Fields fields(texts, nWidth, c.chance(200));
    const char *const *ppNames = fields.pointers.data();
    if (nHow < 4) {
        c.answer(NamesManager_AddNames(c.pReal, first, last, bOneBased, ppNames),
                 c.twin.addNames(at, texts.data()));
    } else if (nHow < 6) {
        const Fields buffer(texts, -1, true);
        const char *pBuffer = buffer.copies[0].data();
        c.answer(NamesManager_AddNamesFromBuffer(c.pReal, first, last, bOneBased, pBuffer),
                 c.twin.addNamesFromBuffer(at, texts.data()));
    } else if (nHow < 8) {
        c.answer(NamesManager_AddName(c.pReal, first, bOneBased, ppNames[0]),
                 c.twin.addNames(at, texts.data()));
    } else {
        const int32_t nMax = c.chance(50) ? c.pick(-1, 0) : nWidth;
        c.answer(NamesManager_AddNameWithMaxLength(c.pReal, first, bOneBased, ppNames[0], nMax),
                 c.twin.addNameWithMaxLength(at, texts[0], nMax));
    }
}

// Names, or parts of some, are stored from where they lie in the manager itself, in any order, and
// others among them; with lengths, which end them anywhere, or without.
inline void storeOwn(Call &c) {
    const bool bLengths = c.log("lengths", c.chance(128)), bSingle = c.chance(80);
    const Range at = c.range(true, bSingle && !bLengths);
    const int32_t nNames = c.twin.nNames(), nOthers = nNames == 0 ? 256 : c.pick({0, 0, 80, 256});
    Strings texts = c.texts(at);
    const bool bNul = bLengths && spoil(c, texts);
    Fields fields(texts, bLengths ? 0 : -1, false);
    for (size_t k = 0; k + (bNul ? 1 : 0) < texts.size(); ++k) {
        if (c.chance(nOthers)) { continue; }
        const int32_t iOwn = c.log("own", c.pick(0, nNames - 1)),
                      nLess = c.log("less", c.pick(0, 3));
        const auto nFrom = std::min(size_t(nLess), c.twin.name(iOwn).size());
        const auto [iBlock, nOffset] = c.twin.position(iOwn);
        texts[k] = c.twin.name(iOwn).substr(nFrom, bLengths ? c.pick<size_t>({0, 2, 9, 500})
                                                            : std::string::npos);
        fields.pointers[k] = c.pReal->pBlocks[iBlock].pData + nOffset + nFrom;
        fields.lengths[k] = Record::lengthOf(texts[k]);
    }
    const char *const *ppNames = fields.pointers.data();
    const auto [first, last, bOneBased] = at;
    c.answer(bLengths  ? NamesManager_AddNamesWithLengths(c.pReal, first, last, bOneBased, ppNames,
                                                          fields.lengths.data())
             : bSingle ? NamesManager_AddName(c.pReal, first, bOneBased, ppNames[0])
                       : NamesManager_AddNames(c.pReal, first, last, bOneBased, ppNames),
             bNul && Record::boundsOf(at) ? 1 : c.twin.addNames(at, texts.data()));
}

inline void copyName(Call &c) {
    // A failure may leave what its own name was before.
    const bool bOther = c.log("of the other", c.habits.nShort > 0 || c.chance(128));
    Pair &from = bOther ? c.other : c.mine;
    const Range to = c.range(true, true), at = c.range(true, true);
    const std::string prefix = c.chance(128) ? "" : c.texts(1, 0)[0];
    c.answer(prefix.empty()
                 ? NamesManager_CopyName(c.pReal, to.first, to.bOneBased, from.pReal, at.first,
                                         at.bOneBased)
                 : NamesManager_CopyNameWithPrefix(c.pReal, to.first, to.bOneBased, from.pReal,
                                                   at.first, at.bOneBased, prefix.c_str()),
             c.twin.copyName(to, from.twin, at, prefix),
             bOther ? "+other-other+mine-mine" : "+mine-mine+mine-mine",
             bOther ? "+other-other" : "+mine-mine");
}

inline void generate(Call &c) {
    const int32_t nMore = c.pick({-1, 0, 1, 2, 5, 3 * kMaxSegmentNames}),
                  nCount = c.twin.nNames() + (c.twin.nNames() > kMostNames ? 0 : nMore);
    if (c.chance(50)) {
        const std::string given = c.texts(1, 0)[0].substr(0, 50);
        const char *szOwn = c.pReal->szFirstGeneratedName + c.pick(0, 31),
                   *szFirst = c.chance(80) ? szOwn : given.c_str();
        c.twin.setFirstGeneratedName(szFirst);
        NamesManager_SetFirstGeneratedName(c.pReal, szFirst);
    }
    c.log("up to", nCount);
    c.answer(NamesManager_GenerateNames(c.pReal, nCount), c.twin.generateNames(nCount));
}

// Arrays for the names and lengths of a range, either of which a caller may leave out.
struct Arrays {
    std::vector<const char *> names;
    std::vector<int32_t> lengths;
    bool bNames, bLengths;

    Arrays(size_t n, bool bWithNames, bool bWithLengths)
        : names(n, "untouched"), lengths(n, -7), bNames(bWithNames), bLengths(bWithLengths) {}
    const char **ppNames() { return bNames ? names.data() : nullptr; }
    int32_t *pLengths() { return bLengths ? lengths.data() : nullptr; }
    bool hold(const Strings &texts) const {
        for (size_t k = 0; k < names.size(); ++k) {
            const bool bWritten = k < texts.size();
            if (names[k] != (bWritten && bNames ? texts[k] : "untouched") ||
                lengths[k] != (bWritten && bLengths ? Record::lengthOf(texts[k]) : -7)) {
                return false;
            }
        }
        return true;
    }
};

inline void read(Call &c) {
    const int32_t nHow = c.log("manner", c.pick(0, 9));
    const Range at = c.range(c.chance(8), nHow >= 8);
    const auto [first, last, bOneBased] = at;
    const auto bounds = Record::boundsOf(at);
    const size_t n = bounds ? size_t(bounds->last - bounds->first) + 3 : 3;
    Arrays arrays(n, nHow > 0 && c.chance(200), nHow == 0 || (nHow > 4 && c.chance(170)));
    const bool bNeedsNone = bounds && bounds->last < c.twin.nNames();
    Strings expected;
    if (nHow == 0) {
        NamesManager_GetNameLengths(c.pReal, first, last, bOneBased, arrays.pLengths());
        c.twin.getHeldNames(at, &expected);
        c.answer(true, true);
    } else if (nHow < 8) {
        c.answer(
            nHow < 5
                ? NamesManager_GetNamePointers(c.pReal, first, last, bOneBased, arrays.ppNames())
                : NamesManager_GetNameViews(c.pReal, first, last, bOneBased, arrays.ppNames(),
                                            arrays.pLengths()),
            c.twin.getNamePointers(at, arrays.bNames || arrays.bLengths ? &expected : nullptr));
    } else {
        const char *szName = NamesManager_GetName(c.pReal, first, bOneBased);
        c.answer<std::string>(szName == nullptr ? "none" : szName,
                              c.twin.getNamePointers(at, &expected) != 0 ? "none" : expected[0]);
        expected.clear();
    }
    c.compare(arrays.hold(expected), true);
    if (bNeedsNone) { c.broken = c.wrong; }
}

inline void readIntoBuffer(Call &c) {
    const bool bSingle = c.log("single", c.chance(80)), bAsk = c.chance(200);
    const Range at = c.range(c.chance(8), bSingle);
    const Field field = c.field();
    uint64_t nReal = 7, nTwin = 7;
    std::string bytes;
    const auto get = [&](char *p, uint64_t nSize, uint64_t *pnRequired) {
        const auto [first, last, bOneBased] = at;
        const auto [bPad, bCut, nWidth] = field;
        const int32_t nStatus =
            bSingle ? NamesManager_GetNameIntoBuffer(c.pReal, first, bOneBased, bPad, bCut, nWidth,
                                                     p, nSize, pnRequired)
                    : NamesManager_GetNames(c.pReal, first, last, bOneBased, bPad, bCut, nWidth, p,
                                            nSize, pnRequired);
        c.answer(nStatus,
                 p == nullptr && nSize > 0 ? 1 : c.twin.getNames(at, field, nSize, nTwin, bytes));
        if (nStatus != 0 && p != nullptr && nSize > 0 && *p != '#') {
            c.broken += "Read, but failed. ";
        }
    };
    get(nullptr, 0, bAsk ? &nReal : nullptr);
    c.compare<uint64_t>(nReal, bAsk ? nTwin : 7);
    const size_t nSize = nTwin + uint64_t(c.pick(nTwin > 0 ? -1 : 0, 1)),
                 nAfter = c.chance(128) ? 8 : 0;
    std::vector<char> buffer(nSize + nAfter, '#');  // else no byte can be written beyond it
    get(buffer.data(), nSize, nullptr);
    bytes.resize(buffer.size(), '#');
    c.compare(std::string(buffer.begin(), buffer.end()), bytes);
    if (c.chance(c.habits.nStray)) { get(nullptr, 9, nullptr); }
}

inline void readOther(Call &c) {
    const Range at = c.range(false, true);
    const auto [bPad, bBlanks, nWidth] = c.field();
    if (c.log("longest", c.chance(128))) {
        c.answer(NamesManager_GetMaxNameLength(c.pReal), c.twin.getMaxNameLength());
    }
    c.answer(NamesManager_GetNumNames(c.pReal), c.twin.nNames());
    const bool bRefused = bBlanks + bPad != 0 && nWidth < 1,
               bRoom = !steered::kIsStrict || !c.chance(50);
    const uint64_t nRoom = bRoom ? UINT64_MAX : c.log("room", c.pick<uint64_t>({0, 1, 5, 12, 30}));
    steered::Text real(nRoom);
    std::string text;
    c.answer(NamesManager_WriteNameToText(c.pReal, at.first, at.bOneBased, bBlanks, bPad, nWidth,
                                          real.pText),
             c.twin.writeNameToText(at, bBlanks != 0, {bPad, 0, nWidth}, nRoom, text),
             bRefused ? "" : "+mine-mine");
    c.compare(real.seen(), text);
}

inline void find(Call &c) {
    Strings texts = c.texts(c.pick<size_t>({1, 2, 8}), c.pick(0, c.twin.nNames()));
    const int32_t nHow = c.log("manner", c.pick(0, 4)), bOneBased = c.pick(0, 1),
                  nWidth = nHow == 1 || nHow == 2
                               ? c.pick({-1, -2, 0, 1, 4, 8, kLocalTextBytes + 44})
                               : -1,
                  nList = c.chance(25) ? c.pick(-1, 0) : Record::toInt(texts.size()),
                  nCount = nHow == 2 || nHow == 3 ? 1 : nList;
    c.log("width", nWidth), c.log("count", nCount);
    const bool bNul = nHow == 4 && nCount > 0 && spoil(c, texts);
    const Fields fields(texts, nHow == 4 ? 0 : nWidth, c.chance(128));
    const char *const *ppNames = fields.pointers.data();
    std::vector<int32_t> indices(texts.size(), -7), expected = indices;
    int32_t *pIndices = nHow == 2 || nHow == 3 || c.chance(240) ? indices.data() : nullptr;
    int32_t nStatus = 0;
    switch (nHow) {
    case 0:
        nStatus = NamesManager_FindNameList(c.pReal, ppNames, nCount, bOneBased, pIndices);
        break;
    case 1:
        nStatus = NamesManager_FindNames(c.pReal, ppNames, nCount, nWidth, bOneBased, pIndices);
        break;
    case 2: indices[0] = NamesManager_FindNameInField(c.pReal, *ppNames, nWidth, bOneBased); break;
    case 3: indices[0] = NamesManager_FindName(c.pReal, *ppNames, bOneBased); break;
    default:
        nStatus = NamesManager_FindNamesWithLengths(c.pReal, ppNames, fields.lengths.data(), nCount,
                                                    bOneBased, pIndices);
    }
    if (!bNul) { c.twin.buildIndex(); }
    for (int32_t k = 0; k < nCount; ++k) {
        const int32_t iFound = bNul ? -1 : c.twin.findName(texts.data()[k], nWidth, bOneBased);
        if (pIndices != nullptr) { expected.data()[k] = iFound; }
    }
    c.answer(nStatus, bNul ? 1 : 0);
    c.compare(shown(indices), shown(expected));
    const bool bLong = std::any_of(texts.begin(), texts.end(), [](const std::string &text) {
        return text.size() >= kLocalTextBytes;
    });
    if (!bLong) { c.broken = c.wrong; }  // it needs no memory
    if (nStatus != 0 && *std::max_element(indices.begin(), indices.end()) >= 0) {
        c.broken += "Found, but failed. ";
    }
}

// Two readers, each with its cursor, answer as the operations do, generate nothing and change
// nothing.
inline void useReaders(Call &c) {
    const int32_t bLookups = c.log("with lookups", c.pick(0, 1)), nNames = c.twin.nNames();
    std::array<NamesReader, 2> readers = {};
    const int32_t nStatus = NamesReader_Open(&readers[0], c.pReal, bLookups);
    if (bLookups != 0) { c.twin.buildIndex(); }
    const bool bFinds = bLookups != 0 && c.twin.bLookupIndex;
    c.answer(nStatus, bLookups != 0 && nNames > 0 && !bFinds ? 1 : 0);
    readers[1] = readers[0];
    for (int32_t n = c.pick(1, 8); n > 0; --n) {
        NamesReader *pReader = &readers[size_t(c.pick(0, 1))];
        const Range at = c.range(c.chance(40), c.chance(128));
        const auto [first, last, bOneBased] = at;
        Strings expected;
        const bool bExist = c.twin.getHeldNames(at, &expected), bSingle = first == last;
        Arrays arrays(expected.size() + 1, bSingle || c.chance(240), c.chance(240));
        if (bSingle) {
            const bool bInlined = bOneBased == 0 && arrays.pLengths() == nullptr;
            const char *szName =
                bInlined ? NamesReader_Name(pReader, first)
                         : NamesReader_GetName(pReader, first, bOneBased, arrays.pLengths());
            c.compare(szName != nullptr, bExist);
            if (szName != nullptr) { arrays.names[0] = szName; }
        } else {
            c.compare(NamesReader_GetNameViews(pReader, first, last, bOneBased, arrays.ppNames(),
                                               arrays.pLengths()),
                      bExist ? 0 : 1);
        }
        c.compare(arrays.hold(expected), true);
    }
    const Strings texts = c.texts(c.pick<size_t>({1, 2, 40}), c.pick(0, nNames));
    const Fields fields(texts, -1, false);
    std::vector<int32_t> indices(texts.size(), -7), expected(texts.size(), -1);
    for (size_t k = 0; k < texts.size() && bFinds; ++k) {
        expected[k] = c.twin.findName(texts[k], -1, bLookups);
    }
    if (texts.size() == 1) {
        indices[0] = NamesReader_FindName(&readers[0], fields.pointers[0], bLookups);
    } else {
        c.compare(NamesReader_FindNames(&readers[1], fields.pointers.data(),
                                        Record::toInt(texts.size()), -1, bLookups, indices.data()),
                  0);
    }
    c.compare(shown(indices), shown(expected));
}

inline void checkDuplicates(Call &c) {
    const Range at = c.range(true);
    const auto [first, last, bOneBased] = at;
    const bool bBuffer = c.log("in a buffer", c.chance(128)),
               bInContract = Record::boundsOf(at).has_value();
    const Strings texts = c.texts(at);
    const std::string inList = c.pick<std::string>({"\t\n", "z", {"\0z", 2}}),
                      end = bBuffer ? std::string(1, '\0') : inList, buffer = joined(texts, end);
    std::vector<std::optional<std::string>> given(texts.begin(), texts.end());
    std::vector<const char *> pointers;
    std::vector<int32_t> lengths;
    for (const char *p = buffer.data(); auto &text : given) {
        pointers.push_back(p);
        const int32_t nBeyond = end[0] == '\0' ? c.pick(0, 2) : 0;  // a name ends at its NUL
        lengths.push_back(Record::lengthOf(*text) + nBeyond);
        p += text->size() + end.size();
        if (bBuffer ? Record::lengthOf(*text) <= kMaxNameBytes : c.chance(240)) { continue; }
        text.reset();
        pointers.back() = nullptr;
    }
    std::string real(20, '#'), twin = real;
    const int32_t nSize = c.pick({-1, 0, 1, 4, 20});
    int32_t bSeen = bInContract ? 7 : 0, iSeen = -7, iSecond = -7;
    model::Clash clash = {0, -7, -7, ""};
    const int32_t nStatus =
        bBuffer ? NamesManager_CheckDuplicateNamesInBuffer(c.pReal, first, last, bOneBased,
                                                           buffer.data(), &bSeen, &iSeen, &iSecond,
                                                           real.data(), nSize)
                : NamesManager_CheckDuplicateNames(c.pReal, first, last, bOneBased, pointers.data(),
                                                   lengths.data(), &bSeen, &iSeen, &iSecond,
                                                   real.data(), nSize);
    if (nStatus != 0 && bSeen == 1) { c.broken += "Found, but failed. "; }
    c.answer(nStatus, c.twin.checkDuplicateNames(at, given, clash),
             bBuffer && !bInContract ? "" : "+mine-mine");
    if (clash.bDuplicate != 0 && nSize > 0) {
        const std::string cut = clash.name.substr(0, size_t(nSize - 1)) + '\0';
        twin.replace(0, cut.size(), cut);
    }
    c.compare(shown(std::array{bSeen, iSeen, iSecond}) + real,
              shown(std::array{clash.bDuplicate, clash.iFirst, clash.iSecond}) + twin);
}

inline void remove(Call &c) {
    Range at = c.range(false);
    if (c.chance(25) && at.last >= at.first) {
        at.last = c.log("to", c.pick({c.twin.nNames() + 500, INT32_MAX}));
    }
    const int32_t nBefore = c.twin.nNames(),
                  nStatus = NamesManager_RemoveNames(c.pReal, at.first, at.last, at.bOneBased);
    c.answer(nStatus, c.twin.removeNames(at));
    if (nStatus != 0 && c.pReal->nNames != nBefore) { c.broken += "Removed, but failed. "; }
}

// Every so many indices of a range or of all, some left out, given twice or not in order, and some
// that are of no name.
inline void removeListed(Call &c) {
    const int32_t nNames = c.twin.nNames();
    const Range at = c.chance(80) ? Range{0, nNames, 0} : c.range(false);
    std::vector<int32_t> indices;
    const int32_t nStep = c.log("every", c.pick(1, 4)), nLeftOut = c.pick({0, 20, 128, 240}),
                  nTwice = c.pick({0, 20}), iEnd = std::min(at.last, nNames + 2);
    for (int32_t i = std::max(at.first, 0) - 2; i < iEnd; i += nStep) {
        if (!c.chance(nLeftOut)) { indices.insert(indices.end(), c.chance(nTwice) ? 2 : 1, i); }
    }
    if (c.chance(25)) { indices.push_back(INT32_MAX); }
    const int32_t nCount = c.log("count", Record::toInt(indices.size()));
    for (int32_t i = c.chance(80) ? nCount - 1 : 0; i > 0; --i) {
        std::swap(indices.data()[i], indices.data()[c.pick(0, i)]);
    }
    c.answer(NamesManager_RemoveNamesByIndices(c.pReal, indices.data(), nCount),
             c.twin.removeNamesByIndices(indices));
}

inline void copy(Call &c) {
    const bool bSelf = c.log("itself", c.chance(25));
    c.answer(NamesManager_Copy(c.pReal, (bSelf ? c.mine : c.other).pReal),
             bSelf ? 1 : c.twin.copy(c.other.twin), bSelf ? "" : "+mine+other-other-mine");
}

inline void wholeManager(Call &c) {
    const int32_t nHow = c.log("switch 0, release 1, clear 2:", c.pick({0, 1, 1, 1, 2}));
    c.answer(nHow == 0   ? NamesManager_StoreIndividualNamePositions(c.pReal)
             : nHow == 1 ? NamesManager_ReleaseEmptyBlocks(c.pReal)
                         : NamesManager_Clear(c.pReal),
             nHow == 0   ? c.twin.storeIndividualNamePositions()
             : nHow == 1 ? c.twin.releaseEmptyBlocks()
                         : c.twin.clear());
}

// A table of blocks that a save could have written: no addresses, nothing in the padding.
inline std::string normalized(std::string blocks) {
    for (size_t at = 0; at < blocks.size(); at += sizeof(NameStorageBlock)) {
        blocks.replace(at, 8, 8, '\0').replace(at + 20, 4, 4, '\0');
    }
    return blocks;
}

inline void save(Call &c) {
    const Strings image = c.twin.save();
    const int32_t nAll = Record::toInt(image.size()),
                  iFailing = c.log("failing at", c.chance(80) ? c.pick(0, nAll - 1) : nAll);
    model::Output output = {.nRoom = iFailing};
    c.answer(NamesManager_Save(c.pReal, nullptr, &output.stream),
             iFailing < nAll ? model::kWriteError : 0);
    if (HostMem_HasFailed() && iFailing > 8) { output.writes[9] = normalized(output.writes[9]); }
    if (output.writes != Strings(image.begin(), image.begin() + std::min(iFailing + 1, nAll))) {
        c.wrong += "The image differs. ";
    }
    c.broken = c.wrong;  // it needs no memory
}

// Other capacities, small blocks and empty ones anywhere, segments that could be one: a state that
// a manager can be in, but rarely gets to.
inline void tighten(Call &c, Record &saved) {
    for (model::Block &block : saved.blocks) {
        block.nSize = std::max(block.nUsed(), 1) + c.pick({0, 0, 7, 60});
    }
    for (int32_t n = c.pick(0, 3); n > 0; --n) {
        saved.insertEmptyBlock(c.pick(0, saved.nBlocks()), c.pick(1, 200));
    }
    for (int32_t n = saved.starts.empty() ? 0 : c.pick(0, 3); n > 0; --n) {
        saved.cutBefore(c.pick(0, saved.nNames() - 1));
        saved.resetCursor();
    }
    saved.nBlocksAlloc = saved.nBlocks() + c.pick(0, 3);
    const int32_t nSegments = saved.nSegments() + c.pick(saved.nSegments() == 0 ? 1 : 0, 4);
    saved.nSegmentsAlloc = saved.bSegments ? nSegments : 0;
    saved.nPositionsAlloc = saved.bSegments ? 0 : saved.nNames() + c.pick(0, 7);
    saved.nGeneratedNameBase = c.pick({0, saved.nNames(), saved.nNames() + 2, INT32_MAX - 3});
    saved.cursor.nMisses = c.pick(0, kMaxFreeMisses + 2);
}

inline void load(Call &c) {
    Record saved = (c.log("of the other", c.chance(80)) ? c.other : c.mine).twin;
    if (c.log("tightened", c.chance(200))) { tighten(c, saved); }
    const bool bNone = c.chance(12), bCut = c.chance(25);
    const std::string image = bNone ? std::string(4, '\xFF') : joined(saved.save(), "");
    const int32_t nImage = Record::lengthOf(image),
                  nBytes = c.log("bytes", bCut ? c.pick(0, std::min(nImage, 65536) - 1) : nImage);
    const std::vector<char> copied(image.begin(), image.begin() + nBytes);
    steered::Input input(copied.data(), copied.size());
    c.answer<int32_t>(NamesManager_Load(c.pReal, nullptr, input.pStream),
                      nBytes < nImage ? steered::kEndOfInput : 0);
    c.twin.clear();
    if (!bNone && nBytes == nImage) { c.twin.load(saved); }
}

// Names some of which are held, and some of which come again with blanks at their end.
inline void findOrAdd(Call &c) {
    const int32_t nNames = c.twin.nNames(), bOneBased = c.pick(0, 1);
    Strings texts = c.texts(c.pick<size_t>({0, 1, 3, 31, 100}), c.pick(0, nNames));
    for (size_t k = 1; k < texts.size(); ++k) {
        const bool bOwn = nNames > 0 && (nNames > kMostNames || c.chance(40));
        if (bOwn) { texts[k] = c.twin.name(c.pick(0, nNames - 1)); }
        if (c.chance(30)) {
            texts[k] = texts[size_t(c.pick(0, int32_t(k) - 1))] + c.pick({"", " "});
        }
    }
    const Fields fields(texts, -1, c.chance(128));
    std::vector<int32_t> indices(texts.size(), -7), expected(texts.size(), -1);
    int32_t *pIndices = c.chance(240) ? indices.data() : nullptr;
    c.answer(NamesManager_FindOrAddNames(c.pReal, fields.pointers.data(),
                                         Record::toInt(texts.size()), bOneBased, pIndices),
             c.twin.findOrAddNames(texts, bOneBased, expected));
    if (pIndices == nullptr) { return; }
    c.compare(shown(indices), shown(expected));
    const auto end = std::find(indices.begin(), indices.end(), -1);
    const bool bFirst = std::equal(indices.begin(), end, expected.begin()),
               bOthers = std::count(end, indices.end(), -1) == indices.end() - end,
               bSeen = end == indices.begin() ||
                       *std::max_element(indices.begin(), end) < c.pReal->nNames + bOneBased;
    if (!bFirst || !bOthers || !bSeen) { c.broken += "Indices of names not there. "; }
}

inline void findRepeated(Call &c) {
    const int32_t bOneBased = c.pick(0, 1),
                  first =
                      c.log("from", c.chance(c.habits.nStray) ? c.pick({-1, INT32_MIN, INT32_MAX})
                                                              : c.anyIndex() + bOneBased);
    int32_t iEarlier = -7;
    const auto [iRepeated, iExpected] = c.twin.findRepeatedName(first, bOneBased);
    c.answer(NamesManager_FindRepeatedName(c.pReal, first, bOneBased, &iEarlier), iRepeated);
    c.compare(iEarlier, iExpected);
}

// The chances of each kind in the profiles: appending, replacing, removing, reading, all alike,
// arguments outside the contract.
constexpr size_t kProfiles = 6, kOutside = 5;
constexpr struct {
    const char *szName;
    void (*pfnRun)(Call &c);
    bool bMayClear;  // where memory runs short
    int32_t chances[kProfiles];
} kKinds[] = {{"store", store, false, {60, 60, 25, 15, 20, 20}},
              {"store its own", storeOwn, false, {8, 15, 4, 4, 10, 8}},
              {"copy name", copyName, false, {3, 10, 2, 2, 6, 10}},
              {"generate", generate, false, {4, 2, 4, 4, 5, 2}},
              {"read", read, false, {11, 11, 11, 50, 20, 20}},
              {"read into buffer", readIntoBuffer, false, {4, 4, 4, 20, 8, 10}},
              {"write to text", readOther, false, {4, 6, 6, 5, 6, 8}},
              {"find", find, false, {7, 9, 6, 10, 10, 10}},
              {"use readers", useReaders, false, {3, 4, 3, 10, 6, 6}},
              {"check duplicates", checkDuplicates, false, {3, 2, 2, 3, 6, 10}},
              {"remove", remove, false, {2, 2, 25, 1, 8, 10}},
              {"remove listed", removeListed, false, {1, 1, 12, 1, 5, 2}},
              {"whole", wholeManager, true, {2, 2, 4, 2, 6, 2}},
              {"copy", copy, true, {1, 1, 2, 1, 3, 3}},
              {"save", save, false, {1, 1, 2, 1, 2, 1}},
              {"load", load, true, {2, 2, 3, 2, 5, 4}},
              {"find or add", findOrAdd, false, {6, 4, 6, 3, 6, 4}},
              {"find repeated", findRepeated, false, {2, 3, 2, 2, 4, 4}}};

// ---- Histories

// Where a manager is not as its twin, empty if nowhere: which part of what it saves differs, or the
// one after these, what it does not save.
inline std::string difference(const Pair &pair) {
    const auto &[pReal, twin] = pair;
    const int64_t nEntries = pReal->pLookupIndex != nullptr ? pReal->pLookupIndex->nEntries : -1;
    const std::array<int64_t, 5> real = {pReal->nMaxNameLength, pReal->nMaxNameLengthCount,
                                         nEntries, pReal->pSegments != nullptr,
                                         pReal->pPositions != nullptr},
                                 expected = {twin.nMaxNameLength, twin.nMaxNameLengthCount,
                                             twin.nEntries(), twin.bSegments, !twin.bSegments};
    Strings parts = twin.save();
    model::Output output;
    NamesManager_Save(pReal, nullptr, &output.stream);
    steered::takeLocks();
    parts.push_back(shown(expected));
    output.writes.push_back(shown(real));
    const auto at =
        std::mismatch(parts.begin(), parts.end(), output.writes.begin(), output.writes.end());
    return output.writes == parts ? ""
                                  : "Part " + std::to_string(at.first - parts.begin()) +
                                        " is not that of " + twin.layout() + parts.back();
}

// The record of a manager as it is.
inline Record recordOf(const NamesManager &real) {
    Record record("");
    record.szNameFormat.assign(real.szNameFormat, 32);
    record.szFirstGeneratedName.assign(real.szFirstGeneratedName, 32);
    record.nGeneratedNameBase = real.nGeneratedNameBase;
    record.nMaxNameLength = real.nMaxNameLength;
    record.nMaxNameLengthCount = real.nMaxNameLengthCount;
    record.blocks.clear();
    for (const NameStorageBlock &from : std::span(real.pBlocks, size_t(real.nBlocks))) {
        record.blocks.push_back({from.nSize, from.nNamesInBlock, {from.pData, size_t(from.nUsed)}});
    }
    record.bSegments = real.pSegments != nullptr;
    for (const NameSegment &in : std::span(real.pSegments, size_t(real.nSegments))) {
        record.starts.push_back(in.iFirst);
        const char *pBlock = real.pBlocks[in.iBlock].pData, *pName = pBlock + in.nOffset;
        for (int32_t i = in.iFirst; i <= in.iLast; ++i, pName += std::strlen(pName) + 1) {
            record.positions.push_back({in.iBlock, int32_t(pName - pBlock)});
        }
    }
    if (!record.bSegments) {
        record.positions.assign(real.pPositions, real.pPositions + real.nNames);
    }
    record.nBlocksAlloc = real.nBlocksAlloc;
    record.nSegmentsAlloc = real.nSegmentsAlloc;
    record.nPositionsAlloc = real.nPositionsAlloc;
    record.bLookupIndex = real.pLookupIndex != nullptr;
    record.cursor = {real.iCursorName, real.iCursorSegment, real.iCursorBlock, real.nCursorOffset,
                     real.nCursorMisses};
    for (const auto &[iBlock, nOffset] : record.positions) {
        const char *szName = real.pBlocks[iBlock].pData + nOffset;
        record.names.emplace_back(szName);
        if (!record.bLookupIndex || steered::kHoldsEqualKeys) { continue; }
        const int32_t iFound = HostHashMap_Find(real.pLookupIndex, szName);
        if (iFound != -1) { record.entries.emplace(szName, iFound); }
    }
    return record;
}

// Whether part follows from whole by leaving names out.
inline bool isPart(const Strings &part, const Strings &whole) {
    auto next = whole.begin();
    return std::all_of(part.begin(), part.end(), [&](auto &name) {
        next = std::find(next, whole.end(), name);
        return next != whole.end() && next++ != whole.end();
    });
}

// A manager without any table refuses to work until it is cleared, and the audit says so.
inline bool refusesWithoutTables(NamesManager *pReal) {
    NamesManager_AssertConsistency(pReal);
    return steered::takeReports().nAssertions == 1 &&
           NamesManager_AddName(pReal, 0, 0, "refused") == 1 &&
           NamesManager_StoreIndividualNamePositions(pReal) == 1 && NamesManager_Clear(pReal) == 0;
}

// Makes the twin of a manager whose memory ran short what the manager is now: complete if it
// answered so, else empty or as before; or without some of the names to be removed; or with new
// names up to some point and those before from there on. A known maximum must be true.
inline std::string adopt(Pair &pair, const Strings &before, bool bComplete, bool bMayClear) {
    auto &[pReal, twin] = pair;
    const bool bTables = pReal->pSegments != nullptr || pReal->pPositions != nullptr;
    if (!bTables && !refusesWithoutTables(pReal)) { return "It works without tables. "; }
    const Strings after = std::exchange(twin, recordOf(*pReal)).names, &seen = twin.names;
    const auto at = std::mismatch(seen.begin(), seen.end(), after.begin(), after.end()).first;
    const auto nNew = std::min(at - seen.begin(), std::ssize(before));
    const bool bAllowed = bComplete   ? seen == after
                          : bMayClear ? seen.empty() || seen == before
                          : after.size() < before.size()
                              ? isPart(after, seen) && isPart(seen, before)
                              : std::equal(at, seen.end(), before.begin() + nNew, before.end());
    if (!bAllowed) {
        return "Left " + joined(seen, "|") + ", not some of " + joined(before, "|") + " and " +
               joined(after, "|");
    }
    return twin.hasTrueMaximum() ? "" : "A false maximum. ";
}

inline std::string audit(Pair &pair) {
    steered::takeReports();
    NamesManager_AssertConsistency(pair.pReal);
    const bool bAsOwed = steered::takeReports().nAssertions == pair.twin.owedReports();
    return bAsOwed ? "" : "The audit reports. ";
}

// What a host refuses during an operation: the n-th allocation (none: 0) and those after it, maps.
struct Shortage {
    int32_t n;
    bool bFromThereOn, bNoMaps;
};

// Two managers and their twins.
struct Game {
    Habits habits;
    Pair pairs[2];
    bool bFailed = false;  // an allocation of the operation before

    // Carries out an operation on one of the managers and returns what went wrong.
    std::string play(size_t iKind, size_t iManager, Choices choose, std::ostream *pLog) {
        Call c = {std::move(choose), habits, pairs[iManager], pairs[1 - iManager], pLog};
        c.log("\nmanager", iManager), c.log(kKinds[iKind].szName, ':');
        Shortage shortage = {0, false, c.chance(habits.nShort)};
        if (c.chance(habits.nShort)) {
            shortage.n = c.log("failing at", c.pick(1, 12));
            shortage.bFromThereOn = c.log("from there", c.chance(128));
        }
        return playShort(c, iKind, shortage);
    }

    std::string playShort(Call &c, size_t iKind, const Shortage &shortage) {
        const auto &[szName, pfnRun, bMayClear, aChances] = kKinds[iKind];
        std::array<Strings, 2> before;
        if (habits.nShort != 0) { before = {c.twin.names, c.other.twin.names}; }
        steered::takeReports();
        steered::takeLocks();
        model::g_nErrors = 0;
        steered::setMaps(!shortage.bNoMaps);
        HostMem_FailAt(shortage.n, shortage.bFromThereOn);
        pfnRun(c);
        steered::setMaps(true);
        bFailed = HostMem_HasFailed();
        HostMem_FailAt(0, 0);
        const auto [nErrors, nAssertions] = steered::takeReports();
        const bool bComplete = c.wrong.empty() && !c.bRefused;
        if (bFailed) {
            c.wrong = c.broken;
            const std::string left = adopt(c.mine, before[0], bComplete, bMayClear) +
                                     adopt(c.other, before[1], bComplete, false);
            if (!c.bTooLong) { c.wrong += left; }
            steered::takeLocks();
        }
        const bool bReports = nErrors == model::g_nErrors || (bFailed && !bComplete);
        if (!bReports || nAssertions > 0 || !steered::takeLocks().empty()) {
            c.wrong += "Reports or locks. ";
        }
        if (c.chance(habits.nAudited)) { c.wrong += audit(c.mine) + difference(c.other); }
        return c.wrong + difference(c.mine) + HostMem_TakeRefusals();
    }

    // Ends the game and both managers; what went wrong.
    std::string end() {
        std::string wrong;
        steered::takeLocks();
        for (Pair &pair : pairs) {
            wrong += difference(pair) + audit(pair);
            NamesManager_Destroy(pair.pReal);
        }
        return steered::takeLocks().empty() ? wrong : wrong + "A lock too many. ";
    }
};

inline Pair newPair(uint32_t nFormat) {
    static constexpr const char *kFormats[] = {"nm%d", "name%d", "%-6d|",  "x%+05i%%", "%u ",
                                               "%#X",  "%042d",  "%0150d", "%0151d"};
    const char *szFormat = kFormats[nFormat % std::size(kFormats)];
    return {NamesManager_Create(nullptr, szFormat), Record(szFormat)};
}

}  // namespace histories
