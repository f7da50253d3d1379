// Loading a manager from an image. None of its bytes is trusted: everything is built aside, each
// invariant of a manager is checked, and only then is what the manager held given up. A failed load
// leaves the manager as a clear does.
#include <algorithm>

#include "names/image.hpp"
#include "names/lifecycle.hpp"
#include "names/storage/name_format.hpp"
#include "names/storage/reading.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

// A manager's state while it is being read: the fields of the record, pBlocks, pSegments and
// pPositions owned.
struct Image {
    NamesManager record;
    int32_t nBlocksWithText;  // blocks that have their pData
};

constexpr int32_t kRefused = -1;  // the image is not sound, or memory ran out

// Reads until a read fails.
struct Reader {
    HostInputStream *pStream;
    int32_t nStatus;
};

// Tells whether it and all reads before it succeeded.
bool read(Reader *pReader, void *pBuffer, uint64_t nBytes) {
    if (pReader->nStatus == 0) {
        pReader->nStatus = HostStream_Read(pReader->pStream, pBuffer, nBytes);
    }
    return pReader->nStatus == 0;
}

bool readNumber(Reader *pReader, int32_t *pnNumber) {
    return read(pReader, pnNumber, sizeof *pnNumber);
}

bool readHeader(Reader *pReader, NamesManager *pRecord) {
    readNumber(pReader, &pRecord->nBlocks);
    readNumber(pReader, &pRecord->nBlocksAlloc);
    readNumber(pReader, &pRecord->nSegments);
    readNumber(pReader, &pRecord->nSegmentsAlloc);
    readNumber(pReader, &pRecord->nPositionsAlloc);
    read(pReader, pRecord->szNameFormat, sizeof pRecord->szNameFormat);
    readNumber(pReader, &pRecord->nGeneratedNameBase);
    return read(pReader, pRecord->szFirstGeneratedName, sizeof pRecord->szFirstGeneratedName);
}

// Counts and capacities: in each other's bounds, of one storage mode, and such that the next growth
// of a table or the next generated name does not leave the 32-bit range.
bool isSoundHeader(const NamesManager &record) {
    const bool bCounts = record.nNames >= 0 && record.nBlocks >= 1 && record.nSegments >= 0;
    const bool bCapacities = record.nBlocks <= record.nBlocksAlloc &&
                             record.nBlocksAlloc <= INT32_MAX - kTableStep &&
                             record.nSegments <= record.nSegmentsAlloc &&
                             record.nSegmentsAlloc <= INT32_MAX - kTableStep;
    const bool bSegments = record.nPositionsAlloc == 0 && record.nSegmentsAlloc > 0 &&
                           record.nSegments <= record.nNames;
    const bool bPositions = record.nSegmentsAlloc == 0 && record.nPositionsAlloc >= record.nNames;
    const bool bTexts =
        isNameFormat(record.szNameFormat) &&
        std::memchr(record.szFirstGeneratedName, 0, sizeof record.szFirstGeneratedName);
    return bCounts && bCapacities && (bSegments || bPositions) && bTexts &&
           record.nGeneratedNameBase >= 0 && record.nGeneratedNameBase < INT32_MAX;
}

void *allocTable(int32_t nRecords, uint64_t nRecordBytes) {
    return HostMem_Alloc(tableBytes(nRecords, nRecordBytes), kSourceTag, __LINE__);
}

// Makes tables at their full capacity; of what the image does not deliver no byte is touched.
bool allocTables(NamesManager *pRecord) {
    pRecord->pBlocks = static_cast<NameStorageBlock *>(
        allocTable(pRecord->nBlocksAlloc, sizeof(NameStorageBlock)));
    if (pRecord->nSegmentsAlloc > 0) {
        pRecord->pSegments =
            static_cast<NameSegment *>(allocTable(pRecord->nSegmentsAlloc, sizeof(NameSegment)));
    } else {
        pRecord->pPositions =
            static_cast<NamePosition *>(allocTable(pRecord->nPositionsAlloc, sizeof(NamePosition)));
    }
    return pRecord->pBlocks != nullptr && !hasNoTables(pRecord);
}

