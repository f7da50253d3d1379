// Names as fields: copied into a caller's buffer, or appended to a host text.
#include <algorithm>

#include "names/generating.hpp"
#include "names/retrieval.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

// ---- Names as they lie, in segment mode ----

// Bytes of the next nNames names, all in the reader's segment. They are walked only where the
// segment goes on after them.
int32_t bytesOfNext(const NameReader &reader, int32_t nNames) {
    const NameSegment &segment = reader.mgr->pSegments[reader.location.iSegment];
    if (reader.iNext + nNames - 1 == segment.iLast) { return bytesToSegmentEnd(reader); }
    return bytesOfNames(restOfSegment(reader), nNames);
}

// Bytes of a range, NULs included. With bWholeSegments to the end of its last segment, which takes
// no look at text.
uint64_t bytesOfRange(NameReader reader, bool bWholeSegments) {
    uint64_t nBytes = 0;
    while (reader.iNext <= reader.iLast) {
        const int32_t nNames = enterSegment(&reader);
        const int32_t nHere =
            bWholeSegments ? bytesToSegmentEnd(reader) : bytesOfNext(reader, nNames);
        stepOver(&reader, nNames, nHere);
        nBytes += static_cast<uint64_t>(nHere);
    }
    return nBytes;
}

// Returns where the next stretch goes. The first one of all is NULL.
char *copyStretch(char *pTo, const char *pText, size_t nBytes) {
    if (pText != nullptr) { std::memcpy(pTo, pText, nBytes); }
    return pTo + nBytes;
}

// Copies a range, segments whose texts touch in one stretch, and returns the number of bytes.
// *pReader ends after the last name.
uint64_t copyRange(NameReader *pReader, char *pBuffer) {
    char *pTo = pBuffer;
    const char *pStretch = nullptr;
    size_t nStretch = 0;
    int32_t iBlock = -1;
    while (pReader->iNext <= pReader->iLast) {
        const int32_t nNames = enterSegment(pReader);
        const int32_t iHere = pReader->mgr->pSegments[pReader->location.iSegment].iBlock;
        const char *pText = textAt(pReader->mgr, iHere, pReader->location.nOffset);
        if (iHere != iBlock || pText != pStretch + nStretch) {
            pTo = copyStretch(pTo, pStretch, nStretch);
            pStretch = pText;
            nStretch = 0;
            iBlock = iHere;
        }
        const int32_t nHere = bytesOfNext(*pReader, nNames);
        stepOver(pReader, nNames, nHere);
        nStretch += static_cast<size_t>(nHere);
    }
    return static_cast<uint64_t>(copyStretch(pTo, pStretch, nStretch) - pBuffer);
}

// ---- Names as fields ----

// The widths that names are padded and cut to, NULs included; 0: not at all.
struct FieldFormat {
    int32_t nPad;
    int32_t nCut;
};

uint64_t fieldBytes(FieldFormat format, int32_t nLength) {
    const int64_t nPadded = std::max<int64_t>(int64_t{nLength} + 1, format.nPad);
    return static_cast<uint64_t>(format.nCut != 0 ? std::min<int64_t>(nPadded, format.nCut)
                                                  : nPadded);
}

// Says whether the fields are names back to back, as they lie in a segment.
bool isCopiedAsItLies(const NamesManager *mgr, FieldFormat format) {
    return mgr->pSegments != nullptr && format.nPad == 0 && format.nCut == 0;
}

uint64_t requiredSize(NameReader reader, FieldFormat format) {
    if (format.nPad != 0 && format.nPad == format.nCut) {
        return static_cast<uint64_t>(reader.iLast - reader.iNext + 1) *
               static_cast<uint64_t>(format.nPad);
    }
    if (isCopiedAsItLies(reader.mgr, format)) { return bytesOfRange(reader, false); }
    uint64_t nSize = 0;
    int32_t aLengths[kMaxSegmentNames];
    while (const int32_t nNames = readNames(&reader, nullptr, aLengths)) {
        for (int32_t k = 0; k < nNames; ++k) { nSize += fieldBytes(format, aLengths[k]); }
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

// Writes one field at pTo and returns where the next one goes. With bLoose both sides have
// kLooseBytes to spare.
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

// Says whether kLooseBytes can be read beyond each of the names read last, as they mostly can in
// segment mode.
bool canReadLoosely(const NameReader &reader) {
    const NamesManager *mgr = reader.mgr;
    return mgr->pSegments != nullptr &&
           mgr->pBlocks[mgr->pSegments[reader.location.iSegment].iBlock].nSize -
                   reader.location.nOffset >=
               static_cast<int32_t>(kLooseBytes);
}

// Writes the fields of the range, nSize bytes in all. *pReader ends after the last name.
void writeFields(NameReader *pReader, FieldFormat format, char *pBuffer, uint64_t nSize) {
    if (isCopiedAsItLies(pReader->mgr, format)) {
        copyRange(pReader, pBuffer);
        return;
    }
    const char *const pEnd = pBuffer + nSize;
    const char *apNames[kMaxSegmentNames];
    int32_t aLengths[kMaxSegmentNames];
    while (const int32_t nNames = readNames(pReader, apNames, aLengths)) {
        const bool bReadsLoosely = canReadLoosely(*pReader);
        for (int32_t k = 0; k < nNames; ++k) {
            const int64_t nMost =
                std::max<int64_t>(aLengths[k], format.nPad) + static_cast<int64_t>(kLooseBytes);
            pBuffer = writeField(pBuffer, format, apNames[k], aLengths[k],
                                 bReadsLoosely && pEnd - pBuffer > nMost);
        }
    }
}

// Says without a look at text whether the range is copied as it lies and surely fits, because its
// whole segments do.
bool surelyFits(const NameReader &reader, FieldFormat format, uint64_t nBufferSize) {
    return isCopiedAsItLies(reader.mgr, format) && reader.iNext <= reader.iLast &&
           bytesOfRange(reader, true) <= nBufferSize;
}

void setSize(uint64_t *pnRequiredSize, uint64_t nSize) {
    if (pnRequiredSize != nullptr) { *pnRequiredSize = nSize; }
}

// NamesManager_GetNames for a range and a format that have been checked.
int32_t getNames(NamesManager *mgr, IndexRange range, FieldFormat format, char *pBuffer,
                 uint64_t nBufferSize, uint64_t *pnRequiredSize) {
    if (range.last >= mgr->nNames && NamesManager_GenerateNamesUpTo(mgr, range.last) != 0) {
        return 1;
    }
    if (pnRequiredSize == nullptr && nBufferSize == 0) { return 0; }
    NameReader reader = startReading(mgr, range);
    if (surelyFits(reader, format, nBufferSize)) {  // copied before its size is known
        setSize(pnRequiredSize, copyRange(&reader, pBuffer));
        finishRetrieval(mgr, reader);
        return 0;
    }
    const uint64_t nSize = requiredSize(reader, format);
    setSize(pnRequiredSize, nSize);
    if (nBufferSize == 0) { return 0; }
    if (nSize > nBufferSize) { return 3; }
    if (range.first <= range.last) {
        writeFields(&reader, format, pBuffer, nSize);
        finishRetrieval(mgr, reader);
    }
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

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
