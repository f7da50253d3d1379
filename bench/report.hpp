// What was measured, and the tables and the JSON made of it.
#ifndef BENCH_REPORT_HPP
#define BENCH_REPORT_HPP

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "bench/rows.hpp"

// Nanoseconds per name, one for each repetition.
struct Measured {
    std::map<std::tuple<std::string, std::string, std::string>, std::vector<double>>
        samples;  // by list, row id, contender
    std::map<std::pair<std::string, std::string>, uint64_t>
        digests;         // by list and row id: the first contender's
    int32_t nWrong = 0;  // samples with another digest
};

// Takes a sample in; false when its digest is not that of the others in its row.
bool takeSample(Measured &measured, const std::string &list, const Row &row, const Entrant &entrant,
                double nNanosecondsPerName, uint64_t nDigest);

// The tables as Markdown on standard output. Rows without measurements are left out. The bounds are
// for the first of the lists.
void printComparison(const Measured &measured, const std::vector<std::string> &lists,
                     const std::vector<MemoryUse> &memory);
void printGrowth(const Measured &measured, const std::vector<std::string> &sizes,
                 const std::vector<MemoryUse> &memory);

// The medians and ratios of the given rows for every list, as JSON. False when the file could not
// be written.
bool writeJson(const std::string &path, const Measured &measured, const std::vector<Row> &rows,
               const std::vector<std::string> &lists, const std::vector<MemoryUse> &memory);

#endif
