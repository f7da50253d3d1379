#include "host/host_text.h"

#include <cstring>
#include <limits>

#include "host/byte_buffer.hpp"
#include "host/host_memory.h"

// The buffer's bytes in use exclude the NUL, which follows them from creation on.
struct HostText {
    host::ByteBuffer buffer;
};

namespace host {
namespace {

constexpr uint64_t kTextSourceTag = 0x686f737474657874;  // "hosttext"

// Appends nBytes bytes and then nFill times cFill, all or nothing.
int32_t appendFilled(HostText *pText, const char *pBytes, uint64_t nBytes, uint64_t nFill,
                     char cFill) {
    ByteBuffer &buffer = pText->buffer;
    if (nFill >= std::numeric_limits<uint64_t>::max() - nBytes ||
        !growByteBuffer(buffer, nBytes + nFill + 1)) {
        return 1;
    }
    std::memcpy(buffer.pBytes + buffer.nUsed, pBytes, nBytes);
    std::memset(buffer.pBytes + buffer.nUsed + nBytes, cFill, nFill);
    buffer.nUsed += nBytes + nFill;
    buffer.pBytes[buffer.nUsed] = '\0';
    return 0;
}

}  // namespace
}  // namespace host

using namespace host;

int32_t HostText_Append(HostText *pText, const char *szString) {
    return appendFilled(pText, szString, std::strlen(szString), 0, ' ');
}

int32_t HostText_AppendPadded(HostText *pText, const char *szString, int64_t nCharacters) {
    const uint64_t nBytes = std::strlen(szString);
    const uint64_t nWidth = nCharacters > 0 ? static_cast<uint64_t>(nCharacters) : 0;
    return appendFilled(pText, szString, nBytes, nWidth > nBytes ? nWidth - nBytes : 0, ' ');
}

int32_t HostText_AppendRepeated(HostText *pText, int64_t nCount, char cCharacter) {
    return appendFilled(pText, "", 0, nCount > 0 ? static_cast<uint64_t>(nCount) : 0, cCharacter);
}

HostText *HostText_Create(void) {
    auto *pText =
        static_cast<HostText *>(HostMem_AllocRecord(sizeof(HostText), kTextSourceTag, __LINE__));
    if (pText == nullptr) { return nullptr; }
    *pText = {};
    if (HostText_Append(pText, "") != 0) {
        HostText_Destroy(pText);
        return nullptr;
    }
    return pText;
}

void HostText_Destroy(HostText *pText) {
    if (pText == nullptr) { return; }
    freeByteBuffer(pText->buffer);
    HostMem_Free(pText, kTextSourceTag, __LINE__);
}

const char *HostText_GetString(const HostText *pText) {
    return pText->buffer.pBytes;
}

uint64_t HostText_GetLength(const HostText *pText) {
    return pText->buffer.nUsed;
}
