#include "bench/report.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

namespace {

// The columns about memory, in bytes per name beyond its text, and how much the component may take.
const struct {
    const char *szWhat;
    double MemoryUse::*pnBytes;
    double nAtMost;
} kMemoryColumns[] = {{"without the index", &MemoryUse::nWithoutIndex, 0.4},
                      {"with the index", &MemoryUse::nWithIndex, 22},
                      {"with an index that grew", &MemoryUse::nGrown, 36}};

// Returns NaN when nothing was measured.
double median(const Measured &measured, const std::string &list, const std::string &row,
              const std::string &contender) {
    const auto found = measured.samples.find({list, row, contender});
    if (found == measured.samples.end() || found->second.empty()) { return std::nan(""); }
    std::vector<double> sorted = found->second;
    std::sort(sorted.begin(), sorted.end());
    const size_t nMiddle = sorted.size() / 2;
    return sorted.size() % 2 != 0 ? sorted[nMiddle] : (sorted[nMiddle - 1] + sorted[nMiddle]) / 2;
}

double ratio(const Measured &measured, const std::string &list, const Row &row) {
    return median(measured, list, row.szId, kComponent) /
           median(measured, list, row.szId, row.szAgainst);
}

std::string number(double nValue, int nDecimals) {
    char aText[64] = "-";
    if (!std::isnan(nValue)) { std::snprintf(aText, sizeof aText, "%.*f", nDecimals, nValue); }
    return aText;
}

std::string verdict(double nValue, double nBound) {
    return nBound == 0 ? "" : nValue <= nBound ? "yes" : "NO";
}

void printLine(const std::vector<std::string> &cells) {
    for (const std::string &cell : cells) { std::printf("| %s ", cell.c_str()); }
    std::puts("|");
}

// The first nTexts columns hold text, the others numbers.
void printHead(const std::vector<std::string> &cells, size_t nTexts) {
    std::puts("");
    printLine(cells);
    for (size_t i = 0; i < cells.size(); ++i) { std::fputs(i < nTexts ? "|---" : "|---:", stdout); }
    std::puts("|");
}

void printRatios(const Measured &measured, const std::vector<std::string> &lists) {
    std::vector<std::string> head = {"work", "against",           "at most",     "ratio",
                                     "met",  "component ns/name", "peer ns/name"};
    std::transform(lists.begin() + 1, lists.end(), std::back_inserter(head),
                   [](const std::string &list) { return "ratio, " + list; });
    printHead(head, 2);
    for (const Row &row : comparedRows()) {
        const double nRatio = ratio(measured, lists[0], row);
        if (std::isnan(nRatio)) { continue; }
        std::vector<std::string> cells = {
            row.szWork,
            row.szAgainst,
            row.nBound == 0 ? "" : number(row.nBound, 2),
            number(nRatio, 2),
            verdict(nRatio, row.nBound),
            number(median(measured, lists[0], row.szId, kComponent), 2),
            number(median(measured, lists[0], row.szId, row.szAgainst), 2)};
        std::transform(
            lists.begin() + 1, lists.end(), std::back_inserter(cells),
            [&](const std::string &list) { return number(ratio(measured, list, row), 2); });
        printLine(cells);
    }
}

void printMemory(const std::vector<MemoryUse> &memory) {
    std::vector<std::string> head = {"memory per name over its text, bytes"};
    for (const auto &column : kMemoryColumns) {
        head.insert(head.end(), {column.szWhat, "at most", "met"});
    }
    printHead(head, 1);
    for (const MemoryUse &use : memory) {
        const bool bBounded = use.szContender == std::string(kComponent);
        std::vector<std::string> cells = {use.szContender};
        for (const auto &[szWhat, pnBytes, nAtMost] : kMemoryColumns) {
            cells.push_back(number(use.*pnBytes, 2));
            cells.push_back(bBounded ? number(nAtMost, 1) : "");
            cells.push_back(bBounded ? verdict(use.*pnBytes, nAtMost) : "");
        }
        printLine(cells);
    }
}

void printContenders(const Measured &measured, const std::vector<std::string> &lists) {
    std::vector<std::string> head = {"work", "contender"};
    std::transform(lists.begin(), lists.end(), std::back_inserter(head),
                   [](const std::string &list) { return list + ", ns/name"; });
    printHead(head, 2);
    for (const Row &row : comparedRows()) {
        for (const Entrant &entrant : row.entrants) {
            std::vector<std::string> cells = {row.szWork, entrant.szContender};
            for (const std::string &list : lists) {
                cells.push_back(number(median(measured, list, row.szId, entrant.szContender), 2));
            }
            if (cells[2] != "-") { printLine(cells); }
        }
    }
}

nlohmann::json rowJson(const Measured &measured, const std::string &list, const Row &row) {
    nlohmann::json medians = nlohmann::json::object();
    for (const Entrant &entrant : row.entrants) {
        medians[entrant.szContender] = median(measured, list, row.szId, entrant.szContender);
    }
    const double nRatio = ratio(measured, list, row);
    nlohmann::json result = {{"list", list},
                             {"row", row.szId},
                             {"work", row.szWork},
                             {"against", row.szAgainst},
                             {"ns_per_name", medians}};
    result["ratio"] = nRatio;
    if (row.nBound != 0) {
        result["at_most"] = row.nBound;
        result["met"] = nRatio <= row.nBound;
    }
    return result;
}

}  // namespace

