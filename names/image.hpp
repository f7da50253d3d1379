// The bytes of an image, a saved manager; docs/image_format.md describes them for other programs.
//
//     offset  bytes
//          0      24  nNames, nBlocks, nBlocksAlloc, nSegments, nSegmentsAlloc, nPositionsAlloc
//                     (nNames -1: a saved NULL manager, nothing follows)
//         24      32  szNameFormat
//         56       4  nGeneratedNameBase
//         60      32  szFirstGeneratedName
//         92          nBlocks block records of 24: an address (8 bytes, 0, ignored), nSize, nUsed,
//                     nNamesInBlock, 0 (ignored)
//                     nSegments segment records of 20: iFirst, iLast, iBlock, nOffset, nBytes
//                     nNames position records of 8, if nPositionsAlloc > 0: iBlock, nOffset
//                     the used text of every block, dead bytes included
//                 20  iCursorName, iCursorSegment, iCursorBlock, nCursorOffset, nCursorMisses
//
// All numbers are signed, of 32 bits and in the machine's byte order.
#ifndef NAMES_IMAGE_HPP
#define NAMES_IMAGE_HPP

#include "names/storage/record.hpp"

namespace names {

struct ImageBlock {
    uint64_t nAddress;
    int32_t nSize;
    int32_t nUsed;
    int32_t nNamesInBlock;
    int32_t nPadding;
};

struct ImageCursor {
    int32_t iName;
    int32_t iSegment;
    int32_t iBlock;
    int32_t nOffset;
    int32_t nMisses;
};

// Tables are written and read as they lie in memory.
static_assert(sizeof(ImageBlock) == 24 && sizeof(NameStorageBlock) == sizeof(ImageBlock));
static_assert(sizeof(NameSegment) == 20 && sizeof(NamePosition) == 8 && sizeof(ImageCursor) == 20);

inline uint64_t tableBytes(int32_t nRecords, uint64_t nRecordBytes) {
    return static_cast<uint64_t>(nRecords) * nRecordBytes;
}

}  // namespace names

#endif