bool readTables(Reader *pReader, NamesManager *pRecord) {
    read(pReader, pRecord->pBlocks, tableBytes(pRecord->nBlocks, sizeof(NameStorageBlock)));
    if (pRecord->nSegments > 0) {
        read(pReader, pRecord->pSegments, tableBytes(pRecord->nSegments, sizeof(NameSegment)));
    }
    if (pRecord->pPositions != nullptr && pRecord->nNames > 0) {
        read(pReader, pRecord->pPositions, tableBytes(pRecord->nNames, sizeof(NamePosition)));
    }
    return pReader->nStatus == 0;
}

bool areSoundBlocks(const NamesManager &record) {
    return std::all_of(
        record.pBlocks, record.pBlocks + record.nBlocks, [](const NameStorageBlock &block) {
            const bool bBothOrNeither = (block.nUsed == 0) == (block.nNamesInBlock == 0);
            return 0 <= block.nUsed && block.nUsed <= block.nSize && block.nNamesInBlock >= 0 &&
                   bBothOrNeither;
        });
}

bool areSoundSegments(const NamesManager &record) {
    int32_t iNext = 0;
    for (int32_t s = 0; s < record.nSegments; ++s) {
        const NameSegment &segment = record.pSegments[s];
        if (segment.iFirst != iNext || segment.iLast < iNext || segment.iLast >= record.nNames ||
            segment.iLast - iNext >= kMaxSegmentNames || segment.iBlock < 0 ||
            segment.iBlock >= record.nBlocks) {
            return false;
        }
        const int32_t nUsed = record.pBlocks[segment.iBlock].nUsed;
        if (segment.nOffset < 0 || segment.nOffset > nUsed || segment.nBytes < namesIn(segment) ||
            segment.nBytes > nUsed - segment.nOffset) {
            return false;
        }
        iNext = segment.iLast + 1;
    }
    return iNext == record.nNames;
}

bool areSoundPositions(const NamesManager &record) {
    return std::all_of(record.pPositions, record.pPositions + record.nNames,
                       [&record](const NamePosition &position) {
                           return 0 <= position.iBlock && position.iBlock < record.nBlocks &&
                                  0 <= position.nOffset &&
                                  position.nOffset < record.pBlocks[position.iBlock].nUsed;
                       });
}

// Gives every block its memory, over the addresses that came with the image.
bool allocTexts(Image *pImage) {
    NamesManager *pRecord = &pImage->record;
    for (int32_t b = 0; b < pRecord->nBlocks; ++b) {
        NameStorageBlock *pBlock = &pRecord->pBlocks[b];
        pBlock->pData = static_cast<char *>(
            HostMem_Alloc(static_cast<uint64_t>(pBlock->nSize), kSourceTag, __LINE__));
        if (pBlock->pData == nullptr) { return false; }
        ++pImage->nBlocksWithText;
    }
    return true;
}

bool readTexts(Reader *pReader, const NamesManager &record) {
    for (int32_t b = 0; b < record.nBlocks; ++b) {
        read(pReader, record.pBlocks[b].pData, static_cast<uint64_t>(record.pBlocks[b].nUsed));
    }
    return pReader->nStatus == 0;
}

// What the names claim of one block.
struct BlockClaims {
    uint64_t iFirstBit;  // the block's first byte in the bits that stand for claimed bytes
    int32_t nNames;
};

struct Claims {
    BlockClaims *pBlocks;
    uint64_t *pBits;  // one for every used byte of every block
};

void freeClaims(Claims *pClaims) {
    HostMem_Free(pClaims->pBlocks, kSourceTag, __LINE__);
    HostMem_Free(pClaims->pBits, kSourceTag, __LINE__);
}

// Memory in proportion to what the image delivered.
bool allocClaims(const NamesManager &record, Claims *pClaims) {
    pClaims->pBits = nullptr;
    pClaims->pBlocks = static_cast<BlockClaims *>(allocTable(record.nBlocks, sizeof(BlockClaims)));
    if (pClaims->pBlocks == nullptr) { return false; }
    uint64_t nBits = 0;
    for (int32_t b = 0; b < record.nBlocks; ++b) {
        pClaims->pBlocks[b] = {nBits, 0};
        nBits += static_cast<uint64_t>(record.pBlocks[b].nUsed);
    }
    const uint64_t nBytes = (nBits / 64 + 1) * sizeof(uint64_t);
    pClaims->pBits = static_cast<uint64_t *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pClaims->pBits == nullptr) {
        freeClaims(pClaims);
        return false;
    }
    std::memset(pClaims->pBits, 0, nBytes);
    return true;
}

