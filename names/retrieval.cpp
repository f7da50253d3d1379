/* Finding names and reading them: lengths, pointers, copies in caller buffers, the longest name, host text. */
#include <string.h>

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

Place locateName(const NamesManager *mgr, int32_t index) {
    if (index == 0) {
        return {0, mgr->pSegments[0].nOffset, false};
    }
    if (index == mgr->iCursorName) {
        return {mgr->iCursorSegment, mgr->nCursorOffset, false};
    }
    const int32_t iSegment = findSegment(mgr, index);
    const NameSegment &segment = mgr->pSegments[iSegment];
    const char *pText = textAt(mgr, segment.iBlock, segment.nOffset);
    return {iSegment, segment.nOffset + bytesOfNames(pText, textLimit(mgr, segment.iBlock), index - segment.iFirst), true};
}

NameReader startReading(const NamesManager *mgr, IndexRange range) {
    NameReader reader = {mgr, range.first, range.last, {0, 0, false}};
    if (mgr->pSegments != nullptr && range.first <= range.last) {
        reader.place = locateName(mgr, range.first);
    }
    return reader;
}

namespace {

/* Where the texts of a range lie in one piece: what the range takes of one segment. */
struct TextPiece {
    const char *pText;
    int32_t nBytes;
};

/* Steps on to the segment of the next name and tells how many names of the range lie in it, from the place on. */
int32_t enterSegment(NameReader *pReader) {
    const NamesManager *mgr = pReader->mgr;
    if (pReader->iNext > mgr->pSegments[pReader->place.iSegment].iLast) {
        ++pReader->place.iSegment;
        pReader->place.nOffset = mgr->pSegments[pReader->place.iSegment].nOffset;
    }
    return std::min(mgr->pSegments[pReader->place.iSegment].iLast, pReader->iLast) - pReader->iNext + 1;
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
    for (int32_t k = 0; ppNames != nullptr && k < nNames; ++k) {
        ppNames[k] = pText + aStarts[k];
    }
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
        if (ppNames != nullptr) {
            ppNames[k] = pText;
        }
        if (pLengths != nullptr) {
            pLengths[k] = static_cast<int32_t>(strlen(pText));
        }
    }
    pReader->iNext += nNames;
    return nNames;
}

}  // namespace

int32_t readNames(NameReader *pReader, const char **ppNames, int32_t *pLengths) {
    if (pReader->iNext > pReader->iLast) {
        return 0;
    }
    return pReader->mgr->pSegments != nullptr ? readInSegment(pReader, ppNames, pLengths) : readAtPositions(pReader, ppNames, pLengths);
}

void readLengths(const NamesManager *mgr, IndexRange range, int32_t *lengths) {
    NameReader reader = startReading(mgr, range);
    for (int32_t n = readNames(&reader, nullptr, lengths); n > 0; n = readNames(&reader, nullptr, lengths)) {
        lengths += n;
    }
}

