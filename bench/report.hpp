// The results of measuring, and the tables and JSON written from them.
#ifndef BENCH_REPORT_HPP
#define BENCH_REPORT_HPP

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "bench/rows.hpp"

struct Measured {
    // Nanoseconds per name, one sample for each repetition, by list, row id and contender.
    std::map<std::tuple<std::string, std::string, std::string>, std::vector<double>> samples;
    // By list and row id: the digest of the first contender.
    std::map<std::pair<std::string, std::string>, uint64_t> digests;
    int32_t nWrong = 0;  // samples with another digest
};

// Adds a sample. Returns false when its digest differs from that of the others in its row.
bool takeSample(Measured &measured, const std::string &list, const Row &row, const Entrant &entrant,
                double nNanosecondsPerName, uint64_t nDigest);

// These print tables as Markdown. Rows without samples are left out. The bounds are for the first
// of the lists.
void printComparison(const Measured &measured, const std::vector<std::string> &lists,
                     const std::vector<MemoryUse> &memory);
void printGrowth(const Measured &measured, const std::vector<std::string> &sizes,
                 const std::vector<MemoryUse> &memory);

// Writes the medians and ratios of the given rows for every list as JSON. Returns false when the
// file could not be written.
bool writeJson(const std::string &path, const Measured &measured, const std::vector<Row> &rows,
               const std::vector<std::string> &lists, const std::vector<MemoryUse> &memory);

#endif