// Claims text for names; false if some of it has been claimed before.
bool claimText(Claims *pClaims, int32_t iBlock, int32_t nOffset, int32_t nBytes, int32_t nNames) {
    pClaims->pBlocks[iBlock].nNames += nNames;
    uint64_t iBit = pClaims->pBlocks[iBlock].iFirstBit + static_cast<uint64_t>(nOffset);
    const uint64_t iEnd = iBit + static_cast<uint64_t>(nBytes);
    while (iBit < iEnd) {
        const uint64_t nTake = std::min<uint64_t>(iEnd - iBit, 64 - iBit % 64);
        const uint64_t nMask = (~uint64_t{0} >> (64 - nTake)) << (iBit % 64);
        if ((pClaims->pBits[iBit / 64] & nMask) != 0) { return false; }
        pClaims->pBits[iBit / 64] |= nMask;
        iBit += nTake;
    }
    return true;
}

// Says whether exactly nNames names, none of them ending in a blank, fill the text.
bool areSoundTexts(const TextSpan &text, int32_t nNames) {
    int32_t nFound = 0;
    uint64_t nBlankBefore = 0;  // bit 0: the window before ended in a blank
    for (const char *p = text.pText; p < text.pEnd; p += kWindowBytes) {
        const uint64_t nNuls = matchWindow(p, text, 0);
        const uint64_t nBlanks = matchWindow(p, text, ' ');
        if ((nNuls & (nBlanks << 1 | nBlankBefore)) != 0) { return false; }
        nBlankBefore = nBlanks >> 63;
        nFound += countBits(nNuls);
    }
    return nFound == nNames && text.pEnd[-1] == 0;
}

bool claimSegments(const NamesManager &record, Claims *pClaims) {
    return std::all_of(record.pSegments, record.pSegments + record.nSegments,
                       [&record, pClaims](const NameSegment &segment) {
                           const int32_t nNames = namesIn(segment);
                           return areSoundTexts(textOf(&record, segment), nNames) &&
                                  claimText(pClaims, segment.iBlock, segment.nOffset,
                                            segment.nBytes, nNames);
                       });
}

bool claimPositions(const NamesManager &record, Claims *pClaims) {
    return std::all_of(record.pPositions, record.pPositions + record.nNames,
                       [&record, pClaims](const NamePosition &position) {
                           const char *pText = textAt(&record, position.iBlock, position.nOffset);
                           const size_t nRest = static_cast<size_t>(
                               record.pBlocks[position.iBlock].nUsed - position.nOffset);
                           const char *pEnd =
                               static_cast<const char *>(std::memchr(pText, 0, nRest));
                           return pEnd != nullptr && (pEnd == pText || pEnd[-1] != ' ') &&
                                  claimText(pClaims, position.iBlock, position.nOffset,
                                            static_cast<int32_t>(pEnd - pText) + 1, 1);
                       });
}

// Every name ends inside its block, no two overlap, and every block holds as many as it says.
// Without memory to find out, no.
bool areSoundNames(const NamesManager &record) {
    Claims claims;
    if (!allocClaims(record, &claims)) { return false; }
    bool bSound = record.pSegments != nullptr ? claimSegments(record, &claims)
                                              : claimPositions(record, &claims);
    for (int32_t b = 0; bSound && b < record.nBlocks; ++b) {
        bSound = claims.pBlocks[b].nNames == record.pBlocks[b].nNamesInBlock;
    }
    freeClaims(&claims);
    return bSound;
}

bool readCursor(Reader *pReader, NamesManager *pRecord) {
    int32_t aCursor[kCursorNumbers] = {0, 0, 0, 0, 0};
    read(pReader, aCursor, sizeof aCursor);
    pRecord->iCursorName = aCursor[0];
    pRecord->iCursorSegment = aCursor[1];
    pRecord->iCursorBlock = aCursor[2];
    pRecord->nCursorOffset = aCursor[3];
    pRecord->nCursorMisses = aCursor[4];
    return pReader->nStatus == 0;
}

