// Sizes and offsets of the public records, on which compiled programs rely. Whoever changes one
// breaks them and says so in CHANGELOG.md. The lock, which comes last, is the host's.
#include <cstddef>

#include "names/names_reader.h"

static_assert(sizeof(NameStorageBlock) == 24);
static_assert(offsetof(NameStorageBlock, pData) == 0);
static_assert(offsetof(NameStorageBlock, nSize) == 8);
static_assert(offsetof(NameStorageBlock, nUsed) == 12);
static_assert(offsetof(NameStorageBlock, nNamesInBlock) == 16);

static_assert(sizeof(NameSegment) == 20);
static_assert(offsetof(NameSegment, iFirst) == 0);
static_assert(offsetof(NameSegment, iLast) == 4);
static_assert(offsetof(NameSegment, iBlock) == 8);
static_assert(offsetof(NameSegment, nOffset) == 12);
static_assert(offsetof(NameSegment, nBytes) == 16);

static_assert(sizeof(NamePosition) == 8);
static_assert(offsetof(NamePosition, iBlock) == 0);
static_assert(offsetof(NamePosition, nOffset) == 4);

static_assert(offsetof(NamesManager, pOwner) == 0);
static_assert(offsetof(NamesManager, nNames) == 8);
static_assert(offsetof(NamesManager, szNameFormat) == 12);
static_assert(offsetof(NamesManager, nGeneratedNameBase) == 44);
static_assert(offsetof(NamesManager, szFirstGeneratedName) == 48);
static_assert(offsetof(NamesManager, nMaxNameLength) == 80);
static_assert(offsetof(NamesManager, nMaxNameLengthCount) == 84);
static_assert(offsetof(NamesManager, pBlocks) == 88);
static_assert(offsetof(NamesManager, nBlocks) == 96);
static_assert(offsetof(NamesManager, nBlocksAlloc) == 100);
static_assert(offsetof(NamesManager, pSegments) == 104);
static_assert(offsetof(NamesManager, nSegments) == 112);
static_assert(offsetof(NamesManager, nSegmentsAlloc) == 116);
static_assert(offsetof(NamesManager, iCursorName) == 120);
static_assert(offsetof(NamesManager, iCursorSegment) == 124);
static_assert(offsetof(NamesManager, iCursorBlock) == 128);
static_assert(offsetof(NamesManager, nCursorOffset) == 132);
static_assert(offsetof(NamesManager, nCursorMisses) == 136);
static_assert(offsetof(NamesManager, pPositions) == 144);
static_assert(offsetof(NamesManager, nPositionsAlloc) == 152);
static_assert(offsetof(NamesManager, pLookupIndex) == 160);

static_assert(sizeof(NamesReader) == 576);
static_assert(offsetof(NamesReader, pManager) == 0);
static_assert(offsetof(NamesReader, pIndex) == 8);
static_assert(offsetof(NamesReader, pBlocks) == 16);
static_assert(offsetof(NamesReader, pPositions) == 24);
static_assert(offsetof(NamesReader, pText) == 32);
static_assert(offsetof(NamesReader, nPositions) == 40);
static_assert(offsetof(NamesReader, iFirst) == 44);
static_assert(offsetof(NamesReader, nNames) == 48);
static_assert(offsetof(NamesReader, iSegment) == 52);
static_assert(offsetof(NamesReader, nOffset) == 56);
static_assert(offsetof(NamesReader, aStarts) == 60);
