/** @file
 * Saving a manager to a file and loading it back, by the file's path, on the shipped host's
 * streams.
 */
#ifndef FILES_NAMES_FILE_H
#define FILES_NAMES_FILE_H

#include <stdint.h>

#include "names/names_manager.h"

#ifdef __GNUC__
#pragma GCC visibility push(default) /* what is declared here is exported */
#endif
#ifdef __cplusplus
extern "C" {
#endif

/** Saves mgr, which may be NULL, as NamesManager_Save() does, to the file szPath, which is created
 * (mode 0666 less the umask) or overwritten, and waits until it is on its device.
 *
 * Returns 0, or HostStreamError_IO with errno set (ENOMEM: no memory for the stream's buffer).
 * After a failure an older file of that name is lost and the new one is not complete. Callers who
 * must keep the older one save under another name on the same device and rename that file to szPath
 * once this has returned 0. */
int32_t NamesManager_SaveToFile(NamesManager *mgr, const char *szPath);

/** Loads mgr as NamesManager_Load() does from the file szPath. Content after the image, if there is
 * any, is ignored. Invalidates all name pointers.
 *
 * Returns 0; -1 as NamesManager_Load(); HostStreamError_End if the file ended before the image did;
 * or HostStreamError_IO with errno set. If the file could not be opened or there was no memory for
 * the stream's buffer (ENOMEM), mgr is as it was; any other failure leaves it as
 * NamesManager_Clear() does. */
int32_t NamesManager_LoadFromFile(NamesManager *mgr, const char *szPath);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif
