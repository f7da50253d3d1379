// The names manager once more, slow and plain: every operation step by step on containers, so that
// after each one the whole record of a real manager can be compared with it. It takes the module's
// sizes from the header that the module takes them from. It never runs out of memory, but does
// without maps where the host has none. Statuses, index bases and widths are those of
// names/names_manager.h; texts hold no NUL; pTexts points to one text for each index of its range.
// Sizes of names count the NUL, lengths do not.
#pragma once

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "names/names_manager.h"
#include "tests/steered_host.hpp"

#ifndef NAMES_SIZES_HEADER
#define NAMES_SIZES_HEADER "names/names_sizes.hpp"
#endif
#include NAMES_SIZES_HEADER

namespace model {

using namespace names;

inline int32_t g_nErrors = 0;  // reported for names that could not be generated

using Strings = std::vector<std::string>;
using Texts = std::span<const std::string>;

inline std::string joined(const Strings &texts, const std::string &end = "") {
    std::string all;
    for (const std::string &text : texts) { all.append(text).append(end); }
    return all;
}

constexpr int32_t kWriteError = -78;

// Keeps each write to &output.stream; those after the first nRoom fail.
struct Output {
    HostOutputStream stream = {&kOps};
    int32_t nRoom = INT32_MAX;
    Strings writes = {};

    static int32_t keep(HostOutputStream *pStream, const void *pData, uint64_t nBytes) {
        auto *pOutput = reinterpret_cast<Output *>(pStream);
        pOutput->writes.emplace_back(static_cast<const char *>(pData), nBytes);
        return std::ssize(pOutput->writes) > pOutput->nRoom ? kWriteError : 0;
    }
    static constexpr HostOutputStreamOps kOps = {keep};
};

// An index range as a caller gives it, or within the contract and 0-based.
struct Range {
    int32_t first, last, bOneBased;
};

// How a name is laid out in a caller's buffer.
struct Field {
    int32_t bPad, bTruncate, nWidth;
};

// What the duplicate check finds; the last three count only where bDuplicate is set.
struct Clash {
    int32_t bDuplicate, iFirst, iSecond;
    std::string name;
};

// As it ends a saved image.
struct Cursor {
    int32_t iName, iSegment, iBlock, nOffset, nMisses;
};

struct Block {
    int32_t nSize, nNames;
    std::string text;  // the nUsed bytes, dead ones included
    int32_t nUsed() const { return int32_t(text.size()); }
    int32_t nRoom() const { return nSize - nUsed(); }
};

struct Record {
    Strings names;             // the list itself; the blocks spell it, too
    std::string szNameFormat;  // 32 bytes, and so is the next
    std::string szFirstGeneratedName = std::string(32, '\0');
    int32_t nGeneratedNameBase = 0, nMaxNameLength = -1, nMaxNameLengthCount = 0;
    std::vector<Block> blocks = {{kFirstBlockBytes, 0, ""}};
    std::vector<NamePosition> positions;  // of all names, in either mode
    std::vector<int32_t> starts;          // the first name of each segment
    int32_t nBlocksAlloc = kTableStep, nSegmentsAlloc = kTableStep, nPositionsAlloc = 0;
    bool bSegments = true;  // the storage mode: segments, else positions
    bool bLookupIndex = false;
    std::unordered_map<std::string, int32_t> entries;  // its own, where maps refuse equal keys
    Cursor cursor = {-1, 0, 0, 0, 0};

    explicit Record(const char *szFormat) : szNameFormat(szFormat) { szNameFormat.resize(32); }

    static int32_t toInt(size_t n) { return int32_t(n); }
    static int32_t lengthOf(const std::string &name) { return toInt(name.size()); }
    static int32_t sizeOf(const std::string &name) { return lengthOf(name) + 1; }
    static int32_t endOf(const NameSegment &in) { return in.nOffset + in.nBytes; }
    static int32_t countOf(const NameSegment &in) { return in.iLast - in.iFirst + 1; }
    static std::string trimmed(std::string_view text) {
        return std::string(text.substr(0, text.find_last_not_of(' ') + 1));
    }
    static std::string bytesOf(const void *pData, size_t nBytes) {
        return {static_cast<const char *>(pData), nBytes};
    }
    template <typename T>
    static std::string bytesOf(const std::vector<T> &items) {
        return bytesOf(items.data(), items.size() * sizeof(T));
    }
    static std::string bytesOf(std::initializer_list<int32_t> numbers) {
        return bytesOf(numbers.begin(), numbers.size() * sizeof(int32_t));
    }

