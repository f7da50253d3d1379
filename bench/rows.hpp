// The work that is measured: a row for each kind of work, with its contenders.
#ifndef BENCH_ROWS_HPP
#define BENCH_ROWS_HPP

#include <cstdint>
#include <vector>

#include "bench/inputs.hpp"

// The work of a row done once. Contenders that did the same work have the same digest.
struct Sample {
    double nSeconds;
    uint64_t nDigest;
    int64_t nNames;  // that the work was done for
};

struct Entrant {
    const char *szContender;
    // Builds what the work needs, measures the work, and digests the result.
    Sample (*pfnRun)(const Inputs &inputs);
};

constexpr char kComponent[] = "component";

struct Row {
    const char *szId;
    const char *szWork;
    double nBound;  // at most this ratio of the component's time to that of szAgainst; 0: none
    const char *szAgainst;  // a contender of this row
    std::vector<Entrant> entrants;
};

const std::vector<Row> &comparedRows();
std::vector<Row> callRows();    // of these: calls that do the work of several, and their traps
std::vector<Row> threadRows();  // of these: readers, and two threads at once
const std::vector<Row> &growthRows();  // the component alone, on lists of rising size

// Bytes of heap that a contender takes for a list stored from one buffer: per name beyond its text,
// and in all.
struct MemoryUse {
    const char *szContender;
    double nWithoutIndex;
    double nWithIndex;
    double nGrown;  // with an index kept while the list grew; NaN for contenders that keep none
    double nTotalWithIndex;
};
MemoryUse componentMemory(const NameList &list);
std::vector<MemoryUse> peerMemory(const NameList &list);

#endif
