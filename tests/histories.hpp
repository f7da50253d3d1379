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
        return static_cast<uint32_t>(random()) % nBound;
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
};

template <typename Numbers>
std::string shown(const Numbers &numbers) {
    std::string text;
    for (const auto n : numbers) { text += std::to_string(n) + ' '; }
    return text;
}

constexpr int32_t kMostNames = 12 * kMaxSegmentNames;  // where lists are no longer let grow

// One operation under way: what it draws from, what it tells of itself to whoever wants to know,
// and what went wrong.
struct Call {
    Choices choose;
    Habits habits;
    Pair &mine, &other;
    std::ostream *pTold;
    NamesManager *pReal = mine.pReal;
    Record &twin = mine.twin;
    std::string wrong = "";
    Strings known =
        {};  // texts that may be there after a failure, besides those that the twin has come to

    int32_t pick(int32_t nLow, int32_t nHigh) {
        return nLow + static_cast<int32_t>(choose(static_cast<uint32_t>(nHigh - nLow) + 1));
    }
    template <typename T>
    T pick(std::initializer_list<T> from) {
        return from.begin()[choose(static_cast<uint32_t>(from.size()))];
    }
    bool chance(int32_t nIn256) { return nIn256 > 0 && pick(0, 255) > 255 - nIn256; }

    template <typename T>
    T tell(const char *szWhat, T argument) {
        if (pTold != nullptr) { *pTold << ' ' << szWhat << ' ' << argument; }
        return argument;
    }