    int32_t nNames() const { return toInt(names.size()); }
    int32_t nBlocks() const { return toInt(blocks.size()); }
    int32_t nSegments() const { return toInt(starts.size()); }
    std::string *at(int32_t i) { return names.data() + i; }
    std::string &name(int32_t i) { return *at(i); }
    NamePosition &position(int32_t i) { return positions.data()[i]; }
    Block &block(int32_t i) { return blocks.data()[i]; }
    NameSegment segment(int32_t i) const {
        const int32_t first = starts.data()[i],
                      last = (i + 1 < nSegments() ? starts.data()[i + 1] : nNames()) - 1;
        const auto [iBlock, nOffset] = positions.data()[first];
        return {first, last, iBlock, nOffset,
                positions.data()[last].nOffset + sizeOf(names.data()[last]) - nOffset};
    }

    // ---- The mechanics that operations share

    static std::optional<Range> boundsOf(Range range) {
        const int64_t first = int64_t{range.first} - (range.bOneBased != 0);
        const int64_t last = int64_t{range.last} - (range.bOneBased != 0);
        if (first < 0 || first > last + 1 || last >= INT32_MAX) { return std::nullopt; }
        return Range{int32_t(first), int32_t(last), 0};
    }

    static int32_t sizeOf(Texts texts) {
        return std::accumulate(texts.begin(), texts.end(), 0,
                               [](int32_t n, const std::string &text) { return n + sizeOf(text); });
    }

    int32_t segmentOf(int32_t iName) const {
        const auto after = std::upper_bound(starts.begin(), starts.end(), iName);
        return toInt(size_t(after - starts.begin())) - 1;
    }

    // Renumbers what is in blocks from iBlock on, where one comes (1) or has gone (-1).
    void renumberBlocks(int32_t iBlock, int32_t nBy) {
        for (NamePosition &later : positions) { later.iBlock += later.iBlock >= iBlock ? nBy : 0; }
        if (cursor.iName >= 0) { cursor.iBlock += cursor.iBlock >= iBlock ? nBy : 0; }
    }

    void insertEmptyBlock(int32_t iBlock, int32_t nSize) {
        blocks.insert(blocks.begin() + iBlock, {nSize, 0, ""});
        renumberBlocks(iBlock, 1);
    }

    // Writes a name with its NUL over the text at nOffset, or at the end of it.
    void writeName(int32_t iBlock, int32_t nOffset, const std::string &text) {
        block(iBlock).text.replace(size_t(nOffset), text.size() + 1, text.c_str(), text.size() + 1);
    }

    int32_t chooseBlock(int32_t nNeed) {
        for (int32_t iBlock = nBlocks() - 1; iBlock >= 0; --iBlock) {
            if (block(iBlock).nRoom() >= nNeed) { return iBlock; }
        }
        if (nBlocks() == nBlocksAlloc) { nBlocksAlloc += kTableStep; }
        blocks.push_back({std::max(nNeed, kNewBlockBytes), 0, ""});
        return nBlocks() - 1;
    }

    // nCount names leave a block; their nBytes at nOffset are given back where they end its text.
    void leaveBlock(int32_t iBlock, int32_t nOffset, int32_t nBytes, int32_t nCount) {
        Block &old = block(iBlock);
        old.nNames -= nCount;
        if (old.nNames == 0 || nOffset + nBytes == old.nUsed()) {
            old.text.resize(old.nNames == 0 ? 0 : size_t(nOffset));
        }
    }

    void reserveTwoSegments() {
        nSegmentsAlloc += nSegments() + 2 > nSegmentsAlloc ? kTableStep : 0;
    }

    // Makes a name the first of a segment.
    void cutBefore(int32_t iName) {
        const auto at = std::lower_bound(starts.begin(), starts.end(), iName);
        if (bSegments && iName < nNames() && (at == starts.end() || *at > iName)) {
            starts.insert(at, iName);
        }
    }

