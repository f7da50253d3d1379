// Finding names and reading them: lengths, pointers, copies in caller buffers, the longest name,
// host text.
#include <cstring>

#include <algorithm>

#include "host/host_memory.h"
#include "names/names_internal.hpp"
#include "names/text_walk.hpp"

namespace names {

int32_t findSegment(const NamesManager *mgr, int32_t index) {
    int32_t iLow = 0;
    int32_t iHigh = mgr->nSegments - 1;
    while (true) {
        const int32_t iMiddle = iLow + (iHigh - iLow) / 2;
        if (mgr->pSegments[iMiddle].iFirst > index) {
            iHigh = iMiddle - 1;
        } else if (mgr->pSegments[iMiddle].iLast >= index) {
            return iMiddle;
        } else {
            iLow = iMiddle + 1;
        }
    }
}

void findStartsIn(const NamesManager *mgr, const NameSegment &segment, int32_t *aStarts) {
    findNameStarts(textAt(mgr, segment.iBlock, segment.nOffset), textLimit(mgr, segment.iBlock),
                   namesIn(segment), aStarts);
}

Place locateName(const NamesManager *mgr, int32_t index) {
    if (index == 0) { return {0, mgr->pSegments[0].nOffset, false}; }
    if (index == mgr->iCursorName) { return {mgr->iCursorSegment, mgr->nCursorOffset, false}; }
    const int32_t iSegment = findSegment(mgr, index);
    const NameSegment &segment = mgr->pSegments[iSegment];
    const char *pText = textAt(mgr, segment.iBlock, segment.nOffset);
    return {iSegment,
            segment.nOffset +
                bytesOfNames(pText, textLimit(mgr, segment.iBlock), index - segment.iFirst),
            true};
}

NameReader startReading(const NamesManager *mgr, IndexRange range) {
    NameReader reader = {mgr, range.first, range.last, {0, 0, false}};
    if (mgr->pSegments != nullptr && range.first <= range.last) {
        reader.place = locateName(mgr, range.first);
    }
    return reader;
}

namespace {

// Steps on to the segment of the next name and tells how many names of the range lie in it, from
// the place on.
int32_t enterSegment(NameReader *pReader) {
    const NamesManager *mgr = pReader->mgr;
    if (pReader->iNext > mgr->pSegments[pReader->place.iSegment].iLast) {
        ++pReader->place.iSegment;
        pReader->place.nOffset = mgr->pSegments[pReader->place.iSegment].nOffset;
    }
    return std::min(mgr->pSegments[pReader->place.iSegment].iLast, pReader->iLast) -
           pReader->iNext + 1;
}

void leaveNames(NameReader *pReader, int32_t nNames, int32_t nBytes) {
    pReader->iNext += nNames;
    pReader->place.nOffset += nBytes;
}

int32_t readInSegment(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    const int32_t nNames = enterSegment(pReader);
    const int32_t iBlock = pReader->mgr->pSegments[pReader->place.iSegment].iBlock;
    const char *pText = textAt(pReader->mgr, iBlock, pReader->place.nOffset);
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    findNameStarts(pText, textLimit(pReader->mgr, iBlock), nNames, aStarts);
    for (int32_t k = 0; ppNames != nullptr && k < nNames; ++k) { ppNames[k] = pText + aStarts[k]; }
    for (int32_t k = 0; pLengths != nullptr && k < nNames; ++k) {
        pLengths[k] = aStarts[k + 1] - aStarts[k] - 1;
    }
    leaveNames(pReader, nNames, aStarts[nNames]);
    return nNames;
}

int32_t readAtPositions(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    const NamePosition *pPositions = pReader->mgr->pPositions + pReader->iNext;
    const int32_t nNames = std::min(kMaxSegmentNames, pReader->iLast - pReader->iNext + 1);
    for (int32_t k = 0; k < nNames; ++k) {
        const char *pText = textAt(pReader->mgr, pPositions[k].iBlock, pPositions[k].nOffset);
        if (ppNames != nullptr) { ppNames[k] = pText; }
        if (pLengths != nullptr) { pLengths[k] = static_cast<int32_t>(std::strlen(pText)); }
    }
    pReader->iNext += nNames;
    return nNames;
}

}  // namespace

int32_t readNames(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    if (pReader->iNext > pReader->iLast) { return 0; }
    return pReader->mgr->pSegments != nullptr ? readInSegment(pReader, ppNames, pLengths)
                                              : readAtPositions(pReader, ppNames, pLengths);
}

void readLengths(const NamesManager *mgr, IndexRange range, int32_t *lengths) {
    NameReader reader = startReading(mgr, range);
    for (int32_t n = readNames(&reader, nullptr, lengths); n > 0;
         n = readNames(&reader, nullptr, lengths)) {
        lengths += n;
    }
}

int32_t *lengthsForMaximum(NamesManager *mgr, IndexRange range) {
    if (mgr->nMaxNameLength < 0) { return nullptr; }
    const uint64_t nBytes = static_cast<uint64_t>(countOf(range)) * sizeof(int32_t);
    int32_t *lengths = static_cast<int32_t *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (lengths != nullptr) {
        readLengths(mgr, range, lengths);
    } else {
        mgr->nMaxNameLength = -1;
    }
    return lengths;
}

namespace {

// Bytes from the reader's place to where the text of its segment ends.
int32_t bytesToSegmentEnd(const NameReader &reader) {
    const NameSegment &segment = reader.mgr->pSegments[reader.place.iSegment];
    return segment.nOffset + segment.nBytes - reader.place.nOffset;
}

// Bytes of the next nNames names, all in the reader's segment. They are walked only where the
// segment goes on behind them.
int32_t bytesOfNext(const NameReader &reader, int32_t nNames) {
    const NameSegment &segment = reader.mgr->pSegments[reader.place.iSegment];
    if (reader.iNext + nNames - 1 == segment.iLast) { return bytesToSegmentEnd(reader); }
    return bytesOfNames(textAt(reader.mgr, segment.iBlock, reader.place.nOffset),
                        textLimit(reader.mgr, segment.iBlock), nNames);
}

// Bytes of a range in segment mode, NULs included; with bWholeSegments to the end of its last
// segment, without a look at text.
uint64_t bytesOfRange(NameReader reader, bool bWholeSegments) {
    uint64_t nBytes = 0;
    while (reader.iNext <= reader.iLast) {
        const int32_t nNames = enterSegment(&reader);
        const int32_t nHere =
            bWholeSegments ? bytesToSegmentEnd(reader) : bytesOfNext(reader, nNames);
        leaveNames(&reader, nNames, nHere);
        nBytes += static_cast<uint64_t>(nHere);
    }
    return nBytes;
}

// Where the next piece goes. The first piece of all is none.
char *copyPiece(char *pTo, const char *pPiece, size_t nPiece) {
    if (pPiece != nullptr) { std::memcpy(pTo, pPiece, nPiece); }
    return pTo + nPiece;
}

// Copies a range in segment mode as it lies, segments that touch in one piece. *pReader ends behind
// the last name. The bytes copied.
uint64_t copyRange(NameReader *pReader, char *pBuffer) {
    char *pNext = pBuffer;
    const char *pPiece = nullptr;
    size_t nPiece = 0;
    int32_t iBlock = -1;
    while (pReader->iNext <= pReader->iLast) {
        const int32_t nNames = enterSegment(pReader);
        const int32_t iHere = pReader->mgr->pSegments[pReader->place.iSegment].iBlock;
        const char *pText = textAt(pReader->mgr, iHere, pReader->place.nOffset);
        if (iHere != iBlock || pText != pPiece + nPiece) {
            pNext = copyPiece(pNext, pPiece, nPiece);
            pPiece = pText;
            nPiece = 0;
            iBlock = iHere;
        }
        const int32_t nHere = bytesOfNext(*pReader, nNames);
        leaveNames(pReader, nNames, nHere);
        nPiece += static_cast<size_t>(nHere);
    }
    return static_cast<uint64_t>(copyPiece(pNext, pPiece, nPiece) - pBuffer);
}

// What every retrieval of at least one name leaves behind: the cursor at the name that follows, and
// the miss counter. Too many misses in a row switch to positions instead; if that fails, the cursor
// stays where it was and the next miss tries again. reader has read its range to the end.
void finishRetrieval(NamesManager *mgr, const NameReader &reader) {
    if (mgr->pSegments == nullptr) { return; }
    if (!reader.place.bSearched) {
        mgr->nCursorMisses = 0;
    } else {
        const bool bTooMany = mgr->nCursorMisses >= kMaxFreeMisses;
        mgr->nCursorMisses += mgr->nCursorMisses < INT32_MAX ? 1 : 0;
        if (bTooMany) {
            static_cast<void>(storeIndividualPositions(mgr));
            return;
        }
    }
    const NameSegment &segment = mgr->pSegments[reader.place.iSegment];
    if (reader.iLast == segment.iLast) {
        mgr->iCursorName = -1;
    } else {
        mgr->iCursorName = reader.iLast + 1;
        mgr->iCursorSegment = reader.place.iSegment;
        mgr->iCursorBlock = segment.iBlock;
        mgr->nCursorOffset = reader.place.nOffset;
    }
}

// The name at the cursor, with what finishRetrieval would leave behind: the step that sequential
// readers take for almost every name.
const char *readAtCursor(NamesManager *mgr) {
    const NameStorageBlock &block = mgr->pBlocks[mgr->iCursorBlock];
    const char *pText = block.pData + mgr->nCursorOffset;
    mgr->nCursorMisses = 0;
    if (mgr->iCursorName == mgr->pSegments[mgr->iCursorSegment].iLast) {
        mgr->iCursorName = -1;
    } else {
        ++mgr->iCursorName;
        mgr->nCursorOffset += lengthOfName(pText, block.pData + block.nSize) + 1;
    }
    return pText;
}

}  // namespace

int32_t getPointers(NamesManager *mgr, IndexRange range, const char **ppNames) {
    if (range.last >= mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.last) != 0) {
        return 1;
    }
    if (ppNames == nullptr || range.first > range.last) { return 0; }
    NameReader reader = startReading(mgr, range);
    for (int32_t n = readNames(&reader, ppNames, nullptr); n > 0;
         n = readNames(&reader, ppNames, nullptr)) {
        ppNames += n;
    }
    finishRetrieval(mgr, reader);
    return 0;
}