int32_t *lengthsForMaximum(NamesManager *mgr, IndexRange range) {
    if (mgr->nMaxNameLength < 0) {
        return nullptr;
    }
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

/* The next piece of text of a range in segment mode; nBytes 0 at the end. Only a piece that ends inside its segment is walked. */
TextPiece readPiece(NameReader *pReader) {
    if (pReader->iNext > pReader->iLast) {
        return {nullptr, 0};
    }
    const int32_t nNames = enterSegment(pReader);
    const NameSegment &segment = pReader->mgr->pSegments[pReader->place.iSegment];
    const char *pText = textAt(pReader->mgr, segment.iBlock, pReader->place.nOffset);
    const int32_t nBytes = pReader->iNext + nNames - 1 == segment.iLast
                               ? segment.nOffset + segment.nBytes - pReader->place.nOffset
                               : bytesOfNames(pText, textLimit(pReader->mgr, segment.iBlock), nNames);
    leaveNames(pReader, nNames, nBytes);
    return {pText, nBytes};
}

/* What every retrieval of at least one name leaves behind: the cursor at the name that follows, and the miss counter. Too many misses in a
 * row switch to positions instead; if that fails, the cursor stays where it was and the next miss tries again. reader has read its range to
 * the end. */
void finishRetrieval(NamesManager *mgr, const NameReader &reader) {
    if (mgr->pSegments == nullptr) {
        return;
    }
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

/* The name at the cursor, with what finishRetrieval would leave behind: the step that sequential readers take for almost every name. */
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
    if (ppNames == nullptr || range.first > range.last) {
        return 0;
    }
    NameReader reader = startReading(mgr, range);
    for (int32_t n = readNames(&reader, ppNames, nullptr); n > 0; n = readNames(&reader, ppNames, nullptr)) {
        ppNames += n;
    }
    finishRetrieval(mgr, reader);
    return 0;
}

const char *getOne(NamesManager *mgr, int32_t index, int32_t bOneBased) {
    IndexRange range;
    const char *pName = nullptr;
    if (!toIndexRange(index, index, bOneBased, &range)) {
        return nullptr;
    }
    return getPointers(mgr, range, &pName) == 0 ? pName : nullptr;
}

namespace {

/* How names become fields; a width of 0 does not apply. */
struct FieldFormat {
    int32_t nPad;
    int32_t nCut;
};

uint64_t fieldBytes(FieldFormat format, int32_t nLength) {
    const int64_t nPadded = std::max<int64_t>(int64_t{nLength} + 1, format.nPad);
    return static_cast<uint64_t>(format.nCut != 0 ? std::min<int64_t>(nPadded, format.nCut) : nPadded);
}

bool isPlain(FieldFormat format) {
    return format.nPad == 0 && format.nCut == 0;
}

uint64_t requiredSize(const NameReader &start, FieldFormat format) {
    uint64_t nSize = 0;
    NameReader reader = start;
    if (format.nPad != 0 && format.nPad == format.nCut) {
        return static_cast<uint64_t>(start.iLast - start.iNext + 1) * static_cast<uint64_t>(format.nPad);
    }
    if (isPlain(format) && start.mgr->pSegments != nullptr) {
        for (TextPiece piece = readPiece(&reader); piece.nBytes > 0; piece = readPiece(&reader)) {
            nSize += static_cast<uint64_t>(piece.nBytes);
        }
        return nSize;
    }
    int32_t aLengths[kMaxSegmentNames];
    for (int32_t n = readNames(&reader, nullptr, aLengths); n > 0; n = readNames(&reader, nullptr, aLengths)) {
        for (int32_t k = 0; k < n; ++k) {
            nSize += fieldBytes(format, aLengths[k]);
        }
    }
    return nSize;
}

constexpr size_t kLooseBytes = 16;

/* Copies 16 bytes at a time and so up to 15 more than asked for. */
void copyLoosely(char *pTo, const char *pFrom, size_t nBytes) {
    for (size_t n = 0; n < nBytes; n += kLooseBytes) {
        memcpy(pTo + n, pFrom + n, kLooseBytes);
    }
}

void fillBlanksLoosely(char *pTo, size_t nBytes) {
    for (size_t n = 0; n < nBytes; n += kLooseBytes) {
        memcpy(pTo + n, "                ", kLooseBytes);
    }
}

/* Writes one field at pTo. With bLoose both sides have kLooseBytes to spare. Where the next field goes. */
char *writeField(char *pTo, FieldFormat format, const char *pName, int32_t nLength, bool bLoose) {
    const size_t nField = static_cast<size_t>(fieldBytes(format, nLength)) - 1;
    const size_t nText = std::min(static_cast<size_t>(nLength), nField);
    if (bLoose) {
        copyLoosely(pTo, pName, nText);
        fillBlanksLoosely(pTo + nText, nField - nText);
    } else {
        memcpy(pTo, pName, nText);
        memset(pTo + nText, ' ', nField - nText);
    }
    pTo[nField] = 0;
    return pTo + nField + 1;
}

/* Tells whether kLooseBytes beyond the end of each of the nNames names read last can be read, as is usual in segment mode. */
bool hasBytesBehind(const NameReader &reader, int32_t nNames) {
    const NamesManager *mgr = reader.mgr;
    return mgr->pSegments != nullptr && nNames > 0 &&
           mgr->pBlocks[mgr->pSegments[reader.place.iSegment].iBlock].nSize - reader.place.nOffset >= static_cast<int32_t>(kLooseBytes);
}

/* Writes the fields of the range, nSize bytes in all. *pReader ends behind the last name. */
void writeFields(NameReader *pReader, FieldFormat format, char *pBuffer, uint64_t nSize) {
    if (isPlain(format) && pReader->mgr->pSegments != nullptr) {
        for (TextPiece piece = readPiece(pReader); piece.nBytes > 0; piece = readPiece(pReader)) {
            memcpy(pBuffer, piece.pText, static_cast<size_t>(piece.nBytes));
            pBuffer += piece.nBytes;
        }
        return;
    }
    const char *const pEnd = pBuffer + nSize;
    const char *apNames[kMaxSegmentNames];
    int32_t aLengths[kMaxSegmentNames];
    for (int32_t n = readNames(pReader, apNames, aLengths); n > 0; n = readNames(pReader, apNames, aLengths)) {
        const bool bReadsOn = hasBytesBehind(*pReader, n);
        for (int32_t k = 0; k < n; ++k) {
            const int64_t nMost = std::max<int64_t>(aLengths[k], format.nPad) + static_cast<int64_t>(kLooseBytes);
            pBuffer = writeField(pBuffer, format, apNames[k], aLengths[k], bReadsOn && pEnd - pBuffer > nMost);
        }
    }
}

int32_t getNames(NamesManager *mgr, IndexRange range, FieldFormat format, char *pBuffer, uint64_t nBufferSize, uint64_t *pnRequiredSize) {
    if (range.last >= mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.last) != 0) {
        return 1;
    }
    if (pnRequiredSize == nullptr && nBufferSize == 0) {
        return 0;
    }
    NameReader reader = startReading(mgr, range);
    const uint64_t nSize = requiredSize(reader, format);
    if (pnRequiredSize != nullptr) {
        *pnRequiredSize = nSize;
    }
    if (nBufferSize == 0) {
        return 0;
    }
    if (nSize > nBufferSize) {
        return 3;
    }
    if (range.first <= range.last) {
        writeFields(&reader, format, pBuffer, nSize);
        finishRetrieval(mgr, reader);
    }
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

void NamesManager_GetNameLengths(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased, int32_t *lengths) {
    ScopedLock lock(mgr);
    IndexRange range;
    if (toIndexRange(first, last, bOneBased, &range) && range.last < mgr->nNames) {
        readLengths(mgr, range, lengths);
    }
}

int32_t NamesManager_GetNamePointers(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased, const char **ppNames) {
    ScopedLock lock(mgr);
    IndexRange range;
    return toIndexRange(first, last, bOneBased, &range) ? getPointers(mgr, range, ppNames) : 1;
}

/* The usual cases take few instructions, so that the cache misses of neighbouring calls overlap. */
const char *NamesManager_GetName(NamesManager *mgr, int32_t index, int32_t bOneBased) {
    ScopedLock lock(mgr);
    const uint32_t i = static_cast<uint32_t>(index) - (bOneBased != 0 ? 1U : 0U); /* an index below 0 becomes a huge one */
    if (i < static_cast<uint32_t>(mgr->nNames)) {
        if (mgr->pPositions != nullptr) {
            return textAt(mgr, mgr->pPositions[i].iBlock, mgr->pPositions[i].nOffset);
        }
        if (static_cast<int32_t>(i) == mgr->iCursorName) {
            return readAtCursor(mgr);
        }
    }
    return getOne(mgr, index, bOneBased);
}

int32_t NamesManager_CopyName(NamesManager *destination, int32_t destinationIndex, int32_t bDestinationOneBased, NamesManager *source,
                              int32_t sourceIndex, int32_t bSourceOneBased) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    return pName != nullptr ? NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pName) : 1;
}

