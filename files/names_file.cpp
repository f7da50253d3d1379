#include "files/names_file.h"

#include <cerrno>

#include "host/file_system.hpp"
#include "host/host_stream.h"

namespace {

// Saves to a descriptor, waits until that is on its device, and closes it.
int32_t saveToDescriptor(NamesManager *mgr, int nDescriptor) {
    HostOutputStream *pStream = HostOutputStream_CreateForDescriptor(nDescriptor);
    if (pStream == nullptr) {
        host::closeQuietly(nDescriptor);
        return HostStreamError_IO;
    }
    // Closing the stream reports the first failure of the save, too.
    (void)NamesManager_Save(mgr, nullptr, pStream);
    return HostOutputStream_Close(pStream, 1);
}

}  // namespace

int32_t NamesManager_SaveToFile(NamesManager *mgr, const char *szPath) {
    host::ReplacedFile file;
    const int nDescriptor =
        host::planReplacement(szPath, &file) ? host::openReplacement(&file) : -1;
    if (nDescriptor < 0) { return HostStreamError_IO; }
    if (saveToDescriptor(mgr, nDescriptor) != 0 || !host::finishReplacement(&file)) {
        host::dropReplacement(&file);
        return HostStreamError_IO;
    }
    return host::syncFolderOf(file) ? 0 : HostStreamError_IO;
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