    // Joins a segment to the one before it where their texts touch and not too many names come
    // together; 1 if so.
    int32_t mergeSegment(int32_t iSegment) {
        if (iSegment < 1 || iSegment >= nSegments()) { return 0; }
        const NameSegment front = segment(iSegment - 1), back = segment(iSegment);
        const bool bTouch = front.iBlock == back.iBlock && endOf(front) == back.nOffset;
        if (!bTouch || countOf(front) + countOf(back) > kMaxMergedNames) { return 0; }
        starts.erase(starts.begin() + iSegment);
        return 1;
    }

    void raiseMaximum(int32_t nLength) {
        nMaxNameLengthCount =
            nLength > nMaxNameLength ? 1 : nMaxNameLengthCount + (nLength == nMaxNameLength);
        nMaxNameLength = std::max(nMaxNameLength, nLength);
    }

    // A name of nLength bytes goes; a maximum that no known name has is unknown.
    void lowerMaximum(int32_t nLength) {
        if (nLength == nMaxNameLength && --nMaxNameLengthCount == 0) { nMaxNameLength = -1; }
    }

    void resetCursor() { cursor.iName = -1, cursor.nMisses = 0; }

    // What a retrieval does to the cursor.
    void finishRead(Range bounds) {
        if (!bSegments || bounds.first > bounds.last) { return; }
        const bool bHit = bounds.first == 0 || bounds.first == cursor.iName;
        cursor.nMisses = bHit ? 0 : cursor.nMisses + (cursor.nMisses < INT32_MAX);
        if (cursor.nMisses > kMaxFreeMisses) {
            storeIndividualNamePositions();
            return;
        }
        const int32_t iSegment = segmentOf(bounds.last), iNext = bounds.last + 1;
        cursor.iName = -1;
        if (iNext > segment(iSegment).iLast) { return; }
        const auto [iBlock, nOffset] = position(iNext);
        cursor = {iNext, iSegment, iBlock, nOffset, cursor.nMisses};
    }

    // The bounds of a range to be read, its missing names generated; nothing where that is refused.
    std::optional<Range> reach(Range range) {
        const auto bounds = boundsOf(range);
        return bounds && generateNamesUpTo(bounds->last) == 0 ? bounds : std::nullopt;
    }

    // ---- Storing

    void appendNames(int32_t nCount, const std::string *pTexts) {
        for (int32_t k = 0; k < nCount && nMaxNameLength != -1; ++k) {
            raiseMaximum(lengthOf(pTexts[k]));
        }
        const int32_t nShort = nNames() + nCount - nPositionsAlloc;
        if (!bSegments && nShort > 0) {
            nPositionsAlloc += (nShort + kPositionsStep - 1) / kPositionsStep * kPositionsStep;
        }
        for (const std::string *pEnd = pTexts + nCount; pTexts != pEnd;) {
            int32_t nBatch = 1, nBytes = sizeOf(*pTexts);
            const int32_t iBlock = chooseBlock(nBytes), nOffset = block(iBlock).nUsed(),
                          nRoom = block(iBlock).nRoom();
            while (nBytes < nRoom && pTexts + nBatch != pEnd && nBatch < kMaxSegmentNames &&
                   nBytes + sizeOf(pTexts[nBatch]) <= nRoom) {
                nBytes += sizeOf(pTexts[nBatch++]);
            }
            const NameSegment end =
                starts.empty() ? NameSegment{0, 0, -1, 0, 0} : segment(nSegments() - 1);
            const bool bJoins = end.iBlock == iBlock && endOf(end) == nOffset &&
                                countOf(end) + nBatch <= kMaxSegmentNames;
            if (bSegments && !bJoins) {
                if (nSegments() == nSegmentsAlloc) { nSegmentsAlloc += kTableStep; }
                starts.push_back(nNames());
            }
            for (block(iBlock).nNames += nBatch; nBatch > 0; --nBatch, ++pTexts) {
                positions.push_back({iBlock, block(iBlock).nUsed()});
                writeName(iBlock, block(iBlock).nUsed(), *pTexts);
                names.push_back(*pTexts);
                indexName(nNames() - 1);
            }
        }
    }

