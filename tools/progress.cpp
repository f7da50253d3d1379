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

constexpr int kLineWidth = 60;  // more than the longest line

}  // namespace

Progress::Progress(const char *szWork) : mWork(szWork) {
    if (!isTerminal(stderr)) { return; }
    try {
        mTicker = std::thread([this] { tick(); });
    } catch (const std::system_error &) {
        // no thread, no progress line; the work itself goes on
    }
}

Progress::~Progress() {
    if (!mTicker.joinable()) { return; }
    {
        const std::lock_guard lock(mMutex);
        mDone = true;
    }
    mStopped.notify_one();
    mTicker.join();
}

void Progress::set(const char *szWork, int64_t nNames) {
    mWork = szWork;
    mNames = nNames;
}

void Progress::tick() {
    leaveSignalsToOthers();
    const auto begin = Clock::now();
    std::unique_lock lock(mMutex);
    if (mStopped.wait_for(lock, 1s, [this] { return mDone; })) { return; }
    do {
        printLine(std::chrono::duration<double>(Clock::now() - begin).count());
    } while (!mStopped.wait_for(lock, 200ms, [this] { return mDone; }));
    std::fprintf(stderr, "\r%*s\r", kLineWidth, "");
}

// Allocates nothing: here nobody could be told. Blanks cover what is left of a longer line.
void Progress::printLine(double seconds) const {
    std::array<char, kLineWidth + 1> line{};
    const char *szWork = mWork;
    if (const int64_t nNames = mNames) {
        std::snprintf(line.data(), line.size(), "%s, %.1f s, %" PRId64 " name%s", szWork, seconds,
                      nNames, nNames == 1 ? "" : "s");
    } else {
        std::snprintf(line.data(), line.size(), "%s, %.1f s", szWork, seconds);
    }
    std::fprintf(stderr, "\r%-*s", kLineWidth, line.data());
    std::fflush(stderr);
}

}  // namespace tool
