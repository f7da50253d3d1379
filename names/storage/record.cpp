// Memory for tables, and the buffer for texts.
#include "names/storage/record.hpp"

namespace names {

void *resizeTable(void *pTable, int32_t nAlloc, int64_t nNewAlloc, uint64_t nRecordBytes,
                  int32_t nLine) {
    if (nNewAlloc > INT32_MAX) { return nullptr; }
    void *pNew =
        HostMem_Realloc(pTable, static_cast<uint64_t>(nNewAlloc) * nRecordBytes, kSourceTag, nLine);
    if (pNew != nullptr && nNewAlloc > nAlloc) {
        const uint64_t nOldBytes = static_cast<uint64_t>(nAlloc) * nRecordBytes;
        std::memset(static_cast<char *>(pNew) + nOldBytes, 0,
                    static_cast<uint64_t>(nNewAlloc - nAlloc) * nRecordBytes);
    }
    return pNew;
}

char *roomFor(TextBuffer *pBuffer, uint64_t nBytes) {
    if (nBytes <= kLocalTextBytes) { return pBuffer->aLocal; }
    if (nBytes > pBuffer->nHeap) {
        void *pNew = HostMem_Realloc(pBuffer->pHeap, nBytes, kSourceTag, __LINE__);
        if (pNew == nullptr) { return nullptr; }
        pBuffer->pHeap = static_cast<char *>(pNew);
        pBuffer->nHeap = nBytes;
    }
    return pBuffer->pHeap;
}

}  // namespace names
