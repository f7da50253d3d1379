#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: optimised, then under AddressSanitizer and
# UndefinedBehaviorSanitizer. Then the threads' tests under ThreadSanitizer, and each fuzz target
# for some seconds.
set -euo pipefail
cd "$(dirname "$0")"

cmake/install_packages.sh
for preset in release asan; do
    echo "== $preset"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" --parallel "$(nproc)"
    ctest --preset "$preset" --parallel "$(nproc)"
done

echo "== tsan"
cmake --preset tsan >/dev/null
cmake --build --preset tsan --parallel "$(nproc)" --target thread_test lock_stress
ctest --preset tsan --tests-regex '^(thread_test|lock_stress)$'

echo "== fuzz"
tests/fuzz.sh 0.15
