// Measures the component and what its users would write themselves in one program run, or the
// component alone on lists of rising size.
#include <benchmark/benchmark.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <thread>

#include "bench/inputs.hpp"
#include "bench/report.hpp"
#include "bench/rows.hpp"

namespace {

struct Options {
    bool bGrowth = false;
    bool bQuick = false;
    int32_t nNames = 2000000;      // of the long lists
    int32_t nMaxNames = 10000000;  // of the longest list, for growth
    int32_t nPicks = 1000000;      // names looked up, for growth
    std::string jsonPath;
};

constexpr int32_t kShortList = 1000;
constexpr int32_t kNamesPerSample = 200000;  // work on shorter lists is repeated for so many names

int64_t roundsFor(int32_t nNames) {
    return std::max(1, kNamesPerSample / nNames);
}

// One repetition; the mean of its rounds is a sample.
void measure(benchmark::State &state, Measured &measured, const Inputs &inputs, const Row &row,
             const Entrant &entrant) {
    double nSeconds = 0;
    Sample sample = {0, 0, 0};
    for (auto round : state) {
        static_cast<void>(round);
        sample = entrant.pfnRun(inputs);
        state.SetIterationTime(sample.nSeconds);
        nSeconds += sample.nSeconds;
    }
    const double nNames =
        static_cast<double>(sample.nNames) * static_cast<double>(state.iterations());
    state.SetItemsProcessed(static_cast<int64_t>(nNames));
    if (!takeSample(measured, inputs.label, row, entrant, nSeconds * 1e9 / nNames,
                    sample.nDigest)) {
        state.SkipWithError("the contenders disagree");
    }
}

template <typename Body>
void registerBenchmark(const std::string &list, const Row &row, const Entrant &entrant,
                       int32_t nNames, Body body) {
    benchmark::RegisterBenchmark((list + "/" + row.szId + "/" + entrant.szContender).c_str(), body)
        ->UseManualTime()
        ->Iterations(roundsFor(nNames))
        ->Unit(benchmark::kMillisecond);
}

void runBenchmarks() {
    benchmark::ConsoleReporter progress(benchmark::ConsoleReporter::OO_Tabular);
    progress.SetOutputStream(&std::cerr);
    progress.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&progress);
}

bool writeJsonIfWanted(const Options &options, const Measured &measured,
                       const std::vector<Row> &rows, const std::vector<std::string> &lists,
                       const std::vector<MemoryUse> &memory) {
    return options.jsonPath.empty() || writeJson(options.jsonPath, measured, rows, lists, memory);
}

std::vector<MemoryUse> measureMemory(const NameList &list) {
    std::vector<MemoryUse> memory = {componentMemory(list)};
    const std::vector<MemoryUse> peers = peerMemory(list);
    memory.insert(memory.end(), peers.begin(), peers.end());
    return memory;
}

bool compare(const Options &options, Measured &measured) {
    std::vector<Inputs> allInputs;
    allInputs.push_back(makeInputs("mixed", mixedName, options.nNames));
    const std::vector<MemoryUse> memory =
        options.bQuick ? std::vector<MemoryUse>() : measureMemory(allInputs[0].list);
    if (!options.bQuick) {
        allInputs.push_back(makeInputs("structured", structuredName, options.nNames));
        allInputs.push_back(makeInputs("short", mixedName, kShortList));
    }
    std::vector<std::string> lists;
    for (const Inputs &inputs : allInputs) {
        lists.push_back(inputs.label);
        for (const Row &row : comparedRows()) {
            for (const Entrant &entrant : row.entrants) {
                registerBenchmark(inputs.label, row, entrant, countOf(inputs.list),
                                  [&](benchmark::State &state) {
                                      measure(state, measured, inputs, row, entrant);
                                  });
            }
        }
    }
    runBenchmarks();
    printComparison(measured, lists, memory);
    return writeJsonIfWanted(options, measured, comparedRows(), lists, memory);
}

// Returns the inputs for nNames names. They are large, so only those used last are kept.
const Inputs &growthInputs(const Options &options, int32_t nNames) {
    static std::unique_ptr<Inputs> inputs;
    if (inputs == nullptr || countOf(inputs->list) != nNames) {
        inputs.reset();
        inputs = std::make_unique<Inputs>(makeLargeInputs(std::to_string(nNames), mixedName, nNames,
                                                          std::min(nNames, options.nPicks)));
    }
    return *inputs;
}

bool grow(const Options &options, Measured &measured) {
    std::vector<std::string> sizes;
    std::vector<MemoryUse> memory;
    for (int64_t nSize = kShortList; nSize <= options.nMaxNames; nSize *= 10) {
        const int32_t nNames = static_cast<int32_t>(nSize);
        sizes.push_back(std::to_string(nNames));
        memory.push_back(componentMemory(growthInputs(options, nNames).list));
        for (const Row &row : growthRows()) {
            registerBenchmark(
                sizes.back(), row, row.entrants[0], nNames, [&, nNames](benchmark::State &state) {
                    measure(state, measured, growthInputs(options, nNames), row, row.entrants[0]);
                });
        }
    }
    runBenchmarks();
    printGrowth(measured, sizes, memory);
    return writeJsonIfWanted(options, measured, growthRows(), sizes, memory);
}

// The C library makes locks cheaper in a process that never had a second thread. Users' processes
// have, so this one gets it, too.
void startAThreadOnce() {
    std::thread([] {}).join();
}

void addOptions(CLI::App *pApp, Options *pOptions) {
    pApp->add_flag("--growth", pOptions->bGrowth,
                   "cost per name of the component alone, on lists of rising size");
    pApp->add_flag("--quick", pOptions->bQuick,
                   "the first list alone, and no measurement of memory");
    pApp->add_option("--names", pOptions->nNames, "names of the long lists")
        ->check(CLI::Range(1000, 20000000))
        ->capture_default_str();
    pApp->add_option("--max-names", pOptions->nMaxNames,
                     "longest list for --growth; 100000000 take 12 GB")
        ->check(CLI::Range(1000, 100000000))
        ->capture_default_str();
    pApp->add_option("--json", pOptions->jsonPath, "write the tables to this file as well");
}

int run(int argc, char **argv) {
    startAThreadOnce();
    benchmark::Initialize(&argc, argv);
    Options options;
    CLI::App app("Measures the names manager and its alternatives. Google Benchmark's own options "
                 "are accepted as well.");
    addOptions(&app, &options);
    CLI11_PARSE(app, argc, argv);
    Measured measured;
    const bool bWritten = options.bGrowth ? grow(options, measured) : compare(options, measured);
    if (!bWritten) { std::cerr << options.jsonPath << ": cannot be written\n"; }
    return bWritten && measured.nWrong == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fputs(error.what(), stderr);
        return 1;
    }
}
