// A line on standard error about work that takes longer than a second, if standard error is a
// terminal. It is erased when the work is done.
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
    // szWork: what is being done; it is not copied.
    explicit Progress(const char *szWork);
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    ~Progress();

    // Says what is being done now, and for how many names it has been done; 0: not known.
    void set(const char *szWork, int64_t nNames = 0);

private:
    void tick();
    void printLine(double seconds) const;

    std::atomic<const char *> szWork_;
    std::atomic<int64_t> nNames_{0};
    std::mutex mutex_;
    std::condition_variable stopped_;
    bool bDone_ = false;  // guarded by mutex_
    std::thread ticker_;
};

}  // namespace tool

#endif
