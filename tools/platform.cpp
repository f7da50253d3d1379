#include "tools/platform.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {
namespace {

// The file that a signal removes, NULL: none. A handler may look at nothing else.
std::atomic<const char *> temporaryPath{nullptr};
std::atomic<int> temporaryDescriptor{-1};
static_assert(std::atomic<const char *>::is_always_lock_free &&
              std::atomic<int>::is_always_lock_free);

}  // namespace

#ifdef _WIN32

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGBREAK};
constexpr int kBinary = O_BINARY;

// A file that is open cannot be removed here.
void beforeRemovalBySignal() {
    close(temporaryDescriptor);
}

bool sync(int descriptor) {
    return _commit(descriptor) == 0;
}

// All that permissions say here is that a file must not be written; what is about to be replaced
// may be.
bool copyPermissions(const std::string &, int) {
    return true;
}

}  // namespace

void prepareProcess() {
    for (std::FILE *pFile : {stdin, stdout}) _setmode(fileno(pFile), O_BINARY);
}

void leaveSignalsToOthers() {}

#else

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr int kBinary = 0;

void beforeRemovalBySignal() {}

// Not every file system can wait, which is no failure.
bool sync(int descriptor) {
    int nResult = 0;
    do { nResult = fsync(descriptor); } while (nResult != 0 && errno == EINTR);
    return nResult == 0 || errno == EINVAL || errno == ENOTSUP;
}

bool copyPermissions(const std::string &from, int descriptor) {
    struct stat status {};
    return stat(from.c_str(), &status) == 0 && fchmod(descriptor, status.st_mode & 07777) == 0;
}

}  // namespace

void prepareProcess() {
    std::signal(SIGPIPE, SIG_DFL);  // whoever started us may ignore it
    std::signal(SIGXFSZ, SIG_IGN);
}

void leaveSignalsToOthers() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int nSignal : kEndingSignals) { sigaddset(&signals, nSignal); }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

#endif

namespace {

// Calls only what a handler may call.
extern "C" void removeAndEnd(int nSignal) {
    if (const char *szPath = temporaryPath) {
        beforeRemovalBySignal();
        unlink(szPath);
    }
    std::signal(nSignal, SIG_DFL);
    std::raise(nSignal);
}

// Signals that are ignored, as those behind nohup, stay so.
void watchSignals() {
    for (const int nSignal : kEndingSignals) {
        if (std::signal(nSignal, SIG_IGN) != SIG_IGN) { std::signal(nSignal, removeAndEnd); }
    }
}

void closeQuietly(int descriptor) {
    const int nError = errno;
    close(descriptor);
    errno = nError;
}

}  // namespace

bool isTerminal(std::FILE *pFile) {
    return isatty(fileno(pFile)) != 0;
}

int openInput(const std::string &file) {
    return file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | kBinary);
}

std::ptrdiff_t readInput(int descriptor, char *pBuffer, size_t nBytes) {
    while (true) {
        const auto nRead = read(descriptor, pBuffer, static_cast<unsigned>(nBytes));
        if (nRead >= 0 || errno != EINTR) { return nRead; }
    }
}

void closeInput(int descriptor) {
    if (descriptor != STDIN_FILENO) { close(descriptor); }
}

std::FILE *createTemporary(const std::string &path, const std::string &older) {
    std::error_code error;
    const bool bReplaces = std::filesystem::exists(older, error);
    watchSignals();
    temporaryPath = path.c_str();  // before there is a file, so that no signal comes in between
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | kBinary, bReplaces ? 0600 : 0666);
    if (descriptor < 0) {
        keepTemporary();
        return nullptr;
    }
    temporaryDescriptor = descriptor;
    std::FILE *pFile =
        !bReplaces || copyPermissions(older, descriptor) ? fdopen(descriptor, "wb") : nullptr;
    if (!pFile) {
        closeQuietly(descriptor);
        removeTemporary(path);
    }
    return pFile;
}

void keepTemporary() {
    temporaryPath = nullptr;
}

void removeTemporary(const std::string &path) {
    const int nError = errno;
    unlink(path.c_str());
    keepTemporary();
    errno = nError;
}

bool syncFile(std::FILE *pFile) {
    return sync(fileno(pFile));
}

bool syncFolderOf(const std::string &path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY);
    if (descriptor < 0) { return true; }
    const bool bSynced = sync(descriptor);
    closeQuietly(descriptor);
    return bSynced;
}

}  // namespace tool