    // iCurrent: the block that is tried first when the text moves, then the one it moved to.
    void replaceAtPosition(int32_t iName, const std::string &text, int32_t &iCurrent) {
        NamePosition &at = position(iName);
        if (sizeOf(text) > sizeOf(name(iName))) {
            if (block(iCurrent).nRoom() < sizeOf(text)) { iCurrent = chooseBlock(sizeOf(text)); }
            if (iCurrent != at.iBlock) {
                leaveBlock(at.iBlock, at.nOffset, sizeOf(name(iName)), 1);
                ++block(iCurrent).nNames;
            }
            at = {iCurrent, block(iCurrent).nUsed()};
        }
        writeName(at.iBlock, at.nOffset, text);
        name(iName) = text;
        indexName(iName);
    }

    // Replaces the names within the bounds that lie in the first one's segment; returns how many.
    int32_t replacePiece(Range bounds, const std::string *pTexts) {
        const NameSegment whole = segment(segmentOf(bounds.first));
        if (whole.iFirst < bounds.first || whole.iLast > bounds.last) { reserveTwoSegments(); }
        cutBefore(bounds.first);
        cutBefore(std::min(whole.iLast, bounds.last) + 1);
        int32_t iSegment = segmentOf(bounds.first);
        const NameSegment piece = segment(iSegment);
        NamePosition to = {piece.iBlock, piece.nOffset};
        const int32_t nCount = countOf(piece), nNew = sizeOf(Texts(pTexts, pTexts + nCount));
        const bool bEndsBlock = endOf(piece) == block(piece.iBlock).nUsed();
        if (nNew > piece.nBytes &&
            (!bEndsBlock || nNew > block(piece.iBlock).nSize - piece.nOffset)) {
            to.iBlock = chooseBlock(nNew);
            leaveBlock(piece.iBlock, piece.nOffset, piece.nBytes, nCount);
            block(to.iBlock).nNames += nCount;
            to.nOffset = block(to.iBlock).nUsed();
        } else if (bEndsBlock) {
            block(to.iBlock).text.resize(size_t(to.nOffset) + size_t(nNew));
        }
        for (int32_t i = piece.iFirst; i <= piece.iLast; ++i) {
            name(i) = pTexts[i - piece.iFirst];
            position(i) = to;
            writeName(to.iBlock, to.nOffset, name(i));
            to.nOffset += sizeOf(name(i));
            indexName(i);
        }
        iSegment -= mergeSegment(iSegment);
        if (piece.iLast == bounds.last) { mergeSegment(iSegment + 1); }
        switchWhereSegmentsDoNotPay();
        return nCount;
    }

    void replaceNames(Range bounds, const std::string *pTexts) {
        for (int32_t i = bounds.first; i <= bounds.last && nMaxNameLength != -1; ++i) {
            const int32_t nOld = lengthOf(name(i)), nNew = lengthOf(pTexts[i - bounds.first]);
            if (nNew > nOld && nNew > nMaxNameLength) { raiseMaximum(nNew); }
            if (nNew < nOld) { lowerMaximum(nOld); }
        }
        for (int32_t i = bounds.first; i <= bounds.last && !entries.empty(); ++i) {
            entries.erase(name(i));
        }
        for (int32_t iCurrent = nBlocks() - 1, i = bounds.first; i <= bounds.last;) {
            if (!bSegments) {
                replaceAtPosition(i, pTexts[i - bounds.first], iCurrent);
                ++i;
            } else {
                i += replacePiece({i, bounds.last, 0}, pTexts + (i - bounds.first));
                if (!bSegments) { iCurrent = 0; }
            }
        }
    }

    int32_t storeNames(Range range, const std::string *pTexts) {
        const auto bounds = boundsOf(range);
        if (!bounds || generateNamesUpTo(bounds->first - 1) != 0) { return 1; }
        const int32_t nOld = nNames();
        if (bounds->first < nOld && nOld <= bounds->last) {
            storeNames({bounds->first, nOld - 1, 0}, pTexts);
            return storeNames({nOld, bounds->last, 0}, pTexts + (nOld - bounds->first));
        }
        resetCursor();
        bounds->first == nOld ? appendNames(bounds->last - nOld + 1, pTexts)
                              : replaceNames(*bounds, pTexts);
        return 0;
    }

