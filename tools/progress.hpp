// A line on standard error about work that takes longer than a second, if standard error is a
// terminal; gone when the work is done.
#ifndef TOOLS_PROGRESS_HPP
#define TOOLS_PROGRESS_HPP

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace tool {

class Progress {
public:
    // szWork: what is being done, a literal.
    explicit Progress(const char *szWork);
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    ~Progress();

    // The work now under way, and how many names it has dealt with; 0: not known.
    void set(const char *szWork, int64_t nNames = 0);

private:
    void tick();
    void printLine(double seconds) const;

    std::atomic<const char *> mWork;
    std::atomic<int64_t> mNames{0};
    std::mutex mMutex;
    std::condition_variable mStopped;
    bool mDone = false;  // under mMutex
    std::thread mTicker;
};

}  // namespace tool

#endif
