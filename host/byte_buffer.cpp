#include "host/byte_buffer.hpp"

#include <algorithm>
#include <limits>

#include "host/host_memory.h"

namespace host {

constexpr uint64_t kBufferSourceTag = 0x686f737462756666;  // "hostbuff"
constexpr uint64_t kLeastCapacity = 64;                    // bytes

bool growByteBuffer(ByteBuffer &buffer, uint64_t nMore) {
    if (nMore <= buffer.nCapacity - buffer.nUsed) { return true; }
    if (nMore > std::numeric_limits<uint64_t>::max() - buffer.nUsed) { return false; }
    const uint64_t nCapacity =
        std::max({buffer.nUsed + nMore, buffer.nCapacity + buffer.nCapacity / 2, kLeastCapacity});
    void *pBytes = HostMem_Realloc(buffer.pBytes, nCapacity, kBufferSourceTag, __LINE__);
    if (pBytes == nullptr) { return false; }
    buffer.pBytes = static_cast<char *>(pBytes);
    buffer.nCapacity = nCapacity;
    return true;
}

void freeByteBuffer(ByteBuffer &buffer) {
    HostMem_Free(buffer.pBytes, kBufferSourceTag, __LINE__);
    buffer = {};
}

}  // namespace host
