#include "tools/progress.hpp"

#include <chrono>
#include <cinttypes>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <stop_token>
#include <system_error>
#include <unistd.h>

namespace tool {
namespace {

using namespace std::chrono_literals;

constexpr char kClearLine[] = "\r\033[K";

void tick(const std::stop_token &stop, const std::atomic<const char *> &work, const std::atomic<int64_t> &names) {
    std::mutex mutex;
    std::condition_variable_any stopped;
    std::unique_lock lock(mutex);
    const auto begin = std::chrono::steady_clock::now();
    const auto never = [] { return false; };
    stopped.wait_for(lock, stop, 1s, never);
    if (stop.stop_requested()) return;
    while (!stop.stop_requested()) {
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        std::fprintf(stderr, "%s%s, %.1f s", kClearLine, work.load(), seconds);
        if (const int64_t nNames = names.load()) std::fprintf(stderr, ", %" PRId64 " names", nNames);
        std::fflush(stderr);
        stopped.wait_for(lock, stop, 200ms, never);
    }
    std::fputs(kClearLine, stderr);
}

}  // namespace

Progress::Progress(const char *szWork) : mWork(szWork) {
    if (!isatty(STDERR_FILENO)) return;
    try {
        mTicker = std::jthread([this](const std::stop_token &stop) { tick(stop, mWork, mNames); });
    } catch (const std::system_error &) {
        // no thread, no progress line; the work itself goes on
    }
}

void Progress::set(const char *szWork, int64_t nNames) {
    mWork = szWork;
    mNames = nNames;
}

}  // namespace tool
