// Files: reading and writing descriptors, and replacing a file in one step. Internal to the shipped
// host and to the command-line tool, which is linked with this source, too.
#ifndef HOST_FILE_SYSTEM_HPP
#define HOST_FILE_SYSTEM_HPP

#include <cstddef>
#include <cstdint>

namespace host {

// ---- By descriptors; signals interrupt none of this ----

// Open a file for its bytes as they are; programs started later do not inherit the descriptor.
// Return it, or -1 and set errno. openForWriting creates the file (mode 0666 less the umask) or
// empties it.
int openForReading(const char *szPath);
int openForWriting(const char *szPath);

// Ends any translation of line ends for a descriptor that was opened elsewhere.
void passBytesAsTheyAre(int nDescriptor);

// Read or write up to nBytes at once. Return how many, 0 at the end of the file; -1 and set errno
// on failure.
int64_t readSome(int nDescriptor, void *pBuffer, uint64_t nBytes);
int64_t writeSome(int nDescriptor, const void *pBytes, uint64_t nBytes);

// Waits until the file is on its device. Returns 0, also for a pipe or a terminal, which have none;
// else the errno.
int syncFile(int nDescriptor);

// Closes the descriptor, which is gone even on failure. Returns 0 or the errno.
int closeFile(int nDescriptor);

// The same after another failure, whose errno it keeps.
void closeQuietly(int nDescriptor);

// ---- Replacing a file ----
//
// The new file is written beside the older one, synced, and renamed over it, so that the older one
// stays whole until then, no matter what fails. It gets the older one's permissions; links to a
// file are followed. A pipe, a device, or a file that has no name any more, as one of /proc/self/fd
// may have none, is written as the bytes come.
//
//     planReplacement     finds out what there is, and creates nothing
//     openReplacement     the caller writes to the descriptor, syncs and closes it
//     finishReplacement   puts the file in its place; or, after a failure, dropReplacement
//     syncFolderOf        waits until that is on the device, too
//
// Functions that return false have set errno.

constexpr size_t kMaxPath = 4096;  // bytes, NUL included

struct ReplacedFile {
    char szTarget[kMaxPath];     // the file to write
    char szTemporary[kMaxPath];  // the file beside it; "" if there is none
    bool bExists;                // there is an older file
};

bool planReplacement(const char *szPath, ReplacedFile *pFile);

// Returns the descriptor; or -1 and sets errno: nothing is left then.
int openReplacement(ReplacedFile *pFile);

bool finishReplacement(ReplacedFile *pFile);
void dropReplacement(ReplacedFile *pFile);  // keeps errno

// Does nothing where folders cannot be opened, as on Windows.
bool syncFolderOf(const ReplacedFile &file);

}  // namespace host

#endif
