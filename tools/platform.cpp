#include "tools/platform.hpp"

#include <atomic>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace tool {
namespace {

// The file that a signal removes, NULL: none. The handler may read nothing else.
std::atomic<const char *> g_szTemporary{nullptr};
std::atomic<int> g_nTemporaryDescriptor{-1};
static_assert(std::atomic<const char *>::is_always_lock_free &&
              std::atomic<int>::is_always_lock_free);

}  // namespace

#ifdef _WIN32

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGBREAK};

// An open file cannot be removed there.
void prepareRemoval() {
    close(g_nTemporaryDescriptor);
}

}  // namespace

void prepareProcess() {
    for (std::FILE *pFile : {stdin, stdout}) { _setmode(fileno(pFile), O_BINARY); }
}

void leaveSignalsToOthers() {}

#else

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

void prepareRemoval() {}

}  // namespace

void prepareProcess() {
    std::signal(SIGPIPE, SIG_DFL);  // the parent process may ignore it
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
    if (const char *szPath = g_szTemporary) {
        prepareRemoval();
        unlink(szPath);
    }
    std::signal(nSignal, SIG_DFL);
    std::raise(nSignal);
}

}  // namespace

bool isTerminal(std::FILE *pFile) {
    return isatty(fileno(pFile)) != 0;
}

void removeAtSignals(const char *szPath, int descriptor) {
    g_nTemporaryDescriptor = descriptor;
    g_szTemporary = szPath;
    for (const int nSignal : kEndingSignals) {
        // What is ignored, as HUP under nohup, stays so.
        if (std::signal(nSignal, SIG_IGN) != SIG_IGN) { std::signal(nSignal, removeAndEnd); }
    }
}

void removeNothingAtSignals() {
    g_szTemporary = nullptr;
}

}  // namespace tool
