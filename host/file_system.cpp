#include "host/file_system.hpp"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "host/platform.hpp"

#ifdef _WIN32
#include <io.h>

// Declared here, because their header would bring in all of the system's.
extern "C" __declspec(dllimport) int __stdcall MoveFileExA(const char *szFrom, const char *szTo,
                                                           unsigned long nFlags);
extern "C" __declspec(dllimport) unsigned long __stdcall GetLastError();
#endif

namespace host {
namespace {

// Makes a system call again as long as a signal interrupts it.
template <typename Call>
int64_t uninterrupted(Call call) {
    while (true) {
        const int64_t nResult = call();
        if (nResult >= 0 || errno != EINTR) { return nResult; }
    }
}

unsigned bytesForOneCall(uint64_t nBytes) {
    return static_cast<unsigned>(std::min<uint64_t>(nBytes, 1U << 30));
}

}  // namespace

// ---- What differs between systems ----

#ifdef _WIN32

namespace {

constexpr int kOpenFlags = O_BINARY | O_NOINHERIT;
constexpr char kPathSeparators[] = "/\\:";
using FileStatus = struct _stat64;

int readStatus(const char *szPath, FileStatus *pStatus) {
    return ::_stat64(szPath, pStatus);
}

int64_t readLink(const char * /*szPath*/, char * /*pText*/, size_t /*nBytes*/) {
    return -1;
}

// All that permissions say there is that a file must not be written.
bool copyPermissions(const char * /*szFrom*/, int /*nDescriptor*/) {
    return true;
}

bool renameFile(const char *szFrom, const char *szTo) {
    constexpr unsigned long kReplaceExisting = 1, kWriteThrough = 8;
    if (::MoveFileExA(szFrom, szTo, kReplaceExisting | kWriteThrough) != 0) { return true; }
    constexpr unsigned long kAccessDenied = 5, kSharingViolation = 32;
    const unsigned long nError = ::GetLastError();
    errno = nError == kAccessDenied || nError == kSharingViolation ? EACCES : EIO;
    return false;
}

}  // namespace

void passBytesAsTheyAre(int nDescriptor) {
    (void)::_setmode(nDescriptor, O_BINARY);
}

// Pipes and terminals report a bad descriptor.
int syncFile(int nDescriptor) {
    return ::_commit(nDescriptor) == 0 || errno == EBADF ? 0 : errno;
}

#else

namespace {

constexpr int kOpenFlags = O_CLOEXEC;
constexpr char kPathSeparators[] = "/";
using FileStatus = struct stat;

int readStatus(const char *szPath, FileStatus *pStatus) {
    return ::stat(szPath, pStatus);
}

int64_t readLink(const char *szPath, char *pText, size_t nBytes) {
    return ::readlink(szPath, pText, nBytes);
}

// Owner and group, too, where the user may set them. Not the set-user-ID and set-group-ID bits, as
// if the older file had been written to.
bool copyPermissions(const char *szFrom, int nDescriptor) {
    FileStatus from = {};
    if (readStatus(szFrom, &from) != 0) { return false; }
    if (::fchown(nDescriptor, from.st_uid, from.st_gid) != 0) {
        constexpr uid_t kUnchanged = static_cast<uid_t>(-1);
        (void)!::fchown(nDescriptor, kUnchanged, from.st_gid);
    }
    return ::fchmod(nDescriptor, from.st_mode & 0777) == 0;
}

bool renameFile(const char *szFrom, const char *szTo) {
    return ::rename(szFrom, szTo) == 0;
}

}  // namespace

void passBytesAsTheyAre(int /*nDescriptor*/) {}

int syncFile(int nDescriptor) {
    const int64_t nResult = uninterrupted([&] { return ::fsync(nDescriptor); });
    return nResult == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

#endif

// ---- By descriptors ----

namespace {

int openFile(const char *szPath, int nFlags, int nMode) {
    return static_cast<int>(
        uninterrupted([&] { return ::open(szPath, nFlags | kOpenFlags, nMode); }));
}

}  // namespace

int openForReading(const char *szPath) {
    return openFile(szPath, O_RDONLY, 0);
}

int openForWriting(const char *szPath) {
    return openFile(szPath, O_WRONLY | O_CREAT | O_TRUNC, 0666);
}

int64_t readSome(int nDescriptor, void *pBuffer, uint64_t nBytes) {
    return uninterrupted([&] { return ::read(nDescriptor, pBuffer, bytesForOneCall(nBytes)); });
}

int64_t writeSome(int nDescriptor, const void *pBytes, uint64_t nBytes) {
    return uninterrupted([&] { return ::write(nDescriptor, pBytes, bytesForOneCall(nBytes)); });
}

int closeFile(int nDescriptor) {
    return ::close(nDescriptor) == 0 || errno == EINTR ? 0 : errno;
}

void closeQuietly(int nDescriptor) {
    const int nError = errno;
    (void)closeFile(nDescriptor);
    errno = nError;
}

// ---- Replacing a file ----

namespace {

// The part of a path that names the folder, with the separator at its end; "" for a name alone.
std::string_view folderOf(std::string_view path) {
    return path.substr(0, path.find_last_of(kPathSeparators) + 1);
}

// Sets aPath to folder and name. aPath may begin with folder itself. False if that is too long.
bool setPath(std::string_view folder, std::string_view name, char *aPath) {
    if (folder.size() + name.size() >= kMaxPath) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memmove(aPath, folder.data(), folder.size());
    std::memcpy(aPath + folder.size(), name.data(), name.size());
    aPath[folder.size() + name.size()] = '\0';
    return true;
}

// Changes aPath from a link to what it leads to.
bool followLinks(char *aPath) {
    constexpr int kMaxLinks = 40;  // one after the other, as many as systems follow
    for (int nLinks = 0; nLinks <= kMaxLinks; ++nLinks) {
        char aText[kMaxPath];
        const int64_t nBytes = readLink(aPath, aText, sizeof aText);
        if (nBytes <= 0) { return true; }  // no link
        const std::string_view text(aText, static_cast<size_t>(nBytes));
        if (!setPath(text[0] == '/' ? "" : folderOf(aPath), text, aPath)) { return false; }
    }
    errno = ELOOP;
    return false;
}

}  // namespace

bool planReplacement(const char *szPath, ReplacedFile *pFile) {
    FileStatus older = {};
    pFile->bExists = readStatus(szPath, &older) == 0;
    pFile->szTemporary[0] = '\0';
    if (!pFile->bExists && errno != ENOENT) { return false; }
    // Renaming would not ask whether the older file may be written.
    if (pFile->bExists && ::access(szPath, W_OK) != 0) { return false; }
    if (!setPath("", szPath, pFile->szTarget) || !followLinks(pFile->szTarget)) { return false; }
    FileStatus target = {};
    if (pFile->bExists && (!S_ISREG(older.st_mode) || readStatus(pFile->szTarget, &target) != 0 ||
                           target.st_dev != older.st_dev || target.st_ino != older.st_ino)) {
        return setPath("", szPath, pFile->szTarget);  // written directly
    }
    char szName[32];  // one that nobody has and nobody can predict
    (void)std::snprintf(szName, sizeof szName, ".names-%016" PRIx64, randomNumber());
    return setPath(folderOf(pFile->szTarget), szName, pFile->szTemporary);
}

int openReplacement(ReplacedFile *pFile) {
    if (pFile->szTemporary[0] == '\0') { return openForWriting(pFile->szTarget); }
    // Nobody else may read the file before it has the permissions of the older one.
    const int nDescriptor =
        openFile(pFile->szTemporary, O_WRONLY | O_CREAT | O_EXCL, pFile->bExists ? 0600 : 0666);
    if (nDescriptor < 0 || !pFile->bExists || copyPermissions(pFile->szTarget, nDescriptor)) {
        return nDescriptor;
    }
    closeQuietly(nDescriptor);
    dropReplacement(pFile);
    return -1;
}

bool finishReplacement(ReplacedFile *pFile) {
    if (pFile->szTemporary[0] == '\0') { return true; }
    if (!renameFile(pFile->szTemporary, pFile->szTarget)) { return false; }
    pFile->szTemporary[0] = '\0';
    return true;
}

void dropReplacement(ReplacedFile *pFile) {
    const int nError = errno;
    if (pFile->szTemporary[0] != '\0') { (void)std::remove(pFile->szTemporary); }
    pFile->szTemporary[0] = '\0';
    errno = nError;
}

bool syncFolderOf(const ReplacedFile &file) {
    char szFolder[kMaxPath];
    const std::string_view folder = folderOf(file.szTarget);
    if (!setPath(folder.empty() ? "." : folder, "", szFolder)) { return false; }
    const int nDescriptor = openForReading(szFolder);
    if (nDescriptor < 0) { return true; }
    const int nError = syncFile(nDescriptor);
    (void)closeFile(nDescriptor);
    errno = nError;
    return nError == 0;
}

}  // namespace host