[[gnu::noinline]] const char *getOne(NamesManager *mgr, int32_t index) {
    IndexRange range;
    const char *pName = nullptr;
    if (!toIndexRange(index, index, 0, &range)) { return nullptr; }
    return getPointers(mgr, range, &pName) == 0 ? pName : nullptr;
}

namespace {

// How names become fields; a width of 0 does not apply.
struct FieldFormat {
    int32_t nPad;
    int32_t nCut;
};

uint64_t fieldBytes(FieldFormat format, int32_t nLength) {
    const int64_t nPadded = std::max<int64_t>(int64_t{nLength} + 1, format.nPad);
    return static_cast<uint64_t>(format.nCut != 0 ? std::min<int64_t>(nPadded, format.nCut)
                                                  : nPadded);
}

bool isPlain(FieldFormat format) {
    return format.nPad == 0 && format.nCut == 0;
}

uint64_t requiredSize(const NameReader &start, FieldFormat format) {
    uint64_t nSize = 0;
    NameReader reader = start;
    if (format.nPad != 0 && format.nPad == format.nCut) {
        return static_cast<uint64_t>(start.iLast - start.iNext + 1) *
               static_cast<uint64_t>(format.nPad);
    }
    if (isPlain(format) && start.mgr->pSegments != nullptr) { return bytesOfRange(start, false); }
    int32_t aLengths[kMaxSegmentNames];
    for (int32_t n = readNames(&reader, nullptr, aLengths); n > 0;
         n = readNames(&reader, nullptr, aLengths)) {
        for (int32_t k = 0; k < n; ++k) { nSize += fieldBytes(format, aLengths[k]); }
    }
    return nSize;
}

constexpr size_t kLooseBytes = 16;

// Copies 16 bytes at a time and so up to 15 more than asked for.
void copyLoosely(char *pTo, const char *pFrom, size_t nBytes) {
    for (size_t n = 0; n < nBytes; n += kLooseBytes) {
        std::memcpy(pTo + n, pFrom + n, kLooseBytes);
    }
}

void fillBlanksLoosely(char *pTo, size_t nBytes) {
    for (size_t n = 0; n < nBytes; n += kLooseBytes) {
        std::memcpy(pTo + n, "                ", kLooseBytes);
    }
}

// Writes one field at pTo. With bLoose both sides have kLooseBytes to spare. Where the next field
// goes.
char *writeField(char *pTo, FieldFormat format, const char *pName, int32_t nLength, bool bLoose) {
    const size_t nField = static_cast<size_t>(fieldBytes(format, nLength)) - 1;
    const size_t nText = std::min(static_cast<size_t>(nLength), nField);
    if (bLoose) {
        copyLoosely(pTo, pName, nText);
        fillBlanksLoosely(pTo + nText, nField - nText);
    } else {
        std::memcpy(pTo, pName, nText);
        std::memset(pTo + nText, ' ', nField - nText);
    }
    pTo[nField] = 0;
    return pTo + nField + 1;
}

// Tells whether kLooseBytes beyond the end of each of the nNames names read last can be read, as is
// usual in segment mode.
bool hasBytesBehind(const NameReader &reader, int32_t nNames) {
    const NamesManager *mgr = reader.mgr;
    return mgr->pSegments != nullptr && nNames > 0 &&
           mgr->pBlocks[mgr->pSegments[reader.place.iSegment].iBlock].nSize -
                   reader.place.nOffset >=
               static_cast<int32_t>(kLooseBytes);
}

// Writes the fields of the range, nSize bytes in all. *pReader ends behind the last name.
void writeFields(NameReader *pReader, FieldFormat format, char *pBuffer, uint64_t nSize) {
    if (isPlain(format) && pReader->mgr->pSegments != nullptr) {
        copyRange(pReader, pBuffer);
        return;
    }
    const char *const pEnd = pBuffer + nSize;
    const char *apNames[kMaxSegmentNames];
    int32_t aLengths[kMaxSegmentNames];
    for (int32_t n = readNames(pReader, apNames, aLengths); n > 0;
         n = readNames(pReader, apNames, aLengths)) {
        const bool bReadsOn = hasBytesBehind(*pReader, n);
        for (int32_t k = 0; k < n; ++k) {
            const int64_t nMost =
                std::max<int64_t>(aLengths[k], format.nPad) + static_cast<int64_t>(kLooseBytes);
            pBuffer = writeField(pBuffer, format, apNames[k], aLengths[k],
                                 bReadsOn && pEnd - pBuffer > nMost);
        }
    }
}

// Tells without a look at text whether names in segment mode that go out as they lie fit in any
// case: their whole segments do.
bool surelyFits(const NameReader &start, FieldFormat format, uint64_t nBufferSize) {
    return isPlain(format) && start.mgr->pSegments != nullptr && start.iNext <= start.iLast &&
           bytesOfRange(start, true) <= nBufferSize;
}

int32_t getNames(NamesManager *mgr, IndexRange range, FieldFormat format, char *pBuffer,
                 uint64_t nBufferSize, uint64_t *pnRequiredSize) {
    if (range.last >= mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.last) != 0) {
        return 1;
    }
    if (pnRequiredSize == nullptr && nBufferSize == 0) { return 0; }
    NameReader reader = startReading(mgr, range);
    const bool bFits = surelyFits(reader, format, nBufferSize);
    const uint64_t nSize = bFits ? copyRange(&reader, pBuffer) : requiredSize(reader, format);
    if (pnRequiredSize != nullptr) { *pnRequiredSize = nSize; }
    if (nBufferSize == 0) { return 0; }
    if (nSize > nBufferSize) { return 3; }
    if (range.first <= range.last) {
        if (!bFits) { writeFields(&reader, format, pBuffer, nSize); }
        finishRetrieval(mgr, reader);
    }
    return 0;
}