    // The answers of the real manager and of its twin to a call that took and gave back these
    // locks, or those instead.
    template <typename T>
    void answer(const T &real, const T &expected, const char *szLocks = "+mine-mine",
                const char *szInstead = nullptr) {
        compare(real, expected);
        std::string seen;
        for (const auto &[pLock, bTaken] : steered::takeLocks()) {
            seen.append(bTaken ? "+" : "-")
                .append(pLock == &pReal->lock         ? "mine"
                        : pLock == &other.pReal->lock ? "other"
                                                      : "none of them");
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
        if (habits.nDistinct == 1 && chance(230)) { return ""; }
        if (chance(habits.nDistinct > 0 ? 230 : 20)) {
            return pick({"nm", "name"}) +
                   std::to_string(
                       pick(1, habits.nDistinct > 0 ? habits.nDistinct : twin.nNames() + 5));
        }
        if (chance(habits.nLong) && twin.nNames() < 300) {
            const int32_t nAbout = pick({kLocalTextBytes, kFirstBlockBytes, kNewBlockBytes,
                                         kNewBlockBytes / 2, kMaxNameBytes});
            return std::string(static_cast<size_t>(nAbout + pick(-2, 1)), 'L');
        }
        std::string made = iName < twin.nNames() && chance(128) ? twin.name(iName) : "";
        if (made.empty()) {
            made.assign(static_cast<size_t>(pick(0, 40)), "abcdefgh \t\xE9"[pick(0, 10)]);
        }
        if (chance(80)) { made.resize(made.size() / 2); }
        if (chance(80)) { made.append(pick<size_t>({1, 5, 9}), 'l'); }
        if (!made.empty() && chance(80)) { made[0] = static_cast<char>(pick('a', 'z')); }
        return made;
    }

    // One that ends exactly where a block does, or a byte before or behind, after others of nBytes
    // bytes.
    std::string fillingText(int32_t nBytes) {
        const int32_t nRoom =
            twin.block(pick(0, twin.nBlocks() - 1)).nRoom() - nBytes + pick(-2, 0);
        return std::string(
            static_cast<size_t>(std::clamp(nRoom, 0, habits.nLong > 0 ? kMaxNameBytes + 1 : 300)),
            'F');
    }

    // Names to be stored from an index on.
    Strings texts(size_t nTexts, int32_t iFirst) {
        Strings made;
        const int32_t nManner = pick(0, 5), nLength = nManner > 2 ? pick(0, 30) : 0,
                      nStep = nManner > 2 ? pick(0, 3) : 0;
        const std::string end = pick({"", "", "", "", " ", "  ", "\t"});
        for (int32_t i = iFirst; made.size() < nTexts; ++i) {
            const int32_t nSloping = (nLength + nStep * (i - iFirst)) % 40;
            if (nManner < 3) { made.push_back(anyText(i) + (chance(50) ? end : "")); }
            if (nManner == 3 && i < twin.nNames()) {
                made.push_back(twin.name(i) + std::string(static_cast<size_t>(nStep), 'm'));
            }
            if (made.size() == static_cast<size_t>(i - iFirst)) {
                made.push_back(
                    std::string(static_cast<size_t>(nSloping), static_cast<char>('a' + i % 26)) +
                    end);
            }
        }
        if (nManner == 5 && nTexts > 0) {
            made.back() = fillingText(Record::sizeOf(model::Texts(made).first(nTexts - 1)));
        }
        if (habits.nShort > 0) {
            std::transform(made.begin(), made.end(), std::back_inserter(known), Record::trimmed);
        }
        tell("of", nTexts);
        for (size_t i = 0; i < std::min<size_t>(nTexts, 8) && pTold != nullptr; ++i) {
            *pTold << " \"" << made[i].substr(0, 40) << "\" (" << made[i].size() << ')';
        }
        return made;
    }
    Strings texts(Range range) {
        const auto [first, last, bOneBased] = Record::boundsOf(range).value_or(Range{0, 3, 0});
        return texts(static_cast<size_t>(last) + 1 - static_cast<size_t>(first), first);
    }

    // Where lists, their segments and reads begin and end, or anywhere.
    int32_t anyIndex() {
        const int32_t nManner = pick(0, 6), nNames = twin.nNames();
        if (nManner == 1 || nManner == 2) { return nNames; }
        if (nManner == 3) { return std::max(twin.cursor.iName, 0); }
        if (nManner == 4) { return pick(0, nNames); }
        if (nManner == 0 || twin.segments.empty()) { return 0; }
        const NameSegment &at = twin.segment(pick(0, twin.nSegments() - 1));
        return nManner == 5 ? at.iFirst : at.iLast;
    }
    int32_t anyCount(int32_t first) {
        const int32_t nManner = pick(0, 9);
        if (nManner < 4) { return 1; }
        if (nManner < 6) { return pick(2, 20); }
        if (nManner == 6) { return pick(0, 1); }
        if (nManner == 7) { return std::max(anyIndex() - first + 1, 1); }
        constexpr int32_t kBeyondBatch = std::min(kMaxBatchNames + 1, 4 * kMaxSegmentNames);
        return pick({kMaxSegmentNames - 1, kMaxSegmentNames, kMaxSegmentNames + 1,
                     2 * kMaxSegmentNames + 1, kBeyondBatch});
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
        if (pTold != nullptr) {
            *pTold << ' ' << drawn.first << ".." << drawn.last
                   << (drawn.bOneBased != 0 ? " one-based" : "");
        }
        return drawn;
    }

    Field field() {
        const int32_t nWidth =
            tell("width", chance(habits.nStray) ? pick(-1, 0) : pick({1, 2, 11, 24, 300}));
        return {tell("pad", pick(0, 1)), tell("cut", pick(0, 1)), nWidth};
    }
};

// Texts as a caller may give them: NUL-terminated ones, back to back or not, when nWidth is
// negative, else fields of nWidth bytes. No byte can be read beyond each field or the last NUL.
struct Fields {
    std::vector<std::vector<char>> copies;
    std::vector<const char *> pointers;
    Fields(const Strings &texts, int32_t nWidth, bool bTogether) {
        const std::string all = bTogether && nWidth < 0 ? joined(texts, std::string(1, '\0')) : "";
        copies.emplace_back(all.begin(), all.end());
        const char *pNext = copies[0].data();
        for (const std::string &text : texts) {
            const size_t nBytes =
                nWidth < 0 ? text.size() + 1
                           : std::min(text.size() + 1, static_cast<size_t>(std::max(nWidth, 1)));
            if (all.empty()) {
                pNext = copies.emplace_back(text.c_str(), text.c_str() + nBytes).data();
            }
            pointers.push_back(pNext);
            pNext += nBytes;
        }
    }
};

// ---- The operations

inline void store(Call &c) {
    const int32_t nHow = c.tell("manner", c.pick(0, 9)),
                  nWidth = nHow < 8 ? -1 : c.tell("width", c.pick({0, 1, 5, 40, 3000}));
    const auto [first, last, bOneBased] = c.range(true, nHow >= 6);
    const Strings texts = c.texts({first, last, bOneBased});
    const Fields fields(texts, nWidth, c.chance(200));
    const char *const *ppNames = fields.pointers.data();
    const Range at = {first, last, bOneBased};
    if (nHow < 4) {
        c.answer(NamesManager_AddNames(c.pReal, first, last, bOneBased, ppNames),
                 c.twin.addNames(at, texts.data()));
    } else if (nHow < 6) {
        const Fields buffer(texts, -1, true);
        c.answer(NamesManager_AddNamesFromBuffer(c.pReal, first, last, bOneBased,
                                                 buffer.copies[0].data()),
                 c.twin.addNamesFromBuffer(at, texts.data()));
    } else if (nHow < 8) {
        c.answer(NamesManager_AddName(c.pReal, first, bOneBased, ppNames[0]),
                 c.twin.addNames(at, texts.data()));
    } else {
        const int32_t nMax = nWidth == 0 ? c.pick(-1, 0) : nWidth;
        c.answer(NamesManager_AddNameWithMaxLength(c.pReal, first, bOneBased, ppNames[0], nMax),
                 c.twin.addNameWithMaxLength(at, texts[0], nMax));
    }
}

// A name, or the end of one, is stored from where it lies in the manager itself.
inline void storeOwn(Call &c) {
    if (c.twin.names.empty()) { return; }
    const auto [index, last, bOneBased] = c.range(true, true);
    const int32_t iOwn = c.tell("of", c.pick(0, c.twin.nNames() - 1)),
                  nSkipped = c.tell("less", c.pick(0, 3));
    const auto nFrom = static_cast<size_t>(std::min(nSkipped, Record::lengthOf(c.twin.name(iOwn))));
    const auto [iBlock, nOffset] = c.twin.positionOf(iOwn);
    const char *pName = c.pReal->pBlocks[iBlock].pData + nOffset + nFrom;
    const std::string text = c.twin.name(iOwn).substr(nFrom);
    const bool bMany = c.chance(128);
    c.answer(bMany ? NamesManager_AddNames(c.pReal, index, index, bOneBased, &pName)
                   : NamesManager_AddName(c.pReal, index, bOneBased, pName),
             c.twin.addNames({index, last, bOneBased}, &text));
}

inline void copyName(Call &c) {
    const bool bOther =
        c.tell("of the other", c.habits.nShort > 0 ||
                                   c.chance(128));  // a failure may leave what its own was before
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
    const int32_t nCount =
        c.tell("up to", c.twin.nNames() + (c.twin.nNames() > kMostNames
                                               ? 0
                                               : c.pick({-1, 0, 1, 2, 5, 3 * kMaxSegmentNames})));
    if (c.chance(50)) {
        const std::string first = c.texts(1, 0)[0].substr(0, 50);
        NamesManager_SetFirstGeneratedName(c.pReal, first.c_str());
        c.twin.setFirstGeneratedName(first);
    }
    c.answer(NamesManager_GenerateNames(c.pReal, nCount), c.twin.generateNames(nCount));
}

inline void read(Call &c) {
    const int32_t nHow = c.tell("manner", c.pick(0, 9));
    const Range at = c.range(c.chance(8), nHow >= 6);
    const auto bounds = Record::boundsOf(at);
    const size_t nSlots = nHow == 1 ? 0
                          : bounds  ? static_cast<size_t>(bounds->last - bounds->first) + 3
                                    : 3;
    Strings expected;
    if (nHow == 0) {
        std::vector<int32_t> lengths(nSlots, -7), expectedLengths = c.twin.getNameLengths(at);
        NamesManager_GetNameLengths(c.pReal, at.first, at.last, at.bOneBased, lengths.data());
        expectedLengths.resize(nSlots, -7);
        c.answer(lengths == expectedLengths, true);
    } else if (nHow < 6) {
        std::vector<const char *> pointers(nSlots, "untouched");
        c.answer(NamesManager_GetNamePointers(c.pReal, at.first, at.last, at.bOneBased,
                                              nSlots == 0 ? nullptr : pointers.data()),
                 c.twin.getNamePointers(at, nSlots == 0 ? nullptr : &expected));
        expected.resize(nSlots, "untouched");
        for (size_t k = 0; k < nSlots; ++k) {
            c.compare<std::string_view>(pointers[k], expected[k]);
        }
    } else {
        const char *szName = NamesManager_GetName(c.pReal, at.first, at.bOneBased);
        c.answer<std::string>(szName == nullptr ? "none" : szName,
                              c.twin.getNamePointers(at, &expected) != 0 ? "none" : expected[0]);
    }
}

inline void readIntoBuffer(Call &c) {
    const bool bSingle = c.tell("single", c.chance(80)), bAsk = c.chance(200);
    const Range at = c.range(c.chance(8), bSingle);
    const Field field = c.field();
    uint64_t nReal = 7, nTwin = 7;
    std::string bytes;
    const auto get = [&](char *p, uint64_t nSize, uint64_t *pnRequired) {
        const auto [first, last, bOneBased] = at;
        const auto [bPad, bCut, nWidth] = field;
        c.answer(bSingle ? NamesManager_GetNameIntoBuffer(c.pReal, first, bOneBased, bPad, bCut,
                                                          nWidth, p, nSize, pnRequired)
                         : NamesManager_GetNames(c.pReal, first, last, bOneBased, bPad, bCut,
                                                 nWidth, p, nSize, pnRequired),
                 p == nullptr && nSize > 0 ? 1 : c.twin.getNames(at, field, nSize, nTwin, bytes));
    };
    get(nullptr, 0, bAsk ? &nReal : nullptr);
    c.compare<uint64_t>(nReal, bAsk ? nTwin : 7);
    const size_t nSize = nTwin + static_cast<uint64_t>(c.pick(nTwin > 0 ? -1 : 0, 1)),
                 nBehind = c.chance(128) ? 8 : 0;
    std::vector<char> buffer(nSize + nBehind, '#');  // else no byte can be written beyond it
    get(buffer.data(), nSize, nullptr);
    bytes.resize(buffer.size(), '#');
    c.compare(std::string(buffer.begin(), buffer.end()), bytes);
    if (c.chance(c.habits.nStray)) { get(nullptr, 9, nullptr); }
}

inline void readOther(Call &c) {
    const Range at = c.range(false, true);
    const Field field = c.field();
    if (c.tell("longest", c.chance(128))) {
        c.answer(NamesManager_GetMaxNameLength(c.pReal), c.twin.getMaxNameLength());
    }
    c.answer(NamesManager_GetNumNames(c.pReal), c.twin.nNames());
    const bool bRefused = (field.bTruncate != 0 || field.bPad != 0) && field.nWidth < 1;
    const uint64_t nRoom = steered::kIsStrict && c.chance(50)
                               ? c.tell("room", c.pick<uint64_t>({0, 1, 5, 12, 30}))
                               : UINT64_MAX;
    steered::Text real(nRoom);
    std::string text;
    c.answer(NamesManager_WriteNameToText(c.pReal, at.first, at.bOneBased, field.bTruncate,
                                          field.bPad, field.nWidth, real.pText),
             c.twin.writeNameToText(at, field.bTruncate != 0, field, nRoom, text),
             bRefused ? "" : "+mine-mine");
    c.compare(real.seen(), text);
}

inline void find(Call &c) {
    const Strings texts = c.texts(c.pick<size_t>({1, 2, 8}), c.pick(0, c.twin.nNames()));
    const int32_t nHow = c.tell("manner", c.pick(0, 3)), bOneBased = c.pick(0, 1);
    const int32_t nWidth =
        c.tell("width", nHow % 3 == 0 ? -1 : c.pick({-1, -2, 0, 1, 4, 8, kLocalTextBytes + 44}));
    const int32_t nCount = c.tell("count", nHow > 1       ? 1
                                           : c.chance(25) ? c.pick(-1, 0)
                                                          : Record::toInt(texts.size()));
    const Fields fields(texts, nWidth, c.chance(128));
    const char *const *ppNames = fields.pointers.data();
    std::vector<int32_t> indices(texts.size(), -7), expected = indices;
    int32_t *pIndices = nHow > 1 || c.chance(240) ? indices.data() : nullptr;
    int32_t nStatus = 0;
    if (nHow == 0) {
        nStatus = NamesManager_FindNameList(c.pReal, ppNames, nCount, bOneBased, pIndices);
    }
    if (nHow == 1) {
        nStatus = NamesManager_FindNames(c.pReal, ppNames, nCount, nWidth, bOneBased, pIndices);
    }
    if (nHow == 2) {
        indices[0] = NamesManager_FindNameInField(c.pReal, ppNames[0], nWidth, bOneBased);
    }
    if (nHow == 3) { indices[0] = NamesManager_FindName(c.pReal, ppNames[0], bOneBased); }
    c.twin.buildIndex();
    for (int32_t k = 0; k < nCount; ++k) {
        const int32_t iFound = c.twin.findName(texts.data()[k], nWidth, bOneBased);
        if (pIndices != nullptr) { expected.data()[k] = iFound; }
    }
    c.answer(nStatus, 0);
    c.compare(shown(indices), shown(expected));
}

inline void checkDuplicates(Call &c) {
    const auto [first, last, bOneBased] = c.range(true);
    const bool bBuffer = c.tell("in a buffer", c.chance(128)),
               bInContract = Record::boundsOf({first, last, bOneBased}).has_value();
    const Strings texts = c.texts({first, last, bOneBased});
    const std::string end = bBuffer ? std::string(1, '\0')
                                    : c.pick<std::string>({"\t\n", "z", {"\0z", 2}}),
                      buffer = joined(texts, end);
    std::vector<std::optional<std::string>> given(texts.begin(), texts.end());
    std::vector<const char *> pointers;
    std::vector<int32_t> lengths;
    for (const char *p = buffer.data(); auto &text : given) {
        pointers.push_back(p);
        lengths.push_back(
            Record::lengthOf(*text) +
            (end[0] == '\0' ? c.pick(0, 2) : 0));  // a name ends at its NUL in any case
        p += text->size() + end.size();
        if (bBuffer ? Record::lengthOf(*text) <= kMaxNameBytes : c.chance(240)) { continue; }
        text.reset();
        pointers.back() = nullptr;
    }
    std::string real(20, '#'), twin = real;
    const int32_t nSize = c.pick({-1, 0, 1, 4, 20});
    model::Clash seen = {bInContract ? 7 : 0, -7, -7, ""}, clash = {0, -7, -7, ""};
    auto &[bSeen, iSeen, iSecond, none] = seen;
    c.answer(bBuffer ? NamesManager_CheckDuplicateNamesInBuffer(c.pReal, first, last, bOneBased,
                                                                buffer.data(), &bSeen, &iSeen,
                                                                &iSecond, real.data(), nSize)
                     : NamesManager_CheckDuplicateNames(c.pReal, first, last, bOneBased,
                                                        pointers.data(), lengths.data(), &bSeen,
                                                        &iSeen, &iSecond, real.data(), nSize),
             c.twin.checkDuplicateNames({first, last, bOneBased}, given, clash),
             bBuffer && !bInContract ? "" : "+mine-mine");
    if (clash.bDuplicate != 0 && nSize > 0) {
        twin.replace(0, std::min(clash.szName.size() + 1, static_cast<size_t>(nSize)),
                     clash.szName.substr(0, static_cast<size_t>(nSize - 1)) + '\0');
    }
    c.compare(shown(std::array{bSeen, iSeen, iSecond}) + real,
              shown(std::array{clash.bDuplicate, clash.iFirst, clash.iSecond}) + twin);
}

inline void remove(Call &c) {
    Range at = c.range(false);
    if (c.chance(25) && at.last >= at.first) {
        at.last = c.tell("to", c.pick({c.twin.nNames() + 500, INT32_MAX}));
    }
    c.answer(NamesManager_RemoveNames(c.pReal, at.first, at.last, at.bOneBased),
             c.twin.removeNames(at));
}

// Every so many indices of a range or of all, some left out, given twice or not in order, and some
// that are of no name.
inline void removeListed(Call &c) {
    const bool bAll = c.chance(80);
    const Range at = bAll ? Range{0, c.twin.nNames(), 0} : c.range(false);
    std::vector<int32_t> indices;
    const int32_t nStep = c.tell("every", c.pick(1, 4)), nLeftOut = c.pick({0, 20, 128, 240}),
                  nTwice = c.pick({0, 20});
    for (int32_t i = std::max(at.first, 0) - 2; i < std::min(at.last, c.twin.nNames() + 2);
         i += nStep) {
        if (!c.chance(nLeftOut)) { indices.insert(indices.end(), c.chance(nTwice) ? 2 : 1, i); }
    }
    if (c.chance(25)) { indices.push_back(INT32_MAX); }
    const int32_t nCount = c.tell("count", Record::toInt(indices.size()));
    if (c.chance(80)) {
        for (int32_t i = nCount - 1; i > 0; --i) {
            std::swap(indices.data()[i], indices.data()[c.pick(0, i)]);
        }
    }
    c.answer(NamesManager_RemoveNamesByIndices(c.pReal, indices.data(), nCount),
             c.twin.removeNamesByIndices(indices));
}

inline void copy(Call &c) {
    const bool bSelf = c.tell("itself", c.chance(25));
    c.answer(NamesManager_Copy(c.pReal, (bSelf ? c.mine : c.other).pReal),
             bSelf ? 1 : c.twin.copy(c.other.twin), bSelf ? "" : "+mine+other-other-mine");
}

inline void wholeManager(Call &c) {
    const int32_t nHow = c.tell("switch 0, release 1, clear 2:", c.pick({0, 1, 1, 1, 2}));
    if (nHow == 0) {
        c.answer(NamesManager_StoreIndividualNamePositions(c.pReal),
                 c.twin.storeIndividualNamePositions());
    }
    if (nHow == 1) {
        c.answer(NamesManager_ReleaseEmptyBlocks(c.pReal), c.twin.releaseEmptyBlocks());
    }
    if (nHow == 2) { c.answer(NamesManager_Clear(c.pReal), c.twin.clear()); }
}

inline void save(Call &c) {
    const Strings image = c.twin.save();
    const int32_t nAll = Record::toInt(image.size()),
                  iFailing = c.tell("failing at", c.chance(80) ? c.pick(0, nAll - 1) : nAll);
    model::Output output = {.nRoom = iFailing};
    c.answer(NamesManager_Save(c.pReal, nullptr, &output.stream),
             iFailing < nAll ? model::kWriteError : 0);
    if (output.writes != Strings(image.begin(), image.begin() + std::min(iFailing + 1, nAll))) {
        c.wrong += "The image differs. ";
    }
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
    for (int32_t n = saved.segments.empty() ? 0 : c.pick(0, 3); n > 0; --n) {
        const int32_t iCut = c.pick(0, saved.nNames() - 1);
        saved.cutSegment(saved.segmentOf(iCut), {iCut, INT32_MAX, 0});
        saved.resetCursor();
    }
    saved.nBlocksAlloc = saved.nBlocks() + c.pick(0, 3);
    saved.nSegmentsAlloc =
        saved.bSegments ? saved.nSegments() + c.pick(saved.nSegments() == 0 ? 1 : 0, 4) : 0;
    saved.nPositionsAlloc = saved.bSegments ? 0 : saved.nNames() + c.pick(0, 7);
    saved.nGeneratedNameBase = c.pick({0, saved.nNames(), saved.nNames() + 2, INT32_MAX - 3});
    saved.cursor.nMisses = c.pick(0, kMaxFreeMisses + 2);
}

inline void load(Call &c) {
    Record saved = (c.tell("of the other", c.chance(80)) ? c.other : c.mine).twin;
    if (c.tell("tightened", c.chance(200))) { tighten(c, saved); }
    const bool bNone = c.chance(12);
    const std::string image = bNone ? std::string(4, '\xFF') : joined(saved.save(), "");
    const int32_t nImage = Record::lengthOf(image),
                  nBytes = c.tell("bytes",
                                  c.chance(25) ? c.pick(0, std::min(nImage, 65536) - 1) : nImage);
    const std::vector<char> copied(image.begin(), image.begin() + nBytes);
    steered::Input input(copied.data(), copied.size());
    c.answer<int32_t>(NamesManager_Load(c.pReal, nullptr, input.pStream),
                      nBytes < nImage ? steered::kEndOfInput : 0);
    c.twin.clear();
    if (!bNone && nBytes == nImage) { c.twin.load(saved); }
}

// The chances of each kind in the profiles: appending, replacing, removing, reading, all alike,
// arguments outside the contract.
constexpr size_t kProfiles = 6, kOutside = 5;
constexpr struct {
    const char *szName;
    void (*pfnRun)(Call &c);
    int32_t chances[kProfiles];
} kKinds[] = {{"store", store, {60, 60, 25, 15, 20, 20}},
              {"store its own", storeOwn, {3, 10, 2, 2, 6, 4}},
              {"copy name", copyName, {3, 10, 2, 2, 6, 10}},
              {"generate", generate, {4, 2, 4, 4, 5, 2}},
              {"read", read, {8, 8, 8, 40, 15, 15}},
              {"read into buffer", readIntoBuffer, {4, 4, 4, 20, 8, 10}},
              {"write to text", readOther, {4, 6, 6, 5, 6, 8}},
              {"find", find, {4, 6, 4, 8, 8, 8}},
              {"check duplicates", checkDuplicates, {3, 2, 2, 3, 6, 10}},
              {"remove", remove, {2, 2, 25, 1, 8, 10}},
              {"remove listed", removeListed, {1, 1, 12, 1, 5, 2}},
              {"whole", wholeManager, {2, 2, 4, 2, 6, 2}},
              {"copy", copy, {1, 1, 2, 1, 3, 3}},
              {"save", save, {1, 1, 2, 1, 2, 1}},
              {"load", load, {2, 2, 3, 2, 5, 4}}};

// ---- Histories

using Numbers = std::array<int64_t, 17>;

// What of a record is neither a table nor a text.
inline Numbers numbersOf(const NamesManager &r) {
    const int64_t nEntries = r.pLookupIndex != nullptr ? r.pLookupIndex->nEntries : -1;
    return {r.nNames,
            r.nBlocks,
            r.nBlocksAlloc,
            r.nSegments,
            r.nSegmentsAlloc,
            r.nPositionsAlloc,
            nEntries,
            r.nMaxNameLength,
            r.nMaxNameLengthCount,
            r.nGeneratedNameBase,
            r.pSegments != nullptr,
            r.pPositions != nullptr,
            r.iCursorName,
            r.iCursorSegment,
            r.iCursorBlock,
            r.nCursorOffset,
            r.nCursorMisses};
}
inline Numbers numbersOf(const Record &r) {
    return {r.nNames(),           r.nBlocks(),       r.nBlocksAlloc,
            r.nSegments(),        r.nSegmentsAlloc,  r.nPositionsAlloc,
            r.nEntries(),         r.nMaxNameLength,  r.nMaxNameLengthCount,
            r.nGeneratedNameBase, r.bSegments,       !r.bSegments,
            r.cursor.iName,       r.cursor.iSegment, r.cursor.iBlock,
            r.cursor.nOffset,     r.cursor.nMisses};
}

// Where a manager differs from its twin, empty if nowhere.
inline std::string difference(const NamesManager &real, const Record &twin) {
    const Numbers numbers = numbersOf(real), expected = numbersOf(twin);
    if (numbers != expected) {
        return "Numbers " + shown(numbers) + "not " + shown(expected) + ". ";
    }
    const auto isBlock = [](const NameStorageBlock &one, const model::Block &other) {
        return one.nSize == other.nSize && one.nNamesInBlock == other.nNames &&
               other.text == std::string_view(one.pData, size_t(one.nUsed));
    };
    const auto isSame = [](const auto &one, const auto &other) {
        return std::memcmp(&one, &other, sizeof one) == 0;
    };
    const auto &[blocks, segments, positions] =
        std::tie(twin.blocks, twin.segments, twin.positions);
    if (!std::equal(real.pBlocks, real.pBlocks + real.nBlocks, blocks.begin(), isBlock)) {
        return "Blocks differ. ";
    }
    if (!std::equal(segments.begin(), segments.end(), real.pSegments, isSame)) {
        return "Segments differ. ";
    }
    if (!std::equal(positions.begin(), positions.end(), real.pPositions, isSame)) {
        return "Positions differ. ";
    }
    const bool bTexts =
        twin.szNameFormat == std::string_view(real.szNameFormat, 32) &&
        twin.szFirstGeneratedName == std::string_view(real.szFirstGeneratedName, 32);
    return bTexts ? "" : "Texts differ. ";
}

// The record of a manager as it is.
inline Record recordOf(const NamesManager &real) {
    Record record(real.szNameFormat);
    record.szNameFormat.assign(real.szNameFormat, 32);
    record.szFirstGeneratedName.assign(real.szFirstGeneratedName, 32);
    record.nGeneratedNameBase = real.nGeneratedNameBase;
    record.nMaxNameLength = real.nMaxNameLength,
    record.nMaxNameLengthCount = real.nMaxNameLengthCount;
    record.blocks.clear();
    for (const NameStorageBlock *p = real.pBlocks; p < real.pBlocks + real.nBlocks; ++p) {
        record.blocks.push_back(
            {p->nSize, p->nNamesInBlock, Record::bytesOf(p->pData, static_cast<size_t>(p->nUsed))});
    }
    record.nBlocksAlloc = real.nBlocksAlloc, record.nSegmentsAlloc = real.nSegmentsAlloc,
    record.nPositionsAlloc = real.nPositionsAlloc;
    record.cursor = {real.iCursorName, real.iCursorSegment, real.iCursorBlock, real.nCursorOffset,
                     real.nCursorMisses};
    record.bSegments = real.pSegments != nullptr,
    record.bLookupIndex = real.pLookupIndex != nullptr;
    if (record.bSegments) {
        record.segments.assign(real.pSegments, real.pSegments + real.nSegments);
    } else {
        record.positions.assign(real.pPositions, real.pPositions + real.nNames);
    }
    for (int32_t i = 0; i < real.nNames; ++i) {
        const auto [iBlock, nOffset] = record.positionOf(i);
        record.names.emplace_back(real.pBlocks[iBlock].pData + nOffset);
        const int32_t iFound =
            record.bLookupIndex ? HostHashMap_Find(real.pLookupIndex, record.name(i).c_str()) : -1;
        if (iFound != -1 && !steered::kHoldsEqualKeys) {
            record.entries.emplace(record.name(i), iFound);
        }
    }
    return record;
}

// Makes the twin of a manager whose memory ran short what the manager is now. Each name must be of
// those known before or of those that the twin has come to, and a known maximum true.
inline std::string adopt(Pair &pair, Strings known) {
    if (pair.pReal->pSegments == nullptr && pair.pReal->pPositions == nullptr) {
        NamesManager_Clear(pair.pReal);
    }
    known.insert(known.end(), pair.twin.names.begin(), pair.twin.names.end());
    std::sort(known.begin(), known.end());
    pair.twin = recordOf(*pair.pReal);
    for (const std::string &name : pair.twin.names) {
        if (!std::binary_search(known.begin(), known.end(), name)) {
            return "A name from nowhere. ";
        }
    }
    return Record::isMaximum(*pair.pReal, pair.twin.names) ? "" : "A false maximum. ";
}

// Two managers and their twins.
struct Game {
    Habits habits;
    std::vector<Pair> pairs;
    Game(Habits given, Pair one, Pair another)
        : habits(given), pairs{std::move(one), std::move(another)} {
        steered::takeReports();
        steered::takeLocks();
    }
    Game(const Game &) = delete;
    Game &operator=(const Game &) = delete;

