// What POSIX systems and Windows do differently for a program; for files, see host/file_system.hpp.
// Nothing else in tools/ asks which system it runs on.
#ifndef TOOLS_PLATFORM_HPP
#define TOOLS_PLATFORM_HPP

#include <cstdio>

namespace tool {

// To be called first. Standard streams pass bytes as they are; the process ends quietly when nobody
// reads its output any more; a file that grows beyond what is permitted is an error like any other.
// On Windows only the first of these.
void prepareProcess();

bool isTerminal(std::FILE *pFile);

// From now on a signal that asks the process to end (INT, TERM, HUP, QUIT; on Windows INT, TERM,
// BREAK), unless it is ignored, removes the file szPath before it ends the process. descriptor: the
// open file, -1 if it is not open yet. szPath must stay where it is until removeNothingAtSignals.
void removeAtSignals(const char *szPath, int descriptor);
void removeNothingAtSignals();

// Leaves signals that end the process to the other threads, one of which may be about to create the
// file that they remove.
void leaveSignalsToOthers();

}  // namespace tool

#endif
