#include "tools/progress.hpp"

#include <array>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <system_error>

#include "tools/platform.hpp"

namespace tool {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kLineWidth = 60;  // longer than any line

}  // namespace

// Allocates nothing, as nothing could catch a failure here. Blanks cover the rest of a longer line.
void Progress::printLine(double seconds) const {
    std::array<char, kLineWidth + 1> line{};
    const char *szWork = szWork_;
    if (const int64_t nNames = nNames_) {
        std::snprintf(line.data(), line.size(), "%s, %.1f s, %" PRId64 " name%s", szWork, seconds,
                      nNames, nNames == 1 ? "" : "s");
    } else {
        std::snprintf(line.data(), line.size(), "%s, %.1f s", szWork, seconds);
    }
    std::fprintf(stderr, "\r%-*s", kLineWidth, line.data());
    std::fflush(stderr);
}

void Progress::tick() {
    leaveSignalsToOthers();
    const auto begin = Clock::now();
    std::unique_lock lock(mutex_);
    if (stopped_.wait_for(lock, 1s, [this] { return bDone_; })) { return; }
    do {
        printLine(std::chrono::duration<double>(Clock::now() - begin).count());
    } while (!stopped_.wait_for(lock, 200ms, [this] { return bDone_; }));
    std::fprintf(stderr, "\r%*s\r", kLineWidth, "");
}

Progress::Progress(const char *szWork) : szWork_(szWork) {
    if (!isTerminal(stderr)) { return; }
    try {
        ticker_ = std::thread([this] { tick(); });
    } catch (const std::system_error &) {
        // Without a thread there is no line, and the work goes on.
    }
}

Progress::~Progress() {
    if (!ticker_.joinable()) { return; }
    {
        const std::lock_guard lock(mutex_);
        bDone_ = true;
    }
    stopped_.notify_one();
    ticker_.join();
}

void Progress::set(const char *szWork, int64_t nNames) {
    szWork_ = szWork;
    nNames_ = nNames;
}

}  // namespace tool