int32_t NamesManager_CopyNameWithPrefix(NamesManager *destination, int32_t destinationIndex, int32_t bDestinationOneBased,
                                        NamesManager *source, int32_t sourceIndex, int32_t bSourceOneBased, const char *prefix) {
    const char *pName = NamesManager_GetName(source, sourceIndex, bSourceOneBased);
    if (pName == nullptr) {
        return 1;
    }
    const size_t nPrefix = strlen(prefix);
    const size_t nName = strlen(pName) + 1;
    TextBuffer buffer;
    char *pText = roomFor(&buffer, nPrefix + nName);
    if (pText == nullptr) {
        return 1;
    }
    memcpy(pText, prefix, nPrefix);
    memcpy(pText + nPrefix, pName, nName);
    return NamesManager_AddName(destination, destinationIndex, bDestinationOneBased, pText);
}

int32_t NamesManager_GetNames(NamesManager *mgr, int32_t first, int32_t last, int32_t bOneBased, int32_t bPad, int32_t bTruncate,
                              int32_t nWidth, char *pBuffer, uint64_t nBufferSize, uint64_t *pnRequiredSize) {
    ScopedLock lock(mgr);
    IndexRange range;
    const bool bWidth = nWidth >= 1 || (bPad == 0 && bTruncate == 0);
    if (!bWidth || (pBuffer == nullptr && nBufferSize != 0) || !toIndexRange(first, last, bOneBased, &range)) {
        return 1;
    }
    const FieldFormat format = {bPad != 0 ? nWidth : 0, bTruncate != 0 ? nWidth : 0};
    return getNames(mgr, range, format, pBuffer, nBufferSize, pnRequiredSize);
}