// The length of the longest name, and how many are as long.
struct Longest {
    int32_t nLength;
    int32_t nCount;
};

// Takes in names that start at aStarts and end where the next one starts. Free of branches for the
// single name.
void noteLongest(const int32_t *aStarts, int32_t nNames, Longest *pLongest) {
    int32_t nLongest = 0;
    for (int32_t k = 0; k < nNames; ++k) {
        nLongest = std::max(nLongest, aStarts[k + 1] - aStarts[k] - 1);
    }
    if (nLongest > pLongest->nLength) { *pLongest = {nLongest, 0}; }
    if (nLongest == pLongest->nLength) {
        for (int32_t k = 0; k < nNames; ++k) {
            pLongest->nCount += aStarts[k + 1] - aStarts[k] - 1 == nLongest ? 1 : 0;
        }
    }
}

Longest findLongest(const NamesManager *mgr) {
    Longest longest = {0, 0};
    int32_t aStarts[roomForStarts(kMaxSegmentNames)];
    for (int32_t s = 0; s < mgr->nSegments; ++s) {
        findStartsIn(mgr, mgr->pSegments[s], aStarts);
        noteLongest(aStarts, namesIn(mgr->pSegments[s]), &longest);
    }
    for (int32_t i = 0; mgr->pPositions != nullptr && i < mgr->nNames; ++i) {
        aStarts[0] = 0;
        aStarts[1] = static_cast<int32_t>(std::strlen(
                         textAt(mgr, mgr->pPositions[i].iBlock, mgr->pPositions[i].nOffset))) +
                     1;
        noteLongest(aStarts, 1, &longest);
    }
    return longest;
}

}  // namespace

}  // namespace names

