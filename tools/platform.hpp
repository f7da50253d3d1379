// What POSIX systems and Windows do differently: nothing else in tools/ asks which system it runs
// on. Functions that fail set errno.
#ifndef TOOLS_PLATFORM_HPP
#define TOOLS_PLATFORM_HPP

#include <cstddef>
#include <cstdio>
#include <string>

namespace tool {

// To be called first. Standard streams carry bytes as they are; whoever stops reading our output
// ends us quietly; a file that grows beyond what is permitted is an error like any other. On
// Windows only the first of these.
void prepareProcess();

bool isTerminal(std::FILE *pFile);

// Opens a file for reading, standard input for "-". The descriptor, or -1.
int openInput(const std::string &file);

// Reads once. The number of bytes read, at least one; 0 at the end, -1 on failure.
std::ptrdiff_t readInput(int descriptor, char *pBuffer, size_t nBytes);

// Does not close standard input.
void closeInput(int descriptor);

// Creates a file to write to, which must not exist yet, with the permissions of the file older,
// else with the usual ones. A signal that asks the process to end (INT, TERM, HUP, QUIT; on Windows
// INT, TERM, BREAK), unless it is ignored, removes the file before it ends the process. path must
// stay where it is until keepTemporary or removeTemporary. NULL on failure.
std::FILE *createTemporary(const std::string &path, const std::string &older);

// From here on no signal removes the file.
void keepTemporary();
void removeTemporary(const std::string &path);

// Waits until the file, which is flushed, is on its device.
bool syncFile(std::FILE *pFile);

// Waits until the entries of the folder that holds path are on their device. Where folders cannot
// be opened, Windows among them, it does nothing.
bool syncFolderOf(const std::string &path);

// Leaves signals that end the process to the other threads: while one removes the temporary file,
// it must not be just about to be made.
void leaveSignalsToOthers();

}  // namespace tool

#endif
