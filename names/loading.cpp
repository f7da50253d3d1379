// Loading a manager from an image. None of its bytes is trusted: everything is built aside, each
// invariant of a manager is checked, and only then is what the manager held given up. A failed load
// leaves the manager as a clear does.
#include <algorithm>

#include "names/audit.hpp"
#include "names/image.hpp"
#include "names/lifecycle.hpp"
#include "names/storage/name_format.hpp"
#include "names/storage/reading.hpp"
#include "names/storage/text_walk.hpp"

namespace names {

namespace {

constexpr int32_t kRefused = -1;  // the image is not sound, or memory ran out

// The manager that an image makes, while it is being read. Owns its tables and texts.
struct LoadedManager {
    NamesManager record;
    int32_t nBlocksWithText;  // blocks that have their pData
};

// Reads until a read fails.
struct ImageReader {
    HostInputStream *pStream;
    int32_t nStatus;
};

// True if it and all reads before it succeeded.
bool readBytes(ImageReader *pReader, void *pBuffer, uint64_t nBytes) {
    if (pReader->nStatus == 0) {
        pReader->nStatus = HostStream_Read(pReader->pStream, pBuffer, nBytes);
    }
    return pReader->nStatus == 0;
}

bool readNumber(ImageReader *pReader, int32_t *pnNumber) {
    return readBytes(pReader, pnNumber, sizeof *pnNumber);
}

// The header without nNames.
bool readHeader(ImageReader *pReader, NamesManager *pRecord) {
    readNumber(pReader, &pRecord->nBlocks);
    readNumber(pReader, &pRecord->nBlocksAlloc);
    readNumber(pReader, &pRecord->nSegments);
    readNumber(pReader, &pRecord->nSegmentsAlloc);
    readNumber(pReader, &pRecord->nPositionsAlloc);
    readBytes(pReader, pRecord->szNameFormat, sizeof pRecord->szNameFormat);
    readNumber(pReader, &pRecord->nGeneratedNameBase);
    return readBytes(pReader, pRecord->szFirstGeneratedName, sizeof pRecord->szFirstGeneratedName);
}

// Counts and capacities: in each other's bounds, of one storage mode, and such that the next growth
// of a table or the next generated name does not leave the 32-bit range. The audit checks bounds
// again, but tables are made and filled by them first.
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

bool readTables(ImageReader *pReader, NamesManager *pRecord) {
    readBytes(pReader, pRecord->pBlocks, tableBytes(pRecord->nBlocks, sizeof(NameStorageBlock)));
    if (pRecord->nSegments > 0) {
        readBytes(pReader, pRecord->pSegments, tableBytes(pRecord->nSegments, sizeof(NameSegment)));
    }
    if (pRecord->pPositions != nullptr && pRecord->nNames > 0) {
        readBytes(pReader, pRecord->pPositions, tableBytes(pRecord->nNames, sizeof(NamePosition)));
    }
    return pReader->nStatus == 0;
}

// ---- Tables: what the audit checks, and what it does not look for in a manager, which has neither
// negative numbers nor sums that leave the 32-bit range ----

bool isSoundBlock(const NameStorageBlock &block) {
    return block.nUsed >= 0 && block.nNamesInBlock >= 0;
}

bool isSoundSegment(const NamesManager &record, const NameSegment &segment) {
    return segment.iLast < record.nNames && segment.nOffset >= 0 &&
           segment.nBytes >= namesIn(segment) &&
           segment.nBytes <= record.pBlocks[segment.iBlock].nUsed - segment.nOffset;
}

// The record has no cursor yet, which would be audited, too.
bool areSoundTables(const NamesManager &record) {
    if (!isConsistent(&record) ||
        !std::all_of(record.pBlocks, record.pBlocks + record.nBlocks, isSoundBlock)) {
        return false;
    }
    if (record.pSegments != nullptr) {
        return std::all_of(
            record.pSegments, record.pSegments + record.nSegments,
            [&record](const NameSegment &segment) { return isSoundSegment(record, segment); });
    }
    int32_t nSigns = 0;  // all looked at together, rather than with a branch for each
    for (int32_t i = 0; i < record.nNames; ++i) { nSigns |= record.pPositions[i].nOffset; }
    return nSigns >= 0;
}

// ---- Texts ----

// Gives every block its memory, over the addresses that came with the image.
bool allocTexts(LoadedManager *pLoaded) {
    NamesManager *pRecord = &pLoaded->record;
    for (int32_t b = 0; b < pRecord->nBlocks; ++b) {
        const uint64_t nBytes = static_cast<uint64_t>(pRecord->pBlocks[b].nSize);
        pRecord->pBlocks[b].pData =
            static_cast<char *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
        if (pRecord->pBlocks[b].pData == nullptr) { return false; }
        ++pLoaded->nBlocksWithText;
    }
    return true;
}

bool readTexts(ImageReader *pReader, const NamesManager &record) {
    for (int32_t b = 0; b < record.nBlocks; ++b) {
        readBytes(pReader, record.pBlocks[b].pData, static_cast<uint64_t>(record.pBlocks[b].nUsed));
    }
    return pReader->nStatus == 0;
}

// What of one block names have claimed.
struct BlockClaims {
    uint64_t iFirstBit;  // the block's first byte in the bits that stand for claimed bytes
    int32_t nNames;
};

struct Claims {
    BlockClaims *pBlocks;
    uint64_t *pBits;  // one for every used byte of every block
};

void freeClaims(Claims *pClaims) {
    freeMemory(pClaims->pBlocks);
    freeMemory(pClaims->pBits);
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

// Claims nBytes bytes of text, at least one, for names. False if one has been claimed before.
bool claimText(Claims *pClaims, int32_t iBlock, int32_t nOffset, int32_t nBytes, int32_t nNames) {
    BlockClaims *pBlock = &pClaims->pBlocks[iBlock];
    pBlock->nNames += nNames;
    const uint64_t iFirst = pBlock->iFirstBit + static_cast<uint64_t>(nOffset);
    const uint64_t iLast = iFirst + static_cast<uint64_t>(nBytes) - 1;
    uint64_t nMask = ~uint64_t{0} << (iFirst % 64);
    for (uint64_t *pBits = pClaims->pBits + iFirst / 64; pBits <= pClaims->pBits + iLast / 64;
         ++pBits) {
        if (pBits == pClaims->pBits + iLast / 64) { nMask &= ~uint64_t{0} >> (63 - iLast % 64); }
        if ((*pBits & nMask) != 0) { return false; }
        *pBits |= nMask;
        nMask = ~uint64_t{0};
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

bool claimSegment(const NamesManager &record, const NameSegment &segment, Claims *pClaims) {
    const int32_t nNames = namesIn(segment);
    return areSoundTexts(textOf(&record, segment), nNames) &&
           claimText(pClaims, segment.iBlock, segment.nOffset, segment.nBytes, nNames);
}

bool claimPosition(const NamesManager &record, const NamePosition &position, Claims *pClaims) {
    const char *pText = textAt(&record, position.iBlock, position.nOffset);
    const int32_t nRest = record.pBlocks[position.iBlock].nUsed - position.nOffset;
    const void *pNul = std::memchr(pText, 0, static_cast<size_t>(nRest));
    if (pNul == nullptr) { return false; }
    const int32_t nLength = static_cast<int32_t>(static_cast<const char *>(pNul) - pText);
    return (nLength == 0 || pText[nLength - 1] != ' ') &&
           claimText(pClaims, position.iBlock, position.nOffset, nLength + 1, 1);
}

// Not inlined, so that its loops have the registers to themselves.
[[gnu::noinline]] bool claimNames(const NamesManager &record, Claims *pClaims) {
    bool bSound = true;
    for (int32_t s = 0; bSound && s < record.nSegments; ++s) {
        bSound = claimSegment(record, record.pSegments[s], pClaims);
    }
    for (int32_t i = 0; bSound && record.pPositions != nullptr && i < record.nNames; ++i) {
        bSound = claimPosition(record, record.pPositions[i], pClaims);
    }
    return bSound;
}

// Every name ends inside its block, no two overlap, and every block holds as many as it says.
// Without memory to find out, no.
bool areSoundNames(const NamesManager &record) {
    Claims claims;
    if (!allocClaims(record, &claims)) { return false; }
    bool bSound = claimNames(record, &claims);
    for (int32_t b = 0; bSound && b < record.nBlocks; ++b) {
        bSound = claims.pBlocks[b].nNames == record.pBlocks[b].nNamesInBlock;
    }
    freeClaims(&claims);
    return bSound;
}

// ---- The whole image ----

bool readCursor(ImageReader *pReader, NamesManager *pRecord) {
    ImageCursor cursor = {};
    const bool bRead = readBytes(pReader, &cursor, sizeof cursor);
    pRecord->iCursorName = cursor.iName;
    pRecord->iCursorSegment = cursor.iSegment;
    pRecord->iCursorBlock = cursor.iBlock;
    pRecord->nCursorOffset = cursor.nOffset;
    pRecord->nCursorMisses = cursor.nMisses;
    return bRead;
}

// A cursor that is set points exactly at its name, where the audit is content with its segment's
// names and its block's used bytes; what it consists of besides is stale, and free, while it is
// not.
bool isSoundCursor(const NamesManager &record) {
    if (record.nCursorMisses < 0 || record.iCursorName < -1) { return false; }
    if (record.iCursorName == -1) { return true; }
    if (record.pSegments == nullptr || record.iCursorName >= record.nNames) { return false; }
    const NameLocation location = searchName(&record, record.iCursorName);
    return record.iCursorSegment == location.iSegment &&
           record.iCursorBlock == record.pSegments[location.iSegment].iBlock &&
           record.nCursorOffset == location.nOffset;
}

// Reads what follows nNames. False if a read failed, the image is not sound or memory ran out.
bool readImage(ImageReader *pReader, LoadedManager *pLoaded) {
    NamesManager *pRecord = &pLoaded->record;
    return readHeader(pReader, pRecord) && isSoundHeader(*pRecord) && allocTables(pRecord) &&
           readTables(pReader, pRecord) && areSoundTables(*pRecord) && allocTexts(pLoaded) &&
           readTexts(pReader, *pRecord) && areSoundNames(*pRecord) &&
           readCursor(pReader, pRecord) && isSoundCursor(*pRecord);
}

void freeTables(const NamesManager &record, int32_t nBlocksWithText) {
    for (int32_t b = 0; b < nBlocksWithText; ++b) { freeMemory(record.pBlocks[b].pData); }
    freeMemory(record.pBlocks);
    freeMemory(record.pSegments);
    freeMemory(record.pPositions);
}

// Puts what has been loaded in place of what a cleared manager holds.
void installLoaded(NamesManager *mgr, const NamesManager &record) {
    freeTables(*mgr, mgr->nBlocks);
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

int32_t loadImage(NamesManager *mgr, HostInputStream *pStream) {
    if (!clearAll(mgr)) { return kRefused; }
    LoadedManager loaded;
    std::memset(&loaded, 0, sizeof loaded);
    loaded.record.iCursorName = -1;
    ImageReader reader = {pStream, 0};
    if (!readNumber(&reader, &loaded.record.nNames) || loaded.record.nNames == -1) {
        return reader.nStatus;
    }
    if (!readImage(&reader, &loaded)) {
        freeTables(loaded.record, loaded.nBlocksWithText);
        return reader.nStatus != 0 ? reader.nStatus : kRefused;
    }
    installLoaded(mgr, loaded.record);
    return 0;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_Load(NamesManager *mgr, void *reserved, HostInputStream *stream) {
    static_cast<void>(reserved);
    ScopedLock lock(mgr);
    return loadImage(mgr, stream);
}