bool takeSample(Measured &measured, const std::string &list, const Row &row, const Entrant &entrant,
                double nNanosecondsPerName, uint64_t nDigest) {
    measured.samples[{list, row.szId, entrant.szContender}].push_back(nNanosecondsPerName);
    if (measured.digests.emplace(std::pair(list, row.szId), nDigest).first->second == nDigest) {
        return true;
    }
    ++measured.nWrong;
    std::fprintf(stderr, "%s, %s: %s disagrees\n", list.c_str(), row.szWork, entrant.szContender);
    return false;
}

void printComparison(const Measured &measured, const std::vector<std::string> &lists,
                     const std::vector<MemoryUse> &memory) {
    printRatios(measured, lists);
    if (!memory.empty()) { printMemory(memory); }
    printContenders(measured, lists);
}

void printGrowth(const Measured &measured, const std::vector<std::string> &sizes,
                 const std::vector<MemoryUse> &memory) {
    std::vector<std::string> head = {"ns per name"};
    head.insert(head.end(), sizes.begin(), sizes.end());
    printHead(head, 1);
    for (const Row &row : growthRows()) {
        std::vector<std::string> cells = {row.szWork};
        for (const std::string &size : sizes) {
            cells.push_back(number(median(measured, size, row.szId, kComponent), 1));
        }
        printLine(cells);
    }
    for (const auto &column : kMemoryColumns) {
        std::vector<std::string> cells = {std::string("bytes per name over its text, ") +
                                          column.szWhat};
        std::transform(memory.begin(), memory.end(), std::back_inserter(cells),
                       [&column](const MemoryUse &use) { return number(use.*column.pnBytes, 2); });
        printLine(cells);
    }
    std::vector<std::string> total = {"MB in all, with the index"};
    for (const MemoryUse &use : memory) { total.push_back(number(use.nTotalWithIndex / 1e6, 1)); }
    printLine(total);
}

bool writeJson(const std::string &path, const Measured &measured, const std::vector<Row> &rows,
               const std::vector<std::string> &lists, const std::vector<MemoryUse> &memory) {
    nlohmann::json result = {{"rows", nlohmann::json::array()},
                             {"memory", nlohmann::json::array()}};
    for (const std::string &list : lists) {
        for (const Row &row : rows) {
            if (measured.digests.count({list, row.szId}) != 0) {
                result["rows"].push_back(rowJson(measured, list, row));
            }
        }
    }
    for (const MemoryUse &use : memory) {
        result["memory"].push_back({{"contender", use.szContender},
                                    {"bytes_per_name_without_index", use.nWithoutIndex},
                                    {"bytes_per_name_with_index", use.nWithIndex},
                                    {"bytes_per_name_with_grown_index", use.nGrown},
                                    {"bytes_with_index", use.nTotalWithIndex}});
    }
    std::ofstream file(path);
    file << result.dump(2) << '\n';
    return file.flush().good();
}