    int32_t storeTrimmed(Range range, const std::string *pTexts) {
        Strings stored;
        for (int32_t k = 0; k <= range.last - range.first; ++k) {
            stored.push_back(trimmed(pTexts[k]));
            if (lengthOf(stored.back()) > kMaxNameBytes) { return 2; }
        }
        return storeNames(range, stored.data());
    }

    int32_t addNames(Range range, const std::string *pTexts) {
        if (range.last < range.first) { return releaseEmptyBlocks(); }
        if (!boundsOf(range)) { return 1; }
        const int32_t nStatus = storeTrimmed(range, pTexts);
        const bool bRelease = range.first == range.last
                                  ? nStatus == 0 && range.last % kReleaseInterval == 0
                                  : nStatus != 2;
        if (bRelease) { releaseEmptyBlocks(); }
        return nStatus;
    }

    int32_t addNamesFromBuffer(Range range, const std::string *pTexts) {
        if (!boundsOf(range)) { return 1; }
        if (range.first == range.last) { return addNames(range, pTexts); }
        int32_t nStatus = 0, first = range.first;
        do {
            const int32_t last = std::min(first + kMaxBatchNames - 1, range.last);
            nStatus = storeTrimmed({first, last, range.bOneBased}, pTexts + (first - range.first));
            first = last + 1;
        } while (nStatus == 0 && first <= range.last);
        return nStatus;
    }

    int32_t addNameWithMaxLength(Range range, const std::string &text, int32_t nMaxLength) {
        const std::string stored = trimmed(text.substr(0, size_t(std::max(nMaxLength, 0))));
        return storeNames(range, &stored);
    }

    int32_t copyName(Range to, Record &source, Range from, const std::string &prefix) {
        Strings texts;
        if (source.getNamePointers(from, &texts) != 0) { return 1; }
        return addNames(to, &(texts[0] = prefix + texts[0]));
    }

    // The name with the number that follows; nothing where there is none or it is too long.
    std::optional<std::string> candidateAfter(int64_t nNumber) const {
        if (nNumber == 0 && szFirstGeneratedName[0] != '\0') {
            return trimmed(szFirstGeneratedName.c_str());
        }
        char szText[2100];
        if (nNumber == INT32_MAX) { return std::nullopt; }
        std::snprintf(szText, sizeof szText, szNameFormat.c_str(), int32_t(nNumber + 1));
        std::optional<std::string> made = trimmed(szText);
        return lengthOf(*made) > kMaxNameBytes ? std::nullopt : made;
    }

    int32_t generateNamesUpTo(int32_t iLast) {
        int64_t nNumber = std::max(nGeneratedNameBase, nNames());
        for (int32_t iName = nNames(); iName <= iLast; ++iName) {
            auto candidate = candidateAfter(nNumber++);
            while (candidate && findText(*candidate) != -1) {
                candidate = candidateAfter(nNumber++);
            }
            if (!candidate) { return ++g_nErrors, 1; }
            addNames({iName, iName, 0}, &*candidate);
            if (iName == iLast) { nGeneratedNameBase = int32_t(nNumber - 1); }
        }
        return 0;
    }

    int32_t generateNames(int32_t nCount) {
        return nNames() < nCount ? generateNamesUpTo(nCount - 1) : 0;
    }

    void setFirstGeneratedName(const std::string &text) {
        (szFirstGeneratedName = text.substr(0, 31)).resize(32);
    }

    // ---- Reading

    // Whether the range is within the contract and its names are there; then they go to pTexts.
    bool getHeldNames(Range range, Strings *pTexts) {
        const auto bounds = boundsOf(range);
        const bool bHeld = bounds && (bounds->last < nNames() || bounds->last < bounds->first);
        if (bHeld && pTexts != nullptr && bounds->last < nNames()) {
            pTexts->assign(at(bounds->first), at(bounds->last + 1));
        }
        return bHeld;
    }

    // pTexts NULL: the caller gave no array.
    int32_t getNamePointers(Range range, Strings *pTexts) {
        const auto bounds = reach(range);
        if (bounds && pTexts != nullptr) {
            pTexts->assign(at(bounds->first), at(bounds->last + 1));
            finishRead(*bounds);
        }
        return bounds ? 0 : 1;
    }

