// A run of bytes in one piece of memory that grows in proportion to its size. Internal to the
// shipped host.
#ifndef HOST_BYTE_BUFFER_HPP
#define HOST_BYTE_BUFFER_HPP

#include <cstdint>

namespace host {

struct ByteBuffer {
    char *pBytes;        // owned; NULL while nCapacity is 0
    uint64_t nUsed;      // bytes in use
    uint64_t nCapacity;  // bytes there is room for
};

// Makes room for nMore bytes behind those in use. False when there is no memory: the buffer is then
// unchanged.
bool growByteBuffer(ByteBuffer &buffer, uint64_t nMore);

// Gives the memory back and leaves an empty buffer.
void freeByteBuffer(ByteBuffer &buffer);

}  // namespace host

#endif
