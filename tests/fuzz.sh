#!/usr/bin/env bash
# fuzz.sh MINUTES: builds the fuzz targets with clang and runs both at once for so long (0.25: for 15
# seconds), starting from tests/fuzz/corpus and the saved images. What was found worth keeping stays
# in build/fuzz/corpus and is where the next run starts, too; an input that fails is left in
# build/fuzz. Says how many functions of names/ the inputs reach.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=$(awk -v minutes="${1:?minutes for each target}" 'BEGIN { print int(minutes * 60) }')
cmake/install_packages.sh clang llvm libclang-rt-14-dev
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --parallel "$(nproc)" --target load_fuzz operations_fuzz

# Memory given back is kept from use for a short while only, and little noted of where it came from:
# that saves time and memory, and an input that fails can be run again without.
export ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=2:detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1
run() { # TARGET LONGEST-INPUT [INPUTS | OPTION]...
    local target=$1 corpus=build/fuzz/corpus/$1
    echo "== $target"
    mkdir -p "$corpus"
    tar xzf "tests/fuzz/corpus/$target.tar.gz" -C "$corpus"
    "build/fuzz/tests/fuzz/$target" -max_total_time="$seconds" -max_len="$2" -timeout=60 \
                                   -entropic=0 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/$target-" "$corpus" "${@:3}" 2>"build/fuzz/$target.log" ||
        { tail -n 60 "build/fuzz/$target.log" >&2; exit 1; }
    ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 "build/fuzz/tests/fuzz/$target" -runs=0 \
        -print_coverage=1 "$corpus" "${@:3}" >"build/fuzz/$target.coverage" 2>&1
    awk '/^COVERED_FUNC/ { ++nReached } /^(UN)?COVERED_FUNC/ { ++nAll }
         END { print "functions reached:", nReached, "of", nAll }' "build/fuzz/$target.coverage"
    grep -E "^(stat::(number_of_executed_units|peak_rss_mb)|Done)" "build/fuzz/$target.log"
}
run load_fuzz 500 tests/images/little_endian -dict=tests/fuzz/load_fuzz.dict \
    >build/fuzz/load_fuzz.summary &
first=$!
run operations_fuzz 122 >build/fuzz/operations_fuzz.summary &
bad=0
wait $first || bad=1
wait $! || bad=1
cat build/fuzz/{load,operations}_fuzz.summary
exit $bad