    static std::string fieldOf(const std::string &text, Field field) {
        const auto nCharacters = size_t(field.nWidth - 1);
        std::string made = field.bTruncate != 0 ? text.substr(0, nCharacters) : text;
        if (field.bPad != 0) { made.resize(std::max(made.size(), nCharacters), ' '); }
        return made;
    }

    // What is written into a buffer of nBufferSize bytes comes back in bytes.
    int32_t getNames(Range range, Field field, uint64_t nBufferSize, uint64_t &nRequired,
                     std::string &bytes) {
        if ((field.bPad != 0 || field.bTruncate != 0) && field.nWidth < 1) { return 1; }
        const auto bounds = reach(range);
        if (!bounds) { return 1; }
        std::string fields;
        for (int32_t i = bounds->first; i <= bounds->last; ++i) {
            fields += fieldOf(name(i), field) + '\0';
        }
        nRequired = fields.size();
        if (nBufferSize < nRequired) { return nBufferSize == 0 ? 0 : 3; }
        bytes = fields;
        finishRead(*bounds);
        return 0;
    }

    int32_t getMaxNameLength() {
        if (nMaxNameLength != -1) { return nMaxNameLength; }
        nMaxNameLength = nMaxNameLengthCount = 0;
        for (const std::string &text : names) { raiseMaximum(lengthOf(text)); }
        return nMaxNameLength;
    }

    // Whether what is known of the longest name is true; the count may be too low.
    bool hasTrueMaximum() const {
        Record fresh("");
        fresh.names = names;
        const bool bLength = nMaxNameLength == fresh.getMaxNameLength(),
                   bCount = nMaxNameLengthCount > 0 || names.empty();
        return nMaxNameLength == -1 ||
               (bLength && bCount && nMaxNameLengthCount <= fresh.nMaxNameLengthCount);
    }

    // What is appended, to where there is room for nRoom bytes, comes back in text.
    int32_t writeNameToText(Range range, bool bTrailingBlanks, Field field, uint64_t nRoom,
                            std::string &text) {
        Strings texts;
        if (((bTrailingBlanks || field.bPad != 0) && field.nWidth < 1) ||
            getNamePointers(range, &texts) != 0) {
            return 1;
        }
        const std::string made =
            fieldOf(texts[0], {field.bPad, field.bPad != 0 && steered::kCutsFields, field.nWidth});
        const uint64_t nBlanks = bTrailingBlanks ? uint64_t(field.nWidth) - 1 : 0;
        if (made.size() > nRoom) { return 1; }
        const bool bAll = nBlanks <= nRoom - made.size();
        text = made + std::string(bAll ? nBlanks : 0, ' ');
        return bAll ? 0 : 1;
    }

    // given: each text as far as its length reaches; nothing for a NULL pointer.
    int32_t checkDuplicateNames(Range range, std::vector<std::optional<std::string>> given,
                                Clash &clash) {
        const auto bounds = boundsOf(range);
        if (!bounds || generateNamesUpTo(bounds->first - 1) != 0) { return 1; }
        for (auto &text : given) {
            if (text) { text->resize(text->find_last_not_of(" \t\n\v\f\r") + 1); }
        }
        const auto report = [&](size_t k, int32_t iHeld) {
            clash = {1, iHeld, range.first + toInt(k), *given[k]};
        };
        if (!given.empty() && !steered::hasMaps()) { return 1; }
        for (size_t k = 0; k < given.size(); ++k) {
            const auto iSame = std::find(given.begin(), given.end(), given[k]) - given.begin();
            if (given[k] && iSame < toInt(k)) { return report(k, range.first + int32_t(iSame)), 0; }
        }
        if (bounds->first == 0 && bounds->last >= nNames() - 1) { return 0; }
        for (size_t k = 0; k < given.size(); ++k) {
            const int32_t iHeld = given[k] ? findText(*given[k]) : -1;
            if (iHeld != -1 && (iHeld < bounds->first || iHeld > bounds->last)) {
                return report(k, iHeld + (range.bOneBased != 0)), 0;
            }
        }
        return 0;
    }

    // ---- Looking up

    int64_t nEntries() const {
        return !bLookupIndex ? -1 : steered::kHoldsEqualKeys ? nNames() : std::ssize(entries);
    }