// A cursor that is set points exactly at its name; its companions are stale, and free, while it is
// not.
bool isSoundCursor(NamesManager *pRecord) {
    const int32_t iName = pRecord->iCursorName;
    if (pRecord->nCursorMisses < 0 || iName < -1) { return false; }
    if (iName == -1) { return true; }
    if (pRecord->pSegments == nullptr || iName >= pRecord->nNames) { return false; }
    pRecord->iCursorName = -1;  // so that the name is looked for, not taken from the cursor
    const NameLocation location = locateName(pRecord, iName);
    pRecord->iCursorName = iName;
    return pRecord->iCursorSegment == location.iSegment &&
           pRecord->iCursorBlock == pRecord->pSegments[location.iSegment].iBlock &&
           pRecord->nCursorOffset == location.nOffset;
}

// Reads what follows nNames. False if a read failed, the image is not sound or memory ran out.
bool readImage(Reader *pReader, Image *pImage) {
    NamesManager *pRecord = &pImage->record;
    return readHeader(pReader, pRecord) && isSoundHeader(*pRecord) && allocTables(pRecord) &&
           readTables(pReader, pRecord) && areSoundBlocks(*pRecord) &&
           (pRecord->pSegments != nullptr ? areSoundSegments(*pRecord)
                                          : areSoundPositions(*pRecord)) &&
           allocTexts(pImage) && readTexts(pReader, *pRecord) && areSoundNames(*pRecord) &&
           readCursor(pReader, pRecord) && isSoundCursor(pRecord);
}

void freeTables(NamesManager *pRecord, int32_t nBlocksWithText) {
    for (int32_t b = 0; b < nBlocksWithText; ++b) {
        HostMem_Free(pRecord->pBlocks[b].pData, kSourceTag, __LINE__);
    }
    HostMem_Free(pRecord->pBlocks, kSourceTag, __LINE__);
    HostMem_Free(pRecord->pSegments, kSourceTag, __LINE__);
    HostMem_Free(pRecord->pPositions, kSourceTag, __LINE__);
}

// Puts a sound image in place of what a cleared manager holds.
void takeOver(NamesManager *mgr, const NamesManager &record) {
    freeTables(mgr, mgr->nBlocks);
    mgr->nNames = record.nNames;
    std::memcpy(mgr->szNameFormat, record.szNameFormat, sizeof mgr->szNameFormat);
    mgr->nGeneratedNameBase = record.nGeneratedNameBase;
    std::memcpy(mgr->szFirstGeneratedName, record.szFirstGeneratedName,
                sizeof mgr->szFirstGeneratedName);
    mgr->pBlocks = record.pBlocks;
    mgr->nBlocks = record.nBlocks;
    mgr->nBlocksAlloc = record.nBlocksAlloc;
    mgr->pSegments = record.pSegments;
    mgr->nSegments = record.nSegments;
    mgr->nSegmentsAlloc = record.nSegmentsAlloc;
    mgr->iCursorName = record.iCursorName;
    mgr->iCursorSegment = record.iCursorSegment;
    mgr->iCursorBlock = record.iCursorBlock;
    mgr->nCursorOffset = record.nCursorOffset;
    mgr->nCursorMisses = record.nCursorMisses;
    mgr->pPositions = record.pPositions;
    mgr->nPositionsAlloc = record.nPositionsAlloc;
}

int32_t load(NamesManager *mgr, HostInputStream *pStream) {
    if (clearNames(mgr) != 0) { return kRefused; }
    Image image;
    std::memset(&image, 0, sizeof image);
    Reader reader = {pStream, 0};
    if (!readNumber(&reader, &image.record.nNames) || image.record.nNames == -1) {
        return reader.nStatus;
    }
    if (!readImage(&reader, &image)) {
        freeTables(&image.record, image.nBlocksWithText);
        return reader.nStatus != 0 ? reader.nStatus : kRefused;
    }
    takeOver(mgr, image.record);
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_Load(NamesManager *mgr, void *reserved, HostInputStream *stream) {
    static_cast<void>(reserved);
    ScopedLock lock(mgr);
    return load(mgr, stream);
}
