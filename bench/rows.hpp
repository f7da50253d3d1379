// The work that is measured: one row per kind of work, with those who compete in it.
#ifndef BENCH_ROWS_HPP
#define BENCH_ROWS_HPP

#include <cstdint>
#include <vector>

#include "bench/inputs.hpp"

// One go at the work of a row. Contenders that did the same work have the same digest.
struct Sample {
    double nSeconds;
    uint64_t nDigest;
    int64_t nNames;  // the seconds are for so many
};

struct Entrant {
    const char *szContender;
    Sample (*pfnRun)(const Inputs &inputs);  // builds what it needs, then works with the clock
                                             // running, then digests the result
};

constexpr char kComponent[] = "component";

struct Row {
    const char *szId;
    const char *szWork;
    double nBound;  // the component's time at most, in times of szAgainst; 0: for information
    const char *szAgainst;  // a contender of this row
    std::vector<Entrant> entrants;
};

const std::vector<Row> &comparedRows();
const std::vector<Row> &growthRows();  // the component alone, on lists of rising size

// Bytes of heap that a contender takes per name beyond its text, and in all, for a list stored from
// one buffer.
struct MemoryUse {
    const char *szContender;
    double nWithoutIndex;
    double nWithIndex;
    double nGrown;  // with an index that was there while the list grew; NaN for contenders that do
                    // not keep one
    double nTotalWithIndex;
};
MemoryUse componentMemory(const NameList &list);
std::vector<MemoryUse> peerMemory(const NameList &list);

#endif