    void indexName(int32_t iName) {
        if (bLookupIndex && !steered::kHoldsEqualKeys) { entries.emplace(name(iName), iName); }
    }

    void dropIndex() {
        bLookupIndex = false;
        entries.clear();
    }

    void buildIndex() {
        if (nEntries() == nNames()) { return; }
        dropIndex();
        bLookupIndex = nNames() > 0 && steered::hasMaps();
        for (int32_t i = 0; i < nNames(); ++i) { indexName(i); }
    }

    // The lowest index of a name, or -1. Without a map one name after the other is read.
    int32_t findText(const std::string &sought) {
        buildIndex();
        for (int32_t i = 0; i < nNames(); ++i) {
            if (!bLookupIndex) { finishRead({i, i, 0}); }
            if (name(i) == sought) { return i; }
        }
        return -1;
    }

    int32_t findName(const std::string &text, int32_t nWidth, int32_t bOneBased) {
        const int32_t iFound = findText(
            nWidth < -1 ? text : trimmed(nWidth == -1 ? text : text.substr(0, size_t(nWidth))));
        return iFound == -1 ? -1 : iFound + (bOneBased != 0);
    }

    int32_t findOrAddNames(const Strings &texts, int32_t bOneBased, std::vector<int32_t> &indices) {
        const auto isTooLong = [this](const std::string &text) {
            return lengthOf(trimmed(text)) > kMaxNameBytes && findText(trimmed(text)) == -1;
        };
        if (std::any_of(texts.begin(), texts.end(), isTooLong)) { return 2; }
        for (size_t k = 0; k < texts.size(); ++k) {
            indices[k] = findName(texts[k], -1, bOneBased);
            if (indices[k] != -1) { continue; }
            indices[k] = nNames() + (bOneBased != 0);
            addNames({indices[k], indices[k], bOneBased}, &texts[k]);
        }
        return 0;
    }

    // A name that is held at a lower index, too, and the lowest of these.
    std::pair<int32_t, int32_t> findRepeatedName(int32_t first, int32_t bOneBased) {
        const int64_t iFirst = int64_t{first} - (bOneBased != 0);
        if (iFirst >= 0 && iFirst < nNames()) { buildIndex(); }
        for (int64_t i = iFirst; iFirst >= 0 && i < nNames() && bLookupIndex; ++i) {
            const auto found = std::find(names.begin(), names.begin() + i, name(int32_t(i)));
            if (found == names.begin() + i) { continue; }
            const int32_t iEarlier = int32_t(found - names.begin());
            return {int32_t(i) + (bOneBased != 0), iEarlier + (bOneBased != 0)};
        }
        return {-1, -7};
    }

    // ---- Removing

    int32_t removeNames(Range range) {
        range.last = std::min(range.last, INT32_MAX - 1);
        const auto bounds = boundsOf(range);
        if (!bounds) { return 1; }
        const int32_t first = bounds->first, last = std::min(bounds->last, nNames() - 1);
        if (first > last) { return 0; }
        dropIndex();
        for (int32_t i = first; i <= last && nMaxNameLength != -1; ++i) {
            lowerMaximum(lengthOf(name(i)));
        }
        if (bSegments) { reserveTwoSegments(); }
        cutBefore(first);
        cutBefore(last + 1);
        for (int32_t i = first; i <= last; ++i) {
            const NameSegment gone =
                bSegments ? segment(segmentOf(i)) : NameSegment{i, i, position(i).iBlock, 0, 0};
            leaveBlock(gone.iBlock, gone.nOffset, gone.nBytes, countOf(gone));
            i = gone.iLast;
        }
        std::erase_if(starts, [=](int32_t i) { return i >= first && i <= last; });
        for (int32_t &i : starts) { i -= i > last ? last - first + 1 : 0; }
        positions.erase(positions.begin() + first, positions.begin() + last + 1);
        names.erase(names.begin() + first, names.begin() + last + 1);
        resetCursor();
        switchWhereSegmentsDoNotPay();
        return releaseEmptyBlocks();
    }

    int32_t removeNamesByIndices(std::vector<int32_t> indices) {
        std::sort(indices.begin(), indices.end());
        indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
        std::erase_if(indices, [](int32_t i) { return i < 0; });
        for (int32_t last = 0, first = 0; !indices.empty(); removeNames({first, last, 0})) {
            for (first = last = indices.back(); !indices.empty() && indices.back() >= first - 1;
                 indices.pop_back()) {
                first = indices.back();
            }
        }
        return 0;
    }