    // Carries out an operation on one of the managers and returns what went wrong.
    std::string play(size_t iKind, size_t iManager, Choices choose, std::ostream *pTold) {
        Call c = {std::move(choose), habits, pairs[iManager], pairs[1 - iManager], pTold};
        const bool bShort = c.chance(habits.nShort);
        if (bShort) {
            c.known = pairs[0].twin.names,
            c.known.insert(c.known.end(), pairs[1].twin.names.begin(), pairs[1].twin.names.end());
        }
        model::g_nErrors = 0;
        c.tell("manager", iManager);
        c.tell(kKinds[iKind].szName, ':');
        steered::setMaps(!c.chance(habits.nShort));
        if (bShort) {
            steered::startFailing(c.tell("failing at", c.pick(1, 12)),
                                  c.tell("from there", c.chance(128)));
        }
        kKinds[iKind].pfnRun(c);
        steered::setMaps(true);
        const bool bFailed = bShort && steered::endFailing();
        const auto reports = steered::takeReports();
        if (bFailed) {
            c.wrong = adopt(pairs[0], c.known) + adopt(pairs[1], c.known);
            steered::takeLocks();
        }
        if ((reports.nErrors != model::g_nErrors && !bFailed) || reports.nAssertions != 0) {
            c.wrong += "Reports. ";
        }
        c.wrong += difference(*c.pReal, c.twin) + difference(*c.other.pReal, c.other.twin);
        if (c.chance(habits.nAudited)) { c.wrong += audit(c.mine); }
        if (!steered::takeLocks().empty()) { c.wrong += "A lock too many. "; }
        if (pTold != nullptr) { *pTold << '\n'; }
        return c.wrong + steered::takeRefusals();
    }

    static std::string audit(const Pair &pair) {
        NamesManager_AssertConsistency(pair.pReal);
        return steered::takeReports().nAssertions == pair.twin.owedReports()
                   ? ""
                   : "The audit reports. ";
    }

    // Ends the game and both managers; what went wrong.
    std::string end() {
        std::string wrong;
        for (const Pair &pair : pairs) {
            wrong += audit(pair);
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