int32_t NamesManager_GetNameIntoBuffer(NamesManager *mgr, int32_t index, int32_t bOneBased, int32_t bPad, int32_t bTruncate, int32_t nWidth,
                                       char *pBuffer, uint64_t nBufferSize, uint64_t *pnRequiredSize) {
    return NamesManager_GetNames(mgr, index, index, bOneBased, bPad, bTruncate, nWidth, pBuffer, nBufferSize, pnRequiredSize);
}

int32_t NamesManager_GetMaxNameLength(NamesManager *mgr) {
    ScopedLock lock(mgr);
    if (mgr->nMaxNameLength >= 0) {
        return mgr->nMaxNameLength;
    }
    int32_t nMax = 0;
    int32_t nCount = 0;
    int32_t aLengths[kMaxSegmentNames];
    NameReader reader = startReading(mgr, {0, mgr->nNames - 1});
    for (int32_t n = readNames(&reader, nullptr, aLengths); n > 0; n = readNames(&reader, nullptr, aLengths)) {
        for (int32_t k = 0; k < n; ++k) {
            if (aLengths[k] > nMax) {
                nMax = aLengths[k];
                nCount = 0;
            }
            nCount += aLengths[k] == nMax ? 1 : 0;
        }
    }
    mgr->nMaxNameLength = nMax;
    mgr->nMaxNameLengthCount = nCount;
    return nMax;
}

int32_t NamesManager_WriteNameToText(NamesManager *mgr, int32_t index, int32_t bOneBased, int32_t bTrailingBlanks, int32_t bPad,
                                     int32_t nWidth, HostText *text) {
    const char *pName = nullptr;
    const bool bWidth = nWidth >= 1 || (bPad == 0 && bTrailingBlanks == 0);
    if (!bWidth || NamesManager_GetNamePointers(mgr, index, index, bOneBased, &pName) != 0) {
        return 1;
    }
    const int64_t nCharacters = int64_t{nWidth} - 1;
    const int32_t nAppended = bPad != 0 ? HostText_AppendPadded(text, pName, nCharacters) : HostText_Append(text, pName);
    if (nAppended != 0 || (bTrailingBlanks != 0 && HostText_AppendRepeated(text, nCharacters, ' ') != 0)) {
        return 1;
    }
    return 0;
}
