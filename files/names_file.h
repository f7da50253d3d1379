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

/** Saves mgr, which may be NULL, as NamesManager_Save() does, to the file szPath and waits until it
 * is on its device.
 *
 * A file of that name is replaced in one step: the new one is written beside it, under a name that
 * begins with ".names-", and renamed over it. Until then the older one is whole, and after a
 * failure it still is and nothing is left beside it; only a process that is killed meanwhile leaves
 * the file beside it. Several threads or processes may save to one file at once: the last to finish
 * prevails. The new file has the permissions of the older one (else mode 0666 less the umask), and
 * its owner and group where the caller may set them, but no access control lists or extended
 * attributes. A symbolic link stays, and the file that it leads to is replaced; another hard link
 * to the older file keeps the older content. On Windows a symbolic link is itself replaced. The
 * caller must be permitted to write to the older file and to create files in its folder. What is
 * not a regular file, such as a pipe or a device, is written to directly.
 *
 * Returns 0, or HostStreamError_IO with errno set (ENOMEM: no memory for the stream's buffer). If
 * it is just the folder that cannot be synced, the new file is already in its place. */
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
