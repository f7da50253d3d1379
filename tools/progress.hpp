// A line on standard error about work that takes longer than a second, if standard error is a terminal; gone when the work is done.
#ifndef TOOLS_PROGRESS_HPP
#define TOOLS_PROGRESS_HPP

#include <atomic>
#include <cstdint>
#include <thread>

namespace tool {

class Progress {
public:
    // szWork: what is being done, a literal.
    explicit Progress(const char *szWork);

    // The work now under way, and how many names it has dealt with; 0: not known.
    void set(const char *szWork, int64_t nNames = 0);

private:
    std::atomic<const char *> mWork;
    std::atomic<int64_t> mNames{0};
    std::jthread mTicker;  // last: stopped before what it reads goes
};

}  // namespace tool

#endif