using namespace names;

void NamesManager_GetNameLengths(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                                 int32_t *lengths) {
    ScopedLock lock(mgr);
    IndexRange range;
    if (toIndexRange(first, last, bOneBased, &range) && range.last < mgr->nNames) {
        readLengths(mgr, range, lengths);
    }
}

int32_t NamesManager_GetNamePointers(NamesManager *mgr, int32_t first, int32_t last,
                                     int32_t bOneBased, const char **ppNames) {
    ScopedLock lock(mgr);
    IndexRange range;
    return toIndexRange(first, last, bOneBased, &range) ? getPointers(mgr, range, ppNames) : 1;
}

// The usual cases take few instructions, so that the cache misses of neighbouring calls overlap.
const char *NamesManager_GetName(NamesManager *mgr, int32_t index, int32_t bOneBased) {
    const uint32_t i = static_cast<uint32_t>(index) -
                       (bOneBased != 0 ? 1U : 0U);  // an index below 0 becomes a huge one
    ScopedLock lock(mgr);
    if (i < static_cast<uint32_t>(mgr->nNames)) {
        if (mgr->pPositions != nullptr) {
            return textAt(mgr, mgr->pPositions[i].iBlock, mgr->pPositions[i].nOffset);
        }
        if (static_cast<int32_t>(i) == mgr->iCursorName) { return readAtCursor(mgr); }
    }
    return getOne(mgr, static_cast<int32_t>(i));
}

