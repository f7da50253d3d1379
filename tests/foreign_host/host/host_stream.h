/* The foreign host's streams know no codes but their own. */
#ifndef HOST_HOST_STREAM_H
#define HOST_HOST_STREAM_H
#include <stdint.h>
#ifdef __cplusplus
extern "C" {
#endif
typedef struct HostOutputStream HostOutputStream;
typedef struct HostInputStream HostInputStream;
typedef struct HostOutputStreamOps {
    int32_t (*pfnWrite)(HostOutputStream *pStream, const void *pData, uint64_t nBytes);
} HostOutputStreamOps;
struct HostOutputStream {
    const HostOutputStreamOps *pOps;
};
static inline int32_t HostStream_Write(HostOutputStream *pStream, const void *pData,
                                       uint64_t nBytes) {
    return pStream->pOps->pfnWrite(pStream, pData, nBytes);
}
int32_t HostStream_Read(HostInputStream *pStream, void *pBuffer, uint64_t nBytes);
#ifdef __cplusplus
}
#endif
#endif
