/* Saving a manager to a file and loading it back, by the file's path, on the shipped host's
 * streams. */
#ifndef FILES_NAMES_FILE_H
#define FILES_NAMES_FILE_H

#include <stdint.h>

#include "names/names_manager.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Saves mgr, which may be NULL, as NamesManager_Save does, to the file szPath, which is created
 * (mode 0666 less the umask) or overwritten, and waits until it is on its device. 0; or
 * HostStreamError_IO, and errno tells why (ENOMEM: no memory for the stream's buffer). After a
 * failure an older file of that name is lost and the new one not complete. Whoever must keep the
 * older one saves beside it, under another name on the same device, and renames that file over it
 * once this has returned 0. */
int32_t NamesManager_SaveToFile(NamesManager *mgr, const char *szPath);

/* Loads mgr as NamesManager_Load does from the file szPath, whose content behind the image, if
 * there is any, is not looked at. 0; -1 as NamesManager_Load; HostStreamError_End: the file ended
 * before the image did; or HostStreamError_IO, and errno tells why. A file that could not be
 * opened, or no memory for the stream's buffer (ENOMEM), leaves mgr as it was, any other failure as
 * NamesManager_Clear does. Invalidates all name pointers. */
int32_t NamesManager_LoadFromFile(NamesManager *mgr, const char *szPath);

#ifdef __cplusplus
}
#endif

#endif