int32_t NamesManager_CopyName(NamesManager *destination, int32_t destinationIndex,
                              int32_t bDestinationOneBased, NamesManager *source,
                              int32_t sourceIndex, int32_t bSourceOneBased) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    return pName != nullptr
               ? NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pName)
               : 1;
}

int32_t NamesManager_CopyNameWithPrefix(NamesManager *destination, int32_t destinationIndex,
                                        int32_t bDestinationOneBased, NamesManager *source,
                                        int32_t sourceIndex, int32_t bSourceOneBased,
                                        const char *prefix) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    if (pName == nullptr) { return 1; }
    const size_t nPrefix = std::strlen(prefix);
    const size_t nName = std::strlen(pName) + 1;
    TextBuffer buffer;
    char *pText = roomFor(&buffer, nPrefix + nName);
    if (pText == nullptr) { return 1; }
    std::memcpy(pText, prefix, nPrefix);
    std::memcpy(pText + nPrefix, pName, nName);
    return NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pText);
}

int32_t NamesManager_GetNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased,
                              int32_t bPad, int32_t bTruncate, int32_t nWidth, char *pBuffer,
                              uint64_t nBufferSize, uint64_t *pnRequiredSize) {
    ScopedLock lock(mgr);
    IndexRange range;
    const bool bWidth = nWidth >= 1 || (bPad == 0 && bTruncate == 0);
    if (!bWidth || (pBuffer == nullptr && nBufferSize != 0) ||
        !toIndexRange(first, last, bOneBased, &range)) {
        return 1;
    }
    const FieldFormat format = {bPad != 0 ? nWidth : 0, bTruncate != 0 ? nWidth : 0};
    return getNames(mgr, range, format, pBuffer, nBufferSize, pnRequiredSize);
}

int32_t NamesManager_GetNameIntoBuffer(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                       int32_t bPad, int32_t bTruncate, int32_t nWidth,
                                       char *pBuffer, uint64_t nBufferSize,
                                       uint64_t *pnRequiredSize) {
    return NamesManager_GetNames(mgr, index, index, bOneBased, bPad, bTruncate, nWidth, pBuffer,
                                 nBufferSize, pnRequiredSize);
}

int32_t NamesManager_GetMaxNameLength(NamesManager *mgr) {
    ScopedLock lock(mgr);
    if (mgr->nMaxNameLength >= 0) { return mgr->nMaxNameLength; }
    const Longest longest = findLongest(mgr);
    mgr->nMaxNameLength = longest.nLength;
    mgr->nMaxNameLengthCount = longest.nCount;
    return longest.nLength;
}

int32_t NamesManager_WriteNameToText(NamesManager *mgr, int32_t index, int32_t bOneBased,
                                     int32_t bTrailingBlanks, int32_t bPad, int32_t nWidth,
                                     HostText *text) {
    const char *pName = nullptr;
    const bool bWidth = nWidth >= 1 || (bPad == 0 && bTrailingBlanks == 0);
    if (!bWidth || NamesManager_GetNamePointers(mgr, index, index, bOneBased, &pName) != 0) {
        return 1;
    }
    const int64_t nCharacters = int64_t{nWidth} - 1;
    const int32_t nAppended =
        bPad != 0 ? HostText_AppendPadded(text, pName, nCharacters) : HostText_Append(text, pName);
    if (nAppended != 0 ||
        (bTrailingBlanks != 0 && HostText_AppendRepeated(text, nCharacters, ' ') != 0)) {
        return 1;
    }
    return 0;
}
