// Bytes in one piece of memory that grows in proportion to its size. Internal to the shipped host.
#ifndef HOST_BYTE_BUFFER_HPP
#define HOST_BYTE_BUFFER_HPP

#include <cstdint>

namespace host {

struct ByteBuffer {
    char *pBytes;        // owned; NULL while nCapacity is 0
    uint64_t nUsed;      // bytes in use
    uint64_t nCapacity;  // bytes there is room for
};

// Makes room for nMore bytes after those in use. False without memory: nothing has changed.
bool growByteBuffer(ByteBuffer &buffer, uint64_t nMore);

// Frees the memory and leaves an empty buffer.
void freeByteBuffer(ByteBuffer &buffer);

}  // namespace host

#endif
