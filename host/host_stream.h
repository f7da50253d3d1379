/** @file
 * Streams of bytes. Writing and reading return 0 on success, otherwise the stream's own error code.
 * A stream has no lock: only one thread may use it at a time.
 */
#ifndef HOST_HOST_STREAM_H
#define HOST_HOST_STREAM_H

#include <stdint.h>

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

typedef struct HostOutputStream HostOutputStream;
typedef struct HostInputStream HostInputStream; /**< incomplete here; the host's own */

/** What an output stream can do. */
typedef struct HostOutputStreamOps {
    int32_t (*pfnWrite)(HostOutputStream *pStream, const void *pData, uint64_t nBytes);
} HostOutputStreamOps;

/** The first member of every output stream; a caller may write streams of its own. */
struct HostOutputStream {
    const HostOutputStreamOps *pOps;
};

/** Writes nBytes from pData, which are copied or written out before it returns. 0 bytes write
 * nothing; pData may then be NULL. */
static inline int32_t HostStream_Write(HostOutputStream *pStream, const void *pData,
                                       uint64_t nBytes) {
    return pStream->pOps->pfnWrite(pStream, pData, nBytes);
}

/** Reads exactly nBytes to pBuffer. 0 bytes read nothing; pBuffer may then be NULL.
 *
 * Returns non-zero if the stream ends early or fails; no byte of pBuffer beyond those that the
 * stream still had is touched then. */
int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes);

/** @name The shipped host's own: memory and file streams
 * The makers return a stream that belongs to the caller until it is closed, or NULL: either there
 * is no memory (errno is ENOMEM), or the file could not be opened (errno says why).
 * @{ */

/** The codes of the shipped streams. */
enum {
    HostStreamError_IO = 1,    /**< the system refused; errno says why right after the call */
    HostStreamError_End = 2,   /**< the stream ended before the bytes asked for */
    HostStreamError_Memory = 3 /**< a memory stream could not grow */
};

/** Makes an output stream that keeps what is written in memory. A write that fails leaves the
 * stream as it was. */
HostOutputStream *HostOutputStream_CreateInMemory(void);

/** Returns the bytes written to a memory stream so far and sets `*pnBytes` to their number. They
 * are valid until the next write or the close. Never returns NULL. */
const void *HostOutputStream_GetMemory(const HostOutputStream *pStream, uint64_t *pnBytes);

/** Makes an output stream over the file szPath, which is created (mode 0666 less the umask) or
 * emptied. Writes are buffered; after one fails every later one fails too. */
HostOutputStream *HostOutputStream_CreateForFile(const char *szPath);

/** HostOutputStream_CreateForFile() for an open descriptor. Unless NULL is returned, the stream
 * owns the descriptor and closes it with itself. */
HostOutputStream *HostOutputStream_CreateForDescriptor(int32_t nDescriptor);

/** Closes a stream made by one of the makers above: writes out what is still buffered, with bSync
 * non-zero also waits until the system has put the file on its device, and destroys the stream.
 * NULL does nothing and returns 0.
 *
 * Returns 0, or HostStreamError_IO (errno says why) if this or any earlier write to the file
 * failed: the file is not complete then. The stream is gone either way. */
int32_t HostOutputStream_Close(HostOutputStream *pStream, int32_t bSync);

/** Makes an input stream over the nBytes at pData, which are not copied and must stay until the
 * close. A read of more than is left delivers nothing. */
HostInputStream *HostInputStream_CreateInMemory(const void *pData, uint64_t nBytes);

/** Makes an input stream over the file szPath. Reads are buffered. */
HostInputStream *HostInputStream_CreateForFile(const char *szPath);

/** HostInputStream_CreateForFile() for an open descriptor. Unless NULL is returned, the stream owns
 * the descriptor and closes it with itself. */
HostInputStream *HostInputStream_CreateForDescriptor(int32_t nDescriptor);

/** Closes the stream; NULL is ignored. */
void HostInputStream_Close(HostInputStream *pStream);

/** @} */

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
