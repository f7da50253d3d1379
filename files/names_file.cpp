#include "files/names_file.h"

#include <cerrno>

#include "host/host_stream.h"

int32_t NamesManager_SaveToFile(NamesManager *mgr, const char *szPath) {
    HostOutputStream *pStream = HostOutputStream_CreateForFile(szPath);
    if (pStream == nullptr) { return HostStreamError_IO; }
    // Closing the stream reports the first failure of the save, too.
    (void)NamesManager_Save(mgr, nullptr, pStream);
    return HostOutputStream_Close(pStream, 1);
}

int32_t NamesManager_LoadFromFile(NamesManager *mgr, const char *szPath) {
    HostInputStream *pStream = HostInputStream_CreateForFile(szPath);
    if (pStream == nullptr) { return HostStreamError_IO; }
    const int32_t nStatus = NamesManager_Load(mgr, nullptr, pStream);
    const int nError = errno;
    HostInputStream_Close(pStream);
    errno = nError;
    return nStatus;
}
