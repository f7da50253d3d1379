// What the rows are made of: clocks, digests of results, and the names of the contenders.
#ifndef BENCH_WORK_HPP
#define BENCH_WORK_HPP

#include <benchmark/benchmark.h>

#include <ctime>
#include <functional>
#include <mutex>
#include <utility>

#include "bench/contenders.hpp"
#include "bench/rows.hpp"

using UnorderedStrings = Strings<StdMap>;
using AbslStrings = Strings<AbslMap>;

// Stands for a lock where the contender has its own, or none is wanted.
struct NoLock {
    void lock() {}
    void unlock() {}
};

// Processor time of this thread, so that other work on its core does not count.
inline double threadSeconds() {
    struct timespec now = {};
    require(clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now) == 0);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Work>
double secondsOf(Work work) {
    const double nStart = threadSeconds();
    work();
    benchmark::ClobberMemory();
    return threadSeconds() - nStart;
}

// The seconds that n calls of work(k) take, each with the lock held.
template <typename Lock, typename Work>
double secondsOfCalls(size_t n, Work work) {
    Lock lock;
    return secondsOf([&] {
        for (size_t k = 0; k < n; ++k) {
            const std::lock_guard<Lock> guard(lock);
            work(k);
        }
    });
}

inline uint64_t mixIn(uint64_t nDigest, uint64_t nValue) {
    return (nDigest ^ nValue) * 0x9e3779b97f4a7c15 + (nDigest >> 29);
}

inline uint64_t digestOf(const std::vector<const char *> &names) {
    uint64_t nDigest = names.size();
    for (const char *szName : names) {
        nDigest = mixIn(nDigest, std::hash<std::string_view>()(szName));
    }
    return nDigest;
}

inline uint64_t digestOf(const std::vector<int32_t> &numbers) {
    uint64_t nDigest = numbers.size();
    for (const int32_t n : numbers) { nDigest = mixIn(nDigest, static_cast<uint64_t>(n)); }
    return nDigest;
}

inline uint64_t digestOf(const char *pBytes, size_t nBytes) {
    return std::hash<std::string_view>()(std::string_view(pBytes, nBytes));
}

// The digest of all names that a contender holds.
template <typename Contender>
uint64_t contentOf(Contender &contender) {
    std::vector<const char *> names(at(contender.count()));
    if (!names.empty()) { contender.pointers(0, contender.count(), names.data()); }
    return digestOf(names);
}

template <typename Contender>
void fill(Contender &contender, const NameList &list) {
    contender.storeBuffer(0, countOf(list), list.text.data());
}

// Calls work(first, count) for consecutive ranges of nStep names.
template <typename Work>
void inRanges(int32_t nNames, int32_t nStep, Work work) {
    for (int32_t first = 0; first < nNames; first += nStep) {
        work(first, std::min(nStep, nNames - first));
    }
}

inline constexpr char kArena[] = "arena";
inline constexpr char kArenaGuarded[] = "arena, guarded";
inline constexpr char kArenaOffsets[] = "arena, offsets dumped";
inline constexpr char kArenaPieces[] = "arena, in pieces of 128 KB";
inline constexpr char kLargeArenaGuarded[] = "arena, 8-byte offsets, guarded";
inline constexpr char kStrings[] = "vector of strings";
inline constexpr char kStringsGuarded[] = "vector of strings, guarded";
inline constexpr char kUnordered[] = "unordered_map";
inline constexpr char kUnorderedGuarded[] = "unordered_map, guarded";
inline constexpr char kAbsl[] = "absl map";
inline constexpr char kAbslGuarded[] = "absl map, guarded";

inline Row row(const char *szId, const char *szWork, double nBound, const char *szAgainst,
               std::vector<Entrant> entrants) {
    return {szId, szWork, nBound, szAgainst, std::move(entrants)};
}

#endif
