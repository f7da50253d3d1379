// Saving a manager's exact image.
#include "names/image.hpp"

namespace names {

namespace {

// Writes until a write fails.
struct Writer {
    HostOutputStream *pStream;
    int32_t nStatus;
};

void write(Writer *pWriter, const void *pData, uint64_t nBytes) {
    if (pWriter->nStatus == 0) {
        pWriter->nStatus = HostStream_Write(pWriter->pStream, pData, nBytes);
    }
}

void writeNumber(Writer *pWriter, int32_t nNumber) {
    write(pWriter, &nNumber, sizeof nNumber);
}

// No address leaves the process, and equal managers save equal bytes, unless there is no memory to
// put that table together.
void writeBlockTable(Writer *pWriter, const NamesManager *mgr) {
    const uint64_t nBytes = tableBytes(mgr->nBlocks, sizeof(ImageBlock));
    ImageBlock *pTable = static_cast<ImageBlock *>(HostMem_Alloc(nBytes, kSourceTag, __LINE__));
    if (pTable == nullptr) {
        write(pWriter, mgr->pBlocks, nBytes);
        return;
    }
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        pTable[b] = {0, mgr->pBlocks[b].nSize, mgr->pBlocks[b].nUsed, mgr->pBlocks[b].nNamesInBlock,
                     0};
    }
    write(pWriter, pTable, nBytes);
    HostMem_Free(pTable, kSourceTag, __LINE__);
}

int32_t save(const NamesManager *mgr, HostOutputStream *pStream) {
    Writer writer = {pStream, 0};
    writeNumber(&writer, mgr->nNames);
    writeNumber(&writer, mgr->nBlocks);
    writeNumber(&writer, mgr->nBlocksAlloc);
    writeNumber(&writer, mgr->nSegments);
    writeNumber(&writer, mgr->nSegmentsAlloc);
    writeNumber(&writer, mgr->nPositionsAlloc);
    write(&writer, mgr->szNameFormat, sizeof mgr->szNameFormat);
    writeNumber(&writer, mgr->nGeneratedNameBase);
    write(&writer, mgr->szFirstGeneratedName, sizeof mgr->szFirstGeneratedName);
    writeBlockTable(&writer, mgr);
    if (mgr->nSegments > 0) {
        write(&writer, mgr->pSegments, tableBytes(mgr->nSegments, sizeof(NameSegment)));
    }
    if (mgr->pPositions != nullptr && mgr->nNames > 0) {
        write(&writer, mgr->pPositions, tableBytes(mgr->nNames, sizeof(NamePosition)));
    }
    for (int32_t b = 0; b < mgr->nBlocks; ++b) {
        write(&writer, mgr->pBlocks[b].pData, static_cast<uint64_t>(mgr->pBlocks[b].nUsed));
    }
    const int32_t aCursor[kCursorNumbers] = {mgr->iCursorName, mgr->iCursorSegment,
                                             mgr->iCursorBlock, mgr->nCursorOffset,
                                             mgr->nCursorMisses};
    write(&writer, aCursor, sizeof aCursor);
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
    return save(mgr, stream);
}