    // ---- The manager as a whole

    int32_t clear() {
        Record fresh("");
        fresh.szNameFormat = szNameFormat;
        fresh.szFirstGeneratedName = szFirstGeneratedName;
        fresh.blocks[0].nSize = blocks[0].nSize;
        fresh.nBlocksAlloc = nBlocksAlloc;
        if (bSegments) { fresh.nSegmentsAlloc = nSegmentsAlloc; }
        fresh.cursor = {-1, cursor.iSegment, cursor.iBlock, cursor.nOffset, 0};
        *this = fresh;
        return 0;
    }

    int32_t copy(Record source) {
        clear();
        source.szFirstGeneratedName = szFirstGeneratedName;
        source.blocks[0].nSize = std::max(blocks[0].nSize, source.blocks[0].nSize);
        source.cursor = cursor;
        source.dropIndex();
        *this = source;
        return 0;
    }

    void switchWhereSegmentsDoNotPay() {
        if (nSegments() > nNames() / 2) { storeIndividualNamePositions(); }
    }

    int32_t storeIndividualNamePositions() {
        if (!bSegments) { return 1; }
        nPositionsAlloc = nNames();
        bSegments = false;
        starts.clear();
        nSegmentsAlloc = 0;
        cursor.iName = -1;
        return 0;
    }

    int32_t releaseEmptyBlocks() {
        for (int32_t i = 0; i < nBlocks() && nBlocks() > 1; ++i) {
            if (block(i).nUsed() != 0) { continue; }
            blocks.erase(blocks.begin() + i);
            renumberBlocks(i--, -1);
        }
        return 0;
    }

    // The image, one string for each write to the stream.
    Strings save() const {
        Strings writes;
        writes.reserve(16);
        for (const int32_t n :
             {nNames(), nBlocks(), nBlocksAlloc, nSegments(), nSegmentsAlloc, nPositionsAlloc}) {
            writes.push_back(bytesOf({n}));
        }
        writes.insert(writes.end(),
                      {szNameFormat, bytesOf({nGeneratedNameBase}), szFirstGeneratedName, ""});
        for (const Block &saved : blocks) {
            writes.back() += bytesOf({0, 0, saved.nSize, saved.nUsed(), saved.nNames, 0});
        }
        std::vector<NameSegment> segments;
        for (int32_t i = 0; i < nSegments(); ++i) { segments.push_back(segment(i)); }
        if (nNames() > 0) { writes.push_back(bSegments ? bytesOf(segments) : bytesOf(positions)); }
        for (const Block &saved : blocks) { writes.push_back(saved.text); }
        writes.push_back(bytesOf(&cursor, sizeof cursor));
        return writes;
    }

    // What loading the whole image of saved makes of this record.
    void load(const Record &saved) {
        *this = saved;
        nMaxNameLength = -1;
        nMaxNameLengthCount = 0;
        dropIndex();
    }

    // The segments, then bytes used and size of each block: "0-5 6-9 +40/4096".
    std::string layout() const {
        std::string text = bSegments ? "" : "positions ";
        const auto show = [&text](int32_t one, char c, int32_t other) {
            text += std::to_string(one) + c + std::to_string(other) + ' ';
        };
        for (int32_t i = 0; i < nSegments(); ++i) {
            show(segment(i).iFirst, '-', segment(i).iLast);
        }
        for (const Block &in : blocks) { show(in.nUsed(), '/', in.nSize); }
        return text;
    }

    // How many reports the audit makes: one for each name under whose text the index has another or
    // none, one for a wrong count.
    int32_t owedReports() {
        if (!bLookupIndex) { return 0; }
        auto held = entries;
        for (int32_t i = 0; i < nNames() && steered::kHoldsEqualKeys; ++i) {
            held.emplace(name(i), i);
        }
        int32_t nReports = nEntries() == nNames() ? 0 : 1;
        for (int32_t i = 0; i < nNames(); ++i) {
            const auto found = held.find(name(i));
            nReports += found == held.end() || found->second != i;
        }
        return nReports;
    }
};

}  // namespace model
