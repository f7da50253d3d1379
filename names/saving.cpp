// Saving a manager as an image.
#include "names/image.hpp"

namespace names {

namespace {

// Writes until a write fails.
struct ImageWriter {
    HostOutputStream *pStream;
    int32_t nStatus;
};

void writeBytes(ImageWriter *pWriter, const void *pData, uint64_t nBytes) {
    if (pWriter->nStatus == 0) {
        pWriter->nStatus = HostStream_Write(pWriter->pStream, pData, nBytes);
    }
}

void writeNumber(ImageWriter *pWriter, int32_t nNumber) {
    writeBytes(pWriter, &nNumber, sizeof nNumber);
}

// Writes the table without addresses, so that none leaves the process and equal managers have equal
// images, or with them where there is no memory for a copy.
void writeBlockTable(ImageWriter *pWriter, const NamesManager *mgr) {
    const uint64_t nBytes = tableBytes(mgr->nBlocks, sizeof(ImageBlock));
    ImageBlock *pTable = static_cast<ImageBlock *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pTable == nullptr) {
        writeBytes(pWriter, mgr->pBlocks, nBytes);
        return;
    }
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        const NameStorageBlock &block = mgr->pBlocks[b];
        pTable[b] = {0, block.nSize, block.nUsed, block.nNamesInBlock, 0};
    }
    writeBytes(pWriter, pTable, nBytes);
    freeMemory(pTable);
}

int32_t saveImage(const NamesManager *mgr, HostOutputStream *pStream) {
    ImageWriter writer = {pStream, 0};
    writeNumber(&writer, mgr->nNames);
    writeNumber(&writer, mgr->nBlocks);
    writeNumber(&writer, mgr->nBlocksAlloc);
    writeNumber(&writer, mgr->nSegments);
    writeNumber(&writer, mgr->nSegmentsAlloc);
    writeNumber(&writer, mgr->nPositionsAlloc);
    writeBytes(&writer, mgr->szNameFormat, sizeof mgr->szNameFormat);
    writeNumber(&writer, mgr->nGeneratedNameBase);
    writeBytes(&writer, mgr->szFirstGeneratedName, sizeof mgr->szFirstGeneratedName);
    writeBlockTable(&writer, mgr);
    if (mgr->nSegments > 0) {
        writeBytes(&writer, mgr->pSegments, tableBytes(mgr->nSegments, sizeof(NameSegment)));
    }
    if (mgr->pPositions != nullptr && mgr->nNames > 0) {
        writeBytes(&writer, mgr->pPositions, tableBytes(mgr->nNames, sizeof(NamePosition)));
    }
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        writeBytes(&writer, mgr->pBlocks[b].pData, static_cast<uint64_t>(mgr->pBlocks[b].nUsed));
    }
    const ImageCursor cursor = {mgr->iCursorName, mgr->iCursorSegment, mgr->iCursorBlock,
                                mgr->nCursorOffset, mgr->nCursorMisses};
    writeBytes(&writer, &cursor, sizeof cursor);
    return writer.nStatus;
}

}  // namespace

}  // namespace names

using namespace names;

int32_t NamesManager_Save(NamesManager *mgr, void *reserved, HostOutputStream *stream) {
    static_cast<void>(reserved);
    if (mgr == nullptr) {
        const int32_t nNoManager = -1;
        return HostStream_Write(stream, &nNoManager, sizeof nNoManager);
    }
    ScopedLock lock(mgr);
    return saveImage(mgr, stream);
}
