#!/usr/bin/env bash
# run.sh [OPTION...]: builds the benchmarks as a release, runs them on one core (rows of two threads
# on two), prints their tables, and writes JSON to build/.
#   run.sh                               the component and its alternatives
#   run.sh --growth                      the cost per name on lists of rising size, up to 10,000,000
#   run.sh --growth --max-names=100000000    up to 100,000,000 (12 GB of memory)
# Further options are Google Benchmark's, such as --benchmark_filter='mixed/.*' or
# --benchmark_repetitions=3.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake/install_packages.sh libbenchmark-dev libabsl-dev libboost1.81-dev
cmake --preset release -DNAMES_BUILD_BENCH=ON >/dev/null
cmake --build --preset release --parallel "$(nproc)" --target names_bench >&2

report=comparison
interleaving=(--benchmark_enable_random_interleaving=true --benchmark_repetitions=7)
for option in "$@"; do
    if [[ $option == --growth ]]; then
        report=growth
        interleaving=(--benchmark_repetitions=3)
    fi
done
taskset -c "$(($(nproc) - 1))" build/release/bench/names_bench "${interleaving[@]}" \
    --benchmark_report_aggregates_only=true --benchmark_out="build/$report.json" \
    --benchmark_out_format=json --json="build/$report-table.json" "$@"
