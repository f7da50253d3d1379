// Two threads at once: readers of one list, and lookups through its lock.
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <latch>
#include <thread>

#include "bench/work.hpp"

namespace {

using Clock = std::chrono::steady_clock;

// Whatever processors the process was started on.
void runOnProcessor(size_t iThread) {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(iThread % at(static_cast<int32_t>(sysconf(_SC_NPROCESSORS_ONLN))), &processors);
    require(pthread_setaffinity_np(pthread_self(), sizeof processors, &processors) == 0);
}

// The seconds from the start of the first thread to the end of the last. Each does an equal part of
// nNames, work(first, count).
template <typename Work>
double secondsInThreads(int32_t nThreads, int32_t nNames, Work work) {
    std::latch ready(nThreads);
    std::vector<Clock::time_point> starts(at(nThreads)), ends(at(nThreads));
    std::vector<std::thread> threads;
    const int32_t nShare = (nNames + nThreads - 1) / nThreads;
    for (size_t t = 0; t < starts.size(); ++t) {
        threads.emplace_back([&, t, nShare] {
            runOnProcessor(t);
            const int32_t first = static_cast<int32_t>(t) * nShare;
            ready.arrive_and_wait();
            starts[t] = Clock::now();
            work(first, std::min(nShare, nNames - first));
            ends[t] = Clock::now();
        });
    }
    for (std::thread &thread : threads) { thread.join(); }
    return std::chrono::duration<double>(*std::max_element(ends.begin(), ends.end()) -
                                         *std::min_element(starts.begin(), starts.end()))
        .count();
}

// In lists of kAtOnce names, or one name per call.
template <int32_t kThreads, int32_t kAtOnce>
Sample findByReaders(const Inputs &in) {
    std::vector<int32_t> found(in.hits.names.size());
    ByReader contender;
    fill(contender, in.list);
    contender.buildIndex();
    const auto find = [&](int32_t first, int32_t n) {
        NamesReader reader = contender.reader;
        for (int32_t k = first; k < first + n; k += kAtOnce) {
            if (kAtOnce == 1) {
                found[at(k)] = NamesReader_FindName(&reader, in.hits.names[at(k)], 0);
            } else {
                require(NamesReader_FindNames(&reader, &in.hits.names[at(k)],
                                              std::min(kAtOnce, first + n - k),
                                              NamesManagerWidth_Terminated, 0, &found[at(k)]) == 0);
            }
        }
    };
    const double nSeconds = secondsInThreads(kThreads, countOf(in.hits), find);
    return {nSeconds, digestOf(found), countOf(in.hits)};
}

template <typename Contender, typename Lock>
Sample findInTurn(const Inputs &in) {
    std::vector<int32_t> found(in.hits.names.size());
    Contender contender;
    fill(contender, in.list);
    contender.buildIndex();
    Lock lock;
    const double nSeconds = secondsInThreads(2, countOf(in.hits), [&](int32_t first, int32_t n) {
        for (int32_t k = first; k < first + n; ++k) {
            const std::lock_guard<Lock> guard(lock);
            found[at(k)] = contender.find(in.hits.names[at(k)]);
        }
    });
    return {nSeconds, digestOf(found), countOf(in.hits)};
}

constexpr char kOneReader[] = "one reader";

}  // namespace

std::vector<Row> threadRows() {
    return {
        row("readers_lists", "two readers in two threads, find, hits, lists of 1,000", 0.55,
            kOneReader,
            {{kComponent, findByReaders<2, 1000>}, {kOneReader, findByReaders<1, 1000>}}),
        row("readers_hits", "two readers in two threads, find, hits, one per call", 0.55,
            kOneReader, {{kComponent, findByReaders<2, 1>}, {kOneReader, findByReaders<1, 1>}}),
        row("two_threads", "two threads, one list, find, hits, one per call", 1.0, kArenaGuarded,
            {{kComponent, findInTurn<Component, NoLock>},
             {kArenaGuarded, findInTurn<Arena, std::mutex>}}),
    };
}
